// Reading the text insets of a document again from their sources.
#pragma once

#include <string>
#include <vector>

#include "embedded/adapter/workspace.h"
#include "host/interface/documents.h"

namespace qelm::embedded::adapter {

// Puts into the insets of a MIF document what their sources say now; how many changed. What stays as it is
// for a reason is added to `findings`, each with the document's file, the source and the reason. The document
// has nothing to be settled, and the changes are in it when it is settled.
std::size_t UpdateInsets(Workspace& workspace, host::Documents& documents, OpenFile* file,
                         std::vector<std::string>* findings);

}  // namespace qelm::embedded::adapter
