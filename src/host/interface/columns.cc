// Reading several answers and columns one by one, for hosts that have no faster way.
#include "host/interface/elements.h"

namespace qelm::host {
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
