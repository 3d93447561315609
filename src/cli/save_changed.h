// What becomes of the documents that were changed by something that may have worked on more than its target:
// the files of a book, a copy.
#pragma once

#include <string>
#include <vector>

#include "cli/command.h"
#include "host/interface/types.h"

namespace qelm::cli {

// Saves the targets that were changed, the first one to `output` (empty: to itself) whether it was changed or
// not, and all other open documents to their own files. One that has no name yet is told and not saved. The
// paths go into the outcome's member "saved", lines for people into its text. Throws Failure.
void SaveChanged(Session& session, const std::vector<host::Id>& targets, const std::string& output,
                 Outcome* outcome);

}  // namespace qelm::cli
