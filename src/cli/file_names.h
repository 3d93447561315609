// File names as a reader of results wants them: relative to where the command was started, as far as they lie
// below it, and as URIs in files that other programs read.
#pragma once

#include <string>

namespace qelm::cli {

// The path relative to the current folder where it lies in it, else as it is; without steps into
// folders that lead out again.
std::string ShownPath(const std::string& path);

// The path as a URI reference: a relative one for a relative path, "file:///..." for an absolute one.
std::string FileUri(const std::string& path);

}  // namespace qelm::cli
