// Text: ranges of it, what it says, how it is marked, and the selection.
#pragma once

#include "host/interface/types.h"

namespace qelm::host {

class Text {
 public:
  virtual ~Text() = default;

  // The whole of an element, its boundaries included. Empty for an invalid id.
  virtual TextRange ElementRange(Id document, Id element) = 0;

  // The text of an element that stands elsewhere than the element's anchor in its parent's text: a
  // footnote's, without the end of its last paragraph. It begins behind the anchor. Empty for other elements
  // and for an invalid id.
  virtual TextRange AnchoredRange(Id document, Id element) = 0;

  // Whether text stands in the element itself and not only in elements inside it: its own, or text that its
  // definition generates. False for an invalid id.
  virtual bool HasOwnText(Id document, Id element) = 0;

  // The text of the element and of everything inside it, without separators, cut at a character after
  // `max_characters`. Text that the element definitions generate is not part of it. The view is either into
  // the document or into `buffer`, and holds until either is changed.
  virtual std::string_view ElementText(Id document, Id element, std::size_t max_characters,
                                       std::string* buffer) = 0;

  // A property of the element as text; false, with `value` empty, when the element has no such property.
  virtual bool ReadElementProperty(Id document, Id element, ElementProperty property, std::string* value) = 0;

  // The properties named by `mask` at the start of the range. An empty range gives the plain values.
  virtual TextProperties ReadProperties(Id document, const TextRange& range, std::uint32_t mask) = 0;

  // Writes the properties that `properties.mask` names to all text of the range. A table in the range is
  // treated as the one character that anchors it; the text inside it stays, and so it is with a footnote. A range that is a part of a table
  // gives its conditions to its rows. False with the error code set when range or ids are invalid.
  virtual bool WriteProperties(Id document, const TextRange& range, const TextProperties& properties) = 0;

  // The first position of a flow's text; object 0 when it has none.
  virtual TextLocation FlowStart(Id document, Id flow) = 0;

  enum class FindResult : std::uint8_t { kFound, kNotFound, kFailed };

  // The first run of text in the flow of `from`, at or after it, to which the condition is applied; cells,
  // titles and footnotes of the flow are searched where they are anchored. `found` is the whole run with one
  // and the same set of conditions.
  virtual FindResult FindCondition(Id document, const TextLocation& from, Id condition, TextRange* found) = 0;

  // The element that is selected (the first one of several), 0 when none is.
  virtual Id SelectedElement(Id document) = 0;
  // Selects the element as a whole. False when the id is invalid.
  virtual bool SelectElement(Id document, Id element) = 0;
  virtual TextRange Selection(Id document) = 0;
  virtual bool SetSelection(Id document, const TextRange& range) = 0;
  virtual void ScrollTo(Id document, const TextRange& range) = 0;
};

}  // namespace qelm::host
