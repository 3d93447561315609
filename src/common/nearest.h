// The name that a user may have meant.
#pragma once

#include <span>
#include <string_view>

namespace qelm::common {

// The one of `names` that takes the fewest changes (a character put in, left out, changed, or two neighbours
// swapped) to be made from `name`, letter case ignored. Empty when even that one differs in more than a third
// of the characters of `name`.
std::string_view Nearest(std::string_view name, std::span<const std::string_view> names);

}  // namespace qelm::common
