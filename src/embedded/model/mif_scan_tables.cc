#include "embedded/model/mif_scanner.h"

namespace qelm::embedded::model {

using mif::Piece;
using mif::Token;

std::uint32_t MifScanner::OpenPart(ElementKind kind, std::uint32_t parent) {
  const auto index = static_cast<std::uint32_t>(document_.parts.size());
  parts_room_.Need(document_.parts);
  Part& part = document_.parts.emplace_back();
  part.kind = kind;
  part.parent = parent;
  part.span.begin = reader_.begin();
  scan_.part_items.push_back({static_cast<std::uint32_t>(scan_.items.size()), 0});
  scan_.part_elements.push_back(0);
  conditions_ = 0;
  font_ = 0;
  Add(ItemKind::kPartBegin, index);
  return index;
}

void MifScanner::ClosePart(std::uint32_t part) {
  conditions_ = 0;
  font_ = 0;
  Add(ItemKind::kPartEnd, part);
  document_.parts[part].span.end = reader_.end();
  scan_.part_items[part].end = static_cast<std::uint32_t>(scan_.items.size());
}

void MifScanner::ReadTables() {
  const Passing passing(&reader_, true);
  Children(&reader_, [&] {
    if (reader_.token() == Token::kTbl && reader_.kind() == Piece::kGroup) ReadTable();
  });
}

void MifScanner::ReadTable() {
  const std::uint32_t part = OpenPart(ElementKind::kTable, 0);
  Children(&reader_, [&] {
    const bool group = reader_.kind() == Piece::kGroup;
    switch (reader_.token()) {
      case Token::kTblID:
        document_.parts[part].number = NumberData(reader_);
        break;
      case Token::kTblTag:
        document_.parts[part].tag = StringData(reader_, &document_);
        break;
      case Token::kTblFormat:
        if (!group) break;
        Children(&reader_, [&] {
          if (reader_.token() == Token::kTblTag) document_.parts[part].tag = StringData(reader_, &document_);
        });
        break;
      case Token::kElement:
        if (group) scan_.part_elements[part] = ReadElement();
        break;
      case Token::kTblTitle:
        if (group) ReadTitle(part);
        break;
      case Token::kTblH:
      case Token::kTblBody:
      case Token::kTblF:
        if (group) ReadRows(part);
        break;
      case Token::kRow:
      case Token::kCell:
        if (group) WarnOfStray(part);
        break;
      default:
        break;
    }
  });
  ClosePart(part);
  scan_.tables[document_.parts[part].number] = part;
}

void MifScanner::ReadTitle(std::uint32_t parent) {
  const std::uint32_t part = OpenPart(ElementKind::kTableTitle, parent);
  Children(&reader_, [&] {
    if (reader_.kind() != Piece::kGroup) return;
    if (reader_.token() == Token::kElement) scan_.part_elements[part] = ReadElement();
    if (reader_.token() == Token::kTblTitleContent) ReadStory();
  });
  ClosePart(part);
}

void MifScanner::ReadRows(std::uint32_t parent) {
  const Token token = reader_.token();
  const ElementKind kind = token == Token::kTblH   ? ElementKind::kTableHeading
                           : token == Token::kTblF ? ElementKind::kTableFooting
                                                   : ElementKind::kTableBody;
  const std::uint32_t part = OpenPart(kind, parent);
  Children(&reader_, [&] {
    if (reader_.kind() != Piece::kGroup) return;
    if (reader_.token() == Token::kElement) scan_.part_elements[part] = ReadElement();
    if (reader_.token() == Token::kRow) ReadRow(part);
    if (reader_.token() == Token::kCell) WarnOfStray(parent);
  });
  ClosePart(part);
}

// A row or cell where there can be none is no part of the table; it is kept in the file.
void MifScanner::WarnOfStray(std::uint32_t table) {
  const bool row = reader_.token() == Token::kRow;
  Warn(reader_.begin(),
       "table " + std::to_string(document_.parts[table].number) +
           (row ? " has a row outside of its heading, body and footing" : " has a cell outside of its rows") +
           "; its text is not shown");
}

void MifScanner::ReadRow(std::uint32_t parent) {
  const std::uint32_t part = OpenPart(ElementKind::kTableRow, parent);
  Children(&reader_, [&] {
    const std::uint32_t begin = reader_.begin();
    if (reader_.kind() != Piece::kGroup) return;
    if (reader_.token() == Token::kConditional) {
      const std::uint16_t set = ReadConditionSet();
      Part& row = document_.parts[part];
      row.conditions = row.source_conditions = set;
      row.condition_statement = {begin, reader_.end()};
    } else if (reader_.token() == Token::kElement) {
      scan_.part_elements[part] = ReadElement();
    } else if (reader_.token() == Token::kCell) {
      ReadCell(part);
    }
  });
  ClosePart(part);
}

void MifScanner::ReadCell(std::uint32_t parent) {
  const std::uint32_t part = OpenPart(ElementKind::kTableCell, parent);
  Children(&reader_, [&] {
    if (reader_.kind() != Piece::kGroup) return;
    if (reader_.token() == Token::kElement) scan_.part_elements[part] = ReadElement();
    if (reader_.token() == Token::kCellContent) ReadStory();
  });
  ClosePart(part);
}

// Footnotes stand before the text that anchors them.
void MifScanner::ReadNotes() {
  const std::uint32_t outside = top_elements_;
  Children(&reader_, [&] {
    if (reader_.token() != Token::kFNote || reader_.kind() != Piece::kGroup) return;
    const std::uint32_t part = OpenPart(ElementKind::kFootnote, 0);
    Children(&reader_, [&] {
      if (reader_.token() == Token::kID) document_.parts[part].number = NumberData(reader_);
      if (reader_.kind() != Piece::kGroup) return;
      if (reader_.token() == Token::kElement) scan_.part_elements[part] = ReadElement();
      if (reader_.token() == Token::kPara) ReadParagraph();
    });
    ClosePart(part);
    scan_.notes[document_.parts[part].number] = part;
  });
  top_elements_ = outside;
  open_elements_.clear();
}

}  // namespace qelm::embedded::model
