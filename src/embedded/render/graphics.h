// Graphic objects: what anchored frames and pages show besides text.
//
// Lines, shapes, text lines and images are drawn as the document has them, rotated and cut off at their
// frame. An image is read once, however often it is shown. What cannot be shown - a missing file, a format
// that is not known, a picture that is too large - is a box with its name in it, and is said in missing().
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/render/design/frame_place.h"
#include "embedded/render/design/geometry.h"

typedef struct _cairo cairo_t;

namespace qelm::embedded::render {

class Fonts;

class Graphics {
 public:
  // `folder`: what relative paths of images stand on. `fonts`: for text lines; null: fonts of its own. The
  // document must outlive this and stay as it is.
  Graphics(const model::Document& document, std::string folder, Fonts* fonts = nullptr);
  ~Graphics();
  Graphics(const Graphics&) = delete;
  Graphics& operator=(const Graphics&) = delete;

  // `frame`: index into Document::frames.
  FramePlace Place(std::uint32_t frame) const;

  // Called for each text frame: its flow, and its place among the flow's frames. The context is set up so
  // that the frame is where TextFrames says and upright. Empty: text frames are not drawn.
  using DrawText = std::function<void(model::Id flow, std::uint32_t place)>;
  // The columns of the text frames of a flow in anchored frames, frame by frame in the order of its text.
  std::vector<std::vector<Rect>> TextFrames(model::Id flow) const;

  // Draws the objects of an anchored frame with the frame's upper left corner at x, y.
  void DrawFrame(cairo_t* cr, std::uint32_t frame, double x, double y, const DrawText& text);
  // Draws the objects of a page: an index into Document::pages. Text frames of the main flow and of master
  // pages are left to the layout; of a body page, `text` is called for none (PageDesign::others has them).
  void DrawMasterPage(cairo_t* cr, std::uint32_t page);
  void DrawBodyPage(cairo_t* cr, std::uint32_t page);
  // Draws a frame of the reference pages by its name, as paragraph formats name one above or below them.
  // False when there is none of that name. Its size is ReferenceFrame's.
  bool DrawReferenceFrame(cairo_t* cr, std::string_view name, double x, double y);
  FramePlace ReferenceFrame(std::string_view name) const;  // height 0 when there is none

  // The images that could not be shown, with the reason, each said once.
  const std::set<std::string>& missing() const;

 private:
  class Painter;
  std::unique_ptr<Painter> painter_;
};

}  // namespace qelm::embedded::render
