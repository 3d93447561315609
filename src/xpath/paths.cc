#include "xpath/paths.h"

#include <algorithm>
#include <unordered_map>

namespace qelm::xpath {

using host::Id;
using host::kNone;

std::string NodePaths::PathOf(Id element) {
  std::vector<Id> line;
  for (; element != kNone; element = elements_.Parent(document_, element)) line.push_back(element);
  std::string path;
  std::for_each(line.rbegin(), line.rend(), [&](Id node) {
    const Id definition = elements_.Definition(document_, node);
    path.append("/");
    path.append(definition == kNone ? "text()" : definitions_.DefinitionName(document_, definition));
    path.append("[").append(std::to_string(OrdinalOf(node))).append("]");
  });
  return path;
}

std::string NodePaths::PathOf(Id element, std::string_view attribute) {
  return PathOf(element).append("/@").append(attribute);
}

std::uint32_t NodePaths::OrdinalOf(Id element) {
  if (ordinals_.Get(element) == 0) {
    const Id parent = elements_.Parent(document_, element);
    CountSiblings(parent == kNone ? element : elements_.FirstChild(document_, parent));
  }
  return ordinals_.Get(element);
}

void NodePaths::CountSiblings(Id first) {
  std::unordered_map<Id, std::uint32_t> counts;
  for (Id sibling = first; sibling != kNone; sibling = elements_.NextSibling(document_, sibling)) {
    ordinals_.Set(sibling, ++counts[elements_.Definition(document_, sibling)]);
  }
}

std::string NodePath(host::Elements& elements, host::Definitions& definitions, Id document, Id element) {
  return NodePaths(elements, definitions, document).PathOf(element);
}

}  // namespace qelm::xpath
