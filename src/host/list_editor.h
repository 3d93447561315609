// Editing a list of texts: the list editor, with a dialog of its own for a new item and for changing one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "messages/messenger.h"

namespace qelm {

// Lets the user add, change, delete and move the items. True, with `items` as the user left them, when the
// user confirmed; false, with `items` as they were, when the user cancelled or, after a message, when the
// dialog cannot be opened. The title is shown as it stands. No item is empty, and none has white space at its
// ends.
bool EditList(messages::Messenger& messenger, std::string_view title, std::vector<std::string>* items);

}  // namespace qelm
