// Walking an axis: from a context node to the nodes that the axis leads to and that pass the step's node
// test, one a call, in the axis's order. Forward axes go in document order, reverse axes nearest first.
//
// A walk can be given what earlier walks of the same step have seen. It then leaves out the nodes that they
// found, and does not even pass through them again, so that all walks of a step together visit each element
// once:
//   - descendants: a subtree that was entered is not entered again;
//   - ancestors and siblings: all that lies behind a node that was seen was seen with it;
//   - following: what was seen is everything from some point on, so the walk ends there; likewise the way
//     up from a context ends at the first element that was climbed over before;
//   - preceding: a subtree that was seen was seen with everything before it that is not an ancestor.
// This holds because a walk is always finished before the next one of the step begins.
#pragma once

#include <optional>
#include <vector>

#include "xpath/environment.h"
#include "xpath/id_sets.h"
#include "xpath/plan.h"

namespace qelm::xpath {

// What the walks of one step have seen in one document.
struct Seen {
  IdSet visited;   // found as nodes of the axis
  IdSet expanded;  // entered from above, or climbed over

  void Clear() {
    visited.Clear();
    expanded.Clear();
  }
};

class AxisWalk {
 public:
  AxisWalk(Environment& environment, const StepPlan& step) : environment_(environment), step_(step) {}

  // Begins at a context node. With `seen` (may be null) nodes of earlier walks are left out.
  void Start(const Node& context, Seen* seen);

  // The next node; false when there is none left, or when the search has failed.
  bool Next(Node* node);

  // How many elements the walk has moved over, found or not.
  std::uint64_t Moves() const { return guard_ ? guard_->Moves() : 0; }

 private:
  void StartAboveRoot();
  void StartAtPart();
  void Collect(const Node& node);

  bool NextAttribute(Node* node);
  bool NextProperty(Node* node);
  host::Id Advance();
  host::Id AdvanceUp();
  host::Id AdvanceInside();
  host::Id AdvanceFollowing();
  host::Id AdvancePreceding();
  host::Id PrecedingInside();
  host::Id LastInside(host::Id element);
  host::Id NextAfter(host::Id element, host::Id top, bool remember);

  host::Id From() const { return begun_ ? current_ : context_.element; }
  bool Step() {
    environment_.CountStep();
    if (guard_->Step()) return true;
    environment_.Fail(Failure::kEndless);
    return false;
  }
  bool IsNew(host::Id element) { return seen_ == nullptr || seen_->visited.Insert(element); }
  bool WasVisited(host::Id element) const { return seen_ != nullptr && seen_->visited.Contains(element); }
  bool Expand(host::Id element) { return seen_ == nullptr || seen_->expanded.Insert(element); }

  Environment& environment_;
  const StepPlan& step_;
  Axis axis_ = Axis::kNone;
  Tree* tree_ = nullptr;
  Node context_;
  Seen* seen_ = nullptr;
  std::optional<WalkGuard> guard_;
  bool ended_ = true;
  bool begun_ = false;
  host::Id current_ = host::kNone;  // the element of the axis that was visited last
  host::Id subtree_ = host::kNone;  // preceding: the top of the subtree that is being walked
  host::Id anchor_ = host::kNone;   // preceding: where to look for the next subtree
  std::size_t index_ = 0;
  bool is_collected_ = false;  // where there is no walk: all nodes, found at the start
  std::vector<Node> collected_;
};

}  // namespace qelm::xpath
