// Changing the element tree. Every operation here makes views and text positions of the document stale, marks
// it as changed, and on failure changes nothing, returns 0 or false and sets the error code.
#pragma once

#include "host/interface/types.h"

namespace qelm::host {

class Editing {
 public:
  virtual ~Editing() = default;

  // Replaces the attributes of an element by `attributes`, in that order. An empty list removes them all.
  virtual bool SetAttributes(Id document, Id element, const std::vector<AttributeValue>& attributes) = 0;

  // Inserts an empty element of the definition as a child of `parent`, before the child `before` (0: as the
  // last one). Returns the new element.
  virtual Id InsertElement(Id document, Id parent, Id before, Id definition) = 0;

  // Replaces what the element holds by `text`; allowed only where it has no element inside.
  virtual bool SetText(Id document, Id element, std::string_view text) = 0;

  // Creates a definition of a container with that name, content rule and paragraph format (empty: none), or
  // changes the one that exists. Returns its id.
  virtual Id DefineElement(Id document, std::string_view name, std::string_view content_rule,
                           std::string_view paragraph_format) = 0;
  // Gives an element a definition. The one that it has already gives its text, and that of the elements in
  // it, the formatting again that their definitions and formats call for, as Documents::ImportFormats does
  // for a document.
  virtual bool SetDefinition(Id document, Id element, Id definition) = 0;

  // Deletes an element with all its content. A table goes with everything in its cells. The parts of a table
  // are refused (a row: DeleteRows, the title: RemoveTitle), and so are text nodes (ClearText).
  virtual bool DeleteElement(Id document, Id element) = 0;

  // Deletes `count` rows of the table, heading and footing rows counted, beginning at `first_row`, which is a
  // row element. Deleting every row of the body is refused: that deletes the table.
  virtual bool DeleteRows(Id document, Id table, Id first_row, std::int32_t count) = 0;

  virtual bool RemoveTitle(Id document, Id table) = 0;

  // Deletes the text of a range; elements that lie wholly in it go with it.
  virtual bool ClearText(Id document, const TextRange& range) = 0;
};

}  // namespace qelm::host
