#include "xpath/candidates.h"

#include <algorithm>
#include <numeric>

namespace qelm::xpath {

using host::Id;
using host::kNone;

bool Candidates::Serves(Axis axis) {
  switch (axis) {
    case Axis::kDescendant:
    case Axis::kDescendantOrSelf:
    case Axis::kAncestor:
    case Axis::kAncestorOrSelf:
    case Axis::kPreceding:
    case Axis::kPrecedingSibling:
    case Axis::kFollowing:
    case Axis::kFollowingSibling:
      return true;
    default:
      return false;
  }
}

Candidates::Candidates(const TreeOrder& order, Tree& tree, const StepPlan& step)
    : order_(order), axis_(step.axis), passes_(order.Size()) {
  for (std::uint32_t rank = 0; rank < order.Size(); ++rank) {
    if (!tree.PassesDefinition(step, order.DefinitionAt(rank))) continue;
    passes_[rank] = true;
    list_.push_back(rank);
  }
  if (IsChain() || axis_ == Axis::kPreceding) LinkAncestors();
  if (axis_ == Axis::kPrecedingSibling || axis_ == Axis::kFollowingSibling) GroupByParent();
  wanted_.resize(list_.size() + 2);
  std::iota(wanted_.begin(), wanted_.end(), 0U);
}

// Sorts the list by parents; the children of one parent keep their order.
void Candidates::GroupByParent() {
  std::vector<std::uint32_t> sorted;
  group_.assign(order_.Size() + 1, 0);
  for (const std::uint32_t rank : list_) {
    if (order_.ParentOf(rank) != TreeOrder::kNoRank) ++group_[order_.ParentOf(rank) + 1];
  }
  std::partial_sum(group_.begin(), group_.end(), group_.begin());
  sorted.resize(group_.back());
  std::vector<std::uint32_t> next(group_);
  for (const std::uint32_t rank : list_) {
    if (order_.ParentOf(rank) != TreeOrder::kNoRank) sorted[next[order_.ParentOf(rank)]++] = rank;
  }
  list_ = std::move(sorted);
}

void Candidates::LinkAncestors() {
  nearest_.assign(order_.Size(), TreeOrder::kNoRank);
  farthest_.assign(order_.Size(), TreeOrder::kNoRank);
  depth_.assign(order_.Size(), 0);
  for (std::uint32_t rank = 0; rank < order_.Size(); ++rank) {
    const std::uint32_t parent = order_.ParentOf(rank);
    if (parent == TreeOrder::kNoRank) continue;
    nearest_[rank] = passes_[parent] ? parent : nearest_[parent];
    farthest_[rank] = passes_[parent] && depth_[parent] == 0 ? parent : farthest_[parent];
    depth_[rank] = depth_[parent] + (passes_[parent] ? 1 : 0);
  }
}

// The first place in a part of the list whose rank is not below `rank`.
std::uint32_t Candidates::PlaceOf(std::uint32_t rank, std::uint32_t from, std::uint32_t to) const {
  const auto found = std::lower_bound(list_.begin() + from, list_.begin() + to, rank);
  return static_cast<std::uint32_t>(found - list_.begin());
}

bool Candidates::Select(Id context) {
  context_ = order_.RankOf(context);
  if (context_ == TreeOrder::kNoRank) return false;
  if (IsChain()) {
    count_ = depth_[context_] + (axis_ == Axis::kAncestorOrSelf && passes_[context_] ? 1 : 0);
    return true;
  }
  SelectStretch();
  count_ = std::int64_t{end_} - begin_ - (axis_ == Axis::kPreceding ? depth_[context_] : 0);
  return true;
}

void Candidates::SelectStretch() {
  const auto size = static_cast<std::uint32_t>(list_.size());
  const std::uint32_t root = order_.RootOf(context_);
  const std::uint32_t parent = order_.ParentOf(context_);
  begin_ = end_ = 0;
  switch (axis_) {
    case Axis::kDescendant:
    case Axis::kDescendantOrSelf:
      begin_ = PlaceOf(context_ + (axis_ == Axis::kDescendant ? 1 : 0), 0, size);
      end_ = PlaceOf(order_.EndOf(context_), begin_, size);
      return;
    case Axis::kFollowing:
      begin_ = PlaceOf(order_.EndOf(context_), 0, size);
      end_ = PlaceOf(order_.EndOf(root), begin_, size);
      return;
    case Axis::kPreceding:
      begin_ = PlaceOf(root, 0, size);
      end_ = PlaceOf(context_, begin_, size);
      return;
    default:
      break;
  }
  if (parent == TreeOrder::kNoRank) return;
  const bool before = axis_ == Axis::kPrecedingSibling;
  begin_ = before ? group_[parent] : PlaceOf(context_ + 1, group_[parent], group_[parent + 1]);
  end_ = before ? PlaceOf(context_, group_[parent], group_[parent + 1]) : group_[parent + 1];
}

void Candidates::Seek(std::int64_t first, std::int64_t last) {
  first = std::max<std::int64_t>(first, 1);
  last = std::min(last, count_);
  left_ = std::max<std::int64_t>(last - first + 1, 0);
  if (left_ == 0) return;
  to_end_ = last == count_;
  if (IsChain()) return SeekUp(first);
  if (axis_ == Axis::kPreceding) return SeekBefore(first);
  const auto skipped = static_cast<std::uint32_t>(first - 1);
  const auto length = static_cast<std::uint32_t>(left_);
  slot_ = IsBackward() ? end_ - skipped : begin_ + skipped + 1;
  stop_ = IsBackward() ? slot_ - length : slot_ + length;
}

void Candidates::SeekUp(std::int64_t first) {
  const bool has_self = axis_ == Axis::kAncestorOrSelf && passes_[context_];
  slot_ = has_self ? context_ : nearest_[context_];
  // The last one is asked for often, and is known.
  if (first == count_ && depth_[context_] > 0) {
    slot_ = farthest_[context_];
    return;
  }
  for (; first > 1; --first) slot_ = nearest_[slot_];
}

void Candidates::SeekBefore(std::int64_t first) {
  stop_ = begin_;
  slot_ = end_;
  if (first == count_) {
    slot_ = begin_ + 1;
    while (IsAncestor(slot_ - 1)) ++slot_;
    return;
  }
  for (;; --slot_) {
    if (IsAncestor(slot_ - 1)) continue;
    if (--first == 0) return;
  }
}

// The nearest slot from `slot` on, in the direction of the axis, that was not dropped.
std::uint32_t Candidates::Wanted(std::uint32_t slot) {
  while (wanted_[slot] != slot) {
    wanted_[slot] = wanted_[wanted_[slot]];
    slot = wanted_[slot];
  }
  return slot;
}

Id Candidates::Next() {
  if (left_ <= 0) return kNone;
  if (IsChain()) {
    given_ = slot_;
    slot_ = nearest_[slot_];
    --left_;
    return order_.ElementAt(given_);
  }
  if (axis_ == Axis::kPreceding) {
    if (to_end_) slot_ = Wanted(slot_);
    while (slot_ > stop_ && IsAncestor(slot_ - 1)) slot_ = to_end_ ? Wanted(slot_ - 1) : slot_ - 1;
    --left_;
  } else {
    slot_ = Wanted(slot_);
  }
  const bool ended = IsBackward() ? slot_ <= stop_ : slot_ >= stop_;
  if (ended) {
    left_ = 0;
    return kNone;
  }
  given_ = slot_;
  slot_ = IsBackward() ? slot_ - 1 : slot_ + 1;
  return order_.ElementAt(list_[given_ - 1]);
}

void Candidates::Drop() {
  if (IsChain()) return;
  wanted_[given_] = IsBackward() ? given_ - 1 : given_ + 1;
  dropped_.push_back(given_);
}

void Candidates::Restore() {
  for (const std::uint32_t slot : dropped_) wanted_[slot] = slot;
  dropped_.clear();
}

}  // namespace qelm::xpath
