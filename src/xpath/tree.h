// The nodes of a search, and one document's element tree as a search walks it: names are resolved to
// definition ids once, after which a node test is a comparison of two integers.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "host/interface/elements.h"
#include "xpath/plan.h"

namespace qelm::xpath {

// An element or text node; an attribute of an element; a property of an element; or the point above a root
// element, where the root step leads.
struct Node {
  static constexpr std::int32_t kElement = -1;
  static constexpr std::int32_t kAboveRoot = -2;
  static constexpr std::int32_t kProperty = -100;

  // The element; of an attribute or property its owner, of the point above it the root element.
  host::Id element = host::kNone;
  // One of the above, kProperty less the property's code, or the index of an attribute.
  std::int32_t part = kElement;
  // Which document of the search.
  std::uint32_t tree = 0;

  bool IsElement() const { return part == kElement; }
  bool IsAboveRoot() const { return part == kAboveRoot; }
  bool IsAttribute() const { return part >= 0; }
  bool IsProperty() const { return part < kProperty; }
  std::int32_t PropertyCode() const { return kProperty - part; }
};

class Tree {
 public:
  Tree(host::Elements& elements, host::Definitions& definitions, host::Id document)
      : elements_(elements), definitions_(definitions), document_(document) {}

  host::Id Document() const { return document_; }
  host::Elements& Elements() { return elements_; }
  host::Id IdLimit() { return elements_.IdLimit(document_); }

  host::Id Parent(host::Id element) { return elements_.Parent(document_, element); }
  host::Id FirstChild(host::Id element) { return elements_.FirstChild(document_, element); }
  host::Id LastChild(host::Id element) { return elements_.LastChild(document_, element); }
  host::Id NextSibling(host::Id element) { return elements_.NextSibling(document_, element); }
  host::Id PreviousSibling(host::Id element) { return elements_.PreviousSibling(document_, element); }
  host::Id Definition(host::Id element) { return elements_.Definition(document_, element); }

  // The highest-level element of the tree in which the element is.
  host::Id RootOf(host::Id element);

  // Whether an element passes the node test of a step.
  bool Passes(const StepPlan& step, host::Id element) {
    return step.test == NodeTest::kAny || PassesDefinition(step, Definition(element));
  }
  // The same for a definition that is known already.
  bool PassesDefinition(const StepPlan& step, host::Id definition) {
    if (step.test == NodeTest::kAny) return true;
    if (step.test == NodeTest::kText || definition == host::kNone) {
      return step.test == NodeTest::kText && definition == host::kNone;
    }
    return step.test == NodeTest::kNamed || definition == DefinitionOf(step);
  }

  // The definition with the name that the step tests for.
  host::Id DefinitionOf(const StepPlan& step) {
    if (step.number < resolved_.size() && resolved_[step.number].known)
      return resolved_[step.number].definition;
    return Resolve(step);
  }

 private:
  struct Resolved {
    bool known = false;
    host::Id definition = host::kNone;
  };

  host::Id Resolve(const StepPlan& step);

  host::Elements& elements_;
  host::Definitions& definitions_;
  host::Id document_;
  std::vector<Resolved> resolved_;
};

// Ends a walk over a tree whose links run in circles. A walk takes a few moves for each element at most.
class WalkGuard {
 public:
  explicit WalkGuard(Tree& tree)
      : left_(kFew + kMovesAnElement * std::uint64_t{tree.IdLimit()}), moves_(left_) {}

  // False when the walk has gone on for too long.
  bool Step() { return --left_ > 0; }
  std::uint64_t Moves() const { return moves_ - left_; }

 private:
  static constexpr std::uint64_t kFew = 1000;
  static constexpr std::uint64_t kMovesAnElement = 8;
  std::uint64_t left_;
  std::uint64_t moves_;
};

}  // namespace qelm::xpath
