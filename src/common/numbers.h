// Reading numbers from text without locales.
#pragma once

#include <cstdint>
#include <string_view>

namespace qelm::common {

// Whether the whole text is an integer: an optional "-" and digits, in 64 bits. `value` (may be null) is set
// only then.
bool IsInteger(std::string_view text, std::int64_t* value);

// The integer at the start of the text, read as far as it goes: "12abc" is 12, "abc" is 0. One beyond 64 bits
// is the nearest that there is.
std::int64_t ReadInteger(std::string_view text);

// The decimal number at the start of the text ("8.5", "-2", ".5"), 0 where there is none. Never infinite or
// not-a-number.
double ReadReal(std::string_view text);

}  // namespace qelm::common
