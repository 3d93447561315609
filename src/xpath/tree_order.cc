#include "xpath/tree_order.h"

#include <algorithm>

namespace qelm::xpath {

using host::Id;
using host::kNone;

TreeOrder::TreeOrder(Environment& environment, Tree& tree) {
  host::Elements& elements = tree.Elements();
  WalkGuard guard(tree);
  for (Id flow = elements.FirstFlow(tree.Document()); flow != kNone && guard.Step();
       flow = elements.NextFlow(tree.Document(), flow)) {
    const Id root = elements.Root(tree.Document(), flow);
    if (root != kNone && RankOf(root) == kNoRank) AddFlow(environment, tree, root);
  }
}

void TreeOrder::AddFlow(Environment& environment, Tree& tree, Id root) {
  WalkGuard guard(tree);
  roots_.push_back(Size());
  std::uint32_t parent = kNoRank;
  for (Id element = root; element != kNone;) {
    if (!guard.Step()) return environment.Fail(Failure::kEndless);
    const std::uint32_t rank = Size();
    elements_.push_back({element, tree.Definition(element), parent, 0});
    ranks_.Set(element, rank + 1);
    if (const Id child = tree.FirstChild(element)) {
      parent = rank;
      element = child;
      continue;
    }
    elements_[rank].end = Size();
    Id next = element == root ? kNone : tree.NextSibling(element);
    while (next == kNone && parent != kNoRank) {
      elements_[parent].end = Size();
      if (elements_[parent].element != root) next = tree.NextSibling(elements_[parent].element);
      parent = elements_[parent].parent;
    }
    element = next;
  }
}

std::uint32_t TreeOrder::RootOf(std::uint32_t rank) const {
  return *(std::upper_bound(roots_.begin(), roots_.end(), rank) - 1);
}

}  // namespace qelm::xpath
