#include "xpath/first_match.h"

#include "xpath/evaluation.h"

namespace qelm::xpath {

using host::Id;
using host::kNone;

FirstMatch::FirstMatch(Evaluation& evaluation, const PathPlan& path, const ValueFilter& filter)
    : evaluation_(evaluation),
      environment_(evaluation.GetEnvironment()),
      path_(path),
      filter_(filter),
      ends_in_part_(path.steps.back().axis == Axis::kAttribute ||
                    path.steps.back().axis == Axis::kFmProperty),
      known_(path.steps.size()) {
  runs_.reserve(path.steps.size());
  for (const StepPlan& step : path.steps) runs_.emplace_back(evaluation, step, false);
}

Node FirstMatch::Find(const Node& context) {
  if (tree_ == nullptr || tree_number_ != context.tree) {
    tree_ = &environment_.TreeOf(context);
    tree_number_ = context.tree;
    known_.clear();
    known_.resize(path_.steps.size());
  }
  Node node{From(0, context.element), Node::kElement, context.tree};
  if (ends_in_part_ && node.element != kNone) HasPart(node.element, &node);
  return node;
}

bool FirstMatch::Go(WalkGuard* guard) {
  if (environment_.Failed()) return false;
  if (guard->Step()) return true;
  environment_.Fail(Failure::kEndless);
  return false;
}

// What a node of a step leads to: itself at the end of the path, if it satisfies the filter.
Id FirstMatch::Continue(std::size_t step, const Node& node) {
  if (step + 1 < path_.steps.size()) return From(step + 1, node.element);
  if (filter_.other == nullptr) return node.element;
  const bool satisfies = environment_.AnyValue(node, [this](std::string_view value) {
    return filter_.other->AnyPair(filter_.test, value, !filter_.other_is_left);
  });
  return satisfies ? node.element : kNone;
}

// The first attribute or property of the element with which the path can end.
bool FirstMatch::HasPart(Id element, Node* node) {
  const std::size_t last = path_.steps.size() - 1;
  *node = {element, Node::kElement, tree_number_};
  if (path_.steps[last].is_attribute) {
    return environment_.FindAttribute(path_.steps[last].name, node) && Continue(last, *node) != kNone;
  }
  runs_[last].Start(*node);
  while (runs_[last].Next(node)) {
    if (Continue(last, *node) != kNone) return true;
  }
  return false;
}

Id FirstMatch::From(std::size_t step, Id context) {
  const StepPlan& plan = path_.steps[step];
  if (plan.axis == Axis::kAttribute || plan.axis == Axis::kFmProperty) {
    Node part;
    return HasPart(context, &part) ? context : kNone;
  }
  if (plan.axis == Axis::kSelf && !plan.positional) return Passing(step, context);
  IdMap& known = known_[step].from;
  if (const Id found = known.Get(context)) return found == kNowhere ? kNone : found;
  const Id found = Walk(step, context);
  known.Set(context, found == kNone ? kNowhere : found);
  return found;
}

Id FirstMatch::Walk(std::size_t step, Id context) {
  if (path_.steps[step].positional) {
    Node node;
    Id found = kNone;
    runs_[step].Start({context, Node::kElement, tree_number_});
    while (found == kNone && runs_[step].Next(&node)) found = Continue(step, node);
    return found;
  }
  Tree& tree = *tree_;
  switch (path_.steps[step].axis) {
    case Axis::kChild: {
      WalkGuard guard(tree);
      Id found = kNone;
      for (Id child = tree.FirstChild(context); child != kNone && found == kNone && Go(&guard);
           child = tree.NextSibling(child)) {
        found = Passing(step, child);
      }
      return found;
    }
    case Axis::kParent:
      return Passing(step, tree.Parent(context));
    case Axis::kDescendant:
      return Inside(step, context);
    case Axis::kDescendantOrSelf: {
      const Id found = Passing(step, context);
      return found != kNone ? found : Inside(step, context);
    }
    case Axis::kAncestorOrSelf:
      if (const Id found = Passing(step, context)) return found;
      [[fallthrough]];
    case Axis::kAncestor:
      return Chain(step, context, [&](Id element, Id* found) {
        const Id parent = tree.Parent(element);
        *found = Passing(step, parent);
        return parent;
      });
    case Axis::kFollowingSibling:
    case Axis::kPrecedingSibling:
      return Chain(step, context, [&](Id element, Id* found) {
        const bool forward = path_.steps[step].axis == Axis::kFollowingSibling;
        const Id sibling = forward ? tree.NextSibling(element) : tree.PreviousSibling(element);
        *found = Passing(step, sibling);
        return sibling;
      });
    case Axis::kFollowing:
      return Chain(step, context, [&](Id element, Id* found) {
        const Id sibling = tree.NextSibling(element);
        if (sibling == kNone) return tree.Parent(element);
        *found = Passing(step, sibling);
        if (*found == kNone) *found = Inside(step, sibling);
        return sibling;
      });
    case Axis::kPreceding:
      return Chain(step, context, [&](Id element, Id* found) {
        const Id sibling = tree.PreviousSibling(element);
        if (sibling == kNone) return tree.Parent(element);
        *found = InsideBackward(step, sibling);
        if (*found == kNone) *found = Passing(step, sibling);
        return sibling;
      });
    default:
      return kNone;
  }
}

// Goes from element to element until `move` finds something or there is nowhere to go, and remembers for all
// elements on the way what was found: what one leads to, those before it lead to as well.
template <typename Move>
Id FirstMatch::Chain(std::size_t step, Id context, Move&& move) {
  IdMap& known = known_[step].from;
  std::vector<Id>& trail = known_[step].trail;
  trail.clear();
  WalkGuard guard(*tree_);
  Id found = kNone;
  for (Id element = context; element != kNone && found == kNone && Go(&guard);) {
    if (const Id before = known.Get(element)) {
      found = before == kNowhere ? kNone : before;
      break;
    }
    trail.push_back(element);
    element = move(element, &found);
  }
  for (const Id element : trail) known.Set(element, found == kNone ? kNowhere : found);
  return found;
}

Id FirstMatch::Passing(std::size_t step, Id element) {
  const StepPlan& plan = path_.steps[step];
  if (element == kNone || !tree_->Passes(plan, element)) return kNone;
  IdMap& known = known_[step].passing;
  if (const Id found = known.Get(element)) return found == kNowhere ? kNone : found;
  const Node node{element, Node::kElement, tree_number_};
  const Id found = evaluation_.Holds(plan, node, 0, 0) ? Continue(step, node) : kNone;
  known.Set(element, found == kNone ? kNowhere : found);
  return found;
}

// Remembers what was found inside `element` and inside the elements around it up to `top`.
Id FirstMatch::Found(std::size_t step, Id element, Id top, Id found) {
  WalkGuard guard(*tree_);
  for (; element != kNone && Go(&guard); element = tree_->Parent(element)) {
    known_[step].inside.Set(element, found);
    if (element == top) break;
  }
  return found;
}

// Looks through what is inside `top` in document order.
Id FirstMatch::Inside(std::size_t step, Id top) {
  IdMap& known = known_[step].inside;
  if (const Id found = known.Get(top)) return found == kNowhere ? kNone : found;
  WalkGuard guard(*tree_);
  Id around = top;
  Id child = tree_->FirstChild(top);
  while (Go(&guard)) {
    if (child == kNone) {
      known.Set(around, kNowhere);
      if (around == top) return kNone;
      child = tree_->NextSibling(around);
      around = tree_->Parent(around);
      continue;
    }
    if (const Id found = Passing(step, child)) return Found(step, around, top, found);
    const Id inside = known.Get(child);
    if (inside == 0) {
      around = child;
      child = tree_->FirstChild(child);
    } else if (inside == kNowhere) {
      child = tree_->NextSibling(child);
    } else {
      return Found(step, around, top, inside);
    }
  }
  return kNone;
}

// The same from the end: what is inside an element comes before the element itself.
Id FirstMatch::InsideBackward(std::size_t step, Id top) {
  IdMap& known = known_[step].inside;
  if (const Id found = known.Get(top)) return found == kNowhere ? kNone : found;
  WalkGuard guard(*tree_);
  Id around = top;
  Id child = tree_->LastChild(top);
  while (Go(&guard)) {
    if (child == kNone) {
      known.Set(around, kNowhere);
      if (around == top) return kNone;
      child = around;
      around = tree_->Parent(around);
    } else if (const Id inside = known.Get(child); inside == 0) {
      around = child;
      child = tree_->LastChild(child);
      continue;
    } else if (inside != kNowhere) {
      return Found(step, around, top, inside);
    }
    if (const Id found = Passing(step, child)) return Found(step, around, top, found);
    child = tree_->PreviousSibling(child);
  }
  return kNone;
}

}  // namespace qelm::xpath
