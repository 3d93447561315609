// The graphic objects of a document as it has them: of anchored frames and of pages.
//
// In MIF the properties of objects are running state: an object says only what differs from the object before
// it in the file, so the objects of all frames and pages are read in one go, in the order of the file. They
// come as one array in which the objects of a frame or a page are one range. A frame inside another one is a
// pair of marks with its content between them, so that nothing that draws has to recurse.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/render/design/formats.h"
#include "embedded/render/design/frame_place.h"
#include "embedded/render/design/geometry.h"

namespace qelm::embedded::render {

// Patterns of pens and fills (MIF reference, "Pen" and "Fill"): 0 is solid, 1 to 6 are lighter and lighter
// tints, 7 is white, 8 to 14 are hatched, 15 is none.
inline constexpr std::uint8_t kSolid = 0;
inline constexpr std::uint8_t kNoPattern = 15;

enum class LineCap : std::uint8_t { kButt, kRound, kSquare, kArrow };

struct ArrowHead {
  double tip_angle = 16;   // of the whole head, in degrees
  double base_angle = 90;  // between a side and the base
  double length = 12;
  bool stick = false;
  bool hollow = false;
};

// What objects look like. Many objects share one.
struct Style {
  std::uint8_t pen = kSolid;
  std::uint8_t fill = kNoPattern;
  double pen_width = 1;
  std::string_view color = "Black";
  double tint = 100;  // of the color, in percent
  std::vector<double> dashes;
  LineCap head = LineCap::kButt;  // at the last point
  LineCap tail = LineCap::kButt;  // at the first one
  ArrowHead arrow;
};

enum class ObjectKind : std::uint8_t {
  kLines,  // from point to point
  kPolygon,
  kRectangle,
  kRoundRectangle,
  kEllipse,
  kArc,
  kTextLine,
  kTextFrame,
  kImage,
  kEquation,
  kFrameBegin,  // a frame that is not anchored; `detail` is the index of its end
  kFrameEnd,
};

struct Object {
  ObjectKind kind = ObjectKind::kRectangle;
  bool smooth = false;      // points are those of a curve
  std::uint32_t style = 0;  // index into Drawings::styles
  Rect place;               // before rotation, in the frame or page around it
  double angle = 0;         // counterclockwise around the middle of the place, in degrees
  double radius = 0;        // of a round rectangle's corners
  double start = 0;         // of an arc: clockwise from twelve o'clock, in degrees
  double sweep = 0;
  std::uint32_t first = 0;  // of its points
  std::uint32_t count = 0;
  std::uint32_t detail = 0;  // by kind: index into text_lines, text_frames, images,
                             // equations
};

struct TextPiece {
  std::string text;
  std::uint32_t font = 0;  // index into Drawings::fonts
};
struct TextLine {
  Point origin;  // on the baseline
  FrameAlignment alignment = FrameAlignment::kLeft;
  std::vector<TextPiece> pieces;
};

// A text frame, and how text runs in it.
struct TextShape {
  std::uint32_t number = 0;  // what flows name it by
  std::uint32_t next = 0;    // the number of the one in which its flow goes on; 0: none
  std::uint32_t columns = 1;
  double gap = 0;
  bool balanced = false;
  enum class Side : std::uint8_t { kLeft, kRight, kInside, kOutside };
  double side_head_width = 0;
  double side_head_gap = 0;
  Side side_head_side = Side::kLeft;
};

struct ImportedImage {
  std::string file;       // decoded, device-independent or with "/"; empty: no file
  model::Span span;       // the whole statement, with the image's data where it was copied in
  bool embedded = false;  // the document has data of it
  Rect place;
  bool mirrored = false;
};

struct Range {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
};

// Which flow runs through a text frame, and where the frame stands among those of the flow.
struct FlowPlace {
  model::Id flow = 0;
  std::uint32_t place = 0;
};

// The columns of a text frame, of which `text` is what is not left for side heads.
std::vector<Rect> ColumnsOf(const TextShape& shape, const Rect& text);

class Drawings {
 public:
  explicit Drawings(const model::Document& document);

  std::vector<Style> styles;
  std::vector<FontFormat> fonts;  // of text lines; no color: the object's
  std::vector<Object> objects;
  std::vector<Point> points;
  std::vector<TextLine> text_lines;
  std::vector<TextShape> text_frames;
  std::vector<ImportedImage> images;
  std::vector<std::string> equations;  // in one line each (equation_text.h)
  std::deque<std::string> texts;       // what views refer to that is not in the source as it reads

  struct AnchoredShape {
    FramePlace place;
    Object shape;  // its own outline and fill
    Range objects;
  };
  std::vector<AnchoredShape> frames;  // by index into Document::frames
  struct PageShape {
    double width = 0;  // 0: not said
    double height = 0;
    std::string_view name;
    std::string_view background;
    bool left_master = false;
    bool right_master = false;
    Range objects;
  };
  std::vector<PageShape> pages;                                 // by index into Document::pages
  std::unordered_map<std::string, std::uint32_t> named_frames;  // of reference pages: their begin marks
  double unit = 72;                                             // points a unit of lengths without one

  // By the numbers of text frames. Text says which frames it enters, and a text frame which one comes after
  // it, where there is no text yet.
  std::unordered_map<std::uint32_t, FlowPlace> FollowFlows(const model::Document& document) const;

 private:
  class Reader;
};

}  // namespace qelm::embedded::render
