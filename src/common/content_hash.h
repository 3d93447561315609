// A short text that tells contents apart: 64 bits in hexadecimal digits, the same on every machine. It
// recognizes what was changed by accident, not by somebody who means to deceive.
//
// Four lanes take eight bytes each in turn, so that a large file costs little more than reading it; each step
// is that of FNV-1a with a word for a byte, and a shift that brings what changed in high bits down again.
#pragma once

#include <string>
#include <string_view>

namespace qelm::common {

std::string ContentHash(std::string_view content);

}  // namespace qelm::common
