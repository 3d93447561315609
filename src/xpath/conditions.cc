#include "xpath/conditions.h"

#include <algorithm>

namespace qelm::xpath {
namespace {

using Ranks = std::span<const std::uint32_t>;
constexpr std::uint32_t kNoRank = DocumentIndex::kNoRank;

// Inserts everything above the targets. What is in the set for itself is climbed on from when its turn comes.
void InsertAncestors(const DocumentIndex& index, Ranks targets, RankSet* set) {
  for (const std::uint32_t target : targets) {
    std::uint32_t above = index.ParentOf(target);
    while (above != kNoRank && set->Add(above)) above = index.ParentOf(above);
  }
}

// A target inside another adds nothing.
void InsertInside(const DocumentIndex& index, Ranks targets, bool with_self, RankSet* set) {
  std::uint32_t covered = 0;
  for (const std::uint32_t target : targets) {
    if (with_self) set->Insert(target);
    if (target < covered) continue;
    covered = index.EndOf(target);
    set->InsertRange(target + 1, covered);
  }
}

// From the last target backwards, so that a target's own siblings before it are in the set when one before it
// is reached.
void InsertBefore(DocumentIndex& index, Ranks targets, RankSet* set) {
  const RankList& previous = index.Previous();
  for (auto target = targets.rbegin(); target != targets.rend(); ++target) {
    std::uint32_t before = previous[*target];
    while (before != kNoRank && set->Add(before)) before = previous[before];
  }
}

void InsertBehind(const DocumentIndex& index, Ranks targets, RankSet* set) {
  for (const std::uint32_t target : targets) {
    std::uint32_t behind = index.NextOf(target);
    while (behind != kNoRank && set->Add(behind)) behind = index.NextOf(behind);
  }
}

}  // namespace

Condition Condition::LeadsTo(const SetScope& scope, Axis axis, Ranks targets) {
  Condition condition;
  if (targets.empty()) return condition;
  DocumentIndex& index = *scope.index;
  condition.kind_ = Kind::kInSet;
  if (axis == Axis::kFollowing) {
    condition.kind_ = Kind::kEndsBefore;
    condition.bound_ = targets.back();
    return condition;
  }
  if (axis == Axis::kPreceding) {
    condition.kind_ = Kind::kFrom;
    condition.bound_ = kNoRank;
    for (const std::uint32_t target : targets) {
      condition.bound_ = std::min(condition.bound_, index.EndOf(target));
    }
    return condition;
  }
  RankSet& set = condition.set_ = RankSet(index.Size());
  const auto insert_targets = [&] {
    for (const std::uint32_t target : targets) set.Insert(target);
  };
  switch (axis) {
    case Axis::kSelf:
      insert_targets();
      break;
    case Axis::kChild:
      for (const std::uint32_t target : targets) {
        if (index.ParentOf(target) != kNoRank) set.Insert(index.ParentOf(target));
      }
      break;
    case Axis::kParent:
      condition.kind_ = Kind::kParentInSet;
      insert_targets();
      break;
    case Axis::kDescendant:
      InsertAncestors(index, targets, &set);
      break;
    case Axis::kDescendantOrSelf:
      InsertAncestors(index, targets, &set);
      insert_targets();
      break;
    case Axis::kAncestor:
    case Axis::kAncestorOrSelf:
      InsertInside(index, targets, axis == Axis::kAncestorOrSelf, &set);
      break;
    case Axis::kFollowingSibling:
      InsertBefore(index, targets, &set);
      break;
    case Axis::kPrecedingSibling:
      InsertBehind(index, targets, &set);
      break;
    default:
      break;
  }
  return condition;
}

}  // namespace qelm::xpath
