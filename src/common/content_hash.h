// A short text that tells contents apart: FNV-1a with 64 bits in hexadecimal digits, which is the same on
// every machine. It recognizes what was changed by accident, not by somebody who means to deceive.
#pragma once

#include <string>
#include <string_view>

namespace qelm::common {

std::string ContentHash(std::string_view content);

}  // namespace qelm::common
