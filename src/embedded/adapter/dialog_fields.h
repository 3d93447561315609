// Finding and setting the items of a dialog by words, as a person or an answers file writes them.
#pragma once

#include <string>
#include <string_view>

#include "embedded/adapter/dialog_state.h"

namespace qelm::embedded::adapter {

// The item that is shown and has this name or this label, translated or in English; letter case (of ASCII
// letters) and dots and colons at the end do not count. Among the buttons, or among the fields. -1 when there
// is none.
std::int32_t FindButton(const DialogState& dialog, std::string_view words);
std::int32_t FindField(const DialogState& dialog, std::string_view words);

// Sets a field. A check box or radio button takes on, yes, true, 1 and their opposites; a list takes one of
// its lines, or "#" with the number of a line from 1; an edit field any text. False, with `error` saying why,
// when the field has no such value.
bool SetField(DialogState& dialog, std::int32_t item, std::string_view value, std::string* error);

}  // namespace qelm::embedded::adapter
