// The tree that the benchmarks work on: a manual of a given number of elements, the same for the same number
// and parts. It is told to a writer as it is made, and each writer puts it into a file of its format, so that
// the programs under measurement get the same elements, attributes and text whatever they read.
//
// The manual is chapters of sections in up to five levels, and in them paragraphs, notes, lists and tables.
// About one element in sixteen says for whom it is (`audience`, one to three words); an element without the
// attribute is for everyone. Columns, titles and the first row of a table are for everyone too, so that no
// table loses its last row.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace qelm::bench {

enum class Kind : std::uint8_t {
  kContainer,  // holds paragraphs and containers
  kParagraph,  // holds text
  kInline,     // a range of a paragraph's text
  kReference,  // a cross-reference with its text
  kMarker,     // an index entry; its text is the attribute `term`
  kTable,
  kTableTitle,  // holds text
  kTableHead,
  kTableBody,
  kRow,
  kCell,  // holds text
};

struct Attribute {
  std::string_view name;
  std::string_view values;  // several are separated by one blank
};

// Takes the tree in document order. An element's text and children lie between its Begin and its End.
class Writer {
 public:
  virtual ~Writer() = default;
  virtual void Begin(Kind kind, std::string_view tag, std::span<const Attribute> attributes) = 0;
  virtual void End(Kind kind, std::string_view tag) = 0;
  virtual void Text(std::string_view utf8) = 0;
  // Text of a paragraph that carries a condition which is not shown.
  virtual void HiddenText(std::string_view utf8) = 0;
};

// What the tree is made of besides sections and paragraphs.
struct Parts {
  bool tables = true;
  bool references = true;  // and index entries
  bool inlines = true;
  bool hidden = true;
  bool threads = false;  // replies to replies, far deeper than sections go; for the writer of XML
};

// How many cells a row of every table has.
inline constexpr int kColumns = 3;

// Tells the writer a tree of exactly `elements` elements, at least 2.
void MakeTree(std::uint64_t elements, const Parts& parts, Writer& writer);

}  // namespace qelm::bench
