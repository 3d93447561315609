// The flows of a document over which a scheme runs, and what elements of them are called.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "host/interface/host.h"
#include "schemes/scheme.h"

namespace qelm::schemes {

struct FlowRoot {
  host::Id flow = host::kNone;
  host::Id root = host::kNone;  // the highest-level element, 0 where there is none
};

// The flows in the host's order: all of them where the scheme says so, else the main flow.
std::vector<FlowRoot> FlowsOf(host::Host& host, const Scheme& scheme, host::Id document);
std::vector<FlowRoot> AllFlows(host::Host& host, host::Id document);
// The main flow alone.
FlowRoot MainFlow(host::Host& host, host::Id document);

// Whether the element is a text node: its definition has no name, or it has no definition.
bool IsTextNode(host::Host& host, host::Id document, host::Id element);

// The same by definition, for walks: the name of each is hardly asked for twice.
class TextNodes {
 public:
  TextNodes(host::Definitions& definitions, host::Id document)
      : definitions_(definitions), document_(document) {}

  // Whether elements of the definition are text nodes.
  bool Has(host::Id definition);

 private:
  struct Known {
    host::Id definition = host::kNone;
    bool is_text = false;
  };

  host::Definitions& definitions_;
  host::Id document_;
  std::array<Known, 64> known_;  // there are few, and the same ones come again
};

// The tag of an element; empty for a text node.
std::string ElementTag(host::Host& host, host::Id document, host::Id element);

}  // namespace qelm::schemes
