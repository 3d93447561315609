// The name by which messages speak of a document.
#pragma once

#include <string>

#include "common/paths.h"
#include "host/interface/documents.h"

namespace qelm::messages {

// The file's name without its folder; empty for a document that was never saved.
inline std::string DocumentName(host::Documents& documents, host::Id document) {
  return std::string(common::FileName(documents.Path(document)));
}

}  // namespace qelm::messages
