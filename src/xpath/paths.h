// Where a node is, as a path for people and programs: `/Doc[1]/Section[2]`, a text node `/Doc[1]/text()[3]`,
// an attribute `/Doc[1]/@Audience`. A number counts the siblings of the same name from 1.
#pragma once

#include <string>
#include <vector>

#include "host/interface/elements.h"
#include "xpath/id_sets.h"

namespace qelm::xpath {

// Paths of nodes of one document. Siblings are counted once for all nodes that are asked about, so that the
// paths of a whole match list cost no more than what they write. Not to be used any longer when the document
// was edited.
class NodePaths {
 public:
  NodePaths(host::Elements& elements, host::Definitions& definitions, host::Id document)
      : elements_(elements), definitions_(definitions), document_(document) {}

  std::string PathOf(host::Id element);
  std::string PathOf(host::Id element, std::string_view attribute);

 private:
  std::uint32_t OrdinalOf(host::Id element);
  void CountSiblings(host::Id first);

  host::Elements& elements_;
  host::Definitions& definitions_;
  host::Id document_;
  IdMap ordinals_;
};

// The path of one element.
std::string NodePath(host::Elements& elements, host::Definitions& definitions, host::Id document,
                     host::Id element);

}  // namespace qelm::xpath
