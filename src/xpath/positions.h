// Which positions of a step's nodes its predicates on position() and last() leave.
#pragma once

#include <cstdint>
#include <span>

#include "xpath/plan.h"
#include "xpath/set_axes.h"

namespace qelm::xpath {

// Positions from 1, both included; none where `last` is below `first`.
struct PositionRange {
  std::int64_t first = 1;
  std::int64_t last = 0;
};

// The positions that all bounds of the step leave among `count` nodes. `count` need not be known where the
// step does not use last().
PositionRange PositionsOf(const StepPlan& step, std::int64_t count);

// Whether a step that asks for positions asks by bounds alone, so that its other predicates can be evaluated
// afterwards.
inline bool HasOnlyBounds(const StepPlan& step) { return step.positional && !step.rest_positional; }

// Appends the elements at the positions that the step's bounds leave, each once, in the order in which they
// are first found: for every context by itself, or from the point above the scope's root. The axis is one of
// IsElementAxis.
void FollowToPositions(const SetScope& scope, const StepPlan& step, const ElementTest& passes,
                       std::span<const std::uint32_t> contexts, RankList* found);
void FollowToPositionsFromTop(const SetScope& scope, const StepPlan& step, const ElementTest& passes,
                              RankList* found);

}  // namespace qelm::xpath
