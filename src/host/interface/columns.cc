// Reading several answers, columns and walks one by one, for hosts that have no faster way.
#include "host/interface/elements.h"

namespace qelm::host {
namespace {

// The node behind `node` in document order inside `root`, with its depth; 0 behind the last one.
Id NodeBehind(Elements* elements, Id document, Id root, Id node, std::uint32_t* depth) {
  if (const Id child = elements->FirstChild(document, node)) {
    ++*depth;
    return child;
  }
  while (node != root && node != kNone) {
    if (const Id next = elements->NextSibling(document, node)) return next;
    node = elements->Parent(document, node);
    --*depth;
  }
  return kNone;
}

}  // namespace

std::uint64_t Elements::Revision(Id) { return 0; }

ElementAround Elements::Around(Id document, Id element) {
  return {Parent(document, element), FirstChild(document, element), NextSibling(document, element),
          Definition(document, element)};
}

bool Elements::ReadTree(Id document, Id root, ElementColumns* columns) {
  const std::size_t before = columns->elements.size();
  const std::size_t limit = before + IdLimit(document);
  std::uint32_t parent = ElementColumns::kNoPlace;
  for (Id element = root; element != kNone;) {
    const auto place = static_cast<std::uint32_t>(columns->elements.size());
    if (place >= limit) {
      columns->Resize(before);
      return false;
    }
    columns->elements.push_back(element);
    columns->definitions.push_back(Definition(document, element));
    columns->parents.push_back(parent);
    columns->ends.push_back(place + 1);
    if (const Id child = FirstChild(document, element)) {
      parent = place;
      element = child;
      continue;
    }
    Id next = element == root ? kNone : NextSibling(document, element);
    while (next == kNone && parent != ElementColumns::kNoPlace) {
      columns->ends[parent] = static_cast<std::uint32_t>(columns->elements.size());
      const Id above = columns->elements[parent];
      if (above != root) next = NextSibling(document, above);
      parent = columns->parents[parent];
    }
    element = next;
  }
  return true;
}

std::size_t Elements::ReadNodes(Id document, Id root, const WalkedNode& last, std::span<WalkedNode> nodes) {
  WalkedNode at = last;
  for (std::size_t count = 0; count < nodes.size(); ++count) {
    at.element = at.element == kNone ? root : NodeBehind(this, document, root, at.element, &at.depth);
    if (at.element == kNone) return count;
    at.definition = Definition(document, at.element);
    at.kind = Kind(document, at.element);
    at.may_have_attributes = at.definition != kNone;
    nodes[count] = at;
  }
  return nodes.size();
}

bool Elements::ReadTexts(Id, std::span<const Id>, TextColumn*) { return false; }

void Definitions::ReadAttributeColumn(Id document, std::span<const Id> elements, std::string_view name,
                                      AttributeColumn* column) {
  column->Clear();
  AttributeBuffer buffer;
  for (std::size_t place = 0; place < elements.size(); ++place) {
    ReadAttributes(document, elements[place], &buffer);
    for (std::size_t index = 0; index < buffer.attributes.size(); ++index) {
      const AttributeView& attribute = buffer.attributes[index];
      if (attribute.name != name) continue;
      column->entries.push_back({static_cast<std::uint32_t>(place), static_cast<std::uint32_t>(index),
                                 static_cast<std::uint32_t>(column->values.size()), attribute.value_count});
      const auto first = buffer.values.begin() + attribute.first_value;
      column->values.insert(column->values.end(), first, first + attribute.value_count);
    }
  }
}

}  // namespace qelm::host
