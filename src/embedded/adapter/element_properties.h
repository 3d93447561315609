// The properties of an element that are read from the object behind it or from where it stands: graphic,
// paragraph tag, table tag, change bar, cross-reference, marker, page number.
#pragma once

#include <string>

#include "embedded/adapter/workspace.h"

namespace qelm::embedded::adapter {

// The property as text. False, with `value` empty, when the element has no such property.
bool ReadElementProperty(Workspace& workspace, OpenFile* file, Id element, host::ElementProperty property,
                         std::string* value);

// The first item at or after `begin` that takes a place in the text and was not deleted; `end` when there is
// none before it.
std::uint32_t FirstContent(OpenFile* file, std::uint32_t begin, std::uint32_t end);

// The paragraph in which an item is, 0 when it is in none. The mark with which a part of a table begins is in
// the part's first paragraph.
std::uint32_t ParagraphAt(OpenFile* file, std::uint32_t item);

// The same for all items.
const std::vector<std::uint32_t>& Paragraphs(OpenFile* file);

// Gives the text of the element, or of the whole document (0), the formatting that its formats and element
// definitions define, and marks the document as changed.
void ApplyDefinedFormats(OpenFile* file, Id element);

// The character properties in force at an item.
model::CharacterProperties PropertiesAt(OpenFile* file, std::uint32_t item);

}  // namespace qelm::embedded::adapter
