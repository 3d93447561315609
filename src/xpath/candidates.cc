#include "xpath/candidates.h"

#include <algorithm>
#include <numeric>

namespace qelm::xpath {

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

Candidates::Candidates(const DocumentIndex& index, std::span<const std::uint32_t> list, Axis axis)
    : index_(index), axis_(axis), list_(list) {
  if (IsChain() || axis_ == Axis::kPreceding) LinkAncestors();
  if (axis_ == Axis::kPrecedingSibling || axis_ == Axis::kFollowingSibling) GroupByParent();
  if (IsChain()) return;
  wanted_.resize(list_.size() + 2);
  std::iota(wanted_.begin(), wanted_.end(), 0U);
}

// Sorts the list by parents; the children of one parent keep their order.
void Candidates::GroupByParent() {
  group_.assign(index_.Size() + 1, 0);
  for (const std::uint32_t rank : list_) {
    if (index_.ParentOf(rank) != DocumentIndex::kNoRank) ++group_[index_.ParentOf(rank) + 1];
  }
  std::partial_sum(group_.begin(), group_.end(), group_.begin());
  by_parent_.resize(group_.back());
  std::vector<std::uint32_t> next(group_);
  for (const std::uint32_t rank : list_) {
    if (index_.ParentOf(rank) != DocumentIndex::kNoRank) by_parent_[next[index_.ParentOf(rank)]++] = rank;
  }
  list_ = by_parent_;
}

void Candidates::LinkAncestors() {
  passes_ = RankSet(index_.Size());
  for (const std::uint32_t rank : list_) passes_.Insert(rank);
  nearest_.assign(index_.Size(), DocumentIndex::kNoRank);
  farthest_.assign(index_.Size(), DocumentIndex::kNoRank);
  depth_.assign(index_.Size(), 0);
  for (std::uint32_t rank = 0; rank < index_.Size(); ++rank) {
    const std::uint32_t parent = index_.ParentOf(rank);
    if (parent == DocumentIndex::kNoRank) continue;
    nearest_[rank] = passes_.Contains(parent) ? parent : nearest_[parent];
    farthest_[rank] = passes_.Contains(parent) && depth_[parent] == 0 ? parent : farthest_[parent];
    depth_[rank] = depth_[parent] + (passes_.Contains(parent) ? 1 : 0);
  }
}

// The first place in a part of the list whose rank is not below `rank`.
std::uint32_t Candidates::PlaceOf(std::uint32_t rank, std::uint32_t from, std::uint32_t to) const {
  const auto found = std::lower_bound(list_.begin() + from, list_.begin() + to, rank);
  return static_cast<std::uint32_t>(found - list_.begin());
}

void Candidates::Select(std::uint32_t context) {
  context_ = context;
  if (IsChain()) {
    count_ = depth_[context_] + (axis_ == Axis::kAncestorOrSelf && passes_.Contains(context_) ? 1 : 0);
    return;
  }
  SelectStretch();
  count_ = std::int64_t{end_} - begin_ - (axis_ == Axis::kPreceding ? depth_[context_] : 0);
}

void Candidates::SelectStretch() {
  const auto size = static_cast<std::uint32_t>(list_.size());
  const std::uint32_t root = index_.RootOf(context_);
  const std::uint32_t parent = index_.ParentOf(context_);
  begin_ = end_ = 0;
  switch (axis_) {
    case Axis::kDescendant:
    case Axis::kDescendantOrSelf:
      begin_ = PlaceOf(context_ + (axis_ == Axis::kDescendant ? 1 : 0), 0, size);
      end_ = PlaceOf(index_.EndOf(context_), begin_, size);
      return;
    case Axis::kFollowing:
      begin_ = PlaceOf(index_.EndOf(context_), 0, size);
      end_ = PlaceOf(index_.EndOf(root), begin_, size);
      return;
    case Axis::kPreceding:
      begin_ = PlaceOf(root, 0, size);
      end_ = PlaceOf(context_, begin_, size);
      return;
    default:
      break;
  }
  if (parent == DocumentIndex::kNoRank) return;
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
  const bool has_self = axis_ == Axis::kAncestorOrSelf && passes_.Contains(context_);
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

std::uint32_t Candidates::Next() {
  if (left_ <= 0) return DocumentIndex::kNoRank;
  if (IsChain()) {
    given_ = slot_;
    slot_ = nearest_[slot_];
    --left_;
    return given_;
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
    return DocumentIndex::kNoRank;
  }
  given_ = slot_;
  slot_ = IsBackward() ? slot_ - 1 : slot_ + 1;
  return list_[given_ - 1];
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
