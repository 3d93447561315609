// The commands that work on the active document, book or selection. Each finds its target itself, tells the
// user what there is to tell, and returns a result code as CommandRow says.
#pragma once

#include <cstdint>

#include "coloring/coloring_run.h"
#include "filtering/filter_run.h"
#include "schemes/scheme.h"

namespace qelm {

class Plugin;

// What a validation command checks. The numbers are those by which the commands name it.
enum class ValidationScope : std::uint8_t { kSelection = 21, kDocument = 22, kBook = 23 };

// Switches a yes/no setting off in memory. It stays off when the local settings are read again.
void SwitchOffForSession(Plugin& plugin, const char* key, bool* setting);

// Colors or uncolors. Before the first uncoloring of a session the user is asked whether to go on, unless
// PROMPT_PRE_UNCOLOR_FILE says otherwise.
std::int32_t ColorOnCommand(Plugin& plugin, coloring::Command command);

// Validates by the active scheme into the plug-in report, which is then open and saved; what was active stays
// so. The report of the run before is closed.
std::int32_t ValidateOnCommand(Plugin& plugin, ValidationScope scope);

// Filters the active document or book as the user sets it up in the dialog. The files of a new book are
// saved; others stay open with their changes.
std::int32_t FilterOnCommand(Plugin& plugin, filtering::TargetKind target);
// Filters a source by many schemes, as the user sets it up in the dialog. The active document or book is
// proposed as the source.
std::int32_t BatchOnCommand(Plugin& plugin);
// Restores it, after a question if PROMPT_PRE_RESTORE_FILE is on.
std::int32_t RestoreOnCommand(Plugin& plugin, filtering::TargetKind target);

// Restores one document without asking.
std::int32_t RestoreWithoutAsking(Plugin& plugin, host::Id document);

// Checks the scheme data in a table of the active document.
std::int32_t CheckTable(Plugin& plugin);

// Lets the user choose the active scheme of a kind, and prints the parameters of the active one.
std::int32_t SetActiveScheme(Plugin& plugin, schemes::SchemeKind kind);
std::int32_t PrintActiveScheme(Plugin& plugin, schemes::SchemeKind kind);

}  // namespace qelm
