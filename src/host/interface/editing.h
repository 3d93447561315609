// Changing the element tree. Every operation here makes views and text positions of the document stale, marks
// it as changed, and on failure changes nothing, returns 0 or false and sets the error code.
//
// Elements and paragraphs that are added one after the other cost no more each than the ones before. Reading
// text positions between two of them makes the host bring its text up to date, which may take as long as the
// document is: whoever adds many things reads afterwards.
#pragma once

#include "host/interface/types.h"

namespace qelm::host {

// A paragraph to be added. Views only need to hold during the call.
struct NewParagraph {
  std::string_view format = {};    // the tag of its paragraph format; empty: as the paragraph before it
  std::string_view text = {};      // may be empty
  std::string_view variable = {};  // the name of a variable that stands before the text; empty: none
  // A marker at the beginning of the paragraph; an empty type: none. A hypertext marker makes the whole
  // paragraph a link.
  std::string_view marker_type = {};
  std::string_view marker_text = {};
};

class Editing {
 public:
  virtual ~Editing() = default;

  // Replaces the attributes of an element by `attributes`, in that order. An empty list removes them all.
  virtual bool SetAttributes(Id document, Id element, const std::vector<AttributeValue>& attributes) = 0;

  // Inserts an empty element of the definition as a child of `parent`, before the child `before` (0: as the
  // last one). Returns the new element.
  virtual Id InsertElement(Id document, Id parent, Id before, Id definition) = 0;

  // Replaces what the element holds by `text`, without character properties of its own; allowed only where it
  // has no element inside and is one that holds text: not a table or a part of one but a cell.
  virtual bool SetText(Id document, Id element, std::string_view text) = 0;

  // Creates a definition of a container with that name, content rule and paragraph format (empty: none), or
  // changes the one that exists. Returns its id.
  virtual Id DefineElement(Id document, std::string_view name, std::string_view content_rule,
                           std::string_view paragraph_format) = 0;
  virtual bool SetDefinition(Id document, Id element, Id definition) = 0;

  // Adds a paragraph at the end of what the element holds, inside the element.
  virtual bool AppendParagraph(Id document, Id element, const NewParagraph& paragraph) = 0;

  // Puts text at a place, in the character properties and under the conditions that hold there.
  virtual bool InsertText(Id document, const TextLocation& at, std::string_view text) = 0;

  // Puts a marker of the named type at the beginning of a range, which may be empty (begin == end). A
  // hypertext marker is a link from there to the next change of the character format or the paragraph's end.
  virtual bool InsertMarker(Id document, const TextRange& range, std::string_view type,
                            std::string_view text) = 0;

  // The text of the first paragraph of the flow that has the paragraph format, 0 objects when there is none.
  // It is a range to be read or edited; finding changes nothing.
  virtual TextRange FindParagraph(Id document, Id flow, std::string_view format) = 0;

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
