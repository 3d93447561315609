#include "common/version.h"

namespace qelm::common {

std::int32_t VersionMajor() { return QELM_VERSION_MAJOR; }

std::int32_t VersionMinor() { return QELM_VERSION_MINOR; }

std::string VersionText() { return std::to_string(VersionMajor()) + "." + std::to_string(VersionMinor()); }

}  // namespace qelm::common
