#include "common/nearest.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "common/text.h"
#include "common/utf8.h"

namespace qelm::common {
namespace {

// The number of changes between two texts: three rows of the usual table, the third for swaps of neighbours.
std::size_t Distance(const std::u32string& left, const std::u32string& right) {
  const std::size_t width = right.size() + 1;
  std::vector<std::size_t> before_last(width), last(width), row(width);
  for (std::size_t column = 0; column < width; ++column) last[column] = column;
  for (std::size_t i = 1; i <= left.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j < width; ++j) {
      const std::size_t change = left[i - 1] == right[j - 1] ? 0 : 1;
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + change});
      if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
        row[j] = std::min(row[j], before_last[j - 2] + 1);
      }
    }
    before_last.swap(last);
    last.swap(row);
  }
  return last[width - 1];
}

}  // namespace

std::string_view Nearest(std::string_view name, std::span<const std::string_view> names) {
  const std::u32string meant = CodePoints(FoldCase(name));
  std::size_t least = std::max<std::size_t>(meant.size() / 3, 1) + 1;
  std::string_view nearest;
  for (const std::string_view candidate : names) {
    const std::u32string other = CodePoints(FoldCase(candidate));
    // So many changes are needed for the difference in length alone.
    const std::size_t at_least = std::max(meant.size(), other.size()) - std::min(meant.size(), other.size());
    if (at_least >= least) continue;
    const std::size_t distance = Distance(meant, other);
    if (distance < least) {
      least = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

}  // namespace qelm::common
