#include "xpath/axes.h"

#include "xpath/elsewhere.h"

namespace qelm::xpath {

using host::Id;
using host::kNone;

void AxisWalk::Start(const Node& context, Seen* seen) {
  axis_ = step_.axis;
  context_ = context;
  tree_ = &environment_.TreeOf(context);
  seen_ = seen;
  ended_ = begun_ = is_collected_ = false;
  guard_.reset();
  current_ = subtree_ = kNone;
  anchor_ = context.element;
  index_ = 0;
  collected_.clear();
  // These look at the context alone, often, and need no guard.
  if (axis_ == Axis::kAttribute || axis_ == Axis::kFmProperty) {
    if (!context.IsElement()) is_collected_ = true;
    return;
  }
  guard_.emplace(*tree_);
  if (axis_ == Axis::kRoot) {
    Collect({tree_->RootOf(context.element), Node::kAboveRoot, context.tree});
  } else if (axis_ > Axis::kFmProperty) {
    is_collected_ = true;
    CollectElsewhere(environment_, step_, context, &collected_);
  } else if (context.IsAboveRoot()) {
    StartAboveRoot();
  } else if (!context.IsElement()) {
    StartAtPart();
  }
}

void AxisWalk::Collect(const Node& node) {
  is_collected_ = true;
  if (!node.IsElement() || tree_->Passes(step_, node.element)) collected_.push_back(node);
}

void AxisWalk::StartAboveRoot() {
  const Node root{context_.element, Node::kElement, context_.tree};
  switch (axis_) {
    case Axis::kSelf:
      if (step_.test == NodeTest::kAny) Collect(context_);
      break;
    case Axis::kChild:
      Collect(root);
      break;
    case Axis::kDescendant:
    case Axis::kDescendantOrSelf:
      // The point itself is no element, so both lead to the root element and what is in it.
      axis_ = Axis::kDescendantOrSelf;
      context_ = root;
      return;
    default:
      break;
  }
  is_collected_ = true;
}

// An attribute or property: only the way up leads anywhere.
void AxisWalk::StartAtPart() {
  is_collected_ = true;
  const bool with_self = axis_ == Axis::kSelf || axis_ == Axis::kAncestorOrSelf;
  if (with_self && step_.test == NodeTest::kAny) Collect(context_);
  if (axis_ == Axis::kParent) Collect({context_.element, Node::kElement, context_.tree});
  if (axis_ != Axis::kAncestor && axis_ != Axis::kAncestorOrSelf) return;
  for (Id above = context_.element; above != kNone && Step(); above = tree_->Parent(above)) {
    Collect({above, Node::kElement, context_.tree});
  }
}

bool AxisWalk::Next(Node* node) {
  if (ended_ || environment_.Failed()) return false;
  if (is_collected_) {
    ended_ = index_ >= collected_.size();
    if (!ended_) *node = collected_[index_++];
    return !ended_;
  }
  if (axis_ == Axis::kAttribute) return NextAttribute(node);
  if (axis_ == Axis::kFmProperty) return NextProperty(node);
  while (!ended_ && Step()) {
    const Id element = Advance();
    if (element == kNone) break;
    if (tree_->Passes(step_, element)) {
      *node = {element, Node::kElement, context_.tree};
      return true;
    }
  }
  ended_ = true;
  return false;
}

bool AxisWalk::NextAttribute(Node* node) {
  // Read anew each time: predicates may have read other elements in between.
  const AttributeSource& attributes = environment_.AttributesOf(context_);
  while (index_ < attributes.Count() && step_.test != NodeTest::kText) {
    const std::size_t index = index_++;
    if (step_.test == NodeTest::kName && attributes.Name(index) != step_.name) continue;
    *node = {context_.element, static_cast<std::int32_t>(index), context_.tree};
    return true;
  }
  ended_ = true;
  return false;
}

// An element has a property when that has a value.
bool AxisWalk::NextProperty(Node* node) {
  ended_ = true;
  *node = {context_.element, Node::kProperty - step_.property, context_.tree};
  return !environment_.SingleValue(*node, kComparedCharacters).empty();
}

// The next element of the axis, whatever its name; none at the end.
Id AxisWalk::Advance() {
  switch (axis_) {
    case Axis::kSelf:
      ended_ = true;
      return context_.element;
    case Axis::kChild:
      current_ = begun_ ? tree_->NextSibling(current_) : tree_->FirstChild(context_.element);
      begun_ = true;
      return current_;
    case Axis::kParent:
      ended_ = true;
      current_ = tree_->Parent(context_.element);
      return current_ != kNone && IsNew(current_) ? current_ : kNone;
    case Axis::kAncestor:
    case Axis::kAncestorOrSelf:
      return AdvanceUp();
    case Axis::kFollowingSibling:
    case Axis::kPrecedingSibling:
      current_ =
          axis_ == Axis::kFollowingSibling ? tree_->NextSibling(From()) : tree_->PreviousSibling(From());
      begun_ = true;
      return current_ != kNone && IsNew(current_) ? current_ : kNone;
    case Axis::kDescendant:
    case Axis::kDescendantOrSelf:
      return AdvanceInside();
    case Axis::kFollowing:
      return AdvanceFollowing();
    case Axis::kPreceding:
      return AdvancePreceding();
    default:
      return kNone;
  }
}

Id AxisWalk::AdvanceUp() {
  const bool takes_context = axis_ == Axis::kAncestorOrSelf && !begun_;
  current_ = takes_context ? context_.element : tree_->Parent(From());
  begun_ = true;
  return current_ != kNone && IsNew(current_) ? current_ : kNone;
}

Id AxisWalk::AdvanceInside() {
  if (!begun_) {
    begun_ = true;
    current_ = context_.element;
    if (axis_ == Axis::kDescendantOrSelf && IsNew(current_)) return current_;
  }
  do {
    Id next = Expand(current_) ? tree_->FirstChild(current_) : kNone;
    if (next == kNone) next = NextAfter(current_, context_.element, false);
    if (next == kNone) return kNone;
    current_ = next;
  } while (!IsNew(current_) && Step());
  return current_;
}

Id AxisWalk::AdvanceFollowing() {
  Id next = kNone;
  if (begun_) {
    next = tree_->FirstChild(current_);
    if (next == kNone) next = NextAfter(current_, kNone, false);
  } else {
    begun_ = true;
    next = NextAfter(context_.element, kNone, true);
  }
  current_ = next;
  return next != kNone && IsNew(next) ? next : kNone;
}

// The element that comes next in document order after all that is inside `element`, without leaving `top`.
// With `remember`, a way up that was gone before ends there.
Id AxisWalk::NextAfter(Id element, Id top, bool remember) {
  for (; element != top && element != kNone && Step(); element = tree_->Parent(element)) {
    if (remember && !Expand(element)) return kNone;
    if (const Id next = tree_->NextSibling(element)) return next;
  }
  return kNone;
}

Id AxisWalk::AdvancePreceding() {
  if (subtree_ != kNone) {
    if (const Id inside = PrecedingInside()) return inside;
    anchor_ = subtree_;
    subtree_ = kNone;
  }
  for (; anchor_ != kNone && Step(); anchor_ = tree_->Parent(anchor_)) {
    if (!Expand(anchor_)) return kNone;
    const Id sibling = tree_->PreviousSibling(anchor_);
    if (sibling == kNone) continue;
    if (WasVisited(sibling)) return kNone;
    subtree_ = sibling;
    current_ = LastInside(sibling);
    IsNew(current_);
    return current_;
  }
  return kNone;
}

// The next element of the subtree in reverse document order; none behind its top.
Id AxisWalk::PrecedingInside() {
  if (current_ == subtree_) return kNone;
  const Id sibling = tree_->PreviousSibling(current_);
  current_ = sibling != kNone && !WasVisited(sibling) ? LastInside(sibling) : tree_->Parent(current_);
  if (current_ != kNone) IsNew(current_);
  return current_;
}

// The last element in document order that was not visited, of `element` and what is inside it.
Id AxisWalk::LastInside(Id element) {
  for (Id child = tree_->LastChild(element); child != kNone && !WasVisited(child) && Step();
       child = tree_->LastChild(element)) {
    element = child;
  }
  return element;
}

}  // namespace qelm::xpath
