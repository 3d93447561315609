// A walk over an element and all that it holds, in document order.
//
//   TreeWalk walk(elements, document, top);
//   while (const host::WalkedNode* node = walk.Next()) ...
//
// The host is asked for some hundred nodes at a time. The text may be edited meanwhile, the tree may not.
#pragma once

#include <array>

#include "host/interface/elements.h"

namespace qelm::coloring {

class TreeWalk {
 public:
  TreeWalk(host::Elements& elements, host::Id document, host::Id top)
      : elements_(elements), document_(document), top_(top) {}

  // The next node, null at the end. It holds until the next call.
  const host::WalkedNode* Next() {
    if (at_ == count_) {
      if (at_ < nodes_.size()) return nullptr;
      count_ = elements_.ReadNodes(document_, top_, last_, nodes_);
      at_ = 0;
      if (count_ == 0) return nullptr;
      last_ = nodes_[count_ - 1];
    }
    return &nodes_[at_++];
  }

 private:
  host::Elements& elements_;
  host::Id document_;
  host::Id top_;
  host::WalkedNode last_;
  std::array<host::WalkedNode, 256> nodes_;
  std::size_t at_ = nodes_.size();
  std::size_t count_ = nodes_.size();
};

}  // namespace qelm::coloring
