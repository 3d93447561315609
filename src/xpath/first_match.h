// The first node that a path selects from a context, for predicates. The answer is remembered for every
// element on the way, as a function of the element alone, so that asking for each element of a document costs
// one walk over it, whatever the axes: the first of the nodes following an element, for instance, lies in its
// next sibling's subtree, or is the first of those following that sibling.
//
// Only for paths that stay in the tree of their context.
#pragma once

#include <vector>

#include "xpath/comparison.h"
#include "xpath/steps.h"

namespace qelm::xpath {

// Asks of the nodes that a path selects to have a value that stands in the relation to a value of the other
// operand.
struct ValueFilter {
  Test test = Test::kEqual;
  ValueSet* other = nullptr;
  bool other_is_left = false;
};

class FirstMatch {
 public:
  // `filter` (other: null for none) is kept; what it points to must live as long.
  FirstMatch(Evaluation& evaluation, const PathPlan& path, const ValueFilter& filter);

  // The node, element 0 when there is none. The context is an element.
  Node Find(const Node& context);

 private:
  // What is known of elements, for one step: the element of the final node, kNowhere, or 0 where it is not
  // known.
  struct Known {
    IdMap passing;  // when the element itself is the node of the step
    IdMap inside;   // when it is looked for inside the element
    IdMap from;     // when the element is the context
    std::vector<host::Id> trail;
  };
  static constexpr host::Id kNowhere = 0xFFFFFFFFU;

  host::Id From(std::size_t step, host::Id context);
  host::Id Walk(std::size_t step, host::Id context);
  host::Id Passing(std::size_t step, host::Id element);
  host::Id Inside(std::size_t step, host::Id top);
  host::Id InsideBackward(std::size_t step, host::Id top);
  host::Id Found(std::size_t step, host::Id element, host::Id top, host::Id found);
  host::Id Continue(std::size_t step, const Node& node);
  bool HasPart(host::Id element, Node* node);
  template <typename Move>
  host::Id Chain(std::size_t step, host::Id context, Move&& move);
  bool Go(WalkGuard* guard);

  Evaluation& evaluation_;
  Environment& environment_;
  const PathPlan& path_;
  ValueFilter filter_;
  bool ends_in_part_;
  std::vector<StepRun> runs_;
  std::vector<Known> known_;
  Tree* tree_ = nullptr;
  std::uint32_t tree_number_ = 0;
};

}  // namespace qelm::xpath
