#include "cli/did_you_mean.h"

#include <vector>

#include "common/nearest.h"

namespace qelm::cli {

std::string DidYouMean(std::string_view word, std::span<const std::string_view> names) {
  const std::string_view nearest = common::Nearest(word, names);
  return nearest.empty() ? std::string() : " (did you mean \"" + std::string(nearest) + "\"?)";
}

std::string DidYouMean(std::string_view word, std::span<const std::string> names) {
  const std::vector<std::string_view> views(names.begin(), names.end());
  return DidYouMean(word, std::span<const std::string_view>(views));
}

}  // namespace qelm::cli
