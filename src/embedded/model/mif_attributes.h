// The attributes of elements in MIF: their statement, and putting it into the statement of an element, where
// that stands or in a copy of it that goes to another place.
#pragma once

#include <string>

#include "embedded/model/document.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/splice.h"

namespace qelm::embedded::model {

// `<Attributes ...>` of an element, its lines separated by '\n' and indented from 0.
std::string AttributesStatement(const Document& document, const MifLayout& layout, const Element& element);

// Writes the element's attributes into its statement in the source; one that had none gets the group.
void SaveElementAttributes(const Document& document, const MifLayout& layout, const Element& element,
                           Splice* splice);

// The same in a copy of a statement (MifLayout::Statement) that is the element's or holds it.
std::string WithAttributes(const Document& document, const MifLayout& layout, const Element& element,
                           std::string statement);

}  // namespace qelm::embedded::model
