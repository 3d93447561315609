#include "embedded/render/flow_filler.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "embedded/render/column_balance.h"
#include "embedded/render/strip_cutter.h"

namespace qelm::embedded::render {
namespace {

// Lengths are sums of decimals: what is too high by less than this fits.
constexpr double kTolerance = 0.05;

// The frame of the reference pages that stands between text and footnotes.
constexpr std::string_view kNoteSeparator = "Footnote";

double SpaceAbove(double behind, const Strip& strip) { return std::max(behind, strip.space_before); }

// How far down the letters of a strip go; 0 where it has none.
double LowestBaseline(const Strip& strip) {
  double lowest = 0;
  for (const Mark& mark : strip.marks) {
    if (mark.kind == Mark::Kind::kLine) lowest = std::max(lowest, mark.y);
  }
  return lowest;
}

// How far down the text of a row goes: below the row where a cell straddles others.
double Reach(const Strip& strip) {
  return strip.table ? std::max(strip.height, LowestBaseline(strip)) : strip.height;
}

bool HasText(const Strip& strip) {
  return std::any_of(strip.marks.begin(), strip.marks.end(), [](const Mark& mark) {
    if (mark.kind != Mark::Kind::kLine) return mark.kind == Mark::Kind::kFrame;
    return mark.paragraph->LineText(mark.ref).find_first_not_of(" \t") != std::string::npos;
  });
}

bool InOneFrame(const Column& one, const Column& other) {
  return one.frame.x == other.frame.x && one.frame.y == other.frame.y;
}

// Makes one strip of rows and those that their text goes down into, so that they are cut together.
std::vector<Strip> JoinStraddled(std::vector<Strip>&& strips) {
  std::vector<Strip> joined;
  double reach = 0;  // of the last one
  for (Strip& strip : strips) {
    const bool inside = !joined.empty() && joined.back().table && joined.back().table == strip.table &&
                        reach > joined.back().height + kTolerance;
    if (!inside) {
      reach = Reach(strip);
      joined.push_back(std::move(strip));
      continue;
    }
    Strip& whole = joined.back();
    reach = std::max(reach, whole.height + Reach(strip));
    PlaceMarks(strip.marks, 0, whole.height, &whole.marks);
    whole.height += strip.height;
    whole.space_after = strip.space_after;
    whole.foots = strip.foots;
    whole.ends_table = strip.ends_table;
    for (std::shared_ptr<NoteBlock>& note : strip.notes) whole.notes.push_back(std::move(note));
  }
  return joined;
}

}  // namespace

FlowFiller::FlowFiller(Setting& setting, bool double_sided, model::Id flow, FlowPages* pages,
                       RunningText* running)
    : setting_(setting),
      double_sided_(double_sided),
      id_(flow),
      flow_(setting.document.flows[flow]),
      pages_(*pages),
      running_(running),
      maker_(setting, 0) {}

void FlowFiller::Begin() {
  maker_.Begin(flow_.first_item, flow_.end_item);
  maker_.SetSettle([this] { Settle(); });
  BeginPage();
}

// Places what is complete. Where no line has room below it, the text behind is set for the next column.
void FlowFiller::Settle() {
  constexpr double kLowestLine = 1;
  if (going_) PlaceGroup();
  if (going_ && !at_top_ && Room() - behind_ < kLowestLine && !IsLastColumn()) NextColumn();
}

bool FlowFiller::Step() {
  if (finished_) return false;
  if (maker_.Step([this](Strip&& strip) { return Take(std::move(strip)); })) return true;
  Finish();
  return false;
}

void FlowFiller::Finish() {
  finished_ = true;
  if (going_) PlaceGroup();
  while (going_ && !floats_.empty()) NextColumn();
  if (going_) Balance();
  if (going_) EndColumn();
  while (going_ && !carried_.empty()) {
    Advance();
    if (going_) EndColumn();
  }
  cut_ = cut_ || !floats_.empty() || !carried_.empty();
}

bool FlowFiller::Take(Strip&& strip) {
  if (!going_) {
    NoteCut(strip);
    return !cut_;
  }
  if (strip.floats) {
    floats_.push_back(std::move(strip));
    return true;
  }
  if (!strip.glued || strip.start != StartAt::kAnywhere) PlaceGroup();
  group_reach_ = std::max(group_reach_, group_height_ + Reach(strip));
  group_height_ += strip.height;
  group_.push_back(std::move(strip));
  // What no column can hold together need not wait, but for the rows that its text goes down into.
  const bool straddled = group_reach_ > group_height_ + kTolerance;
  if (going_ && !straddled && group_height_ > Here().height) PlaceGroup();
  return true;
}

void FlowFiller::NoteCut(const Strip& strip) { cut_ = cut_ || HasText(strip); }

void FlowFiller::PlaceGroup() {
  std::vector<Strip> group = std::exchange(group_, {});
  group_height_ = group_reach_ = 0;
  if (group.empty()) return;
  if (going_) Start(group.front().start);
  if (going_ && !at_top_ && !Fits(group) && !IsLastColumn()) NextColumn();
  if (going_ && !Fits(group)) group = JoinStraddled(std::move(group));
  const bool whole = going_ && Fits(group);
  for (Strip& strip : group) {
    if (whole) {
      PlaceStrip(std::move(strip));
    } else if (!going_ || !PlaceInPieces(&strip)) {
      NoteCut(strip);
    }
  }
}

// A strip of a gathering that is too high: as much of it as fits, column by column. False, with what is left
// in the strip, where there is no further column.
bool FlowFiller::PlaceInPieces(Strip* strip) {
  std::optional<StripCutter> cutter;
  while (going_ && !Fits({strip, 1})) {
    if (!at_top_ && strip->height <= Here().height && !IsLastColumn()) {
      NextColumn();
      continue;
    }
    if (!cutter) cutter.emplace(strip);
    const double height =
        Room() - (at_top_ ? 0 : SpaceAbove(behind_, *strip)) - RepeatedHeight(*strip) - FootingBelow(*strip);
    Strip piece = cutter->Cut(height, at_top_);
    // What cannot be cut stands at the top of a column as it is.
    if (piece.height <= 0 && at_top_) break;
    if (piece.height > 0) PlaceStrip(std::move(piece));
    NextColumn();
  }
  if (cutter) *strip = cutter->Finish();
  if (!going_) return false;
  PlaceStrip(std::move(*strip));
  return true;
}

// Goes to where a paragraph wants to begin.
void FlowFiller::Start(StartAt start) {
  if (start == StartAt::kAnywhere) return;
  if (start == StartAt::kColumn) {
    if (!at_top_) NextColumn();
    return;
  }
  if (!page_empty_) ToNewPage();
  const bool wants_left = start == StartAt::kLeftPage;
  const bool sided = wants_left || start == StartAt::kRightPage;
  if (going_ && sided && double_sided_ && pages_.Page().design->left != wants_left) ToNewPage();
}

void FlowFiller::ToNewPage() {
  Balance();
  EndColumn();
  column_ = pages_.Columns().size();
  Advance();
}

// The height of the heading that stands again above a row at the top of a column. One that would leave the
// rows less than half the column is not repeated.
double FlowFiller::RepeatedHeight(const Strip& strip) const {
  if (!at_top_ || !strip.table || strip.table != open_table_) return 0;
  const double height = strip.table->heading_height;
  return height > Here().height / 2 ? 0 : height;
}

// The height of the footing that has to stand below a row, should the table be broken off there. One with
// which heading and footing would leave the rows less than half the column is not repeated.
double FlowFiller::FootingHeight(const TableParts* table) const {
  if (table == nullptr || table->footing_height + table->heading_height > Here().height / 2) return 0;
  return table->footing_height;
}

// The height that strips take below what stands in the column, with their footnotes.
double FlowFiller::Needed(std::span<const Strip> strips) const {
  double at = RepeatedHeight(strips.front());
  double lowest = 0;
  double notes = 0;
  double behind = behind_;
  bool top = at_top_;
  bool any_note = !notes_.empty();
  for (const Strip& strip : strips) {
    if (!top) at += SpaceAbove(behind, strip);
    if (strip.straddles) at = std::max(at, side_bottom_ - y_);
    lowest = std::max(lowest, at + strip.height);
    if (!strip.side_head) at += strip.height;
    behind = strip.space_after;
    top = false;
    for (const std::shared_ptr<NoteBlock>& note : strip.notes) {
      if (!any_note) notes += SeparatorHeight();
      any_note = true;
      notes += note->height;
    }
  }
  return std::max(at, lowest) + FootingBelow(strips.back()) + std::min(notes, setting_.most_note_height);
}

// In the very last column a line fits when its letters do.
bool FlowFiller::Fits(std::span<const Strip> strips) const {
  double room = Room();
  const double baseline = IsLastColumn() ? LowestBaseline(strips.back()) : 0;
  if (baseline > 0) room += std::max(strips.back().height - baseline, 0.0);
  return Needed(strips) <= room;
}

double FlowFiller::Room() const {
  return Here().height - y_ - std::min(notes_height_, setting_.most_note_height) + kTolerance;
}

void FlowFiller::PlaceStrip(Strip&& strip) {
  if (RepeatedHeight(strip) > 0) PlaceHeading(strip);
  if (!at_top_) y_ += SpaceAbove(behind_, strip);
  if (strip.straddles) y_ = std::max(y_, side_bottom_);
  LaidPage& page = pages_.Page();
  const Column& column = Here();
  double x = column.x;
  double y = y_;
  if (strip.side_head && column.side_head.width > 0) {
    x = column.side_head.x;
    y = y_ = std::max(y_, side_bottom_);
    side_bottom_ = y + strip.height;
  }
  if (strip.begins) {
    page.begins.push_back({strip.begins, column.y + y});
    if (running_ != nullptr) running_->Add(strip.begins->story());
  }
  if (strip.first_item != model::kNoIndex &&
      (page_starts_.empty() || page_starts_.back().number != page.number)) {
    page_starts_.push_back({strip.first_item, page.number, setting_.facts.number});
  }
  if (column.balanced) {
    balanced_.push_back(strip);
    balanced_begins_.push_back(page.begins.size() - (strip.begins ? 1 : 0));
  }
  PlaceMarks(strip.marks, x, column.y + y, &Marks());
  if (!strip.side_head) y_ += strip.height;
  behind_ = strip.space_after;
  at_top_ = page_empty_ = false;
  for (std::shared_ptr<NoteBlock>& note : strip.notes) TakeNote(std::move(note));
  const bool goes_on = strip.table && !strip.foots && !strip.ends_table;
  open_table_ = goes_on ? std::move(strip.table) : nullptr;
}

void FlowFiller::PlaceHeading(const Strip& next) {
  StackStrips(next.table->heading, Here().x, Here().y + y_, &Marks());
  y_ += next.table->heading_height;
}

double FlowFiller::SeparatorHeight() const { return setting_.graphics.ReferenceFrame(kNoteSeparator).height; }

void FlowFiller::TakeNote(std::shared_ptr<NoteBlock> note) {
  if (notes_.empty()) notes_height_ += SeparatorHeight();
  notes_height_ += note->height;
  NumberNote(note.get());
  notes_.push_back(std::move(note));
}

// The page of the anchor gives the number. One that is set on a later page keeps it there.
void FlowFiller::NumberNote(NoteBlock* note) {
  if (note->part == 0 || !setting_.notes.restarts_on_pages) return;
  if (note->number.empty()) note->number = setting_.notes.Number(setting_.notes.first + page_notes_++);
  pages_.Page().note_numbers.emplace_back(note->part, note->number);
}

// Footnotes stand at the foot of the column; what has no room there goes on in the next one.
void FlowFiller::PlaceNotes() {
  if (notes_.empty()) return;
  frame_has_notes_ = true;
  const Column& column = Here();
  double height = 0;
  for (const std::shared_ptr<NoteBlock>& note : notes_) height += note->height;
  const double separator = SeparatorHeight();
  double y = std::max(column.height - height - separator, y_);
  if (separator > 0) {
    Mark& mark = Marks().emplace_back();
    mark.kind = Mark::Kind::kReference;
    mark.text = kNoteSeparator;
    mark.x = column.x;
    mark.y = column.y + y;
    y += separator;
  }
  bool any_placed = false;
  for (std::shared_ptr<NoteBlock>& note : notes_) {
    const bool placed = carried_.empty() && PlaceNote(note.get(), any_placed, &y);
    any_placed = true;
    if (!placed) carried_.push_back(std::move(note));
  }
  notes_.clear();
  notes_height_ = 0;
}

// Places what fits of a footnote, of the first one at least a strip. Returns whether that is all of it.
bool FlowFiller::PlaceNote(NoteBlock* note, bool any_placed, double* y) {
  const Column& column = Here();
  const double begin = *y;
  const std::size_t first = note->placed;
  while (note->placed < note->strips.size()) {
    const Strip& strip = note->strips[note->placed];
    const double space = note->placed > first ? SpaceBetween(note->strips[note->placed - 1], strip) : 0;
    const bool fits = *y + space + strip.height <= column.height + kTolerance;
    if (!fits && (any_placed || note->placed > first)) {
      note->height -= *y - begin + space;
      return false;
    }
    *y += space;
    PlaceMarks(strip.marks, column.x, column.y + *y, &Marks());
    *y += strip.height;
    ++note->placed;
  }
  return true;
}

void FlowFiller::EndColumn() {
  if (open_table_ && !at_top_) BreakTable();
  PlaceNotes();
}

void FlowFiller::BreakTable() {
  const Column& column = Here();
  if (FootingHeight(open_table_.get()) > 0) {
    y_ += StackStrips(open_table_->footing, column.x, column.y + y_, &Marks());
  } else {
    PlaceMarks(open_table_->broken_off, column.x, column.y + y_, &Marks());
  }
}

void FlowFiller::NextColumn() {
  EndColumn();
  Advance();
}

void FlowFiller::Advance() {
  if (++column_ < pages_.Columns().size()) {
    BeginColumn();
  } else if (pages_.Next()) {
    BeginPage();
  } else {
    going_ = false;
    return;
  }
  for (std::shared_ptr<NoteBlock>& note : std::exchange(carried_, {})) TakeNote(std::move(note));
  PlaceFloats();
}

// They keep their order: one that does not fit holds up those behind it.
void FlowFiller::PlaceFloats() {
  const std::shared_ptr<const TableParts> table = open_table_;
  while (!floats_.empty() && (at_top_ || Fits({&floats_.front(), 1}))) {
    PlaceStrip(std::move(floats_.front()));
    floats_.pop_front();
  }
  open_table_ = table;
}

void FlowFiller::BeginPage() {
  page_notes_ = 0;
  if (setting_.notes.restarts_on_pages) setting_.next_note = setting_.notes.first;
  page_empty_ = true;
  column_ = 0;
  BeginColumn();
}

// Upright columns share one text, and so do those of one frame.
void FlowFiller::BeginColumn() {
  y_ = behind_ = side_bottom_ = 0;
  at_top_ = true;
  const Column& column = Here();
  maker_.SetColumn(column.width, column.side_head.width);
  const std::vector<Column>& columns = pages_.Columns();
  const bool shares_frame = (column_ > 0 && InOneFrame(columns[column_ - 1], column)) ||
                            (column_ + 1 < columns.size() && InOneFrame(columns[column_ + 1], column));
  if (!shares_frame) maker_.SetStraddle(column.frame.x - column.x, column.frame.width);
  std::vector<LaidText>& texts = pages_.Page().body;
  const auto shared = [&](const LaidText& text) {
    const bool same_frame = text.place.x == column.frame.x && text.place.y == column.frame.y;
    return text.angle == column.angle && (column.angle == 0 || same_frame);
  };
  if (texts.empty() || !shared(texts.back())) texts.push_back({column.frame, column.angle, id_, {}});
  text_ = texts.size() - 1;
  if (column_ != 0 && InOneFrame(pages_.Columns()[column_ - 1], column)) return;
  balanced_.clear();
  balanced_begins_.clear();
  first_balanced_ = Marks().size();
  frame_has_notes_ = false;
}

// Where text ends before its frame does, its columns end at the same height. Footnotes, side heads and
// tables, which are broken off with what belongs to them, are left where they are, and so is text that begins
// its column because its format says so.
void FlowFiller::Balance() {
  const bool plain = std::all_of(balanced_.begin(), balanced_.end(), [this](const Strip& strip) {
    const bool begins_column = strip.start != StartAt::kAnywhere && &strip != &balanced_.front();
    return strip.notes.empty() && !strip.side_head && !strip.table && !begins_column;
  });
  if (balanced_.empty() || !plain || frame_has_notes_ || !notes_.empty()) return;
  const std::vector<Column>& columns = pages_.Columns();
  std::size_t first = column_;
  while (first > 0 && InOneFrame(columns[first - 1], columns[column_])) --first;
  std::size_t end = column_ + 1;
  while (end < columns.size() && InOneFrame(columns[end], columns[column_])) ++end;
  const std::vector<std::size_t> places = BalanceColumns(balanced_, end - first, columns[first].height);
  if (places.empty()) return;
  Marks().resize(first_balanced_);
  double y = 0;
  for (std::size_t i = 0; i < balanced_.size(); ++i) {
    const Strip& strip = balanced_[i];
    const bool at_top = i == 0 || places[i] != places[i - 1];
    y = at_top ? 0 : y + SpaceBetween(balanced_[i - 1], strip);
    const Column& column = columns[first + places[i]];
    if (strip.begins) pages_.Page().begins[balanced_begins_[i]].y = column.y + y;
    PlaceMarks(strip.marks, column.x, column.y + y, &Marks());
    y += strip.height;
  }
  balanced_.clear();
}

}  // namespace qelm::embedded::render
