#include "embedded/render/paragraph_layout.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>

#include "embedded/render/drawing.h"

namespace qelm::embedded::render {
namespace {

constexpr double kNarrowest = 12;  // a line has at least this width, whatever indents leave

int Units(double points) {
  return static_cast<int>(std::lround(std::clamp(points, -1e5, 1e5) * PANGO_SCALE));
}
double Points(int units) { return static_cast<double>(units) / PANGO_SCALE; }

guint16 Channel(double part) { return static_cast<guint16>(std::lround(part * 65535)); }

// Puts attributes for one range of bytes into a list.
struct Range {
  PangoAttrList* list;
  std::uint32_t begin;
  std::uint32_t end;
  void Add(PangoAttribute* attribute) const {
    attribute->start_index = begin;
    attribute->end_index = end;
    pango_attr_list_insert(list, attribute);
  }
};

PangoUnderline UnderlineOf(model::Underlining underlining) {
  switch (underlining) {
    case model::Underlining::kSingle:
      return PANGO_UNDERLINE_SINGLE;
    case model::Underlining::kDouble:
      return PANGO_UNDERLINE_DOUBLE;
    case model::Underlining::kNumeric:
      // At one depth under all text, so that sums line up.
      return PANGO_UNDERLINE_LOW;
    case model::Underlining::kNone:
      break;
  }
  return PANGO_UNDERLINE_NONE;
}

void AddIndicator(const Indicator& indicator, FontFormat* font) {
  if (!indicator.color.empty()) font->color = indicator.color;
  if (!indicator.background.empty()) font->background = indicator.background;
  switch (indicator.style) {
    case Indicator::Style::kUnderline:
      font->underlining = model::Underlining::kSingle;
      break;
    case Indicator::Style::kDouble:
      font->underlining = model::Underlining::kDouble;
      break;
    case Indicator::Style::kNumeric:
      font->underlining = model::Underlining::kNumeric;
      break;
    case Indicator::Style::kOverline:
      font->overline = true;
      break;
    case Indicator::Style::kStrike:
      font->strikethrough = true;
      break;
    case Indicator::Style::kChangeBar:
      font->change_bar = true;
      break;
    case Indicator::Style::kAsIs:
      break;
  }
}

// Breaking a word that is longer than a line costs what the rest of its item does, so that words of thousands
// of letters are given borders of items. An attribute that says what holds anyway makes one.
void DivideLongWords(std::string_view text, PangoAttrList* list) {
  constexpr std::size_t kPiece = 1024;
  const auto character_at = [text](std::size_t at) {
    while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) ++at;
    return static_cast<std::uint32_t>(std::min(at, text.size()));
  };
  for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
    end = std::min(text.find(' ', begin), text.size());
    for (std::size_t at = begin + kPiece; at < end; at += 2 * kPiece) {
      Range{list, character_at(at), character_at(std::min(at + kPiece, end))}.Add(
          pango_attr_fallback_new(TRUE));
    }
  }
}

// The character properties of a run as they are shown. `made` keeps those that no format has by itself.
const FontFormat& FontOf(Setting& setting, const StoryRun& run, FontFormat* made) {
  const FontFormat* font = &setting.formats.Font(run.paragraph_state, run.font);
  const bool indicated = run.conditions != 0 && run.conditions < setting.indicators.size();
  if (!run.format && !indicated) return *font;
  *made = *font;
  if (run.format) {
    const FontFormat& base =
        run.format->empty() ? setting.formats.Paragraph(run.paragraph_state).font : *font;
    *made = setting.formats.WithCharacterFormat(base, *run.format);
  }
  if (indicated) {
    for (const Indicator& indicator : setting.indicators[run.conditions]) AddIndicator(indicator, made);
  }
  return *made;
}

const Face& FaceFor(Setting& setting, const FontFormat& font, const FontFormat& made) {
  return &font == &made ? setting.fonts.Find(font) : setting.FaceOf(font);
}

void AddFont(Setting& setting, const Range& range, const FontFormat& font, const Face& face,
             const Face& own) {
  if (&face != &own) {
    range.Add(pango_attr_font_desc_new(face.description));
    if (face.language != own.language) range.Add(pango_attr_language_new(face.language));
  }
  const Rgb color = ColorNamed(setting.document, font.color);
  if (color != Rgb{}) {
    range.Add(pango_attr_foreground_new(Channel(color.red), Channel(color.green), Channel(color.blue)));
  }
  if (!font.background.empty()) {
    const Rgb behind = ColorNamed(setting.document, font.background);
    range.Add(pango_attr_background_new(Channel(behind.red), Channel(behind.green), Channel(behind.blue)));
  }
  if (font.underlining != model::Underlining::kNone) {
    range.Add(pango_attr_underline_new(UnderlineOf(font.underlining)));
  }
  if (font.overline) range.Add(pango_attr_overline_new(PANGO_OVERLINE_SINGLE));
  if (font.strikethrough) range.Add(pango_attr_strikethrough_new(TRUE));
  if (font.spread != 0) range.Add(pango_attr_letter_spacing_new(Units(face.size * font.spread / 100)));
  double rise = -font.size * font.shift_down / 100;
  if (font.position == LetterPosition::kSuperscript) rise += font.size * 0.33;
  if (font.position == LetterPosition::kSubscript) rise -= font.size * 0.17;
  if (rise != 0) range.Add(pango_attr_rise_new(Units(rise)));
  if (font.letter_case == LetterCase::kUpper) {
    range.Add(pango_attr_text_transform_new(PANGO_TEXT_TRANSFORM_UPPERCASE));
  } else if (font.letter_case == LetterCase::kLower) {
    range.Add(pango_attr_text_transform_new(PANGO_TEXT_TRANSFORM_LOWERCASE));
  }
}

// The number of a footnote as a layout of its own. The caller frees it.
PangoLayout* NoteLayout(Setting& setting, const StoryParagraph& story, const StoryObject& object,
                        double* rise) {
  const bool in_text = object.kind == StoryObject::Kind::kNote;
  const bool in_table =
      object.ref < setting.document.parts.size() && setting.table_note_parts.contains(object.ref);
  const NoteStyle& style = in_table ? setting.table_notes : setting.notes;
  FontFormat font = setting.formats.Paragraph(story.state).font;
  font.position = in_text ? style.anchor_position : style.number_position;
  *rise = font.position == LetterPosition::kSuperscript ? font.size * 0.33
          : font.position == LetterPosition::kSubscript ? -font.size * 0.17
                                                        : 0;
  const std::string number = NoteNumber(setting, object);
  const std::string text =
      in_text ? style.anchor_prefix + number + style.anchor_suffix : style.number_prefix + number;
  PangoLayout* layout = pango_layout_new(setting.fonts.context());
  pango_layout_set_font_description(layout, setting.fonts.Find(font).description);
  pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
  return layout;
}

// What the shape of an object in a line carries.
struct ObjectData {
  Setting* setting;
  const StoryParagraph* story;
  std::uint32_t object;
};

void FreeObject(gpointer data) { delete static_cast<ObjectData*>(data); }
gpointer CopyObject(gconstpointer data) { return new ObjectData(*static_cast<const ObjectData*>(data)); }

void DrawObject(cairo_t* cr, PangoAttrShape* shape, gboolean, gpointer) {
  const auto* data = static_cast<const ObjectData*>(shape->data);
  if (data == nullptr) return;
  const StoryObject& object = data->story->objects[data->object];
  double x = 0;
  double y = 0;
  cairo_get_current_point(cr, &x, &y);
  if (object.kind == StoryObject::Kind::kFrame) {
    DrawAnchoredFrame(*data->setting, cr, object.ref, x, y + Points(shape->logical_rect.y));
    return;
  }
  double rise = 0;
  PangoLayout* layout = NoteLayout(*data->setting, *data->story, object, &rise);
  cairo_move_to(cr, x, y - rise);
  pango_cairo_show_layout_line(cr, pango_layout_get_line_readonly(layout, 0));
  g_object_unref(layout);
}

}  // namespace

std::string NoteNumber(const Setting& setting, const StoryObject& object) {
  const auto found = setting.note_numbers.find(object.ref);
  return found == setting.note_numbers.end() ? "1" : found->second;
}

void DrawObjectsInLines(PangoContext* context) {
  pango_cairo_context_set_shape_renderer(context, DrawObject, nullptr, nullptr);
}

LaidParagraph::LaidParagraph(Setting& setting, StoryParagraph story, double width)
    : setting_(setting), story_(std::move(story)), format_(&setting.formats.Paragraph(story_.state)) {
  layout_ = pango_layout_new(setting.fonts.context());
  pango_layout_set_text(layout_, story_.text.data(), static_cast<int>(story_.text.size()));
  const double first = story_.goes_on ? format_->left_indent : format_->FirstIndent();
  left_ = std::min(first, format_->left_indent);
  pango_layout_set_indent(layout_, Units(first - format_->left_indent));
  pango_layout_set_width(layout_, Units(std::max(width - left_ - format_->right_indent, kNarrowest)));
  pango_layout_set_wrap(layout_, PANGO_WRAP_WORD_CHAR);
  pango_layout_set_justify(layout_, format_->alignment == Alignment::kJustified);
  pango_layout_set_alignment(layout_, format_->alignment == Alignment::kCenter  ? PANGO_ALIGN_CENTER
                                      : format_->alignment == Alignment::kRight ? PANGO_ALIGN_RIGHT
                                                                                : PANGO_ALIGN_LEFT);
  SetAttributes(setting);
  if (story_.text.find('\t') != std::string::npos) SetTabs(left_);
  MeasureLines(setting);
}

LaidParagraph::~LaidParagraph() { g_object_unref(layout_); }

void LaidParagraph::SetAttributes(Setting& setting) {
  const Face& own = setting.FaceOf(format_->font);
  pango_layout_set_font_description(layout_, own.description);
  PangoAttrList* list = pango_attr_list_new();
  if (own.language != nullptr) Range{list, 0, G_MAXUINT}.Add(pango_attr_language_new(own.language));
  std::uint32_t begin = 0;
  for (const StoryRun& run : story_.runs) {
    FontFormat made;
    const FontFormat& font = FontOf(setting, run, &made);
    AddFont(setting, {list, begin, run.end}, font, FaceFor(setting, font, made), own);
    begin = run.end;
  }
  AddObjects(setting, list);
  DivideLongWords(story_.text, list);
  pango_layout_set_attributes(layout_, list);
  pango_attr_list_unref(list);
}

// Frames that do not stand in the line take no room in it.
void LaidParagraph::AddObjects(Setting& setting, void* list) {
  constexpr std::uint32_t kReplacementSize = 3;
  for (std::uint32_t i = 0; i < story_.objects.size(); ++i) {
    const StoryObject& object = story_.objects[i];
    PangoRectangle place{};
    bool drawn = true;
    if (object.kind == StoryObject::Kind::kFrame) {
      const FramePlace frame = setting.graphics.Place(object.ref);
      drawn = frame.kind == FrameKind::kInline || frame.kind == FrameKind::kRunIn;
      if (drawn) {
        place.width = Units(frame.width);
        place.height = Units(frame.height);
        place.y = Units(-frame.height - frame.baseline_offset);
      }
    } else {
      double rise = 0;
      PangoLayout* number = NoteLayout(setting, story_, object, &rise);
      pango_layout_get_size(number, &place.width, nullptr);
      place.y = -PANGO_SCALE;
      place.height = PANGO_SCALE;
      g_object_unref(number);
    }
    PangoAttribute* shape =
        pango_attr_shape_new_with_data(&place, &place, drawn ? new ObjectData{&setting, &story_, i} : nullptr,
                                       drawn ? CopyObject : nullptr, drawn ? FreeObject : nullptr);
    Range{static_cast<PangoAttrList*>(list), object.at, object.at + kReplacementSize}.Add(shape);
  }
}

void LaidParagraph::SetTabs(double left) {
  constexpr PangoTabAlign kAligns[] = {PANGO_TAB_LEFT, PANGO_TAB_CENTER, PANGO_TAB_RIGHT, PANGO_TAB_DECIMAL};
  std::vector<TabStop> stops = format_->tabs;
  // Text behind a hanging number stands at the left indent even where no stop says so.
  const bool hangs = format_->FirstIndent() < format_->left_indent;
  const bool stop_there = std::any_of(stops.begin(), stops.end(), [&](const TabStop& stop) {
    return stop.position > format_->FirstIndent() && stop.position <= format_->left_indent + 0.5;
  });
  if (hangs && !stop_there) {
    stops.push_back({.position = format_->left_indent, .kind = TabKind::kLeft, .leader = {}, .decimal = {}});
  }
  std::stable_sort(stops.begin(), stops.end(),
                   [](const TabStop& one, const TabStop& other) { return one.position < other.position; });
  const int width = pango_layout_get_width(layout_);
  PangoTabArray* tabs = pango_tab_array_new(0, FALSE);
  gint count = 0;
  for (const TabStop& stop : stops) {
    const int at = Units(stop.position - left);
    if (at <= 0) continue;
    // A stop at the right margin is in the line, whatever the last digits of the lengths say.
    const int inside = at > width && at < width + PANGO_SCALE ? width : at;
    pango_tab_array_set_tab(tabs, count, kAligns[static_cast<std::size_t>(stop.kind)], inside);
    if (stop.kind == TabKind::kDecimal) {
      pango_tab_array_set_decimal_point(tabs, count, static_cast<gunichar>(stop.decimal.front()));
    }
    ++count;
  }
  if (count > 0) pango_layout_set_tabs(layout_, tabs);
  pango_tab_array_free(tabs);
}

void LaidParagraph::MeasureLines(Setting& setting) {
  struct RunHeight {
    std::uint32_t end;
    const Face* face;
    bool change_bar;
  };
  std::vector<RunHeight> heights;
  for (const StoryRun& run : story_.runs) {
    FontFormat made;
    const FontFormat& font = FontOf(setting, run, &made);
    heights.push_back({run.end, &FaceFor(setting, font, made), font.change_bar});
  }
  const Face& own = setting.FaceOf(format_->font);
  PangoLayoutIter* at = pango_layout_get_iter(layout_);
  std::size_t run = 0;
  std::uint32_t object = 0;
  do {
    LaidLine line;
    PangoRectangle place;
    line.line = pango_layout_iter_get_line_readonly(at);
    pango_layout_iter_get_line_extents(at, nullptr, &place);
    line.x = left_ + Points(place.x);
    line.width = Points(place.width);
    line.begin = static_cast<std::uint32_t>(std::max(pango_layout_line_get_start_index(line.line), 0));
    line.end = line.begin + static_cast<std::uint32_t>(std::max(pango_layout_line_get_length(line.line), 0));
    double descent = own.descent;
    line.ascent = own.ascent;
    while (run < heights.size() && heights[run].end <= line.begin) ++run;
    for (std::size_t i = run; i < heights.size() && (i == run || heights[i - 1].end < line.end); ++i) {
      line.change_bar = line.change_bar || heights[i].change_bar;
      if (format_->fixed_spacing) continue;
      line.ascent = std::max(line.ascent, heights[i].face->ascent);
      descent = std::max(descent, heights[i].face->descent);
    }
    line.first_object = object;
    while (object < story_.objects.size() && story_.objects[object].at < line.end) {
      const StoryObject& one = story_.objects[object++];
      if (one.kind != StoryObject::Kind::kFrame) continue;
      const FramePlace frame = setting.graphics.Place(one.ref);
      if (frame.kind != FrameKind::kInline && frame.kind != FrameKind::kRunIn) continue;
      line.ascent = std::max(line.ascent, frame.height + frame.baseline_offset);
      descent = std::max(descent, -frame.baseline_offset);
    }
    line.end_object = object;
    line.height = std::max(line.ascent + descent + format_->leading, 0.5);
    const auto index = static_cast<std::uint32_t>(lines_.size());
    lines_.push_back(line);
    if (!format_->tabs.empty()) FindLeaders(lines_.back(), index);
  } while (pango_layout_iter_next_line(at));
  pango_layout_iter_free(at);
}

// Each tab is a run of its own, so that where it begins says which stop it went to.
void LaidParagraph::FindLeaders(const LaidLine& line, std::uint32_t index) {
  const bool any = std::any_of(format_->tabs.begin(), format_->tabs.end(), [](const TabStop& stop) {
    return stop.leader.find_first_not_of(' ') != std::string::npos;
  });
  if (!any) return;
  double x = line.x;
  for (GSList* node = line.line->runs; node != nullptr; node = node->next) {
    const auto* run = static_cast<const PangoGlyphItem*>(node->data);
    const double width = Points(pango_glyph_string_get_width(run->glyphs));
    const auto offset = static_cast<std::size_t>(run->item->offset);
    if (offset < story_.text.size() && story_.text[offset] == '\t') {
      const TabStop* stop = nullptr;
      for (const TabStop& one : format_->tabs) {
        if (one.position > x + 0.01 && (stop == nullptr || one.position < stop->position)) stop = &one;
      }
      if (stop != nullptr && stop->leader.find_first_not_of(' ') != std::string::npos) {
        leaders_.push_back({index, x, width, stop->leader});
      }
    }
    x += width;
  }
}

double LaidParagraph::Height() const {
  double height = 0;
  for (const LaidLine& line : lines_) height += line.height;
  return height;
}

std::string LaidParagraph::LineText(std::uint32_t index) const {
  const LaidLine& line = lines_[index];
  std::string text;
  std::uint32_t at = line.begin;
  for (std::uint32_t i = line.first_object; i < line.end_object; ++i) {
    const StoryObject& object = story_.objects[i];
    text.append(story_.text, at, object.at - at);
    if (object.kind != StoryObject::Kind::kFrame) text += NoteNumber(setting_, object);
    at = object.at + 3;
  }
  text.append(story_.text, at, line.end - std::min(at, line.end));
  return text;
}

void LaidParagraph::Draw(cairo_t* cr, std::uint32_t index, double x, double y) const {
  cairo_move_to(cr, x + lines_[index].x, y);
  pango_cairo_show_layout_line(cr, lines_[index].line);
  for (const LaidLeader& leader : leaders_) {
    if (leader.line == index) DrawLeader(cr, leader, x, y);
  }
}

// Leaders are drawn as shapes: they are no text that anybody looks for. They end at the stop, so that they
// stand under each other.
void LaidParagraph::DrawLeader(cairo_t* cr, const LaidLeader& leader, double x, double y) const {
  PangoLayout* layout = pango_layout_new(setting_.fonts.context());
  pango_layout_set_font_description(layout, setting_.FaceOf(format_->font).description);
  pango_layout_set_text(layout, leader.text.data(), static_cast<int>(leader.text.size()));
  int width = 0;
  pango_layout_get_size(layout, &width, nullptr);
  constexpr double kGap = 1;
  const double one = Points(width);
  constexpr double kMostLeaders = 2000;
  const double count = one > 0 ? std::min(std::floor((leader.width - 2 * kGap) / one), kMostLeaders) : 0;
  if (count >= 1) {
    std::string text;
    for (int i = 0; i < static_cast<int>(count); ++i) text += leader.text;
    pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
    cairo_move_to(cr, x + leader.x + leader.width - kGap - count * one, y);
    pango_cairo_layout_line_path(cr, pango_layout_get_line_readonly(layout, 0));
    cairo_fill(cr);
  }
  g_object_unref(layout);
}

std::vector<LaidParagraph::Stretch> LaidParagraph::Stretches(std::uint32_t index, std::uint32_t begin,
                                                             std::uint32_t end) const {
  std::vector<Stretch> stretches;
  const LaidLine& line = lines_[index];
  int* ranges = nullptr;
  int count = 0;
  pango_layout_line_get_x_ranges(line.line, static_cast<int>(std::max(begin, line.begin)),
                                 static_cast<int>(std::min(end, line.end)), &ranges, &count);
  // Pango counts from the edge of the layout here and not from where the line begins.
  for (int i = 0; i < count; ++i) {
    stretches.push_back({left_ + Points(ranges[2 * i]), Points(ranges[2 * i + 1] - ranges[2 * i])});
  }
  g_free(ranges);
  return stretches;
}

}  // namespace qelm::embedded::render
