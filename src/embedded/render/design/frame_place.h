// Where an anchored frame stands, and how large it is.
#pragma once

#include <cstdint>

namespace qelm::embedded::render {

// Where an anchored frame stands (MIF reference, "FrameType").
enum class FrameKind : std::uint8_t {
  kInline,
  kTop,
  kBelow,
  kBottom,
  kLeft,
  kRight,
  kInside,
  kOutside,
  kNear,
  kFar,
  kRunIn,
  kNotAnchored,
};
enum class FrameAlignment : std::uint8_t { kLeft, kCenter, kRight, kInside, kOutside };

struct FramePlace {
  double width = 0;
  double height = 0;
  FrameKind kind = FrameKind::kInline;
  FrameAlignment alignment = FrameAlignment::kCenter;
  double baseline_offset = 0;   // upward from the baseline of the anchor's line
  double near_side_offset = 0;  // away from the text
  bool floating = false;        // may go to a later page than its anchor
  bool cropped = false;         // cut off at the column's edge
  bool beside_frame = false;    // of the kinds beside the text: stands beside the text frame, not the column
};

}  // namespace qelm::embedded::render
