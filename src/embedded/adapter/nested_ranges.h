// Ranges of items that lie side by side or one in the other, and never cross: tables and their parts, text
// insets. Finding the innermost one around an item is a binary search and a climb as deep as the nesting.
#pragma once

#include <cstdint>
#include <vector>

#include "embedded/model/ids.h"

namespace qelm::embedded::adapter {

class NestedRanges {
 public:
  struct Range {
    std::uint32_t first_item = 0;
    std::uint32_t end_item = 0;
    std::uint32_t ref = 0;                   // what the range is of
    std::uint32_t around = model::kNoIndex;  // the range around it
  };

  // Empty ranges are left out.
  explicit NestedRanges(std::vector<Range> ranges);

  // The innermost range that contains the item, null when none does; and the range around one.
  const Range* Find(std::uint32_t item) const;
  const Range* Around(const Range& range) const {
    return range.around == model::kNoIndex ? nullptr : &ranges_[range.around];
  }

 private:
  std::vector<Range> ranges_;  // by first item, an outer one before what is in it
};

}  // namespace qelm::embedded::adapter
