// Changing a document: conditions of text, deleting elements, attributes.
// Each returns false and changes nothing when it cannot be done.
#pragma once

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// Replaces the conditions of items [begin, end) by one set. A table counts as its anchor; where the range
// begins with a part of a table, the rows in it take the conditions, and a cell's or title's text takes them
// itself.
void SetConditions(Document* document, std::uint32_t begin, std::uint32_t end, std::uint16_t set);

// Keeps the character states that the source has, before they are first changed; character_edit.h changes
// them.
void KeepSourceFonts(Document* document);

void SetRowConditions(Document* document, std::uint32_t row_part, std::uint16_t set);

Id CreateCondition(Document* document, std::string_view name);
void SetConditionShown(Document* document, Id condition, bool shown);

// Deletes an element with everything in it, what is anchored in it included. Rows go by DeleteRow and titles
// by DeleteTitle; other parts of a table are refused.
bool DeleteElement(Document* document, Id element);
bool DeleteRow(Document* document, std::uint32_t row_part);
bool DeleteTitle(Document* document, std::uint32_t table_part);
// Deletes the text of items [begin, end) and the elements that lie wholly in it.
bool DeleteRange(Document* document, std::uint32_t begin, std::uint32_t end);

struct NewAttribute {
  std::string name;
  std::vector<std::string> values;
};
bool SetAttributes(Document* document, Id element, const std::vector<NewAttribute>& attributes);

}  // namespace qelm::embedded::model
