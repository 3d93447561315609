// Tables are set row by row. Rows that a cell reaches over are measured together: each is first as high as
// its own cells need, and what a straddling cell needs beyond that goes to its last row.
#include <algorithm>
#include <array>
#include <optional>

#include "embedded/render/design/geometry.h"
#include "embedded/render/design/statements.h"
#include "embedded/render/strips.h"

namespace qelm::embedded::render {
namespace {

using model::ElementKind;
using model::ItemKind;

enum Edge : std::uint8_t { kLeftEdge, kTopEdge, kRightEdge, kBottomEdge };

struct Cell {
  std::uint32_t part = 0;
  std::uint32_t columns = 1;
  std::uint32_t rows = 1;
  bool covered = false;  // by a cell to the left or above
  std::optional<int> fill;
  std::string color;
  std::optional<std::string> rulings[4];  // by edge
  std::vector<Strip> strips;
  Margins margins;
  CellAlignment alignment = CellAlignment::kTop;
  double content_height = 0;
};

struct Row {
  std::uint32_t part = 0;
  ElementKind section = ElementKind::kTableBody;
  std::uint32_t body_index = 0;  // among the rows of its section, from 0
  double least_height = 0;
  bool with_next = false;
  bool with_previous = false;
  StartAt start = StartAt::kAnywhere;
  std::vector<Cell> cells;
  double height = 0;
};

struct EdgeName {
  std::string_view name;
  Edge edge;
};
constexpr std::array kEdgeNames = {EdgeName{"CellLRuling", kLeftEdge}, EdgeName{"CellTRuling", kTopEdge},
                                   EdgeName{"CellRRuling", kRightEdge}, EdgeName{"CellBRuling", kBottomEdge}};

// Makes of a strip what stands on further pages of a table.
void MakeCopy(Strip* strip) {
  strip->table.reset();
  strip->begins.reset();
  strip->first_item = model::kNoIndex;
  strip->notes.clear();
  for (Mark& mark : strip->marks) mark.repeated = true;
}

class TableSetter {
 public:
  TableSetter(Setting& setting, std::uint32_t part, double width, std::uint32_t depth, const TakeStrip& take)
      : setting_(setting),
        document_(setting.document),
        table_(setting.document.parts[part]),
        part_(part),
        depth_(depth),
        take_(take),
        format_(setting.tables.Of(table_.tag, setting.document.At(table_.span))),
        parts_(std::make_shared<TableParts>()) {
    ReadColumns(width);
  }
  bool Run(bool glued);

 private:
  void ReadColumns(double width);
  void ReadSections();
  void SetFooting(const model::Part& footing);
  bool AddRow(std::uint32_t part, ElementKind section);
  void MarkCovered(Row* row);
  Row ReadRow(std::uint32_t part, ElementKind section) const;
  void ReadCellLook(Cell* cell) const;
  void SetCell(Cell* cell, std::size_t column);
  bool SetRows(bool last);
  Strip RowStrip(std::size_t index);
  void AddCell(const Row& row, const Cell& cell, std::size_t column, double height, Strip* strip) const;
  void Shade(const Row& row, const Cell& cell, std::size_t column, double height, Strip* strip) const;
  void RuleCell(std::size_t row, std::size_t column, Strip* strip) const;
  const Ruling* EdgeRuling(std::size_t row, std::size_t column, Edge edge) const;
  const std::string& DefaultRuling(const Row& row, const Row* above, std::size_t column, Edge edge) const;
  void Rule(const Ruling& ruling, double x, double y, double length, bool across, Strip* strip) const;
  void SetTitle(std::uint32_t part);
  void Collect(Strip* strip);
  bool Emit(Strip&& strip);
  bool EmitNotes();
  double Left(std::size_t column) const { return left_[std::min(column, left_.size() - 1)]; }

  Setting& setting_;
  const model::Document& document_;
  const model::Part& table_;
  std::uint32_t part_;
  std::uint32_t depth_;
  const TakeStrip& take_;
  TableFormat format_;
  std::shared_ptr<TableParts> parts_;
  std::vector<double> left_;  // of each column, and the right edge of the last
  std::vector<Row> rows_;     // that wait to be set together
  std::size_t reach_ = 0;     // how many of them and of those behind them their cells reach over
  std::vector<std::size_t>
      covered_to_;            // by column, how many rows from the first are covered by a cell above
  std::optional<Row> above_;  // the row before them
  std::vector<Strip> title_;
  std::vector<std::shared_ptr<NoteBlock>> notes_;
  std::uint32_t counts_[3] = {0, 0, 0};  // rows by section
  std::vector<Strip>* kept_ = nullptr;   // where strips go instead of being given
  bool closing_ = false;                 // the rows that wait are the last
  bool first_ = true;                    // no strip was given yet
  bool glued_ = false;                   // the next strip stays with the one before
  std::uint32_t body_rows_ = 0;          // that were given
};

void TableSetter::ReadColumns(double width) {
  std::vector<double> widths;
  std::size_t count = 0;
  mif::Reader reader(document_.At(table_.span));
  reader.Next();
  while (reader.Next() && reader.token() != mif::Token::kTblBody && reader.token() != mif::Token::kTblH) {
    if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) break;
    if (reader.name() == "TblColumnWidth") widths.push_back(Length(reader.data(), setting_.formats.unit()));
    if (reader.token() == mif::Token::kTblNumColumns) {
      count = static_cast<std::size_t>(std::clamp(Number(reader.data()), 0.0, 4096.0));
    }
  }
  if (widths.size() < count || widths.empty()) {
    const std::size_t columns = std::max<std::size_t>(count, 1);
    widths.assign(columns, std::max(width - format_.left_indent, 36.0) / static_cast<double>(columns));
  }
  double whole = 0;
  for (const double one : widths) whole += one;
  double x = format_.left_indent;
  if (format_.alignment == Alignment::kCenter) x = (width - whole) / 2;
  if (format_.alignment == Alignment::kRight) x = width - whole - format_.right_indent;
  for (const double one : widths) {
    left_.push_back(x);
    x += one;
  }
  left_.push_back(x);
}

bool TableSetter::Run(bool glued) {
  glued_ = glued;
  const double note_width = setting_.table_note_width;
  const std::int64_t next_note = setting_.next_table_note;
  setting_.table_note_width = left_.back() - left_.front();
  setting_.next_table_note = setting_.table_notes.first;
  ReadSections();
  bool going = true;
  if (format_.title == TitlePlace::kAbove) {
    for (Strip strip : title_) going = going && Emit(std::move(strip));
    glued_ = glued_ || !title_.empty();
  }
  ElementKind section = ElementKind::kTable;
  for (std::uint32_t i = table_.first_item + 1; going && i + 1 < table_.end_item; ++i) {
    const model::Item& item = document_.items[i];
    if (item.kind != ItemKind::kPartBegin) continue;
    const model::Part& part = document_.parts[item.ref];
    if (part.kind == ElementKind::kTableRow) {
      going = AddRow(item.ref, section);
      i = part.end_item - 1;
    } else if (part.kind == ElementKind::kTableTitle) {
      i = part.end_item - 1;
    } else {
      section = part.kind;
    }
  }
  going = going && SetRows(true);
  if (going && format_.title == TitlePlace::kBelow) {
    for (Strip strip : title_) {
      strip.glued = true;
      going = going && Emit(std::move(strip));
    }
  }
  going = going && EmitNotes();
  setting_.table_note_width = note_width;
  setting_.next_table_note = next_note;
  return going;
}

// What is repeated comes before the rows, wherever it stands.
void TableSetter::ReadSections() {
  for (std::uint32_t i = table_.first_item + 1; i + 1 < table_.end_item; ++i) {
    const model::Item& item = document_.items[i];
    if (item.kind != ItemKind::kPartBegin) continue;
    const model::Part& part = document_.parts[item.ref];
    if (part.kind == ElementKind::kTableTitle) SetTitle(item.ref);
    if (part.kind == ElementKind::kTableFooting) SetFooting(part);
    i = part.end_item - 1;
  }
}

// The footing as it stands where the table is broken off; at its end it comes with the other rows.
void TableSetter::SetFooting(const model::Part& footing) {
  const std::int64_t next_note = setting_.next_table_note;
  const std::size_t notes = notes_.size();
  const bool glued = glued_;
  kept_ = &parts_->footing;
  above_.emplace().section = ElementKind::kTableBody;
  for (std::uint32_t i = footing.first_item + 1; i + 1 < footing.end_item; ++i) {
    const model::Item& item = document_.items[i];
    if (item.kind != ItemKind::kPartBegin) continue;
    AddRow(item.ref, ElementKind::kTableFooting);
    i = document_.parts[item.ref].end_item - 1;
  }
  SetRows(!format_.bottom_ruling_last);
  kept_ = nullptr;
  glued_ = glued;
  above_.reset();
  counts_[2] = 0;
  notes_.resize(notes);
  setting_.next_table_note = next_note;
  for (Strip& strip : parts_->footing) {
    MakeCopy(&strip);
    strip.space_after = 0;
  }
  parts_->footing_height = StackedHeight(parts_->footing);
}

void TableSetter::SetTitle(std::uint32_t part) {
  if (format_.title == TitlePlace::kNone) return;
  const model::Part& title = document_.parts[part];
  const double width = left_.back() - left_.front();
  const auto set_title = [&] {
    std::vector<Strip> strips =
        MakeStrips(setting_, title.first_item + 1, title.end_item - 1, width, depth_ + 1);
    for (Strip& strip : strips) {
      for (Mark& mark : strip.marks) mark.x += left_.front();
    }
    return strips;
  };
  const std::int64_t first_note = setting_.next_table_note;
  title_ = set_title();
  if (title_.empty()) return;
  for (Strip& strip : title_) Collect(&strip);
  if (format_.title == TitlePlace::kBelow) {
    title_.front().space_before = format_.title_gap;
    return;
  }
  title_.back().space_after = format_.title_gap;
  setting_.next_table_note = first_note;
  setting_.table_goes_on = true;
  parts_->heading = set_title();
  setting_.table_goes_on = false;
  for (Strip& strip : parts_->heading) MakeCopy(&strip);
  parts_->heading.back().space_after = format_.title_gap;
  parts_->heading_height = StackedHeight(parts_->heading) + format_.title_gap;
}

// Footnotes of a table are gathered, to stand below it.
void TableSetter::Collect(Strip* strip) {
  notes_.insert(notes_.end(), strip->notes.begin(), strip->notes.end());
  strip->notes.clear();
}

bool TableSetter::Emit(Strip&& strip) {
  if (kept_ != nullptr) {
    kept_->push_back(std::move(strip));
    return true;
  }
  if (first_) {
    strip.space_before = std::max(strip.space_before, format_.space_before);
    strip.start = format_.start;
    strip.glued = glued_;
    if (strip.first_item == model::kNoIndex) strip.first_item = table_.first_item;
  }
  first_ = false;
  return take_(std::move(strip));
}

bool TableSetter::EmitNotes() {
  for (const std::shared_ptr<NoteBlock>& note : notes_) {
    for (Strip& strip : note->strips) {
      for (Mark& mark : strip.marks) mark.x += left_.front();
      strip.glued = true;
      if (!take_(std::move(strip))) return false;
    }
  }
  return true;
}

// Rows wait as long as a cell above reaches into them.
bool TableSetter::AddRow(std::uint32_t part, ElementKind section) {
  const model::Part& row = document_.parts[part];
  if (row.deleted || !setting_.shown[row.conditions]) return true;
  constexpr std::size_t kMostTogether = 500;
  const bool together = reach_ > rows_.size() && rows_.size() < kMostTogether && !rows_.empty() &&
                        rows_.front().section == section;
  if (!together && !SetRows(false)) return false;
  rows_.push_back(ReadRow(part, section));
  Row& added = rows_.back();
  added.body_index =
      counts_[static_cast<std::size_t>(section) - static_cast<std::size_t>(ElementKind::kTableHeading)]++;
  MarkCovered(&added);
  return true;
}

// Cells under a straddle are there and empty.
void TableSetter::MarkCovered(Row* row) {
  const std::size_t index = rows_.size() - 1;
  const std::size_t count = row->cells.size();
  if (covered_to_.size() < count) covered_to_.resize(count, 0);
  std::size_t across = 0;  // how far the cell to the left reaches
  for (std::size_t c = 0; c < count; ++c) {
    Cell& cell = row->cells[c];
    cell.covered = c < across || index < covered_to_[c];
    if (cell.covered) continue;
    across = std::max(across, c + cell.columns);
    reach_ = std::max(reach_, index + cell.rows);
    for (std::size_t i = c; cell.rows > 1 && i < std::min(across, count); ++i) {
      covered_to_[i] = std::max(covered_to_[i], index + cell.rows);
    }
  }
}

Row TableSetter::ReadRow(std::uint32_t part, ElementKind section) const {
  Row row;
  row.part = part;
  row.section = section;
  const model::Part& place = document_.parts[part];
  mif::Reader reader(document_.At(place.span));
  reader.Next();
  while (reader.Next() && reader.token() != mif::Token::kCell) {
    const std::string_view name = reader.name();
    if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) break;
    if (name == "RowMinHeight") row.least_height = Length(reader.data(), setting_.formats.unit());
    if (name == "RowWithNext") row.with_next = IsYes(reader.data());
    if (name == "RowWithPrev") row.with_previous = IsYes(reader.data());
    if (name == "RowPlacement") {
      if (reader.data().ends_with("ColumnTop")) row.start = StartAt::kColumn;
      if (reader.data().ends_with("PageTop")) row.start = StartAt::kPage;
    }
  }
  for (std::uint32_t i = place.first_item + 1; i + 1 < place.end_item; ++i) {
    const model::Item& item = document_.items[i];
    if (item.kind != ItemKind::kPartBegin) continue;
    Cell& cell = row.cells.emplace_back();
    cell.part = item.ref;
    ReadCellLook(&cell);
    i = document_.parts[item.ref].end_item - 1;
  }
  return row;
}

void TableSetter::ReadCellLook(Cell* cell) const {
  mif::Reader reader(document_.At(document_.parts[cell->part].span));
  reader.Next();
  const auto count = [&] { return static_cast<std::uint32_t>(std::clamp(Number(reader.data()), 1.0, 1e6)); };
  while (reader.Next() && reader.token() != mif::Token::kCellContent) {
    if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) break;
    const std::string_view name = reader.name();
    if (reader.token() == mif::Token::kCellColumns) cell->columns = count();
    if (name == "CellRows") cell->rows = count();
    if (name == "CellFill") cell->fill = static_cast<int>(Number(reader.data()));
    if (name == "CellColor") cell->color = mif::DecodeString(reader.data(), document_.encoding);
    for (const EdgeName& edge : kEdgeNames) {
      if (edge.name == name) cell->rulings[edge.edge] = mif::DecodeString(reader.data(), document_.encoding);
    }
  }
}

// The margins are the table's, and those of the first paragraph instead of them or on top.
void TableSetter::SetCell(Cell* cell, std::size_t column) {
  const model::Part& part = document_.parts[cell->part];
  cell->margins = format_.margins;
  for (std::uint32_t i = part.first_item; i < part.end_item; ++i) {
    const model::Item& item = document_.items[i];
    if (item.kind != ItemKind::kParagraphBegin) continue;
    const ParagraphFormat& first = setting_.formats.Paragraph(document_.paragraphs[item.ref].state);
    const auto margin = [](bool fixed, double own, double* whole) { *whole = fixed ? own : *whole + own; };
    margin(first.cell_margin_fixed[0], first.cell_margins.left, &cell->margins.left);
    margin(first.cell_margin_fixed[1], first.cell_margins.top, &cell->margins.top);
    margin(first.cell_margin_fixed[2], first.cell_margins.right, &cell->margins.right);
    margin(first.cell_margin_fixed[3], first.cell_margins.bottom, &cell->margins.bottom);
    cell->alignment = first.cell_alignment;
    break;
  }
  const double width = Left(column + cell->columns) - Left(column) - cell->margins.left - cell->margins.right;
  cell->strips = MakeStrips(setting_, part.first_item + 1, part.end_item - 1, width, depth_ + 1);
  for (Strip& strip : cell->strips) Collect(&strip);
  cell->content_height = StackedHeight(cell->strips) + cell->margins.top + cell->margins.bottom;
}

// Sets the rows that wait. `last`: no row comes behind them.
bool TableSetter::SetRows(bool last) {
  if (rows_.empty()) return true;
  closing_ = last;
  for (Row& row : rows_) {
    row.height = std::max(row.least_height, 0.0);
    for (std::size_t c = 0; c < row.cells.size(); ++c) {
      Cell& cell = row.cells[c];
      if (cell.covered) continue;
      SetCell(&cell, c);
      if (cell.rows == 1) row.height = std::max(row.height, cell.content_height);
    }
  }
  for (std::size_t r = 0; r < rows_.size(); ++r) {
    for (const Cell& cell : rows_[r].cells) {
      if (cell.covered || cell.rows == 1) continue;
      const std::size_t end = std::min(r + cell.rows, rows_.size());
      double height = 0;
      for (std::size_t i = r; i < end; ++i) height += rows_[i].height;
      rows_[end - 1].height += std::max(cell.content_height - height, 0.0);
    }
  }
  const bool heading = rows_.front().section == ElementKind::kTableHeading;
  bool going = true;
  for (std::size_t r = 0; r < rows_.size() && going; ++r) {
    Strip strip = RowStrip(r);
    const Row& row = rows_[r];
    const bool body = row.section == ElementKind::kTableBody;
    strip.glued = r > 0 || glued_ || row.with_previous || row.section == ElementKind::kTableFooting ||
                  (body && body_rows_ > 0 && body_rows_ < format_.block_rows);
    glued_ = heading || row.with_next;
    strip.start = row.start;
    strip.first_item = document_.parts[row.part].first_item;
    strip.ends_table = last && r + 1 == rows_.size();
    if (strip.ends_table) strip.space_after = format_.space_after;
    if (heading) {
      Strip again = strip;
      MakeCopy(&again);
      parts_->heading_height += again.height;
      parts_->heading.push_back(std::move(again));
    } else {
      strip.table = parts_;
      strip.foots = row.section == ElementKind::kTableFooting;
      body_rows_ += body ? 1 : 0;
    }
    going = Emit(std::move(strip));
  }
  above_ = std::move(rows_.back());
  for (Cell& cell : above_->cells) cell.strips.clear();
  rows_.clear();
  reach_ = 0;
  covered_to_.clear();
  return going;
}

Strip TableSetter::RowStrip(std::size_t index) {
  const Row& row = rows_[index];
  Strip strip;
  strip.height = row.height;
  Mark& begin = strip.marks.emplace_back();
  begin.kind = Mark::Kind::kGroupBegin;
  begin.text = "TR";
  begin.ref = part_;
  for (std::size_t c = 0; c < row.cells.size(); ++c) {
    const Cell& cell = row.cells[c];
    if (cell.covered) continue;
    double height = 0;
    for (std::size_t r = index; r < std::min<std::size_t>(index + cell.rows, rows_.size()); ++r) {
      height += rows_[r].height;
    }
    AddCell(row, cell, c, height, &strip);
  }
  for (std::size_t c = 0; c < row.cells.size(); ++c) {
    if (!row.cells[c].covered) RuleCell(index, c, &strip);
  }
  strip.marks.emplace_back().kind = Mark::Kind::kGroupEnd;
  if (parts_->broken_off.empty() && !format_.bottom_ruling_last) {
    const Ruling* bottom = setting_.tables.RulingNamed(format_.bottom_ruling);
    if (bottom != nullptr) {
      Strip rule;
      Rule(*bottom, left_.front(), 0, left_.back() - left_.front(), true, &rule);
      parts_->broken_off = std::move(rule.marks);
    }
  }
  return strip;
}

void TableSetter::AddCell(const Row& row, const Cell& cell, std::size_t column, double height,
                          Strip* strip) const {
  Shade(row, cell, column, height, strip);
  Mark& begin = strip->marks.emplace_back();
  begin.kind = Mark::Kind::kGroupBegin;
  begin.text = "TD";
  const double spare = std::max(height - cell.content_height, 0.0);
  const double down = cell.alignment == CellAlignment::kMiddle   ? spare / 2
                      : cell.alignment == CellAlignment::kBottom ? spare
                                                                 : 0;
  StackStrips(cell.strips, Left(column) + cell.margins.left, cell.margins.top + down, &strip->marks);
  strip->marks.emplace_back().kind = Mark::Kind::kGroupEnd;
}

void TableSetter::Shade(const Row& row, const Cell& cell, std::size_t column, double height,
                        Strip* strip) const {
  TableShade shade = format_.heading;
  if (row.section == ElementKind::kTableBody) {
    const std::uint32_t period = format_.shade_period + format_.other_shade_period;
    const std::size_t at = format_.shade_by_column ? column : row.body_index;
    shade = period == 0 || at % period < format_.shade_period ? format_.body : format_.other_body;
  }
  if (cell.fill) shade.fill = *cell.fill;
  if (!cell.color.empty()) shade.color = cell.color;
  Mark mark;
  if (!setting_.tables.ShadeColor(shade, &mark.color) || mark.color == Rgb{1, 1, 1}) return;
  mark.x = Left(column);
  mark.width = Left(column + cell.columns) - mark.x;
  mark.height = height;
  strip->marks.push_back(std::move(mark));
}

// The edges at the top and on the left, those in common with the cells there, and the others where the table
// ends.
void TableSetter::RuleCell(std::size_t index, std::size_t column, Strip* strip) const {
  const Cell& cell = rows_[index].cells[column];
  const double x = Left(column);
  const double right = Left(column + cell.columns);
  double reach = 0;
  for (std::size_t r = index; r < std::min<std::size_t>(index + cell.rows, rows_.size()); ++r) {
    reach += rows_[r].height;
  }
  if (const Ruling* top = EdgeRuling(index, column, kTopEdge)) Rule(*top, x, 0, right - x, true, strip);
  if (const Ruling* left = EdgeRuling(index, column, kLeftEdge)) Rule(*left, x, 0, reach, false, strip);
  if (column + cell.columns >= rows_[index].cells.size()) {
    if (const Ruling* edge = EdgeRuling(index, column, kRightEdge))
      Rule(*edge, right, 0, reach, false, strip);
  }
  if (closing_ && index + cell.rows >= rows_.size()) {
    if (const Ruling* edge = EdgeRuling(index, column, kBottomEdge)) {
      Rule(*edge, x, reach, right - x, true, strip);
    }
  }
}

// What a cell says of an edge counts, then what its neighbor says of the same one, then the table's format.
const Ruling* TableSetter::EdgeRuling(std::size_t index, std::size_t column, Edge edge) const {
  const Row& row = rows_[index];
  const Row* above = index > 0 ? &rows_[index - 1] : above_ ? &*above_ : nullptr;
  const Cell& cell = row.cells[column];
  if (cell.rulings[edge]) return setting_.tables.RulingNamed(*cell.rulings[edge]);
  if (edge == kTopEdge && above != nullptr && column < above->cells.size() &&
      above->cells[column].rulings[kBottomEdge]) {
    return setting_.tables.RulingNamed(*above->cells[column].rulings[kBottomEdge]);
  }
  if (edge == kLeftEdge && column > 0 && row.cells[column - 1].rulings[kRightEdge]) {
    return setting_.tables.RulingNamed(*row.cells[column - 1].rulings[kRightEdge]);
  }
  return setting_.tables.RulingNamed(DefaultRuling(row, above, column, edge));
}

const std::string& TableSetter::DefaultRuling(const Row& row, const Row* above, std::size_t column,
                                              Edge edge) const {
  switch (edge) {
    case kLeftEdge:
      if (column == 0) return format_.left_ruling;
      return column == format_.other_column ? format_.other_column_ruling : format_.column_ruling;
    case kRightEdge:
      return format_.right_ruling;
    case kBottomEdge:
      return format_.bottom_ruling;
    case kTopEdge:
      break;
  }
  if (above == nullptr) return format_.top_ruling;
  if (above->section != row.section) return format_.separator_ruling;
  if (row.section != ElementKind::kTableBody) return format_.heading_row_ruling;
  const bool other = format_.ruling_period > 0 && row.body_index % format_.ruling_period == 0;
  return other ? format_.other_row_ruling : format_.row_ruling;
}

// A rule lies on the edge, half to each side.
void TableSetter::Rule(const Ruling& ruling, double x, double y, double length, bool across,
                       Strip* strip) const {
  const double whole = ruling.two_lines ? 2 * ruling.width + ruling.gap : ruling.width;
  const int lines = ruling.two_lines ? 2 : 1;
  for (int i = 0; i < lines; ++i) {
    const double side = -whole / 2 + i * (ruling.width + ruling.gap);
    Mark& mark = strip->marks.emplace_back();
    mark.color = ruling.color;
    mark.x = across ? x - ruling.width / 2 : x + side;
    mark.y = across ? y + side : y;
    mark.width = across ? length + ruling.width : ruling.width;
    mark.height = across ? ruling.width : length;
  }
}

}  // namespace

bool SetTable(Setting& setting, std::uint32_t part, double width, std::uint32_t depth, bool glued,
              const TakeStrip& take) {
  return TableSetter(setting, part, width, depth, take).Run(glued);
}

}  // namespace qelm::embedded::render
