// The filter and the restore of a book as commands: each of its documents is saved and closed when it is
// done, so that a book of any size needs no more memory than its largest document.
#pragma once

#include <string>

#include "cli/command.h"
#include "host/interface/types.h"

namespace qelm::cli {

// Filters an open book by the active filter scheme, as the plug-in's run says. Throws Failure.
Outcome FilterBook(Session& session, host::Id book, const std::string& scheme);

// Restores the documents of an open book; with `dry_run` nothing is written. Throws Failure.
Outcome RestoreBook(Session& session, host::Id book, bool dry_run);

}  // namespace qelm::cli
