#include "schemes/settings_tree.h"

#include "common/text.h"
#include "common/utf8.h"

namespace qelm::schemes {

host::Id SettingsTree::Definition(std::string_view tag) {
  return host_.definitions.FindDefinition(document_, tag);
}

host::Id SettingsTree::Root() {
  host::Elements& elements = host_.elements;
  for (host::Id flow = elements.FirstFlow(document_); flow != host::kNone;
       flow = elements.NextFlow(document_, flow)) {
    if (elements.FlowName(document_, flow) == "Main") return elements.Root(document_, flow);
  }
  return elements.Root(document_, elements.MainFlow(document_));
}

std::string_view SettingsTree::Tag(host::Id element) {
  return host_.definitions.DefinitionName(document_, host_.elements.Definition(document_, element));
}

// The element itself, or the first of its later siblings, that has the definition.
host::Id SettingsTree::SameFrom(host::Id element, host::Id definition) {
  if (definition == host::kNone) return host::kNone;
  while (element != host::kNone && host_.elements.Definition(document_, element) != definition) {
    element = host_.elements.NextSibling(document_, element);
  }
  return element;
}

host::Id SettingsTree::FirstChild(host::Id element, std::string_view tag) {
  return SameFrom(host_.elements.FirstChild(document_, element), Definition(tag));
}

host::Id SettingsTree::NextSibling(host::Id element) {
  return SameFrom(host_.elements.NextSibling(document_, element),
                  host_.elements.Definition(document_, element));
}

host::Id SettingsTree::NextBelow(host::Id top, host::Id after, std::string_view tag) {
  host::Elements& elements = host_.elements;
  const host::Id definition = Definition(tag);
  if (definition == host::kNone || after == host::kNone) return host::kNone;
  host::Id element = after;
  bool enter = elements.Definition(document_, after) != definition || after == top;
  for (;;) {
    host::Id next = enter ? elements.FirstChild(document_, element) : host::kNone;
    while (next == host::kNone && element != top && element != host::kNone) {
      next = elements.NextSibling(document_, element);
      if (next == host::kNone) element = elements.Parent(document_, element);
    }
    if (next == host::kNone) return host::kNone;
    element = next;
    if (elements.Definition(document_, element) == definition) return element;
    enter = true;
  }
}

bool SettingsTree::IsInside(host::Id element, std::string_view tag) {
  const host::Id definition = Definition(tag);
  if (definition == host::kNone) return false;
  for (host::Id around = host_.elements.Parent(document_, element); around != host::kNone;
       around = host_.elements.Parent(document_, around)) {
    if (host_.elements.Definition(document_, around) == definition) return true;
  }
  return false;
}

std::string SettingsTree::Text(host::Id element, std::size_t limit) {
  if (element == host::kNone) return {};
  const std::string_view text = host_.text.ElementText(document_, element, kTextLimit, &buffer_);
  return common::Bounded(common::Trim(text), limit);
}

std::string SettingsTree::TextAt(host::Id element, std::string_view parent, std::string_view child,
                                 std::size_t limit) {
  for (host::Id group = FirstChild(element, parent); group != host::kNone; group = NextSibling(group)) {
    if (const host::Id found = FirstChild(group, child); found != host::kNone) return Text(found, limit);
  }
  return {};
}

bool SettingsTree::SwitchAt(host::Id element, std::string_view parent, std::string_view child) {
  return common::ReadSwitchWord(TextAt(element, parent, child, common::kNameLimit)) ==
         common::SwitchWord::kTrue;
}

}  // namespace qelm::schemes
