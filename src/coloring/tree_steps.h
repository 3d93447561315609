// Steps of a walk over an element and all that it holds, in document order, without recursion.
#pragma once

#include "host/interface/elements.h"

namespace qelm::coloring {

// The node behind `node` in the tree below `top`, 0 at its end. `leave(element)` is called for each element
// that the walk leaves on the way, innermost first, `node` itself included unless its children follow.
template <typename Leave>
host::Id NextInTree(host::Elements& elements, host::Id document, host::Id top, host::Id node,
                    const Leave& leave) {
  if (const host::Id child = elements.FirstChild(document, node); child != host::kNone) return child;
  for (;;) {
    leave(node);
    if (node == top) return host::kNone;
    if (const host::Id next = elements.NextSibling(document, node); next != host::kNone) return next;
    node = elements.Parent(document, node);
    if (node == host::kNone) return host::kNone;  // the host no longer knows where the element is
  }
}

inline host::Id NextInTree(host::Elements& elements, host::Id document, host::Id top, host::Id node) {
  return NextInTree(elements, document, top, node, [](host::Id) {});
}

}  // namespace qelm::coloring
