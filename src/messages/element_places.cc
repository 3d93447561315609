#include "messages/element_places.h"

#include <algorithm>
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

// What is kept of an element. Documents grow, so that there may be none for a new one yet.
std::uint32_t& Of(std::vector<std::uint32_t>* kept, host::Id element, std::uint32_t unknown) {
  if (element >= kept->size()) kept->resize(std::size_t{element} + 1, unknown);
  return (*kept)[element];
}

}  // namespace

std::uint32_t ElementPlaces::Number(host::Id element) {
  if (host_.elements.Definition(document_, element) == host::kNone) {
    element = host_.elements.Parent(document_, element);
  }
  if (numbers_.empty()) numbers_.assign(host_.elements.IdLimit(document_), kUnknown);
  if (Of(&numbers_, element, kUnknown) == kUnknown) {
    host::Id root = element;
    while (const host::Id parent = host_.elements.Parent(document_, root)) root = parent;
    NumberTree(root);
  }
  return numbers_[element];
}

void ElementPlaces::AppendPath(host::Id element, std::string* path, std::size_t max_steps) {
  line_.clear();
  for (; element != host::kNone && line_.size() < max_steps;
       element = host_.elements.Parent(document_, element)) {
    line_.push_back(element);
  }
  std::size_t same = 0;
  const std::size_t most = std::min(steps_.size(), line_.size());
  while (same < most && steps_[same].element == line_[line_.size() - 1 - same]) ++same;
  steps_.resize(same);
  text_.resize(same == 0 ? 0 : steps_.back().end);
  for (std::size_t i = line_.size() - same; i-- > 0;) AppendStep(line_[i]);
  if (element != host::kNone) *path += "...";
  *path += text_;
}

void ElementPlaces::AppendStep(host::Id element) {
  const host::Id definition = host_.elements.Definition(document_, element);
  text_ += '/';
  if (definition == host::kNone) {
    text_ += "text()";
  } else {
    text_ += host_.definitions.DefinitionName(document_, definition);
  }
  text_.append("[").append(std::to_string(Ordinal(element))).append("]");
  steps_.push_back({element, text_.size()});
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
  if (ordinals_.empty()) ordinals_.assign(host_.elements.IdLimit(document_), 0);
  if (const std::uint32_t known = Of(&ordinals_, element, 0); known != 0) return known;
  const host::Id parent = host_.elements.Parent(document_, element);
  if (parent == host::kNone) return ordinals_[element] = 1;
  PlaceChildren(parent);
  return ordinals_[element];
}

void ElementPlaces::NumberTree(host::Id root) {
  std::uint32_t number = 0;
  for (host::Id node = root; node != host::kNone; node = Following(host_.elements, document_, node)) {
    if (host_.elements.Definition(document_, node) != host::kNone) {
      Of(&numbers_, node, kUnknown) = number++;
    }
  }
}

// All children of one parent are counted before those of the next, so that the counts need no emptying.
void ElementPlaces::PlaceChildren(host::Id parent) {
  host::Elements& elements = host_.elements;
  for (host::Id child = elements.FirstChild(document_, parent); child != host::kNone;
       child = elements.NextSibling(document_, child)) {
    Count& count = counts_[elements.Definition(document_, child)];
    if (count.parent != parent) count = {parent, 0};
    Of(&ordinals_, child, 0) = ++count.children;
  }
}

}  // namespace qelm::messages
