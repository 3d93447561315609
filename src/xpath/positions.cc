#include "xpath/positions.h"

#include <algorithm>
#include <limits>

#include "xpath/candidates.h"

namespace qelm::xpath {
namespace {

using Ranks = std::span<const std::uint32_t>;

// Appends what the range leaves of a list.
void Cut(const StepPlan& step, Ranks list, RankList* found) {
  const auto count = static_cast<std::int64_t>(list.size());
  const PositionRange range = PositionsOf(step, count);
  const std::int64_t first = std::max<std::int64_t>(range.first, 1);
  const std::int64_t last = std::min(range.last, count);
  if (first <= last) found->insert(found->end(), list.begin() + (first - 1), list.begin() + last);
}

// No child has two parents, so none is found twice. Where last() does not matter, the children behind the
// last position are not looked at.
void Children(const DocumentIndex& index, const StepPlan& step, const ElementTest& passes, Ranks contexts,
              RankList* found) {
  RankList children;
  const std::int64_t most =
      step.uses_last ? std::numeric_limits<std::int64_t>::max() : PositionsOf(step, 0).last;
  for (const std::uint32_t context : contexts) {
    children.clear();
    const std::uint32_t end = index.EndOf(context);
    for (std::uint32_t child = context + 1; child < end && static_cast<std::int64_t>(children.size()) < most;
         child = index.EndOf(child)) {
      if (passes(child)) children.push_back(child);
    }
    Cut(step, children, found);
  }
}

// Self and parent lead to one element at most.
void AtMostOne(const SetScope& scope, const StepPlan& step, const ElementTest& passes, Ranks contexts,
               RankList* found) {
  const PositionRange range = PositionsOf(step, 1);
  if (range.first > 1 || range.last < 1) return;
  FollowAxis(scope, step.axis, passes, contexts, false, found);
}

void FromLists(const SetScope& scope, const StepPlan& step, const ElementTest& passes, Ranks contexts,
               RankList* found) {
  DocumentIndex& index = *scope.index;
  Candidates candidates(index, passes.All(), step.axis);
  RankSet seen(index.Size());
  for (const std::uint32_t context : contexts) {
    candidates.Select(context);
    const PositionRange range = PositionsOf(step, candidates.Count());
    candidates.Seek(range.first, range.last);
    for (std::uint32_t rank = candidates.Next(); rank != DocumentIndex::kNoRank; rank = candidates.Next()) {
      candidates.Drop();
      if (seen.Add(rank)) {
        found->push_back(rank);
      } else if (candidates.IsChain() && range.last >= candidates.Count()) {
        // The whole rest of the way up was found when this one was.
        break;
      }
    }
  }
}

}  // namespace

PositionRange PositionsOf(const StepPlan& step, std::int64_t count) {
  constexpr std::int64_t kAny = std::numeric_limits<std::int64_t>::max();
  PositionRange range{1, kAny};
  for (const PositionBound& bound : step.bounds) {
    const std::int64_t number = bound.against_last ? count : bound.number;
    if (bound.side == PositionBound::Side::kLast) {
      if (!CompareIntegers(bound.test, count, number)) range.last = 0;
      continue;
    }
    const bool is_equal = bound.test == Test::kEqual;
    if (is_equal || bound.test == Test::kGreaterOrEqual) range.first = std::max(range.first, number);
    if (is_equal || bound.test == Test::kLessOrEqual) range.last = std::min(range.last, number);
    if (bound.test == Test::kGreater) range.first = std::max(range.first, number == kAny ? kAny : number + 1);
    if (bound.test == Test::kLess) range.last = std::min(range.last, std::max<std::int64_t>(number, 1) - 1);
  }
  return range;
}

void FollowToPositions(const SetScope& scope, const StepPlan& step, const ElementTest& passes, Ranks contexts,
                       RankList* found) {
  switch (step.axis) {
    case Axis::kSelf:
    case Axis::kParent:
      return AtMostOne(scope, step, passes, contexts, found);
    case Axis::kChild:
      return Children(*scope.index, step, passes, contexts, found);
    default:
      return FromLists(scope, step, passes, contexts, found);
  }
}

void FollowToPositionsFromTop(const SetScope& scope, const StepPlan& step, const ElementTest& passes,
                              RankList* found) {
  if (step.axis == Axis::kDescendant || step.axis == Axis::kDescendantOrSelf) {
    Cut(step, passes.All(), found);
  } else if (step.axis == Axis::kChild && passes(scope.begin)) {
    Cut(step, Ranks(&scope.begin, 1), found);
  }
}

}  // namespace qelm::xpath
