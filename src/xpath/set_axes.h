// An axis for many contexts at once: from a list of elements to the list of those that the axis leads to and
// that pass the node test. Nothing is asked of the host: everything is in the columns of the document's
// index.
//
// Each element is given once, in the order in which it is first found when one context is followed after the
// other: the order in which walking gives them. No axis takes longer than the contexts, what is found and the
// way between them once.
#pragma once

#include <span>

#include "xpath/document_index.h"
#include "xpath/plan.h"

namespace qelm::xpath {

// The part of a document in which a search goes on: one flow's tree, the ranks [begin, end).
struct SetScope {
  DocumentIndex* index = nullptr;
  std::uint32_t tree = 0;  // its number in the search
  std::uint32_t begin = 0;
  std::uint32_t end = 0;

  // What lies in the scope, of a rising list.
  std::span<const std::uint32_t> Within(std::span<const std::uint32_t> ranks) const;
};

// The node test of a step in one document.
class ElementTest {
 public:
  ElementTest(const SetScope& scope, NodeTest test, host::Id definition)
      : scope_(scope), test_(test), definition_(definition) {}

  bool operator()(std::uint32_t rank) const {
    const host::Id definition = scope_.index->DefinitionAt(rank);
    switch (test_) {
      case NodeTest::kAny:
        return true;
      case NodeTest::kNamed:
        return definition != host::kNone;
      case NodeTest::kText:
        return definition == host::kNone;
      case NodeTest::kName:
        break;
    }
    return definition == definition_ && definition != host::kNone;
  }
  // All elements of the scope that pass, rising.
  std::span<const std::uint32_t> All() const;

 private:
  const SetScope& scope_;
  NodeTest test_;
  host::Id definition_;
};

// Whether the axis is one of these: it goes from elements to elements of the same tree.
constexpr bool IsElementAxis(Axis axis) { return axis >= Axis::kSelf && axis <= Axis::kFollowingSibling; }

// Appends what the axis leads to from `contexts`, each of which is there once; `rising` says that they are in
// document order.
void FollowAxis(const SetScope& scope, Axis axis, const ElementTest& passes,
                std::span<const std::uint32_t> contexts, bool rising, RankList* found);

}  // namespace qelm::xpath
