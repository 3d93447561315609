// The dialog that sets up a batch filter, in two pages: what is filtered by which schemes to where, and what
// is done with every output.
#pragma once

#include "filtering/batch_run.h"
#include "host/plugin.h"

namespace qelm {

// Lets the user change the request, which is kept when the dialog is cancelled. True when the batch is to be
// run.
bool AskBatch(Plugin& plugin, filtering::BatchRequest* request);

}  // namespace qelm
