// What the operations of the other rooms work with, from what the plug-in holds: the one place where a filter
// run gets its log and its uncoloring.
#pragma once

#include "calls/calls.h"
#include "filtering/batch_run.h"
#include "filtering/document_filter.h"
#include "host/plugin.h"

namespace qelm {

// The context of a filter run, by the active filter scheme. The plug-in outlives it.
filtering::FilterContext FilterContextOf(Plugin& plugin);

// The context of a batch, by the session's main settings document. The plug-in outlives it.
filtering::BatchContext BatchContextOf(Plugin& plugin);
// The context of a call. The plug-in outlives it.
calls::CallContext CallContextOf(Plugin& plugin);

}  // namespace qelm
