#include "embedded/render/design/drawing_words.h"

#include <charconv>
#include <unordered_map>

namespace qelm::embedded::render {
namespace {

const std::unordered_map<std::string_view, Word>& Words() {
  static const std::unordered_map<std::string_view, Word> words = {
      {"Pen", Word::kPen},
      {"Fill", Word::kFill},
      {"PenWidth", Word::kPenWidth},
      {"Separation", Word::kSeparation},
      {"ObColor", Word::kObColor},
      {"ObTint", Word::kObTint},
      {"DashedPattern", Word::kDashedPattern},
      {"DashedStyle", Word::kDashedStyle},
      {"DashSegment", Word::kDashSegment},
      {"HeadCap", Word::kHeadCap},
      {"TailCap", Word::kTailCap},
      {"ArrowStyle", Word::kArrowStyle},
      {"TipAngle", Word::kTipAngle},
      {"BaseAngle", Word::kBaseAngle},
      {"Length", Word::kArrowLength},
      {"HeadType", Word::kHeadType},
      {"Angle", Word::kAngle},
      {"ShapeRect", Word::kShapeRect},
      {"BRect", Word::kBRect},
      {"ArcRect", Word::kArcRect},
      {"ArcTheta", Word::kArcTheta},
      {"ArcDTheta", Word::kArcDTheta},
      {"Radius", Word::kRadius},
      {"Point", Word::kPoint},
      {"Smoothed", Word::kSmoothed},
      {"ID", Word::kId},
      {"Tag", Word::kTag},
      {"FrameType", Word::kFrameType},
      {"AnchorAlign", Word::kAnchorAlign},
      {"AnchorBeside", Word::kAnchorBeside},
      {"NSOffset", Word::kNsOffset},
      {"BLOffset", Word::kBlOffset},
      {"Float", Word::kFloat},
      {"Cropped", Word::kCropped},
      {"TRNumColumns", Word::kTrNumColumns},
      {"TRColumnGap", Word::kTrColumnGap},
      {"TRColumnBalance", Word::kTrColumnBalance},
      {"TRSideheadWidth", Word::kTrSideheadWidth},
      {"TRSideheadGap", Word::kTrSideheadGap},
      {"TRSideheadPlacement", Word::kTrSideheadPlacement},
      {"TRNext", Word::kTrNext},
      {"TLOrigin", Word::kTlOrigin},
      {"TLAlignment", Word::kTlAlignment},
      {"Font", Word::kFont},
      {"String", Word::kString},
      {"Char", Word::kChar},
      {"FFamily", Word::kFFamily},
      {"FWeight", Word::kFWeight},
      {"FAngle", Word::kFAngle},
      {"FSize", Word::kFSize},
      {"FUnderlining", Word::kFUnderlining},
      {"FStrike", Word::kFStrike},
      {"FColor", Word::kFColor},
      {"FSeparation", Word::kFSeparation},
      {"ImportObFileDI", Word::kImportObFileDI},
      {"ImportObFile", Word::kImportObFile},
      {"FlipLR", Word::kFlipLr},
      {"MathFullForm", Word::kMathFullForm},
      {"PageSize", Word::kPageSize},
      {"PageTag", Word::kPageTag},
      {"PageType", Word::kPageType},
      {"PageBackground", Word::kPageBackground},
  };
  return words;
}

struct ObjectName {
  std::string_view name;
  ObjectKind kind;
};
constexpr ObjectName kObjectNames[] = {
    {"PolyLine", ObjectKind::kLines},      {"Polygon", ObjectKind::kPolygon},
    {"Rectangle", ObjectKind::kRectangle}, {"RoundRect", ObjectKind::kRoundRectangle},
    {"Ellipse", ObjectKind::kEllipse},     {"Arc", ObjectKind::kArc},
    {"TextLine", ObjectKind::kTextLine},   {"TextRect", ObjectKind::kTextFrame},
    {"ImportObject", ObjectKind::kImage},  {"Math", ObjectKind::kEquation},
    {"Frame", ObjectKind::kFrameBegin},
};

struct FrameKindName {
  std::string_view name;
  FrameKind kind;
};
constexpr FrameKindName kFrameKinds[] = {
    {"Inline", FrameKind::kInline},
    {"Top", FrameKind::kTop},
    {"Below", FrameKind::kBelow},
    {"Bottom", FrameKind::kBottom},
    {"Left", FrameKind::kLeft},
    {"Right", FrameKind::kRight},
    {"Inside", FrameKind::kInside},
    {"Outside", FrameKind::kOutside},
    {"Near", FrameKind::kNear},
    {"Far", FrameKind::kFar},
    {"RunIntoParagraph", FrameKind::kRunIn},
    {"NotAnchored", FrameKind::kNotAnchored},
};

// The colors that older files name by number alone.
constexpr std::string_view kSeparations[] = {"Black", "White", "Red",     "Green",
                                             "Blue",  "Cyan",  "Magenta", "Yellow"};

}  // namespace

Word WordOf(std::string_view statement) {
  const auto found = Words().find(statement);
  return found == Words().end() ? Word::kNone : found->second;
}

std::optional<ObjectKind> ObjectOf(std::string_view statement) {
  for (const ObjectName& known : kObjectNames) {
    if (known.name == statement) return known.kind;
  }
  return std::nullopt;
}

FrameKind FrameKindOf(std::string_view data, FrameKind other) {
  for (const FrameKindName& known : kFrameKinds) {
    if (known.name == data) return known.kind;
  }
  return other;
}

FrameAlignment AlignmentOf(std::string_view data) {
  if (data == "Left") return FrameAlignment::kLeft;
  if (data == "Right") return FrameAlignment::kRight;
  if (data == "Inside") return FrameAlignment::kInside;
  if (data == "Outside") return FrameAlignment::kOutside;
  return FrameAlignment::kCenter;
}

LineCap CapOf(std::string_view data) {
  if (data == "ArrowHead") return LineCap::kArrow;
  if (data == "Round") return LineCap::kRound;
  return data == "Butt" ? LineCap::kButt : LineCap::kSquare;
}

std::uint8_t PatternOf(std::string_view data) {
  const double pattern = Number(data, kNoPattern);
  return pattern >= 0 && pattern <= kNoPattern ? static_cast<std::uint8_t>(pattern) : kNoPattern;
}

std::uint32_t Count(std::string_view data) {
  std::uint32_t number = 0;
  std::from_chars(data.data(), data.data() + data.size(), number);
  return number;
}

Rect RectOf(std::string_view data, double unit) {
  const std::vector<double> lengths = Lengths(data, unit);
  return lengths.size() < 4 ? Rect() : Rect{lengths[0], lengths[1], lengths[2], lengths[3]};
}

Point PointOf(std::string_view data, double unit) {
  const std::vector<double> lengths = Lengths(data, unit);
  return lengths.size() < 2 ? Point() : Point{lengths[0], lengths[1]};
}

std::string_view SeparationColor(std::string_view data, std::string_view other) {
  const std::uint32_t number = Count(data);
  return number < std::size(kSeparations) ? kSeparations[number] : other;
}

}  // namespace qelm::embedded::render
