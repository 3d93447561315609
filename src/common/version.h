// The version of the plug-in.
#pragma once

#include <cstdint>
#include <string>

namespace qelm::common {

std::int32_t VersionMajor();
std::int32_t VersionMinor();

// "MAJOR.MINOR", as the about box and the version file of an installation have it.
std::string VersionText();

}  // namespace qelm::common
