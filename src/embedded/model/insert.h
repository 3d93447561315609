// Adding to a document: elements, text, paragraphs, markers, definitions. Each returns false or 0, and
// changes nothing, when it cannot be done; `why` then says so in words.
//
// What is added is written and read back when it is needed (settle.h). Callers see to it that the document
// has no marks (edit.h) when they begin.
#pragma once

#include <string>
#include <string_view>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// An empty element of the definition, a container, before the child `before` of `parent` (0: as the last).
Id InsertElement(Document* document, Id parent, Id before, Id definition, std::string* why);

// Replaces all that an element holds by text. The element has no elements inside.
bool SetElementText(Document* document, Id element, std::string_view text, std::string* why);

// A paragraph at the end of what the element holds. `paragraph` is a text node's content.
bool AppendParagraph(Document* document, Id element, NewContent paragraph, std::string* why);

// Text or a marker before an item.
bool InsertAt(Document* document, Insertion insertion, std::string* why);

// Makes or changes the definition of a container.
Id DefineElement(Document* document, std::string_view name, std::string_view content_rule,
                 std::string_view paragraph_format, std::string* why);
bool SetDefinition(Document* document, Id element, Id definition, std::string* why);

// The first paragraph of a flow with the format: the items of its text, and false when there is none.
bool FindParagraph(const Document& document, Id flow, std::string_view format, std::uint32_t* begin,
                   std::uint32_t* end);

// A number that no object of the file has; 0 where there are none to be had (XML has no such numbers).
std::int64_t NextUnique(Document* document);

// The nearest element around `element`, or itself, that is in the source.
Id AnchoredIn(const Document& document, Id element);

}  // namespace qelm::embedded::model
