// Building the model of an XML document, in two passes.
//
// The first goes with the reader: every tag, text, comment and instruction becomes an item with its bytes,
// and what is said before the root element (kinds, conditions, colors, declarations of attributes) is taken
// in. The second goes over the items: only there is it known which tables have a body. It numbers the
// elements in document order, finds the parts of tables, and keeps the running conditions and character
// properties.
//
// The items are laid out as those of a MIF document: a table or footnote is an anchor (without bytes here)
// and its parts between kPartBegin and kPartEnd, which are the tags of their elements.
//
// White space alone is text in an element that has other text directly in it, in one whose declaration says
// that it has text, under xml:space="preserve", in a CDATA section, and where it is written as a character
// reference. Other white space, a third of what stands in most files, has no item; it is what lies between
// the bytes of two items. Only where it comes out of an entity, or conditions or character properties are in
// force, it has one of its own.
#pragma once

#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// In the items of the first pass `ref` of kElementBegin is the definition and `conditions` the number of its
// attributes, which follow those of the tag before; kFont has the data of its mark as the index of a value in
// `font`; what may be text or layout is kOther with kTouched; and before an element that may be a table or a
// footnote stands a kOther without bytes, where its anchor can go.
//
// What else is known of a start tag then, in the place of flags that it never has.
enum RawTagFlag : std::uint8_t {
  kHoldsText = kGenerated,  // white space in it is text
  kHoldsBody = kInBlock,    // one of its children is a table's body
};

// What the name of an element, or an instruction, makes of it in a table.
enum class XmlRole : std::uint8_t { kNone, kTable, kHeading, kBody, kFooting, kRow, kCell };

// By the name alone: of CALS and HTML tables, compared without regard to case.
XmlRole XmlRoleOfName(std::string_view name);

struct XmlDraft {
  std::size_t tags = 0;              // start tags
  std::vector<XmlRole> roles;        // by definition
  std::vector<bool> declared_kinds;  // by definition: an instruction names its kind
};

// The second pass.
void BuildXmlTree(Document* document, const XmlDraft& draft);

}  // namespace qelm::embedded::model
