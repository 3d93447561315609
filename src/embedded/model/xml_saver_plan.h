// What saving an XML document finds out before it goes over the items: the changes before the root element,
// and the table rows whose marks are written anew.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/xml/encoding.h"

namespace qelm::embedded::model {

// Replaces the bytes [begin, end) by a text in UTF-8.
struct XmlEdit {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
  std::string text;
};

// Conditions whose state changed, the show-all switch, new colors, and replaced instructions (of metadata),
// in the order of their places. A mark that says nothing any more goes with its line when it has one to
// itself, so that the line that was made for it goes too.
std::vector<XmlEdit> PrologEdits(const Document& document, xml::Encoding encoding);

// Parts: rows that need other marks, and tables in which marks around rows go. Marks around a row count for
// other rows too, so that a change in such a table takes them all into the rows.
std::unordered_set<std::uint32_t> DirtyRows(const Document& document);

}  // namespace qelm::embedded::model
