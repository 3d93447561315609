#include "embedded/model/insert.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "embedded/mif/reader.h"
#include "embedded/model/text_access.h"
#include "embedded/xml/encoding.h"
#include "embedded/xml/names.h"

namespace qelm::embedded::model {
namespace {

bool Refuse(std::string* why, const char* text) {
  *why = text;
  return false;
}

constexpr const char* kNotInEncoding = "the encoding of the file has no way to write the definition's name.";

// Names cannot have references to characters.
bool CanBeWritten(const Document& document, std::string_view name) {
  return document.format != Format::kXml || xml::Holds(xml::DetectEncoding(document.source), name);
}

bool HoldsContent(ElementKind kind) {
  return kind == ElementKind::kContainer || kind == ElementKind::kTableCell ||
         kind == ElementKind::kTableTitle || kind == ElementKind::kFootnote;
}

// The first number above all that the file uses. Numbers are 32 bits wide; a file that has used the highest
// ones gets new objects without a number, which the host gives them when it opens the file.
constexpr std::int64_t kNoNumbers = -1;
std::int64_t FirstFreeNumber(const Document& document) {
  std::int64_t next = 1;
  for (const std::string_view opener : {std::string_view("<Unique "), std::string_view("<DNextUnique ")}) {
    const std::string_view source = document.source;
    for (std::size_t at = source.find(opener); at != std::string_view::npos; at = source.find(opener, at)) {
      at += opener.size();
      std::int64_t number = 0;
      std::from_chars(source.data() + at, source.data() + source.size(), number);
      next = std::max(next, opener.starts_with("<D") ? number : number + 1);
    }
  }
  constexpr std::int64_t kRoom = 1 << 24;
  return next > std::numeric_limits<std::int32_t>::max() - kRoom ? kNoNumbers : next;
}

void FindNumbers(Document* document) {
  if (document->format == Format::kXml || document->next_unique != 0) return;
  document->next_unique = FirstFreeNumber(*document);
}

Id AddNew(Document* document, ElementKind kind, NewContent content) {
  Additions& additions = document->additions;
  const auto id = static_cast<Id>(document->elements.size());
  if (additions.first == 0) additions.first = id;
  Element element{};
  element.kind = kind;
  document->elements.push_back(element);
  additions.contents.push_back(std::move(content));
  document->modified = true;
  return id;
}

// Puts the element into the tree before `before`, or as the last child.
void Link(Document* document, Id id, Id parent, Id before) {
  SharedArray<Element>& elements = document->elements;
  Element& element = elements[id];
  element.parent = parent;
  element.next = before;
  element.previous = before != 0 ? elements[before].previous : elements[parent].last_child;
  if (element.previous != 0) {
    elements[element.previous].next = id;
  } else {
    elements[parent].first_child = id;
  }
  if (before != 0) {
    elements[before].previous = id;
  } else {
    elements[parent].last_child = id;
  }
  Additions& additions = document->additions;
  const bool known = !additions.parents.empty() && additions.parents.back() == parent;
  if (!additions.IsNew(parent) && !known) additions.parents.push_back(parent);
}

// Takes all children out of the tree.
void Empty(Document* document, Id id) {
  SharedArray<Element>& elements = document->elements;
  for (Id child = elements[id].first_child; child != 0;) {
    Element& gone = elements[child];
    child = gone.next;
    gone.deleted = true;
    gone.parent = gone.previous = gone.next = 0;
  }
  elements[id].first_child = elements[id].last_child = 0;
}

bool HasParagraph(const Document& document, std::uint32_t id) {
  const Part& part = document.parts[id];
  for (std::uint32_t i = part.first_item + 1; i < part.end_item; ++i) {
    if (document.items[i].kind == ItemKind::kParagraphBegin) return true;
  }
  return false;
}

// Whether the element's tags are written where they stand. Out of an entity they are not.
bool CanHold(const Document& document, Id id, std::string* why) {
  const Element& element = document.elements[id];
  if (element.deleted || element.definition == 0 || !HoldsContent(element.kind)) {
    return Refuse(why, "only containers, cells, titles and footnotes hold text and elements.");
  }
  if (document.additions.IsNew(id)) return true;
  const Item& item = document.items[element.first_item];
  if (document.format == Format::kXml &&
      xml::AsciiAt(document.source, item.begin, xml::DetectEncoding(document.source)) == '&') {
    return Refuse(why, "the element comes out of an entity, which is not changed.");
  }
  if (document.format != Format::kXml && HasPart(element.kind) &&
      !HasParagraph(document, document.PartOf(element))) {
    return Refuse(why, "the cell, title or footnote has no paragraph that could hold it.");
  }
  if (element.is_virtual && element.first_child == 0) {
    return Refuse(why, "the flow has no element of its own that could hold it.");
  }
  return true;
}

// Whether the place before an item lies within what an entity stands for. Its items have the range of the
// reference, and only before the first of them is a place in the file.
bool InEntity(const Document& document, std::uint32_t index) {
  const Item& item = document.items[index];
  const xml::Encoding encoding = xml::DetectEncoding(document.source);
  const auto comes_out = [&](const Item& one) {
    return xml::AsciiAt(document.source, one.begin, encoding) == '&';
  };
  if (item.kind == ItemKind::kElementEnd &&
      comes_out(document.items[document.elements[item.ref].first_item])) {
    return true;
  }
  while (index > 0 && document.items[index - 1].begin == item.begin) {
    if (document.items[--index].end > item.begin && comes_out(item)) return true;
  }
  return false;
}

// Whether text of the element's own has something anchored in it, or a part of something that begins or ends
// outside. Paragraphs of which only some have a line cannot become one.
bool HasAnchors(const Document& document, const Element& element) {
  int insets = 0;
  int references = 0;
  int paragraphs = 0;
  bool lacks_line = false;
  for (std::uint32_t i = element.first_item + 1; i < element.end_item; ++i) {
    const Item& item = document.items[i];
    if (item.Is(kDeleted)) continue;
    if (item.kind == ItemKind::kInsetBegin) ++insets;
    if (item.kind == ItemKind::kReferenceBegin) ++references;
    if (item.kind == ItemKind::kInsetEnd && --insets < 0) return true;
    if (item.kind == ItemKind::kReferenceEnd && --references < 0) return true;
    if (item.kind == ItemKind::kParagraphEnd) {
      ++paragraphs;
      const Paragraph& paragraph = document.paragraphs[item.ref];
      lacks_line = lacks_line || paragraph.last_line_end == paragraph.close;
    }
    if (item.kind == ItemKind::kTableAnchor || item.kind == ItemKind::kFrameAnchor ||
        item.kind == ItemKind::kNoteAnchor || item.kind == ItemKind::kHiddenPlace || item.Is(kInBlock)) {
      return true;
    }
  }
  return insets != 0 || references != 0 || (paragraphs > 1 && lacks_line);
}

}  // namespace

std::int64_t NextUnique(Document* document) {
  FindNumbers(document);
  if (document->format == Format::kXml) return 0;
  return document->next_unique == kNoNumbers ? 0 : document->next_unique++;
}

Id AnchoredIn(const Document& document, Id element) {
  while (document.additions.IsNew(element)) element = document.elements[element].parent;
  return element;
}

Id InsertElement(Document* document, Id parent, Id before, Id definition, std::string* why) {
  if (!CanHold(*document, parent, why)) return 0;
  if (before != 0 && document->elements[before].parent != parent) {
    return Refuse(why, "the element before which it should stand is no child of the parent."), 0;
  }
  if (!CanBeWritten(*document, document->definitions[definition].name)) return Refuse(why, kNotInEncoding), 0;
  if (document->definitions[definition].kind != ElementKind::kContainer) {
    return Refuse(why, "only containers can be inserted, and the definition is of another kind."), 0;
  }
  NewContent content;
  content.unique = NextUnique(document);
  const Id id = AddNew(document, ElementKind::kContainer, std::move(content));
  document->elements[id].definition = definition;
  Link(document, id, parent, before);
  return id;
}

bool SetElementText(Document* document, Id id, std::string_view text, std::string* why) {
  if (!CanHold(*document, id, why)) return false;
  Additions& additions = document->additions;
  const Element& element = document->elements[id];
  for (Id child = element.first_child; child != 0; child = document->elements[child].next) {
    if (document->elements[child].kind != ElementKind::kText) {
      return Refuse(why, "the element has elements inside, which text cannot replace.");
    }
  }
  if (!additions.IsNew(id)) {
    if (HasAnchors(*document, element)) {
      return Refuse(
          why,
          "the element's text holds hidden text, tables, footnotes or frames, or a part of a text inset or "
          "cross-reference.");
    }
    additions.emptied.push_back(id);
    additions.parents.push_back(id);
  }
  Empty(document, id);
  document->modified = true;
  if (text.empty()) return true;
  NewContent content;
  content.text = text;
  const Id node = AddNew(document, ElementKind::kText, std::move(content));
  Link(document, node, id, 0);
  return true;
}

bool AppendParagraph(Document* document, Id id, NewContent paragraph, std::string* why) {
  if (!CanHold(*document, id, why)) return false;
  FindNumbers(document);
  paragraph.is_paragraph = true;
  const Id node = AddNew(document, ElementKind::kText, std::move(paragraph));
  Link(document, node, id, 0);
  return true;
}

bool InsertAt(Document* document, Insertion insertion, std::string* why) {
  const std::uint32_t limit = static_cast<std::uint32_t>(document->items.size());
  // Text stands in a line, or in XML in an element.
  for (; insertion.item < limit; ++insertion.item) {
    const ItemKind kind = document->items[insertion.item].kind;
    const bool in_text = kind != ItemKind::kParagraphBegin && kind != ItemKind::kLine &&
                         kind != ItemKind::kTextFrame && kind != ItemKind::kPartBegin;
    if (in_text) break;
  }
  if (insertion.item >= limit || document->items[insertion.item].kind == ItemKind::kPartEnd) {
    return Refuse(why, "there is no text at that place.");
  }
  if (document->format == Format::kXml && insertion.item == 0) {
    return Refuse(why, "there is no text before the root element.");
  }
  if (document->format == Format::kXml && InEntity(*document, insertion.item)) {
    return Refuse(why, "the place is inside an entity, which is not changed.");
  }
  FindNumbers(document);
  document->additions.insertions.push_back(std::move(insertion));
  document->modified = true;
  return true;
}

Id DefineElement(Document* document, std::string_view name, std::string_view content_rule,
                 std::string_view paragraph_format, std::string* why) {
  if (name.empty() || (document->format == Format::kXml && !xml::IsName(name))) {
    return Refuse(why, "an element definition needs a name."), 0;
  }
  if (!CanBeWritten(*document, name)) return Refuse(why, kNotInEncoding), 0;
  const Id id = document->InternDefinition(name);
  Definition& definition = document->definitions[id];
  if (definition.declared && definition.kind != ElementKind::kContainer) {
    return Refuse(why, "the element definition exists and is no container's."), 0;
  }
  definition.declared = true;
  definition.content_rule = document->Keep(std::string(content_rule));
  document->additions.definitions.push_back({id, std::string(content_rule), std::string(paragraph_format)});
  document->modified = true;
  return id;
}

bool SetDefinition(Document* document, Id id, Id definition, std::string* why) {
  Element& element = document->elements[id];
  if (element.deleted || element.definition == 0 || element.is_virtual) {
    return Refuse(why, "only elements have a definition.");
  }
  if (document->definitions[definition].kind != document->definitions[element.definition].kind) {
    return Refuse(why, "the definition is of another kind than the element.");
  }
  if (!CanBeWritten(*document, document->definitions[definition].name)) return Refuse(why, kNotInEncoding);
  if (!document->additions.IsNew(id) && !CanHold(*document, id, why) && HoldsContent(element.kind))
    return false;
  why->clear();
  if (element.definition == definition) return true;
  element.definition = definition;
  document->modified = true;
  if (!document->additions.IsNew(id)) document->additions.renamed.push_back(id);
  return true;
}

bool FindParagraph(const Document& document, Id flow_id, std::string_view format, std::uint32_t* begin,
                   std::uint32_t* end) {
  const Flow& flow = document.flows[flow_id];
  std::vector<std::uint32_t> begins;
  for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) {
    const Item& item = document.items[i];
    if (item.kind == ItemKind::kParagraphBegin) begins.push_back(i);
    if (item.kind != ItemKind::kParagraphEnd || begins.empty()) continue;
    std::uint32_t first = begins.back() + 1;
    begins.pop_back();
    const Paragraph& paragraph = document.paragraphs[item.ref];
    if (document.paragraph_states[paragraph.state].tag != format) continue;
    while (first < i && (document.items[first].kind == ItemKind::kLine ||
                         document.items[first].kind == ItemKind::kTextFrame ||
                         document.items[first].kind == ItemKind::kElementBegin)) {
      ++first;
    }
    *begin = first;
    *end = i;
    return true;
  }
  return false;
}

}  // namespace qelm::embedded::model
