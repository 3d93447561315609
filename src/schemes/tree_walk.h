// A walk over an element and all that it holds, in document order.
//
//   TreeWalk walk(elements, document, top);
//   while (const host::WalkedNode* node = walk.Next()) ...
//
// The host is asked for some hundred nodes at a time. The text may be edited meanwhile. Of the tree, elements
// that the walk has come to may go with all that goes with them, when the walk is then sent behind one that
// is left (GoOnBehind).
#pragma once

#include <array>

#include "host/interface/elements.h"

namespace qelm::schemes {

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

  // The node that Next gave last comes once more.
  void Back() { --at_; }

  // What comes next is the node behind this element, which must not stand before those that came already.
  // Returns the depth from which those of the nodes that follow are counted: where the walk has not read as
  // far as the element, that begins anew.
  std::uint32_t GoOnBehind(host::Id element) {
    while (at_ < count_) {
      const host::WalkedNode& node = nodes_[at_++];
      if (node.element == element) return node.depth;
    }
    last_ = {};
    last_.element = element;
    last_.depth = kSomeDepth;
    at_ = count_ = nodes_.size();
    return kSomeDepth;
  }

 private:
  static constexpr std::uint32_t kSomeDepth = 1U << 30U;  // with room above

  host::Elements& elements_;
  host::Id document_;
  host::Id top_;
  host::WalkedNode last_;
  std::array<host::WalkedNode, 256> nodes_;
  std::size_t at_ = nodes_.size();
  std::size_t count_ = nodes_.size();
};

}  // namespace qelm::schemes
