// The dialog-event entry: which of the plug-in's dialogs an event is for.
#pragma once

#include <cstdint>

#include "host/plugin.h"

namespace qelm {

// The numbers of the plug-in's dialogs. Those of the editors (0 to 12) have names where this version has the
// dialog.
inline constexpr std::int32_t kFilterDialogNumber = 4;
inline constexpr std::int32_t kBatchSourceDialogNumber = 11;
inline constexpr std::int32_t kBatchStepsDialogNumber = 12;
inline constexpr std::int32_t kLastEditorNumber = 12;
inline constexpr std::int32_t kListEditorNumber = 1001;  // the message box has it too
inline constexpr std::int32_t kItemEntryNumber = 1222;
inline constexpr std::int32_t kItemEditNumber = 1223;
inline constexpr std::int32_t kStatusNumber = 1224;

// Hands the use of an item to the open dialog of that number. Returns host::kDialogStaysOpen when that
// handled it and is not to close, and else 0; a number that is none of the plug-in's, or of a dialog that is
// not open, does nothing and gives 0.
std::int32_t RouteDialogEvent(Plugin& plugin, std::int32_t dialog, std::int32_t item, std::int32_t modifiers);

}  // namespace qelm
