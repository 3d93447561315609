#include "messages/element_places.h"

#include <limits>

namespace qelm::messages {
namespace {

constexpr std::uint32_t kUnknown = std::numeric_limits<std::uint32_t>::max();

// The node after `node` in document order, up to the end of the tree.
host::Id Following(host::Elements& elements, host::Id document, host::Id node) {
  if (const host::Id child = elements.FirstChild(document, node)) return child;
  while (node != host::kNone) {
    if (const host::Id next = elements.NextSibling(document, node)) return next;
    node = elements.Parent(document, node);
  }
  return host::kNone;
}

}  // namespace

std::uint32_t ElementPlaces::Number(host::Id element) {
  if (host_.elements.Definition(document_, element) == host::kNone) {
    element = host_.elements.Parent(document_, element);
  }
  if (numbers_.empty()) numbers_.assign(host_.elements.IdLimit(document_), kUnknown);
  if (numbers_[element] == kUnknown) {
    host::Id root = element;
    while (const host::Id parent = host_.elements.Parent(document_, root)) root = parent;
    NumberTree(root);
  }
  return numbers_[element];
}

void ElementPlaces::AppendPath(host::Id element, std::string* path, std::size_t max_steps) {
  if (ordinals_.empty()) ordinals_.assign(host_.elements.IdLimit(document_), 0);
  std::vector<host::Id> line;
  for (; element != host::kNone && line.size() < max_steps;
       element = host_.elements.Parent(document_, element)) {
    line.push_back(element);
  }
  if (element != host::kNone) *path += "...";
  for (auto node = line.rbegin(); node != line.rend(); ++node) {
    const host::Id definition = host_.elements.Definition(document_, *node);
    *path += '/';
    if (definition == host::kNone) {
      *path += "text()";
    } else {
      *path += host_.definitions.DefinitionName(document_, definition);
    }
    *path += '[' + std::to_string(Ordinal(*node)) + ']';
  }
}

host::Id ElementPlaces::DefaultFlow() {
  host::Elements& elements = host_.elements;
  for (host::Id flow = elements.FirstFlow(document_); flow != 0; flow = elements.NextFlow(document_, flow)) {
    if (elements.FlowName(document_, flow) == "Main") return flow;
  }
  return elements.MainFlow(document_);
}

host::Id ElementPlaces::ByNumber(std::uint32_t number) {
  host::Id node = host_.elements.Root(document_, DefaultFlow());
  for (; node != host::kNone; node = Following(host_.elements, document_, node)) {
    if (host_.elements.Definition(document_, node) == host::kNone) continue;
    if (number == 0) return node;
    --number;
  }
  return host::kNone;
}

std::uint32_t ElementPlaces::Ordinal(host::Id element) {
  if (ordinals_[element] != 0) return ordinals_[element];
  const host::Id parent = host_.elements.Parent(document_, element);
  if (parent == host::kNone) return ordinals_[element] = 1;
  PlaceChildren(parent);
  return ordinals_[element];
}

void ElementPlaces::NumberTree(host::Id root) {
  std::uint32_t number = 0;
  for (host::Id node = root; node != host::kNone; node = Following(host_.elements, document_, node)) {
    if (host_.elements.Definition(document_, node) != host::kNone) numbers_[node] = number++;
  }
}

// All children of one parent are counted before those of the next, so that the counts need no emptying.
void ElementPlaces::PlaceChildren(host::Id parent) {
  host::Elements& elements = host_.elements;
  for (host::Id child = elements.FirstChild(document_, parent); child != host::kNone;
       child = elements.NextSibling(document_, child)) {
    Count& count = counts_[elements.Definition(document_, child)];
    if (count.parent != parent) count = {parent, 0};
    ordinals_[child] = ++count.children;
  }
}

}  // namespace qelm::messages
