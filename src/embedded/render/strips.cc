#include "embedded/render/strips.h"

#include <algorithm>

namespace qelm::embedded::render {

bool StripMaker::Give(Strip&& strip) { return (*take_)(std::move(strip)); }

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
  while (story.text.size() > kLongestText) {
    StoryParagraph rest = SplitLongText(&story);
    if (!AddLines(std::make_shared<const LaidParagraph>(setting_, std::move(story), width_))) return false;
    story = std::move(rest);
  }
  const ParagraphFormat& format = setting_.formats.Paragraph(story.state);
  const bool beside = format.style == PlacementStyle::kSideHead && side_width_ > 0;
  const auto laid =
      std::make_shared<const LaidParagraph>(setting_, std::move(story), beside ? side_width_ : width_);
  if (beside) {
    if (!Give(SideHead(laid))) return false;
    keep_next_ = true;
  } else {
    if (!AddLines(laid)) return false;
    keep_next_ = format.with_next;
  }
  for (const std::uint32_t table : laid->story().tables) {
    if (!SetTable(setting_, table, width_, depth_, keep_next_, *take_)) return false;
    keep_next_ = false;
  }
  return true;
}

bool StripMaker::AddLines(const std::shared_ptr<const LaidParagraph>& laid) {
  const ParagraphFormat& format = laid->format();
  const auto count = static_cast<std::uint32_t>(laid->lines().size());
  for (std::uint32_t i = 0; i < count; ++i) {
    Strip strip = LineStrip(laid, i);
    if (i == 0 && !laid->story().goes_on) {
      strip.glued = keep_next_ || format.with_previous;
      strip.start = format.start;
      strip.space_before = format.space_before;
      strip.begins = laid;
      strip.first_item = laid->story().first_item;
    } else {
      strip.glued = i < format.block_lines || count - i < format.block_lines;
      const auto& starts = laid->story().item_starts;
      const auto at =
          std::lower_bound(starts.begin(), starts.end(), laid->lines()[i].begin,
                           [](const auto& start, std::uint32_t byte) { return start.first < byte; });
      if (at != starts.end()) strip.first_item = at->second;
    }
    if (i + 1 == count && !laid->story().is_split) strip.space_after = format.space_after;
    if (!Give(std::move(strip))) return false;
    for (Strip& frame : behind_) {
      if (!Give(std::move(frame))) return false;
    }
    behind_.clear();
  }
  return true;
}

Strip StripMaker::LineStrip(const std::shared_ptr<const LaidParagraph>& laid, std::uint32_t index) {
  const LaidLine& line = laid->lines()[index];
  Strip strip;
  strip.height = line.height;
  if (!laid->format().box_color.empty()) {
    Mark& box = strip.marks.emplace_back();
    box.width = width_;
    box.height = line.height;
    box.color = ColorNamed(setting_.document, laid->format().box_color);
  }
  if (line.change_bar) {
    Mark& bar = strip.marks.emplace_back();
    bar.kind = Mark::Kind::kChangeBar;
    bar.width = width_;
    bar.height = line.height;
  }
  Mark& mark = strip.marks.emplace_back();
  mark.kind = Mark::Kind::kLine;
  mark.y = line.ascent;
  mark.width = width_;
  mark.height = line.height;
  mark.ref = index;
  mark.paragraph = laid;
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

Strip StripMaker::SideHead(const std::shared_ptr<const LaidParagraph>& laid) const {
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
    case FrameKind::kRunIn:
    case FrameKind::kNotAnchored:
      return;  // drawn with the line
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
      mark.x = width_ + place.near_side_offset;
      mark.y = line.ascent - place.baseline_offset - place.height;
      strip->marks.push_back(std::move(mark));
      return;
    default:
      break;
  }
  const double room = width_ - place.width;
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
