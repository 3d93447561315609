// Names of files: absolute paths, and which format a name asks for.
#pragma once

#include <string>

#include "embedded/model/ids.h"

namespace qelm::embedded::adapter {

// The path made absolute against the working folder; links and ".." stay as they are.
std::string AbsolutePath(const std::string& path);

// The format that the extension of a name asks for: .xml for XML, .mif and .fm for MIF; `other` for any other
// name.
model::Format FormatOfName(const std::string& path, model::Format other);

}  // namespace qelm::embedded::adapter
