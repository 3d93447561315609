#include "embedded/adapter/nested_ranges.h"

#include <algorithm>

namespace qelm::embedded::adapter {

NestedRanges::NestedRanges(std::vector<Range> ranges) : ranges_(std::move(ranges)) {
  std::erase_if(ranges_, [](const Range& range) { return range.first_item >= range.end_item; });
  std::sort(ranges_.begin(), ranges_.end(), [](const Range& a, const Range& b) {
    return a.first_item != b.first_item ? a.first_item < b.first_item : a.end_item > b.end_item;
  });
  std::uint32_t around = model::kNoIndex;
  for (std::uint32_t i = 0; i < ranges_.size(); ++i) {
    while (around != model::kNoIndex && ranges_[around].end_item <= ranges_[i].first_item) {
      around = ranges_[around].around;
    }
    ranges_[i].around = around;
    around = i;
  }
}

const NestedRanges::Range* NestedRanges::Find(std::uint32_t item) const {
  const auto after =
      std::upper_bound(ranges_.begin(), ranges_.end(), item,
                       [](std::uint32_t at, const Range& range) { return at < range.first_item; });
  if (after == ranges_.begin()) return nullptr;
  const Range* range = &*(after - 1);
  while (range != nullptr && range->end_item <= item) range = Around(*range);
  return range;
}

}  // namespace qelm::embedded::adapter
