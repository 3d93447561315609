// Paths that are compared by their spelling.
#pragma once

#include <string>

#include "host/interface/platform.h"

namespace qelm::filtering {

// The path without "." and "..". Where a link makes ".." lead elsewhere than the spelling says, links are
// resolved; else they stay, so that files keep the names by which they are known.
std::string PlainPath(host::Platform& platform, const std::string& path);

// What leads from a folder to a file, both plain; links count as above.
std::string RelativePath(host::Platform& platform, const std::string& folder, const std::string& file);

}  // namespace qelm::filtering
