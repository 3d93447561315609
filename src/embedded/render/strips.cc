#include "embedded/render/strips.h"

#include <algorithm>
#include <utility>

namespace qelm::embedded::render {

bool StripMaker::Give(Strip&& strip) {
  if (straddles_) {
    for (Mark& mark : strip.marks) mark.x += text_x_;
    strip.straddles = true;
  }
  return (*take_)(std::move(strip));
}

bool StripMaker::Step(const TakeStrip& take) {
  take_ = &take;
  StoryParagraph story;
  return reader_->Next(&story) && AddParagraph(std::move(story));
}

void StripMaker::Run(std::uint32_t first, std::uint32_t end, const TakeStrip& take) {
  Begin(first, end);
  while (Step(take)) {
  }
}

void StripMaker::RunNote(std::uint32_t part, const TakeStrip& take) {
  const model::Part& note = setting_.document.parts[part];
  Begin(note.first_item + 1, note.end_item - 1);
  reader_->BeginWithNote(part);
  while (Step(take)) {
  }
}

bool StripMaker::AddParagraph(StoryParagraph story) {
  const ParagraphFormat& format = setting_.formats.Paragraph(story.state);
  if (settle_ && !keep_next_ && !format.with_previous) settle_();
  straddles_ = format.style == PlacementStyle::kStraddle && straddle_width_ > width_;
  text_x_ = straddles_ ? straddle_x_ : 0;
  text_width_ = straddles_ ? straddle_width_ : width_;
  while (story.text.size() > kLongestText) {
    StoryParagraph rest = SplitLongText(&story);
    if (!AddAllLines(std::make_shared<const LaidParagraph>(setting_, std::move(story), text_width_)))
      return false;
    story = std::move(rest);
  }
  const std::vector<std::uint32_t> tables = story.tables;
  const bool beside = format.style == PlacementStyle::kSideHead && side_width_ > 0;
  if (beside) {
    const auto laid = std::make_shared<const LaidParagraph>(setting_, std::move(story), side_width_);
    if (!Give(SideHead(laid)) || !GiveBehind()) return false;
    keep_next_ = true;
  } else {
    const std::uint32_t frame = RunInFrame(story);
    const bool going =
        frame != 0
            ? AddBesideFrame(std::move(story), frame)
            : AddAllLines(std::make_shared<const LaidParagraph>(setting_, std::move(story), text_width_));
    if (!going) return false;
    keep_next_ = format.with_next;
  }
  straddles_ = false;
  for (const std::uint32_t table : tables) {
    if (!SetTable(setting_, table, width_, depth_, keep_next_, *take_)) return false;
    keep_next_ = false;
  }
  return true;
}

// 0 where none runs into the paragraph, or it would leave no room for text.
std::uint32_t StripMaker::RunInFrame(const StoryParagraph& story) const {
  for (const StoryObject& object : story.objects) {
    if (object.kind != StoryObject::Kind::kFrame) continue;
    const FramePlace place = setting_.graphics.Place(object.ref);
    if (place.kind == FrameKind::kRunIn && place.width < text_width_ * 3 / 4) return object.ref;
  }
  return 0;
}

// The first lines are set to what is left beside the frame, and the text behind them to the whole width.
bool StripMaker::AddBesideFrame(StoryParagraph story, std::uint32_t frame) {
  const ParagraphFormat& format = setting_.formats.Paragraph(story.state);
  const FramePlace place = setting_.graphics.Place(frame);
  const double taken = place.width + std::max(place.near_side_offset, 0.0);
  const bool right = place.alignment == FrameAlignment::kRight || place.alignment == FrameAlignment::kOutside;
  StoryParagraph rest = story;
  const auto laid = std::make_shared<const LaidParagraph>(setting_, std::move(story), text_width_ - taken);
  run_in_ = {};
  run_in_.frame = frame;
  double height = 0;
  for (const LaidLine& line : laid->lines()) {
    if (height + 0.5 >= place.height) break;
    height += line.height;
    ++run_in_.lines;
  }
  run_in_.text_x = right ? 0 : taken;
  run_in_.missing = std::max(place.height - height, 0.0);
  Mark& mark = run_in_.mark;
  mark.kind = Mark::Kind::kFrame;
  mark.ref = frame;
  mark.x = right ? text_width_ - format.right_indent - place.width
                 : std::min(format.FirstIndent(), format.left_indent);
  mark.width = place.width;
  mark.height = place.height;
  const bool all = run_in_.lines == laid->lines().size();
  if (!AddLines(laid, run_in_.lines)) return false;
  const std::uint32_t beside = std::exchange(run_in_.lines, 0);
  if (all) return true;
  rest = SplitText(&rest, laid->lines()[beside].begin);
  return AddAllLines(std::make_shared<const LaidParagraph>(setting_, std::move(rest), text_width_));
}

bool StripMaker::AddLines(const std::shared_ptr<const LaidParagraph>& laid, std::uint32_t end) {
  const ParagraphFormat& format = laid->format();
  const auto count = static_cast<std::uint32_t>(laid->lines().size());
  for (std::uint32_t i = 0; i < end; ++i) {
    Strip strip = LineStrip(laid, i);
    if (i == 0 && !laid->story().goes_on) {
      strip.glued = keep_next_ || format.with_previous;
      strip.start = format.start;
      strip.space_before = format.space_before;
      strip.begins = laid;
      strip.first_item = laid->story().first_item;
    } else {
      strip.glued = i < format.block_lines || count - i < format.block_lines || i < run_in_.lines;
      const auto& starts = laid->story().item_starts;
      const auto at =
          std::lower_bound(starts.begin(), starts.end(), laid->lines()[i].begin,
                           [](const auto& start, std::uint32_t byte) { return start.first < byte; });
      if (at != starts.end()) strip.first_item = at->second;
    }
    if (i + 1 == count && !laid->story().is_split) strip.space_after = format.space_after;
    if (!Give(std::move(strip)) || !GiveBehind()) return false;
  }
  return true;
}

bool StripMaker::GiveBehind() {
  for (Strip& strip : std::exchange(behind_, {})) {
    if (!Give(std::move(strip))) return false;
  }
  return true;
}

Strip StripMaker::LineStrip(const std::shared_ptr<const LaidParagraph>& laid, std::uint32_t index) {
  const LaidLine& line = laid->lines()[index];
  Strip strip;
  strip.height = line.height;
  if (!laid->format().box_color.empty()) {
    Mark& box = strip.marks.emplace_back();
    box.width = text_width_;
    box.height = line.height;
    box.color = ColorNamed(setting_.document, laid->format().box_color);
  }
  if (line.change_bar) {
    Mark& bar = strip.marks.emplace_back();
    bar.kind = Mark::Kind::kChangeBar;
    bar.width = text_width_;
    bar.height = line.height;
  }
  Mark& mark = strip.marks.emplace_back();
  mark.kind = Mark::Kind::kLine;
  mark.y = line.ascent;
  mark.width = text_width_;
  mark.height = line.height;
  mark.ref = index;
  mark.paragraph = laid;
  if (index < run_in_.lines) {
    mark.x = run_in_.text_x;
    if (index + 1 == run_in_.lines) strip.height += run_in_.missing;
    if (index == 0) strip.marks.insert(strip.marks.end() - 1, run_in_.mark);
  }
  if (line.first_object != line.end_object) AddObjects(*laid, line, &strip);
  AddSeparators(*laid, index, &strip);
  return strip;
}

// Frames of the reference pages above the first line and below the last one.
void StripMaker::AddSeparators(const LaidParagraph& laid, std::uint32_t index, Strip* strip) const {
  const ParagraphFormat& format = laid.format();
  if (index == 0 && !format.top_frame.empty()) {
    const double height = setting_.graphics.ReferenceFrame(format.top_frame).height;
    for (Mark& mark : strip->marks) mark.y += height;
    Mark& frame = strip->marks.emplace_back();
    frame.kind = Mark::Kind::kReference;
    frame.text = format.top_frame;
    frame.height = height;
    strip->height += height;
  }
  if (index + 1 == laid.lines().size() && !format.bottom_frame.empty()) {
    Mark& frame = strip->marks.emplace_back();
    frame.kind = Mark::Kind::kReference;
    frame.text = format.bottom_frame;
    frame.y = strip->height;
    frame.height = setting_.graphics.ReferenceFrame(format.bottom_frame).height;
    strip->height += frame.height;
  }
}

Strip StripMaker::SideHead(const std::shared_ptr<const LaidParagraph>& laid) {
  const ParagraphFormat& format = laid->format();
  Strip strip;
  strip.side_head = true;
  strip.start = format.start;
  strip.glued = keep_next_ || format.with_previous;
  strip.space_before = format.space_before;
  strip.begins = laid;
  strip.first_item = laid->story().first_item;
  for (std::uint32_t i = 0; i < laid->lines().size(); ++i) {
    const LaidLine& line = laid->lines()[i];
    Mark& mark = strip.marks.emplace_back();
    mark.kind = Mark::Kind::kLine;
    mark.y = strip.height + line.ascent;
    mark.width = side_width_;
    mark.height = line.height;
    mark.ref = i;
    mark.paragraph = laid;
    const std::size_t first_beside = strip.marks.size();
    AddObjects(*laid, line, &strip);
    for (std::size_t m = first_beside; m < strip.marks.size(); ++m) strip.marks[m].y += strip.height;
    strip.height += line.height;
  }
  return strip;
}

void StripMaker::AddObjects(const LaidParagraph& laid, const LaidLine& line, Strip* strip) {
  for (std::uint32_t i = line.first_object; i < line.end_object; ++i) {
    const StoryObject& object = laid.story().objects[i];
    if (object.kind == StoryObject::Kind::kFrame) AddFrame(object.ref, line, strip);
    if (object.kind == StoryObject::Kind::kNote) strip->notes.push_back(SetNote(object.ref));
  }
}

void StripMaker::AddFrame(std::uint32_t frame, const LaidLine& line, Strip* strip) {
  const FramePlace place = setting_.graphics.Place(frame);
  Mark mark;
  mark.kind = Mark::Kind::kFrame;
  mark.ref = frame;
  mark.width = place.width;
  mark.height = place.height;
  switch (place.kind) {
    case FrameKind::kInline:
    case FrameKind::kNotAnchored:
      return;  // drawn with the line
    case FrameKind::kRunIn:
      if (frame == run_in_.frame) return;
      break;
    case FrameKind::kLeft:
    case FrameKind::kInside:
    case FrameKind::kNear:
      mark.x = -place.near_side_offset - place.width;
      mark.y = line.ascent - place.baseline_offset - place.height;
      strip->marks.push_back(std::move(mark));
      return;
    case FrameKind::kRight:
    case FrameKind::kOutside:
    case FrameKind::kFar:
      mark.x = text_width_ + place.near_side_offset;
      mark.y = line.ascent - place.baseline_offset - place.height;
      strip->marks.push_back(std::move(mark));
      return;
    default:
      break;
  }
  const double room = text_width_ - place.width;
  const bool right = place.alignment == FrameAlignment::kRight || place.alignment == FrameAlignment::kOutside;
  mark.x = place.alignment == FrameAlignment::kCenter ? room / 2 : right ? room : 0;
  Strip own;
  own.height = place.height;
  own.marks.push_back(std::move(mark));
  if (place.kind == FrameKind::kBottom && depth_ == 0) {
    auto block = std::make_shared<NoteBlock>();
    block->height = own.height;
    block->strips.push_back(std::move(own));
    strip->notes.push_back(std::move(block));
    return;
  }
  own.floats = depth_ == 0 && (place.kind == FrameKind::kTop || place.floating);
  own.glued = !own.floats;
  behind_.push_back(std::move(own));
}

// Notes of tables stand below the table, the others at the foot of the column, which is as wide.
std::shared_ptr<NoteBlock> StripMaker::SetNote(std::uint32_t part) {
  const bool in_table = depth_ > 0;
  const NoteStyle& style = in_table ? setting_.table_notes : setting_.notes;
  std::int64_t& next = in_table ? setting_.next_table_note : setting_.next_note;
  setting_.note_numbers[part] = style.Number(next++);
  if (in_table) setting_.table_note_parts.insert(part);
  auto block = std::make_shared<NoteBlock>();
  block->part = part;
  StripMaker maker(setting_, depth_ + 1);
  maker.SetColumn(in_table ? setting_.table_note_width : width_, 0);
  maker.RunNote(part, [&](Strip&& strip) {
    block->strips.push_back(std::move(strip));
    return true;
  });
  block->height = StackedHeight(block->strips);
  return block;
}

std::vector<Strip> MakeStrips(Setting& setting, std::uint32_t first, std::uint32_t end, double width,
                              std::uint32_t depth) {
  std::vector<Strip> strips;
  StripMaker maker(setting, depth);
  maker.SetColumn(width, 0);
  maker.Run(first, end, [&](Strip&& strip) {
    strips.push_back(std::move(strip));
    return true;
  });
  return strips;
}

}  // namespace qelm::embedded::render
