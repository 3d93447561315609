// Choosing one of several entries from a drop-down list.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "messages/messenger.h"

namespace qelm::messages {

inline constexpr std::int32_t kDropDownNumber = 1226;

// Lets the user choose one of the entries, beginning at the one with index `selected` (-1: none). The title
// is shown as it stands. Returns the index of the entry; -1 when the user chose none, when there are no
// entries, or, after a message, when the dialog cannot be opened.
std::int32_t ChooseEntry(Messenger& messenger, std::string_view title,
                         const std::vector<std::string>& entries, std::int32_t selected);

}  // namespace qelm::messages
