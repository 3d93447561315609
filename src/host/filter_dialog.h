// The Filter dialog: what a filter run is to do, preset from the local settings.
#pragma once

#include "filtering/filter_run.h"
#include "host/plugin.h"

namespace qelm {

// Lets the user set up a filter of the active document or book. True when the run may start: then the
// plug-in's filter run is prepared from the settings and from the dialog. False, with the filter run as it
// was before, when the user cancelled or, after a message, when the dialog cannot be opened. What makes no
// sense is refused with a message, and the dialog stays open.
bool AskFilter(Plugin& plugin, filtering::TargetKind target);

}  // namespace qelm
