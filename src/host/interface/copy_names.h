// Names of files that tell of copies in a folder. The mark of one that is not complete is
// kUnfinishedName (platform.h).
#pragma once

#include <string_view>

namespace qelm::host {

// How the name begins of the file in which a copy notes what it was made from and what it consists of; the
// name of its book or document and ".txt" follow.
inline constexpr std::string_view kCopyRecordName = ".qelm-made-";

}  // namespace qelm::host
