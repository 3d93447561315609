// Start tags: as a whole from the model, and as they stand with only the attributes changed that the model
// changed.
#pragma once

#include <string>
#include <string_view>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// The values of an attribute as XML has them: one text, with a blank between two values.
std::string JoinedValues(const Document& document, const Attribute& attribute);

// `<name a="b">` for an element of an XML document, as UTF-8.
std::string StartTag(const Document& document, const Element& element);

// The start tag `tag`, as UTF-8, with the element's attributes: those that are gone taken out with the blank
// before them, changed values replaced between their marks, new ones put behind the last. The rest stays as
// it is.
std::string RewrittenTag(const Document& document, const Element& element, std::string_view tag);

// An element with all that is in it, as UTF-8, without comments and marks.
std::string ElementAsXml(const Document& document, Id element);

}  // namespace qelm::embedded::model
