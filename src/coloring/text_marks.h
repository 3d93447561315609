// Setting text properties on the text of elements.
#pragma once

#include <cstdint>

#include "host/interface/host.h"

namespace qelm::coloring {

// The kinds that stand for something in the text of another element: cross-references, system variables and
// footnotes. They seldom have attributes of their own, so they take those of the elements around them, and
// their text is no text node, so uncoloring looks for them by their kind.
constexpr bool StandsInOthersText(host::ElementKind kind) {
  return kind == host::ElementKind::kCrossReference || kind == host::ElementKind::kSystemVariable ||
         kind == host::ElementKind::kFootnote;
}

// The parts of a table whose text no range around the table reaches.
constexpr bool BeginsTextOfItsOwn(host::ElementKind kind) {
  return kind == host::ElementKind::kTableTitle || kind == host::ElementKind::kTableHeading ||
         kind == host::ElementKind::kTableBody || kind == host::ElementKind::kTableFooting;
}

// Sets the properties on a footnote, whose text stands elsewhere than its reference mark: three times, on the
// mark, on the footnote's own text, and on both with the ends of the paragraphs. False when the host refused;
// what it did not refuse is set.
bool SetOnFootnote(host::Text& text, host::Id document, host::Id footnote,
                   const host::TextProperties& properties);

// Which text of a document a change is for.
enum class TextScope : std::uint8_t {
  kOwnText,  // of elements with text of their own, and of those that stand in others' text as an object
  kAllText,  // everything in the flows that have elements, anchors of tables and frames included
};

// Sets the properties on the text of all elements of the document. What lies in a range that was set is not
// set again, so the cost grows with the text. False when the host refused somewhere.
bool SetAllTextProperties(host::Host& host, host::Id document, TextScope scope,
                          const host::TextProperties& properties);

}  // namespace qelm::coloring
