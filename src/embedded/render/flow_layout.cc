#include "embedded/render/flow_layout.h"

#include <algorithm>
#include <utility>

namespace qelm::embedded::render {
namespace {

// Lengths are sums of decimals: what is too high by less than this fits.
constexpr double kTolerance = 0.05;

// The frame of the reference pages that stands between text and footnotes.
constexpr std::string_view kNoteSeparator = "Footnote";

double SpaceAbove(double behind, const Strip& strip) { return std::max(behind, strip.space_before); }

// How far down the text of a row goes: below the row where a cell straddles others.
double Reach(const Strip& strip) {
  double reach = strip.height;
  if (!strip.table) return reach;
  for (const Mark& mark : strip.marks) {
    if (mark.kind == Mark::Kind::kLine) reach = std::max(reach, mark.y);
  }
  return reach;
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
    for (std::shared_ptr<NoteBlock>& note : strip.notes) whole.notes.push_back(std::move(note));
  }
  return joined;
}

}  // namespace

FlowLayout::FlowLayout(Setting& setting, const PageDesigns& designs, std::string_view number_style,
                       std::int64_t first_number, PageSink* sink)
    : setting_(setting),
      designs_(designs),
      number_style_(number_style),
      first_number_(first_number),
      sink_(sink),
      running_(setting),
      maker_(setting, 0) {
  setting_.facts.running = [this](std::string_view block, std::string_view argument) {
    return running_.Value(block, argument);
  };
}

std::size_t FlowLayout::Run() {
  setting_.next_note = setting_.notes.first;
  BeginPage();
  SkipToText();
  const model::Flow& flow = setting_.document.flows[setting_.document.main_flow];
  maker_.Run(flow.first_item, flow.end_item, [this](Strip&& strip) { return Take(std::move(strip)); });
  if (going_) PlaceGroup();
  while (going_ && !floats_.empty()) NextColumn();
  if (going_) EndColumn();
  while (going_ && !carried_.empty()) {
    Advance();
    if (going_) EndColumn();
  }
  if (going_) EndPage();
  EmitRest();
  setting_.facts.running = nullptr;
  return pages_;
}

bool FlowLayout::Take(Strip&& strip) {
  if (strip.floats) {
    floats_.push_back(std::move(strip));
    return going_;
  }
  if (!strip.glued || strip.start != StartAt::kAnywhere) PlaceGroup();
  group_reach_ = std::max(group_reach_, group_height_ + Reach(strip));
  group_height_ += strip.height;
  group_.push_back(std::move(strip));
  // What no column can hold together need not wait, but for the rows that its text goes down into.
  const bool straddled = group_reach_ > group_height_ + kTolerance;
  if (going_ && !straddled && group_height_ > Column().height) PlaceGroup();
  return going_;
}

bool FlowLayout::PlaceGroup() {
  std::vector<Strip> group = std::exchange(group_, {});
  group_height_ = group_reach_ = 0;
  if (group.empty() || !Start(group.front().start)) return going_;
  if (!at_top_ && Needed(group, group.size()) > Room()) NextColumn();
  if (!going_) return false;
  if (Needed(group, group.size()) <= Room()) {
    for (Strip& strip : group) PlaceStrip(std::move(strip));
    return going_;
  }
  group_ = std::move(group);
  PlaceOneByOne();
  return going_;
}

// A gathering that is too high: as much of it as fits, column by column.
void FlowLayout::PlaceOneByOne() {
  std::vector<Strip> group = JoinStraddled(std::exchange(group_, {}));
  for (Strip& strip : group) {
    std::vector<Strip> one;
    one.push_back(std::move(strip));
    while (going_) {
      Strip& next = one.front();
      if (Needed(one, 1) <= Room()) break;
      if (!at_top_ && next.height <= Column().height) {
        NextColumn();
        continue;
      }
      const double height = Room() - (at_top_ ? 0 : SpaceAbove(behind_, next)) - RepeatedHeight(next);
      Strip rest = CutStrip(&next, height);
      if (rest.height <= 0 || next.height <= 0) {
        // It cannot be cut. At the top of a column it stands as it is, else it goes to the next one.
        if (next.height <= 0) next = std::move(rest);
        if (at_top_) break;
        NextColumn();
        continue;
      }
      PlaceStrip(std::move(next));
      next = std::move(rest);
      NextColumn();
    }
    if (!going_) return;
    PlaceStrip(std::move(one.front()));
  }
}

// Goes to where a paragraph wants to begin.
bool FlowLayout::Start(StartAt start) {
  if (start == StartAt::kAnywhere) return going_;
  const bool page_empty = at_top_ && column_ == 0 && page_.marks.empty();
  if (start == StartAt::kColumn) {
    if (!at_top_) NextColumn();
    return going_;
  }
  const auto to_new_page = [this] {
    EndColumn();
    EndPage();
    if (!going_) return;
    BeginPage();
    SkipToText();
  };
  if (!page_empty) to_new_page();
  const bool wants_left = start == StartAt::kLeftPage;
  const bool sided = wants_left || start == StartAt::kRightPage;
  if (going_ && sided && designs_.double_sided() && page_.design->left != wants_left) to_new_page();
  return going_;
}

// The height of the heading that stands again above a row at the top of a column. One that would leave the
// rows less than half the column is not repeated.
double FlowLayout::RepeatedHeight(const Strip& strip) const {
  if (!at_top_ || !strip.table || strip.table != open_table_) return 0;
  const double height = strip.table->heading_height;
  return height > Column().height / 2 ? 0 : height;
}

// The height that strips take below what stands in the column, with their footnotes.
double FlowLayout::Needed(const std::vector<Strip>& strips, std::size_t count) const {
  double at = RepeatedHeight(strips.front());
  double lowest = 0;
  double notes = 0;
  double behind = behind_;
  bool top = at_top_;
  bool any_note = !notes_.empty();
  for (std::size_t i = 0; i < count; ++i) {
    const Strip& strip = strips[i];
    if (!top) at += SpaceAbove(behind, strip);
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
  return std::max(at, lowest) + std::min(notes, setting_.most_note_height);
}

double FlowLayout::Room() const {
  return Column().height - y_ - std::min(notes_height_, setting_.most_note_height) + kTolerance;
}

void FlowLayout::PlaceStrip(Strip&& strip) {
  if (RepeatedHeight(strip) > 0) PlaceHeading(strip);
  if (!at_top_) y_ += SpaceAbove(behind_, strip);
  const Rect& column = Column();
  double x = column.x;
  double y = y_;
  if (strip.side_head && column_ < page_.design->side_heads.size()) {
    x = page_.design->side_heads[column_].x;
    y = y_ = std::max(y_, side_bottom_);
    side_bottom_ = y + strip.height;
  }
  if (strip.begins) {
    page_.begins.push_back({strip.begins, column.y + y});
    running_.Add(strip.begins->story());
  }
  if (strip.first_item != model::kNoIndex &&
      (page_starts_.empty() || page_starts_.back().number != page_.number)) {
    page_starts_.push_back({strip.first_item, page_.number, setting_.facts.number});
  }
  PlaceMarks(strip.marks, x, column.y + y, &page_.marks);
  if (!strip.side_head) y_ += strip.height;
  behind_ = strip.space_after;
  at_top_ = false;
  for (std::shared_ptr<NoteBlock>& note : strip.notes) {
    if (notes_.empty()) notes_height_ += SeparatorHeight();
    notes_height_ += note->height;
    notes_.push_back(std::move(note));
  }
  open_table_ = std::move(strip.table);
}

void FlowLayout::PlaceHeading(const Strip& next) {
  const Rect& column = Column();
  StackStrips(next.table->heading, column.x, column.y + y_, &page_.marks);
  y_ += next.table->heading_height;
}

double FlowLayout::SeparatorHeight() const { return setting_.graphics.ReferenceFrame(kNoteSeparator).height; }

void FlowLayout::NumberNote(const NoteBlock& note) {
  if (note.part == 0 || !setting_.notes.restarts_on_pages) return;
  page_.note_numbers.emplace_back(note.part, setting_.notes.Number(setting_.notes.first + page_notes_++));
}

// Footnotes stand at the foot of the column; what has no room there goes on in the next one.
void FlowLayout::PlaceNotes() {
  if (notes_.empty()) return;
  const Rect& column = Column();
  double height = 0;
  for (const std::shared_ptr<NoteBlock>& note : notes_) height += note->height;
  const double separator = SeparatorHeight();
  double y = std::max(column.height - height - separator, y_);
  if (separator > 0) {
    Mark& mark = page_.marks.emplace_back();
    mark.kind = Mark::Kind::kReference;
    mark.text = kNoteSeparator;
    mark.x = column.x;
    mark.y = column.y + y;
    y += separator;
  }
  bool placed = false;
  for (std::shared_ptr<NoteBlock>& note : notes_) {
    auto rest = std::make_shared<NoteBlock>();
    for (std::size_t i = 0; i < note->strips.size(); ++i) {
      Strip& strip = note->strips[i];
      if (i > 0 && rest->strips.empty()) y += SpaceBetween(note->strips[i - 1], strip);
      const bool fits = !placed || y + strip.height <= column.height + kTolerance;
      if (!carried_.empty() || !rest->strips.empty() || !fits) {
        rest->strips.push_back(std::move(strip));
        continue;
      }
      if (i == 0) NumberNote(*note);
      PlaceMarks(strip.marks, column.x, column.y + y, &page_.marks);
      y += strip.height;
      placed = true;
    }
    if (rest->strips.empty()) continue;
    rest->part = rest->strips.size() == note->strips.size() ? note->part : 0;
    rest->height = StackedHeight(rest->strips);
    carried_.push_back(std::move(rest));
  }
  notes_.clear();
  notes_height_ = 0;
}

void FlowLayout::EndColumn() {
  if (open_table_ && !open_table_->broken_off.empty() && !at_top_) {
    const Rect& column = Column();
    PlaceMarks(open_table_->broken_off, column.x, column.y + y_, &page_.marks);
  }
  PlaceNotes();
}

void FlowLayout::NextColumn() {
  EndColumn();
  Advance();
}

void FlowLayout::Advance() {
  ++column_;
  if (column_ >= page_.design->columns.size()) {
    EndPage();
    if (!going_) return;
    BeginPage();
    SkipToText();
    if (!going_) return;
  }
  BeginColumn();
  for (std::shared_ptr<NoteBlock>& note : std::exchange(carried_, {})) {
    if (notes_.empty()) notes_height_ += SeparatorHeight();
    notes_height_ += note->height;
    notes_.push_back(std::move(note));
  }
  const std::shared_ptr<const TableParts> table = open_table_;
  for (Strip& strip : std::exchange(floats_, {})) {
    std::vector<Strip> one;
    one.push_back(std::move(strip));
    if (at_top_ || Needed(one, 1) <= Room()) {
      PlaceStrip(std::move(one.front()));
    } else {
      floats_.push_back(std::move(one.front()));
    }
  }
  open_table_ = table;
}

void FlowLayout::BeginPage() {
  page_ = {};
  page_.ordinal = ++pages_;
  page_.number = first_number_ + static_cast<std::int64_t>(pages_) - 1;
  page_.design = &designs_.Design(page_.ordinal, page_.number);
  setting_.facts.number = model::NumberIn(number_style_, page_.number);
  page_notes_ = 0;
  if (setting_.notes.restarts_on_pages) setting_.next_note = setting_.notes.first;
  running_.BeginPage();
  column_ = 0;
  if (!page_.design->columns.empty()) BeginColumn();
}

void FlowLayout::BeginColumn() {
  y_ = behind_ = side_bottom_ = 0;
  at_top_ = true;
  const std::vector<Rect>& sides = page_.design->side_heads;
  maker_.SetColumn(Column().width, column_ < sides.size() ? sides[column_].width : 0);
}

// Pages on which the main flow has no place.
void FlowLayout::SkipToText() {
  while (going_ && page_.design->columns.empty()) {
    EndPage();
    if (going_) BeginPage();
  }
}

void FlowLayout::EndPage() {
  for (const BackgroundFlow& text : page_.design->background) AddText(text);
  for (const BackgroundFlow& text : page_.design->own_text) AddText(text);
  going_ = sink_->Take(std::move(page_)) && going_;
}

void FlowLayout::AddText(const BackgroundFlow& text) {
  const model::Flow& flow = setting_.document.flows[text.flow];
  LaidText& laid = page_.texts.emplace_back();
  laid.place = text.place;
  laid.angle = text.angle;
  StackStrips(MakeStrips(setting_, flow.first_item, flow.end_item, text.place.width, 1), text.place.x,
              text.place.y, &laid.marks);
}

// Pages behind the end of the main flow are pages for what else stands on them.
void FlowLayout::EmitRest() {
  std::size_t last = designs_.recorded();
  const auto is_empty = [&] {
    const PageDesign& design = designs_.Design(last, first_number_ + static_cast<std::int64_t>(last) - 1);
    return design.own_text.empty() && !design.columns.empty();
  };
  while (last > pages_ && is_empty()) --last;
  while (going_ && pages_ < last) {
    BeginPage();
    EndPage();
  }
}

}  // namespace qelm::embedded::render
