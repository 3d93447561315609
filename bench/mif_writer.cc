#include "mif_writer.h"

#include <algorithm>
#include <array>
#include <utility>

#include "mif_frame.h"

namespace qelm::bench {
namespace {

// Where FrameMaker would break a line of text.
constexpr std::size_t kLineLength = 76;

constexpr std::array<std::pair<std::string_view, std::string_view>, 7> kFrameRoman = {{{"ä", "\\x8a "},
                                                                                       {"ö", "\\x9a "},
                                                                                       {"ü", "\\x9f "},
                                                                                       {"Ä", "\\x80 "},
                                                                                       {"Ö", "\\x85 "},
                                                                                       {"Ü", "\\x86 "},
                                                                                       {"ß", "\\xa7 "}}};

void Line(std::string& out, std::size_t depth, std::string_view text) {
  out.append(depth, ' ').append(text).append("\n");
}

void Open(std::string& out, std::size_t depth, std::string_view name) {
  out.append(depth, ' ').append("<").append(name).append(" \n");
}

void Close(std::string& out, std::size_t depth, std::string_view name) {
  out.append(depth, ' ').append("> # end of ").append(name).append("\n");
}

std::string Encode(std::string_view utf8) {
  std::string encoded;
  for (std::size_t i = 0; i < utf8.size();) {
    bool replaced = false;
    for (const auto& [character, escape] : kFrameRoman) {
      if (!utf8.substr(i).starts_with(character)) continue;
      encoded += escape;
      i += character.size();
      replaced = true;
      break;
    }
    if (!replaced) encoded += utf8[i++];
  }
  return encoded;
}

void StringLine(std::string& out, std::size_t depth, std::string_view name, std::string_view utf8) {
  out.append(depth, ' ').append("<").append(name).append(" `").append(Encode(utf8)).append("'>\n");
}

std::string_view ParagraphTag(std::string_view element) {
  for (const ElementDefinition& definition : kDefinitions) {
    if (definition.tag == element) return definition.format;
  }
  return "Body";
}

}  // namespace

void MifWriter::ElementGroup(std::string& out, std::size_t depth, std::string_view statement,
                             std::string_view tag, std::span<const Attribute> attributes) {
  Open(out, depth, statement);
  Line(out, depth + 1, "<Unique " + Unique() + ">");
  StringLine(out, depth + 1, "ETag", tag);
  Open(out, depth + 1, "Attributes");
  for (const Attribute& attribute : attributes) {
    Open(out, depth + 2, "Attribute");
    StringLine(out, depth + 3, "AttrName", attribute.name);
    for (std::string_view rest = attribute.values; !rest.empty();) {
      const std::size_t end = std::min(rest.find(' '), rest.size());
      StringLine(out, depth + 3, "AttrValue", rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    Close(out, depth + 2, "Attribute");
  }
  Close(out, depth + 1, "Attributes");
  Line(out, depth + 1, "<Collapsed No>");
  Line(out, depth + 1, "<SpecialCase No>");
  Line(out, depth + 1, "<AttributeDisplay AllAttributes>");
  Close(out, depth, statement);
}

void MifWriter::OpenParagraph(std::string_view tag) {
  CloseParagraph();
  std::string& out = *stream_->out;
  const std::size_t depth = stream_->depth;
  Open(out, depth, "Para");
  Line(out, depth + 1, "<Unique " + Unique() + ">");
  StringLine(out, depth + 1, "PgfTag", tag);
  Open(out, depth + 1, "ParaLine");
  stream_->open = true;
  stream_->column = 0;
  if (stream_ != &main_) return;
  if (!std::exchange(in_text_frame_, true)) Line(out, depth + 2, "<TextRectID 10>");
  out += pending_;
  pending_.clear();
}

void MifWriter::CloseParagraph() {
  if (!stream_->open) return;
  Close(*stream_->out, stream_->depth + 1, "ParaLine");
  Close(*stream_->out, stream_->depth, "Para");
  stream_->open = false;
}

void MifWriter::BreakLine() {
  Close(*stream_->out, stream_->depth + 1, "ParaLine");
  Open(*stream_->out, stream_->depth + 1, "ParaLine");
  stream_->column = 0;
}

void MifWriter::ElementEnd(std::string_view tag) {
  StringLine(*stream_->out, ItemDepth(), "ElementEnd", tag);
}

void MifWriter::Text(std::string_view utf8) {
  while (!utf8.empty()) {
    const std::size_t room = kLineLength - std::min(kLineLength, stream_->column);
    std::size_t end = utf8.size();
    if (utf8.size() > room) {
      const std::size_t blank = utf8.find(' ', room);
      if (blank != std::string_view::npos) end = blank + 1;
    }
    StringLine(*stream_->out, ItemDepth(), "String", utf8.substr(0, end));
    stream_->column += end;
    utf8.remove_prefix(end);
    if (!utf8.empty()) BreakLine();
  }
}

void MifWriter::BlockMarker(std::string& out, std::size_t depth, char role) {
  Open(out, depth, "Marker");
  Line(out, depth + 1, "<MType 10>");
  Line(out, depth + 1, "<MTypeName `Conditional Text'>");
  Line(out, depth + 1, std::string("<MText `") + role + std::to_string(blocks_made_) + "'>");
  Line(out, depth + 1, role == '+' ? "<MCurrPage `1'>" : "<MCurrPage `HIDDEN'>");
  Line(out, depth + 1, "<Unique " + Unique() + ">");
  Close(out, depth, "Marker");
}

void MifWriter::HiddenText(std::string_view utf8) {
  ++blocks_made_;
  BlockMarker(*stream_->out, ItemDepth(), '+');
  const bool first = hidden_.empty();
  Open(hidden_, 1, "Para");
  Line(hidden_, 2, "<Unique " + Unique() + ">");
  StringLine(hidden_, 2, "PgfTag", "Body");
  Line(hidden_, 2, "<PgfEndCond Yes>");
  Open(hidden_, 2, "ParaLine");
  if (first) {
    Line(hidden_, 3, "<TextRectID 11>");
    // The condition stays in force through the whole flow.
    Open(hidden_, 3, "Conditional");
    StringLine(hidden_, 4, "InCondition", "Internal");
    Close(hidden_, 3, "Conditional");
  }
  BlockMarker(hidden_, 3, '-');
  StringLine(hidden_, 3, "String", utf8);
  BlockMarker(hidden_, 3, '=');
  Close(hidden_, 2, "ParaLine");
  Close(hidden_, 1, "Para");
}

void MifWriter::BeginReference(std::string_view tag, std::span<const Attribute> attributes) {
  std::string& out = *stream_->out;
  const std::size_t depth = ItemDepth();
  Open(out, depth, "XRef");
  StringLine(out, depth + 1, "XRefName", "Heading");
  StringLine(out, depth + 1, "XRefSrcText", std::string(attributes[0].values) + ": section: Heading");
  Line(out, depth + 1, "<XRefSrcIsElem Yes>");
  Line(out, depth + 1, "<XRefSrcFile `'>");
  Line(out, depth + 1, "<Unique " + Unique() + ">");
  ElementGroup(out, depth + 1, "Element", tag, attributes);
  Close(out, depth, "XRef");
}

void MifWriter::IndexMarker(std::string_view tag, std::span<const Attribute> attributes) {
  std::string& out = *stream_->out;
  const std::size_t depth = ItemDepth();
  Open(out, depth, "Marker");
  Line(out, depth + 1, "<MType 2>");
  Line(out, depth + 1, "<MTypeName `Index'>");
  StringLine(out, depth + 1, "MText", attributes[0].values);
  Line(out, depth + 1, "<MCurrPage `1'>");
  Line(out, depth + 1, "<Unique " + Unique() + ">");
  ElementGroup(out, depth + 1, "Element", tag, attributes);
  Close(out, depth, "Marker");
}

void MifWriter::BeginTable(std::string_view tag, std::span<const Attribute> attributes) {
  OpenParagraph("TableAnchor");
  const std::string number = std::to_string(100 + ++tables_made_);
  Line(text_, ItemDepth(), "<ATbl " + number + ">");
  Open(tables_, 1, "Tbl");
  Line(tables_, 2, "<TblID " + number + ">");
  StringLine(tables_, 2, "TblTag", "Format A");
  Line(tables_, 2, "<TblNumColumns " + std::to_string(kColumns) + ">");
  Line(tables_, 2, "<Unique " + Unique() + ">");
  for (int i = 0; i < kColumns; ++i) Line(tables_, 2, "<TblColumnWidth  2.0\">");
  ElementGroup(tables_, 2, "Element", tag, attributes);
}

// A title or a cell: the element's group, then text of its own.
void MifWriter::BeginTextPart(std::string_view part, std::string_view content, std::size_t depth,
                              std::string_view tag, std::span<const Attribute> attributes) {
  Open(tables_, depth, part);
  ElementGroup(tables_, depth + 1, "Element", tag, attributes);
  Open(tables_, depth + 1, content);
  Open(tables_, depth + 2, "Notes");
  Close(tables_, depth + 2, "Notes");
  part_ = {&tables_, depth + 2};
  stream_ = &part_;
  OpenParagraph(ParagraphTag(tag));
}

void MifWriter::EndTextPart(std::string_view part, std::string_view content, std::size_t depth) {
  CloseParagraph();
  Close(tables_, depth + 1, content);
  Close(tables_, depth, part);
  stream_ = &main_;
}

void MifWriter::Begin(Kind kind, std::string_view tag, std::span<const Attribute> attributes) {
  switch (kind) {
    case Kind::kContainer:
      ElementGroup(pending_, ItemDepth(), "ElementBegin", tag, attributes);
      return;
    case Kind::kParagraph:
      OpenParagraph(ParagraphTag(tag));
      [[fallthrough]];
    case Kind::kInline:
      ElementGroup(*stream_->out, ItemDepth(), "ElementBegin", tag, attributes);
      return;
    case Kind::kReference:
      BeginReference(tag, attributes);
      return;
    case Kind::kMarker:
      IndexMarker(tag, attributes);
      return;
    case Kind::kTable:
      BeginTable(tag, attributes);
      return;
    case Kind::kTableTitle:
      BeginTextPart("TblTitle", "TblTitleContent", 2, tag, attributes);
      return;
    case Kind::kTableHead:
    case Kind::kTableBody:
      Open(tables_, 2, kind == Kind::kTableHead ? "TblH" : "TblBody");
      ElementGroup(tables_, 3, "Element", tag, attributes);
      return;
    case Kind::kRow:
      Open(tables_, 3, "Row");
      Line(tables_, 4, "<RowMaxHeight  14.0\">");
      Line(tables_, 4, "<RowHeight  0.27778\">");
      ElementGroup(tables_, 4, "Element", tag, attributes);
      return;
    case Kind::kCell:
      BeginTextPart("Cell", "CellContent", 4, tag, attributes);
      return;
  }
}

void MifWriter::End(Kind kind, std::string_view tag) {
  switch (kind) {
    case Kind::kContainer:
    case Kind::kParagraph:
    case Kind::kInline:
      ElementEnd(tag);
      return;
    case Kind::kReference:
      Line(*stream_->out, ItemDepth(), "<XRefEnd >");
      return;
    case Kind::kMarker:
      return;
    case Kind::kTable:
      Close(tables_, 1, "Tbl");
      return;
    case Kind::kTableTitle:
      EndTextPart("TblTitle", "TblTitleContent", 2);
      return;
    case Kind::kTableHead:
      Close(tables_, 2, "TblH");
      return;
    case Kind::kTableBody:
      Close(tables_, 2, "TblBody");
      return;
    case Kind::kRow:
      Close(tables_, 3, "Row");
      return;
    case Kind::kCell:
      EndTextPart("Cell", "CellContent", 4);
      return;
  }
}

std::string MifWriter::Document() {
  CloseParagraph();
  std::string document = MifHead(next_unique_ + 1);
  document.reserve(document.size() + tables_.size() + text_.size() + hidden_.size() + 10000);
  document.append("<AFrames \n> # end of AFrames\n<Tbls \n").append(tables_).append("> # end of Tbls\n");
  document += MifPages(!hidden_.empty());
  document.append("<TextFlow \n <TFTag `A'>\n <TFAutoConnect Yes>\n <Notes \n > # end of Notes\n");
  document.append(text_).append("> # end of TextFlow\n");
  if (!hidden_.empty()) {
    document.append("<TextFlow \n <TFTag `HIDDEN'>\n <Notes \n > # end of Notes\n").append(hidden_);
    document +=
        " <Para \n  <PgfTag `Body'>\n  <ParaLine \n   <Unconditional >\n  > # end of ParaLine\n > # end of "
        "Para\n"
        "> # end of TextFlow\n";
  }
  return document + "# End of MIFFile\n";
}

}  // namespace qelm::bench
