#include "embedded/render/graphics.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "embedded/render/color.h"
#include "embedded/render/design/drawings.h"
#include "embedded/render/fonts.h"
#include "embedded/render/images.h"

namespace qelm::embedded::render {
namespace {

constexpr double kRadians = std::numbers::pi / 180;

// What is left of the color in each pattern of pens and fills.
constexpr double kPatternShares[] = {1, 0.9, 0.7, 0.5, 0.3, 0.1, 0.03, 0, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5};

struct ObjectDeleter {
  void operator()(gpointer object) const { g_object_unref(object); }
};
struct AttributesDeleter {
  void operator()(PangoAttrList* list) const { pango_attr_list_unref(list); }
};
using Layout = std::unique_ptr<PangoLayout, ObjectDeleter>;
using Attributes = std::unique_ptr<PangoAttrList, AttributesDeleter>;

Layout MakeLayout(const Fonts& fonts, std::string_view text) {
  Layout layout(pango_layout_new(fonts.context()));
  pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
  pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
  return layout;
}

void SetColor(cairo_t* cr, Rgb color) { cairo_set_source_rgb(cr, color.red, color.green, color.blue); }

// Turns what is drawn around the middle of a place. MIF counts counterclockwise, with y upward.
void Rotate(cairo_t* cr, const Rect& place, double angle) {
  if (std::fmod(angle, 360) == 0) return;
  const double x = place.x + place.width / 2;
  const double y = place.y + place.height / 2;
  cairo_translate(cr, x, y);
  cairo_rotate(cr, -angle * kRadians);
  cairo_translate(cr, -x, -y);
}

}  // namespace

class Graphics::Painter {
 public:
  Painter(const model::Document& document, std::string folder, Fonts* fonts)
      : document_(document),
        drawings_(document),
        images_(document, std::move(folder)),
        own_fonts_(fonts == nullptr ? std::make_unique<Fonts>() : nullptr),
        fonts_(fonts == nullptr ? *own_fonts_ : *fonts) {
    flow_of_ = drawings_.FollowFlows(document);
    for (const Object& object : drawings_.objects) {
      const FlowPlace* const flow = object.kind == ObjectKind::kTextFrame ? FlowOf(object) : nullptr;
      if (flow == nullptr || document.flows[flow->flow].kind != model::FlowKind::kFrame) continue;
      std::vector<std::vector<Rect>>& frames = text_frames_[flow->flow];
      frames.resize(std::max<std::size_t>(frames.size(), flow->place + 1));
      frames[flow->place] = ColumnsOf(drawings_.text_frames[object.detail], object.place);
    }
  }
  const FlowPlace* FlowOf(const Object& text_frame) const {
    const auto found = flow_of_.find(drawings_.text_frames[text_frame.detail].number);
    return found == flow_of_.end() ? nullptr : &found->second;
  }

  void Frame(cairo_t* cr, std::uint32_t frame, double x, double y, const DrawText& text);
  void Page(cairo_t* cr, std::uint32_t page);
  bool Named(cairo_t* cr, std::string_view name, double x, double y);
  const Object* FindNamed(std::string_view name) const;

  const Drawings& drawings() const { return drawings_; }
  const std::set<std::string>& missing() const { return missing_; }
  std::vector<std::vector<Rect>> TextFrames(model::Id flow) const {
    const auto found = text_frames_.find(flow);
    return found == text_frames_.end() ? std::vector<std::vector<Rect>>() : found->second;
  }

 private:
  void Objects(cairo_t* cr, Range range, const DrawText& text);
  void Draw(cairo_t* cr, const Object& object, const DrawText& text);
  void Paint(cairo_t* cr, const Object& object);
  void Stroke(cairo_t* cr, const Style& style);
  void BeginFrame(cairo_t* cr, const Object& frame);
  void PathOf(cairo_t* cr, const Object& object) const;
  void Curve(cairo_t* cr, const Object& object) const;
  void Arc(cairo_t* cr, const Object& arc, bool pie) const;
  void Arrows(cairo_t* cr, const Object& line);
  void Arrow(cairo_t* cr, const Style& style, Point tip, Point from);
  void Text(cairo_t* cr, const Object& object);
  void Image(cairo_t* cr, const Object& object);
  void NamedBox(cairo_t* cr, const Rect& place, const std::string& name);
  Rgb ColorFor(const Style& style, std::uint8_t pattern) const {
    const Rgb color = ColorNamed(document_, style.color);
    return Tinted(color, kPatternShares[pattern] * std::clamp(style.tint / 100, 0.0, 1.0));
  }

  const model::Document& document_;
  Drawings drawings_;
  Images images_;
  std::unique_ptr<Fonts> own_fonts_;
  Fonts& fonts_;
  std::unordered_map<std::uint32_t, FlowPlace> flow_of_;  // by the numbers of text frames
  std::unordered_map<model::Id, std::vector<std::vector<Rect>>> text_frames_;  // of anchored frames
  std::set<std::string> missing_;
};

// A curve through the points: each piece leaves a point in the direction from the one before to the one
// after.
void Graphics::Painter::Curve(cairo_t* cr, const Object& object) const {
  const bool closed = object.kind == ObjectKind::kPolygon;
  const std::int64_t count = object.count;
  const auto at = [&](std::int64_t i) {
    i = closed ? (i + count) % count : std::clamp<std::int64_t>(i, 0, count - 1);
    return drawings_.points[object.first + static_cast<std::uint32_t>(i)];
  };
  const std::int64_t pieces = closed ? count : count - 1;
  for (std::int64_t i = 0; i < pieces; ++i) {
    const Point before = at(i - 1);
    const Point from = at(i);
    const Point to = at(i + 1);
    const Point after = at(i + 2);
    cairo_curve_to(cr, from.x + (to.x - before.x) / 6, from.y + (to.y - before.y) / 6,
                   to.x - (after.x - from.x) / 6, to.y - (after.y - from.y) / 6, to.x, to.y);
  }
}

// Angles go clockwise from twelve o'clock, on the ellipse that fills the place.
void Graphics::Painter::Arc(cairo_t* cr, const Object& arc, bool pie) const {
  const Rect& place = arc.place;
  if (place.width <= 0 || place.height <= 0) return;
  // Cairo adds up turns one by one.
  const double start = std::fmod(arc.start, 360.0) - 90;
  const double begin = start * kRadians;
  const double end = (start + std::clamp(arc.sweep, -360.0, 360.0)) * kRadians;
  cairo_save(cr);
  cairo_translate(cr, place.x + place.width / 2, place.y + place.height / 2);
  cairo_scale(cr, place.width / 2, place.height / 2);
  if (pie) cairo_move_to(cr, 0, 0);
  if (arc.sweep >= 0) {
    cairo_arc(cr, 0, 0, 1, begin, end);
  } else {
    cairo_arc_negative(cr, 0, 0, 1, begin, end);
  }
  if (pie) cairo_close_path(cr);
  cairo_restore(cr);
}

void Graphics::Painter::PathOf(cairo_t* cr, const Object& object) const {
  const Rect& place = object.place;
  cairo_new_path(cr);
  switch (object.kind) {
    case ObjectKind::kLines:
    case ObjectKind::kPolygon: {
      if (object.count == 0) return;
      const Point first = drawings_.points[object.first];
      cairo_move_to(cr, first.x, first.y);
      if (object.smooth && object.count > 2) {
        Curve(cr, object);
      } else {
        for (std::uint32_t i = 1; i < object.count; ++i) {
          cairo_line_to(cr, drawings_.points[object.first + i].x, drawings_.points[object.first + i].y);
        }
      }
      if (object.kind == ObjectKind::kPolygon) cairo_close_path(cr);
      return;
    }
    case ObjectKind::kRoundRectangle: {
      const double radius = std::min({object.radius, place.width / 2, place.height / 2});
      if (radius <= 0) break;
      const double right = place.x + place.width;
      const double bottom = place.y + place.height;
      cairo_arc(cr, right - radius, place.y + radius, radius, -90 * kRadians, 0);
      cairo_arc(cr, right - radius, bottom - radius, radius, 0, 90 * kRadians);
      cairo_arc(cr, place.x + radius, bottom - radius, radius, 90 * kRadians, 180 * kRadians);
      cairo_arc(cr, place.x + radius, place.y + radius, radius, 180 * kRadians, 270 * kRadians);
      cairo_close_path(cr);
      return;
    }
    case ObjectKind::kEllipse: {
      Object whole = object;
      whole.start = 0;
      whole.sweep = 360;
      Arc(cr, whole, false);
      cairo_close_path(cr);
      return;
    }
    default:
      break;
  }
  cairo_rectangle(cr, place.x, place.y, place.width, place.height);
}

void Graphics::Painter::Stroke(cairo_t* cr, const Style& style) {
  if (style.pen == kNoPattern || style.pen_width <= 0) {
    cairo_new_path(cr);
    return;
  }
  SetColor(cr, ColorFor(style, style.pen));
  cairo_set_line_width(cr, style.pen_width);
  const LineCap cap = style.head == LineCap::kArrow ? style.tail : style.head;
  cairo_set_line_cap(cr, cap == LineCap::kRound    ? CAIRO_LINE_CAP_ROUND
                         : cap == LineCap::kSquare ? CAIRO_LINE_CAP_SQUARE
                                                   : CAIRO_LINE_CAP_BUTT);
  cairo_set_dash(cr, style.dashes.data(), static_cast<int>(style.dashes.size()), 0);
  cairo_stroke(cr);
  cairo_set_dash(cr, nullptr, 0, 0);
}

// A head of the arrow's length with its tip at the end of the line.
void Graphics::Painter::Arrow(cairo_t* cr, const Style& style, Point tip, Point from) {
  const double along = std::hypot(tip.x - from.x, tip.y - from.y);
  if (along <= 0) return;
  const ArrowHead& arrow = style.arrow;
  const double half = std::tan(std::clamp(arrow.tip_angle, 1.0, 160.0) / 2 * kRadians) * arrow.length;
  // The base lies straight across at 90 degrees, and before or behind the sides' ends at others.
  const double base_angle = std::clamp(arrow.base_angle, 20.0, 170.0);
  const double inset = half / std::tan(base_angle * kRadians);
  cairo_save(cr);
  cairo_translate(cr, tip.x, tip.y);
  cairo_rotate(cr, std::atan2(tip.y - from.y, tip.x - from.x));
  cairo_move_to(cr, -arrow.length, -half);
  cairo_line_to(cr, 0, 0);
  cairo_line_to(cr, -arrow.length, half);
  if (!arrow.stick) {
    cairo_line_to(cr, -arrow.length - inset, 0);
    cairo_close_path(cr);
  }
  cairo_restore(cr);
  SetColor(cr, ColorFor(style, style.pen));
  cairo_set_line_width(cr, style.pen_width);
  if (arrow.stick || arrow.hollow) {
    cairo_stroke(cr);
  } else {
    cairo_fill(cr);
  }
}

void Graphics::Painter::Arrows(cairo_t* cr, const Object& line) {
  const Style& style = drawings_.styles[line.style];
  if (line.count < 2 || style.pen == kNoPattern) return;
  const Point* const points = &drawings_.points[line.first];
  if (style.tail == LineCap::kArrow) Arrow(cr, style, points[0], points[1]);
  if (style.head == LineCap::kArrow) Arrow(cr, style, points[line.count - 1], points[line.count - 2]);
}

void Graphics::Painter::Paint(cairo_t* cr, const Object& object) {
  const Style& style = drawings_.styles[object.style];
  if (style.fill != kNoPattern && object.kind != ObjectKind::kLines) {
    if (object.kind == ObjectKind::kArc) {
      cairo_new_path(cr);
      Arc(cr, object, true);
    } else {
      PathOf(cr, object);
    }
    SetColor(cr, ColorFor(style, style.fill));
    cairo_fill(cr);
  }
  if (object.kind == ObjectKind::kArc) {
    cairo_new_path(cr);
    Arc(cr, object, false);
  } else {
    PathOf(cr, object);
  }
  Stroke(cr, style);
  if (object.kind == ObjectKind::kLines) Arrows(cr, object);
}

void Graphics::Painter::Text(cairo_t* cr, const Object& object) {
  const TextLine& line = drawings_.text_lines[object.detail];
  const Attributes attributes(pango_attr_list_new());
  std::string text;
  const auto add = [&](PangoAttribute* attribute, std::size_t begin) {
    attribute->start_index = static_cast<guint>(begin);
    attribute->end_index = static_cast<guint>(text.size());
    pango_attr_list_insert(attributes.get(), attribute);
  };
  for (const TextPiece& piece : line.pieces) {
    const FontFormat& font = drawings_.fonts[piece.font];
    const std::size_t begin = text.size();
    text += piece.text;
    add(pango_attr_font_desc_new(fonts_.Find(font).description), begin);
    if (font.underlining != model::Underlining::kNone)
      add(pango_attr_underline_new(PANGO_UNDERLINE_SINGLE), begin);
    if (font.strikethrough) add(pango_attr_strikethrough_new(TRUE), begin);
    const std::string_view name =
        font.color.empty() ? std::string_view(drawings_.styles[object.style].color) : font.color;
    const Rgb color = ColorNamed(document_, name);
    const auto part = [](double value) { return static_cast<guint16>(std::lround(value * 65535)); };
    add(pango_attr_foreground_new(part(color.red), part(color.green), part(color.blue)), begin);
  }
  const Layout layout = MakeLayout(fonts_, text);
  pango_layout_set_attributes(layout.get(), attributes.get());
  PangoLayoutLine* const shown = pango_layout_get_line_readonly(layout.get(), 0);
  if (shown == nullptr) return;
  PangoRectangle extent;
  pango_layout_line_get_extents(shown, nullptr, &extent);
  const double width = static_cast<double>(extent.width) / PANGO_SCALE;
  cairo_save(cr);
  cairo_translate(cr, line.origin.x, line.origin.y);
  cairo_rotate(cr, -object.angle * kRadians);
  cairo_move_to(cr,
                line.alignment == FrameAlignment::kRight    ? -width
                : line.alignment == FrameAlignment::kCenter ? -width / 2
                                                            : 0,
                0);
  pango_cairo_show_layout_line(cr, shown);
  cairo_restore(cr);
}

// A thin box with a name in it, as large as the name's place allows.
void Graphics::Painter::NamedBox(cairo_t* cr, const Rect& place, const std::string& name) {
  constexpr double kLargest = 10;
  constexpr double kSmallest = 3;
  if (place.width <= 0 || place.height <= 0) return;
  cairo_save(cr);
  cairo_rectangle(cr, place.x, place.y, place.width, place.height);
  cairo_clip(cr);
  // The line lies within the place.
  cairo_rectangle(cr, place.x + 0.5, place.y + 0.5, place.width - 1, place.height - 1);
  cairo_set_source_rgb(cr, 0.6, 0.6, 0.6);
  cairo_set_line_width(cr, 1);
  cairo_stroke(cr);
  const Layout layout = MakeLayout(fonts_, name);
  FontFormat font;
  font.family = "Sans";
  font.size = kLargest;
  pango_layout_set_font_description(layout.get(), fonts_.Find(font).description);
  PangoRectangle extent;
  pango_layout_get_extents(layout.get(), nullptr, &extent);
  const double wide = static_cast<double>(extent.width) / PANGO_SCALE;
  const double high = static_cast<double>(extent.height) / PANGO_SCALE;
  if (wide > 0 && high > 0) {
    const double scale = std::min({1.0, (place.width - 4) / wide, (place.height - 2) / high});
    font.size = std::max(kSmallest, kLargest * scale);
    pango_layout_set_font_description(layout.get(), fonts_.Find(font).description);
    pango_layout_get_extents(layout.get(), nullptr, &extent);
    cairo_move_to(cr, place.x + (place.width - static_cast<double>(extent.width) / PANGO_SCALE) / 2,
                  place.y + (place.height - static_cast<double>(extent.height) / PANGO_SCALE) / 2);
    cairo_set_source_rgb(cr, 0.3, 0.3, 0.3);
    pango_cairo_show_layout(cr, layout.get());
  }
  cairo_restore(cr);
}

void Graphics::Painter::Image(cairo_t* cr, const Object& object) {
  const ImportedImage& image = drawings_.images[object.detail];
  const Rect& place = object.place;
  if (place.width <= 0 || place.height <= 0) return;
  const bool as_file = cairo_surface_get_type(cairo_get_target(cr)) == CAIRO_SURFACE_TYPE_PDF;
  std::string why;
  cairo_surface_t* const surface = images_.Find(object.detail, image, as_file, &why);
  if (surface == nullptr) {
    missing_.insert(why);
    NamedBox(cr, place, Images::NameOf(image));
    return;
  }
  const double width = cairo_image_surface_get_width(surface);
  const double height = cairo_image_surface_get_height(surface);
  cairo_save(cr);
  cairo_translate(cr, place.x, place.y);
  if (image.mirrored) {
    cairo_translate(cr, place.width, 0);
    cairo_scale(cr, -1, 1);
  }
  cairo_scale(cr, place.width / width, place.height / height);
  cairo_rectangle(cr, 0, 0, width, height);
  cairo_clip(cr);
  cairo_set_source_surface(cr, surface, 0, 0);
  // On a screen the edges would fade into what is behind; a file would get pixels instead of a JPEG.
  if (!as_file) cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_PAD);
  cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
  cairo_paint(cr);
  cairo_restore(cr);
}

// The frame's own outline and fill; then its content has the frame's corner as its origin and is cut off at
// its edges.
void Graphics::Painter::BeginFrame(cairo_t* cr, const Object& frame) {
  cairo_save(cr);
  Rotate(cr, frame.place, frame.angle);
  Paint(cr, frame);
  cairo_rectangle(cr, frame.place.x, frame.place.y, frame.place.width, frame.place.height);
  cairo_clip(cr);
  cairo_translate(cr, frame.place.x, frame.place.y);
}

void Graphics::Painter::Draw(cairo_t* cr, const Object& object, const DrawText& text) {
  cairo_save(cr);
  if (object.kind != ObjectKind::kTextLine) Rotate(cr, object.place, object.angle);
  switch (object.kind) {
    case ObjectKind::kTextLine:
      Text(cr, object);
      break;
    case ObjectKind::kImage:
      Image(cr, object);
      break;
    case ObjectKind::kEquation:
      NamedBox(cr, object.place, drawings_.equations[object.detail]);
      break;
    case ObjectKind::kTextFrame: {
      Paint(cr, object);
      const FlowPlace* const flow = FlowOf(object);
      if (text && flow != nullptr) text(flow->flow, flow->place);
      break;
    }
    default:
      Paint(cr, object);
      break;
  }
  cairo_restore(cr);
}

void Graphics::Painter::Objects(cairo_t* cr, Range range, const DrawText& text) {
  for (std::uint32_t i = range.begin; i < range.end; ++i) {
    const Object& object = drawings_.objects[i];
    if (object.kind == ObjectKind::kFrameBegin) {
      BeginFrame(cr, object);
    } else if (object.kind == ObjectKind::kFrameEnd) {
      cairo_restore(cr);
    } else {
      Draw(cr, object, text);
    }
  }
}

void Graphics::Painter::Frame(cairo_t* cr, std::uint32_t frame, double x, double y, const DrawText& text) {
  if (frame >= drawings_.frames.size()) return;
  const Drawings::AnchoredShape& anchored = drawings_.frames[frame];
  Object shape = anchored.shape;
  shape.place.x = x;
  shape.place.y = y;
  BeginFrame(cr, shape);
  Objects(cr, anchored.objects, text);
  cairo_restore(cr);
}

void Graphics::Painter::Page(cairo_t* cr, std::uint32_t page) {
  if (page < drawings_.pages.size()) Objects(cr, drawings_.pages[page].objects, nullptr);
}

const Object* Graphics::Painter::FindNamed(std::string_view name) const {
  const auto found = drawings_.named_frames.find(std::string(name));
  return found == drawings_.named_frames.end() ? nullptr : &drawings_.objects[found->second];
}

bool Graphics::Painter::Named(cairo_t* cr, std::string_view name, double x, double y) {
  const Object* const frame = FindNamed(name);
  if (frame == nullptr) return false;
  const auto begin = static_cast<std::uint32_t>(frame - drawings_.objects.data());
  cairo_save(cr);
  cairo_translate(cr, x - frame->place.x, y - frame->place.y);
  Objects(cr, {begin, frame->detail + 1}, nullptr);
  cairo_restore(cr);
  return true;
}

Graphics::Graphics(const model::Document& document, std::string folder, Fonts* fonts)
    : painter_(std::make_unique<Painter>(document, std::move(folder), fonts)) {}

Graphics::~Graphics() = default;

FramePlace Graphics::Place(std::uint32_t frame) const {
  const auto& frames = painter_->drawings().frames;
  FramePlace place = frame < frames.size() ? frames[frame].place : FramePlace();
  place.width = std::max(place.width, 0.0);
  place.height = std::max(place.height, 0.0);
  return place;
}

void Graphics::DrawFrame(cairo_t* cr, std::uint32_t frame, double x, double y, const DrawText& text) {
  painter_->Frame(cr, frame, x, y, text);
}

void Graphics::DrawMasterPage(cairo_t* cr, std::uint32_t page) { painter_->Page(cr, page); }

void Graphics::DrawBodyPage(cairo_t* cr, std::uint32_t page) { painter_->Page(cr, page); }

bool Graphics::DrawReferenceFrame(cairo_t* cr, std::string_view name, double x, double y) {
  return painter_->Named(cr, name, x, y);
}

FramePlace Graphics::ReferenceFrame(std::string_view name) const {
  FramePlace place;
  const Object* const frame = painter_->FindNamed(name);
  if (frame == nullptr) return place;
  place.kind = FrameKind::kNotAnchored;
  place.width = frame->place.width;
  place.height = frame->place.height;
  return place;
}

// A frame that is not in the file has no room.
std::vector<std::vector<Rect>> Graphics::TextFrames(model::Id flow) const {
  std::vector<std::vector<Rect>> frames = painter_->TextFrames(flow);
  for (std::vector<Rect>& frame : frames) {
    if (frame.empty()) frame.emplace_back();
  }
  return frames;
}

const std::set<std::string>& Graphics::missing() const { return painter_->missing(); }

}  // namespace qelm::embedded::render
