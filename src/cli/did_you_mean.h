// The hint that follows a name that does not exist.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace qelm::cli {

// ` (did you mean "NAME"?)` for the one of `names` that is near to `word`; empty when none is.
std::string DidYouMean(std::string_view word, std::span<const std::string_view> names);
std::string DidYouMean(std::string_view word, std::span<const std::string> names);

}  // namespace qelm::cli
