// The words in which MIF describes graphic objects: the statements that are read, and what their data say.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "embedded/render/design/drawings.h"

namespace qelm::embedded::render {

// The statements that are read, by name.
enum class Word : std::uint8_t {
  kNone,
  kPen,
  kFill,
  kPenWidth,
  kSeparation,
  kObColor,
  kObTint,
  kDashedPattern,
  kDashedStyle,
  kDashSegment,
  kHeadCap,
  kTailCap,
  kArrowStyle,
  kTipAngle,
  kBaseAngle,
  kArrowLength,
  kHeadType,
  kAngle,
  kShapeRect,
  kBRect,
  kArcRect,
  kArcTheta,
  kArcDTheta,
  kRadius,
  kPoint,
  kSmoothed,
  kId,
  kTag,
  kFrameType,
  kAnchorAlign,
  kAnchorBeside,
  kNsOffset,
  kBlOffset,
  kFloat,
  kCropped,
  kTrNumColumns,
  kTrColumnGap,
  kTrColumnBalance,
  kTrSideheadWidth,
  kTrSideheadGap,
  kTrSideheadPlacement,
  kTrNext,
  kTlOrigin,
  kTlAlignment,
  kFont,
  kString,
  kChar,
  kFFamily,
  kFWeight,
  kFAngle,
  kFSize,
  kFUnderlining,
  kFStrike,
  kFColor,
  kFSeparation,
  kImportObFileDI,
  kImportObFile,
  kFlipLr,
  kMathFullForm,
  kPageSize,
  kPageTag,
  kPageType,
  kPageBackground,
};

// kNone for a statement that is not read.
Word WordOf(std::string_view statement);

// The kind of object that a statement begins; nothing for other statements.
std::optional<ObjectKind> ObjectOf(std::string_view statement);

// What the data of a statement mean; data that are not understood mean the first or usual one.
FrameKind FrameKindOf(std::string_view data, FrameKind other);
FrameAlignment AlignmentOf(std::string_view data);
LineCap CapOf(std::string_view data);
std::uint8_t PatternOf(std::string_view data);

// A whole number that counts or names something, 0 for anything else.
std::uint32_t Count(std::string_view data);

// Lengths in points, of which those without a unit have `unit` points; all 0 when there are too few.
Rect RectOf(std::string_view data, double unit);
Point PointOf(std::string_view data, double unit);

// The color of a number; `other` for one that only a name tells.
std::string_view SeparationColor(std::string_view data, std::string_view other);

}  // namespace qelm::embedded::render
