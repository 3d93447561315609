// A document's elements numbered in document order, made when a search has to know positions in long lists.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "xpath/environment.h"
#include "xpath/id_sets.h"

namespace qelm::xpath {

// The elements of all flows of one document. A rank is a place in their order.
class TreeOrder {
 public:
  static constexpr std::uint32_t kNoRank = 0xFFFFFFFFU;

  // Numbers the document. Fails the search when its links run in circles.
  TreeOrder(Environment& environment, Tree& tree);

  std::uint32_t Size() const { return static_cast<std::uint32_t>(elements_.size()); }
  // kNoRank for an element that is in no flow.
  std::uint32_t RankOf(host::Id element) const { return ranks_.Get(element) - 1; }

  host::Id ElementAt(std::uint32_t rank) const { return elements_[rank].element; }
  host::Id DefinitionAt(std::uint32_t rank) const { return elements_[rank].definition; }
  // The rank of the parent; kNoRank for a root element.
  std::uint32_t ParentOf(std::uint32_t rank) const { return elements_[rank].parent; }
  // One more than the last rank inside the element.
  std::uint32_t EndOf(std::uint32_t rank) const { return elements_[rank].end; }
  // The rank of the root element above.
  std::uint32_t RootOf(std::uint32_t rank) const;

 private:
  struct Entry {
    host::Id element;
    host::Id definition;
    std::uint32_t parent;
    std::uint32_t end;
  };
  void AddFlow(Environment& environment, Tree& tree, host::Id root);

  std::vector<Entry> elements_;
  std::vector<std::uint32_t> roots_;
  IdMap ranks_;  // plus 1, so that 0 is none
};

}  // namespace qelm::xpath
