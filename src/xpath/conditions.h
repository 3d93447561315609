// An axis the other way round: of which elements does the axis lead to one of a list? Asked once for the
// whole list, the answer for any element is one look: into a bitmap, or, where the list's first or last
// element decides, at the element's own place.
#pragma once

#include <span>

#include "xpath/set_axes.h"

namespace qelm::xpath {

class Condition {
 public:
  // That the axis, one of IsElementAxis, leads to an element of `targets`, which are rising.
  static Condition LeadsTo(const SetScope& scope, Axis axis, std::span<const std::uint32_t> targets);

  // Calls `use(place, holds)` for each of a list of ranks.
  template <typename Use>
  void ForEach(const SetScope& scope, std::span<const std::uint32_t> ranks, Use&& use) const;

  // Whether it holds for no element at all.
  bool IsNever() const { return kind_ == Kind::kNever; }

 private:
  enum class Kind { kNever, kInSet, kParentInSet, kEndsBefore, kFrom };

  Kind kind_ = Kind::kNever;
  RankSet set_;
  std::uint32_t bound_ = 0;
};

template <typename Use>
void Condition::ForEach(const SetScope& scope, std::span<const std::uint32_t> ranks, Use&& use) const {
  const DocumentIndex& index = *scope.index;
  const auto each = [&](auto&& holds) {
    for (std::size_t place = 0; place < ranks.size(); ++place) use(place, holds(ranks[place]));
  };
  switch (kind_) {
    case Kind::kNever:
      return each([](std::uint32_t) { return false; });
    case Kind::kInSet:
      return each([&](std::uint32_t rank) { return set_.Contains(rank); });
    case Kind::kParentInSet:
      return each([&](std::uint32_t rank) {
        const std::uint32_t parent = index.ParentOf(rank);
        return parent != DocumentIndex::kNoRank && set_.Contains(parent);
      });
    case Kind::kEndsBefore:
      return each([&](std::uint32_t rank) { return index.EndOf(rank) <= bound_; });
    case Kind::kFrom:
      return each([&](std::uint32_t rank) { return rank >= bound_; });
  }
}

}  // namespace qelm::xpath
