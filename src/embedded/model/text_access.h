// Reading a document's text: what an item says, what an element says, and the properties in force.
#pragma once

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// Whether an item is part of the text of the elements around it.
bool CountsAsText(const Item& item);

// Appends what one item contributes to the text: strings and characters decoded, variables expanded as far as
// their definition is plain text (else "<$name>" parts are left out and the rest kept).
void AppendItemText(const Document& document, const Item& item, std::string* text);

// The text of one string item as it stands: for MIF the inside of the string, escapes not decoded.
std::string_view PlainText(const Document& document, const Item& item);

// The text of an element with everything inside it, generated text left out, cut at a character after
// `max_characters`. The view is into the source where the element has one plain string, else into `buffer`.
std::string_view ElementText(const Document& document, Id element, std::size_t max_characters,
                             std::string* buffer);

// Text under these conditions is seen when one of them is shown; those of change tracking do not count.
// `as_read`: by what the source says of the conditions and not by what was changed since.
bool IsShown(const Document& document, std::uint16_t condition_set, bool as_read = false);

// Whether an item stands at that index (kNoIndex: none does) that is deleted.
inline bool IsDeletedAt(const Document& document, std::uint32_t item) {
  return item != kNoIndex && document.items[item].Is(kDeleted);
}

// Whether content stands in the element itself, not only in elements inside it; generated text counts, and
// so does the anchor of a table or frame that the element is.
bool HasOwnText(const Document& document, Id element);

// The properties in force at an item: overrides, then the character format, then the paragraph's font.
CharacterProperties PropertiesAt(const Document& document, std::uint32_t item);
// The same for a caller who knows the paragraph (0: none), which is what takes the time.
CharacterProperties PropertiesAt(const Document& document, std::uint32_t item, std::uint32_t paragraph);

// What the formats alone say at text of a character state: the paragraph's font, then the character format.
CharacterProperties FormatProperties(const Document& document, std::uint32_t font, std::uint32_t paragraph);

// The paragraph of each item, 0 for none, in one go: a mark at a paragraph's end says which it is, and
// looking for that mark from each item anew would take as long as the paragraph is.
std::vector<std::uint32_t> ParagraphsOfItems(const Document& document);

// The paragraph in which the item is (by the mark that ends it), 0 when it is in none.
std::uint32_t ParagraphOf(const Document& document, std::uint32_t item);

// The page on which the item is, as an index into Document::pages; -1 when it is on none.
std::int32_t PageOf(const Document& document, std::uint32_t item);

// The part (cell, title, footnote) or 0 (the flow) to whose text the item belongs.
std::uint32_t PartOf(const Document& document, std::uint32_t item);

// The flow in which an item is.
Id FlowOf(const Document& document, std::uint32_t item);

// Where the item range of a table anchor ends: behind the parts that follow it; `item` + 1 for other items.
inline std::uint32_t EndOfItem(const Document& document, std::uint32_t item) {
  const Item& at = document.items[item];
  const bool anchors = at.kind == ItemKind::kTableAnchor || at.kind == ItemKind::kNoteAnchor;
  return anchors && at.ref != 0 ? document.parts[at.ref].end_item : item + 1;
}

// A property of the statement behind a marker, cross-reference, frame: the data of its first substatement of
// that name, decoded; empty when there is none.
std::string Substatement(const Document& document, const Item& item, std::string_view name);

}  // namespace qelm::embedded::model
