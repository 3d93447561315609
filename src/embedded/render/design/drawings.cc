#include "embedded/render/design/drawings.h"

#include <algorithm>
#include <utility>

#include "embedded/mif/reader.h"
#include "embedded/mif/strings.h"
#include "embedded/model/mif_scan.h"
#include "embedded/render/design/drawing_words.h"
#include "embedded/render/design/equation_text.h"

namespace qelm::embedded::render {

using mif::Piece;

class Drawings::Reader {
 public:
  Reader(const model::Document& document, Drawings* drawings) : document_(document), out_(*drawings) {
    font_.color = {};
  }

  void ReadUnit();
  void ReadFrame(const model::AnchoredFrame& frame);
  void ReadPage(const model::Page& page);

 private:
  // An object that was begun: a frame stays open while its content is read.
  struct Open {
    Object object;
    FramePlace place;
    std::string tag;
    bool sealed = false;  // its own properties are complete, and what follows is its content
    std::uint32_t index = 0;
  };

  void ReadContent(std::size_t inside, Open* anchored, PageShape* page);
  void ReadObject(ObjectKind kind, std::uint32_t begin);
  void Child(Word word, Object* object);
  bool ReadStyle(Word word);
  void ReadDashes();
  void ReadArrow();
  void ReadTextFrame(Word word, TextShape* shape);
  void ReadTextLine(Word word, TextLine* line);
  void ReadFont();
  void ReadImage(Word word, ImportedImage* image);
  void ReadFrameProperty(Word word, Open* frame);
  void ReadPageProperty(Word word, PageShape* page);
  void Seal(Open* frame);
  void CloseFrame(Open* frame);
  void PlaceByPoints(Object* object) const;
  void Add(const Object& object) { out_.objects.push_back(object); }
  std::uint32_t CurrentStyle();
  std::uint32_t CurrentFont();

  std::string_view data() const { return reader_->data(); }
  std::string Text() const { return mif::DecodeString(data(), document_.encoding); }
  // A name that holds for as long as the document does.
  std::string_view Name() const { return mif::IsString(data()) ? mif::Inside(data()) : data(); }
  // A text that holds for as long as the drawings do.
  std::string_view Kept();
  Word CurrentWord() const { return WordOf(reader_->name()); }
  void Begin(model::Span span);

  const model::Document& document_;
  Drawings& out_;
  mif::Reader* reader_ = nullptr;
  std::uint32_t offset_ = 0;   // of what is being read in the source
  bool names_frames_ = false;  // reading a reference page
  Style style_;
  bool style_changed_ = true;
  FontFormat font_;
  bool font_changed_ = true;
};

// Lengths without a unit are in the one that a Units statement before them set; it stands at the beginning.
void Drawings::Reader::ReadUnit() {
  mif::Reader reader(document_.source);
  while (reader.Next()) {
    if (reader.name() == "Units") out_.unit = PointsOfUnit(reader.data());
    if (reader.begin() > document_.content_begin && document_.content_begin != 0) break;
    if (reader.token() == mif::Token::kColorCatalog || reader.token() == mif::Token::kConditionCatalog) break;
    if (reader.kind() == Piece::kGroup && !reader.Skip()) break;
  }
}

std::string_view Drawings::Reader::Kept() {
  const std::string_view inside = Name();
  return mif::IsPlain(inside, document_.encoding) ? inside : out_.texts.emplace_back(Text());
}

std::uint32_t Drawings::Reader::CurrentStyle() {
  if (style_changed_) out_.styles.push_back(style_);
  style_changed_ = false;
  return static_cast<std::uint32_t>(out_.styles.size()) - 1;
}

std::uint32_t Drawings::Reader::CurrentFont() {
  if (font_changed_) out_.fonts.push_back(font_);
  font_changed_ = false;
  return static_cast<std::uint32_t>(out_.fonts.size()) - 1;
}

bool Drawings::Reader::ReadStyle(Word word) {
  switch (word) {
    case Word::kPen:
      style_.pen = PatternOf(data());
      break;
    case Word::kFill:
      style_.fill = PatternOf(data());
      break;
    case Word::kPenWidth:
      style_.pen_width = Length(data(), 1);
      break;
    case Word::kSeparation:
      style_.color = SeparationColor(data(), style_.color);
      break;
    case Word::kObColor:
      style_.color = Kept();
      break;
    case Word::kObTint:
      style_.tint = Number(data(), 100);
      break;
    case Word::kHeadCap:
      style_.head = CapOf(data());
      break;
    case Word::kTailCap:
      style_.tail = CapOf(data());
      break;
    case Word::kDashedPattern:
      ReadDashes();
      break;
    case Word::kArrowStyle:
      ReadArrow();
      break;
    default:
      return false;
  }
  style_changed_ = true;
  return true;
}

void Drawings::Reader::ReadDashes() {
  if (reader_->kind() != Piece::kGroup) return;
  std::vector<double> dashes;
  bool dashed = false;
  model::Children(reader_, [&] {
    if (CurrentWord() == Word::kDashedStyle) dashed = data() == "Dashed";
    if (CurrentWord() == Word::kDashSegment) dashes.push_back(std::max(0.0, Length(data(), 1)));
  });
  const bool drawn = std::any_of(dashes.begin(), dashes.end(), [](double length) { return length > 0; });
  style_.dashes = dashed && drawn ? std::move(dashes) : std::vector<double>();
}

void Drawings::Reader::ReadArrow() {
  if (reader_->kind() != Piece::kGroup) return;
  model::Children(reader_, [&] {
    switch (CurrentWord()) {
      case Word::kTipAngle:
        style_.arrow.tip_angle = Number(data(), 16);
        break;
      case Word::kBaseAngle:
        style_.arrow.base_angle = Number(data(), 90);
        break;
      case Word::kArrowLength:
        style_.arrow.length = Length(data(), 1);
        break;
      case Word::kHeadType:
        style_.arrow.stick = data() == "Stick";
        style_.arrow.hollow = data() == "Hollow";
        break;
      default:
        break;
    }
  });
}

void Drawings::Reader::ReadFont() {
  if (reader_->kind() != Piece::kGroup) return;
  model::Children(reader_, [&] {
    switch (CurrentWord()) {
      case Word::kFFamily:
        font_.family = Kept();
        break;
      case Word::kFWeight:
        font_.weight = Kept();
        break;
      case Word::kFAngle:
        font_.angle = Kept();
        break;
      case Word::kFSize:
        font_.size = Length(data(), 1);
        break;
      case Word::kFUnderlining:
        font_.underlining =
            data() == "FNoUnderlining" ? model::Underlining::kNone : model::Underlining::kSingle;
        break;
      case Word::kFStrike:
        font_.strikethrough = data() == "Yes";
        break;
      case Word::kFSeparation:
        font_.color = SeparationColor(data(), font_.color);
        break;
      case Word::kFColor:
        font_.color = Kept();
        break;
      default:
        break;
    }
  });
  font_changed_ = true;
}

void Drawings::Reader::ReadTextFrame(Word word, TextShape* shape) {
  switch (word) {
    case Word::kId:
      shape->number = Count(data());
      break;
    case Word::kTrNext:
      shape->next = Count(data());
      break;
    case Word::kTrNumColumns:
      shape->columns = std::clamp(Count(data()), 1U, 100U);
      break;
    case Word::kTrColumnGap:
      shape->gap = Length(data(), out_.unit);
      break;
    case Word::kTrColumnBalance:
      shape->balanced = data() == "Yes";
      break;
    case Word::kTrSideheadWidth:
      shape->side_head_width = std::max(Length(data(), out_.unit), 0.0);
      break;
    case Word::kTrSideheadGap:
      shape->side_head_gap = std::max(Length(data(), out_.unit), 0.0);
      break;
    case Word::kTrSideheadPlacement:
      shape->side_head_side = data() == "Right"     ? TextShape::Side::kRight
                              : data() == "Inside"  ? TextShape::Side::kInside
                              : data() == "Outside" ? TextShape::Side::kOutside
                                                    : TextShape::Side::kLeft;
      break;
    default:
      break;
  }
}

void Drawings::Reader::ReadTextLine(Word word, TextLine* line) {
  switch (word) {
    case Word::kTlOrigin:
      line->origin = PointOf(data(), out_.unit);
      break;
    case Word::kTlAlignment:
      line->alignment = AlignmentOf(data());
      break;
    case Word::kFont:
      ReadFont();
      break;
    case Word::kString:
    case Word::kChar: {
      const std::string text = word == Word::kString ? Text() : std::string(mif::CharNamed(data()));
      if (line->pieces.empty() || font_changed_) line->pieces.push_back({{}, CurrentFont()});
      line->pieces.back().text += text;
      break;
    }
    default:
      break;
  }
}

void Drawings::Reader::ReadImage(Word word, ImportedImage* image) {
  switch (word) {
    case Word::kImportObFileDI:
      image->file = Text();
      break;
    case Word::kImportObFile:
      if (image->file.empty() && Text() != "2.0 internal inset") image->file = Text();
      break;
    case Word::kFlipLr:
      image->mirrored = data() == "Yes";
      break;
    default:
      break;
  }
}

// One statement of an object's geometry.
void Drawings::Reader::Child(Word word, Object* object) {
  switch (word) {
    case Word::kAngle:
      object->angle = Number(data());
      break;
    case Word::kShapeRect:
    case Word::kArcRect:
      object->place = RectOf(data(), out_.unit);
      break;
    case Word::kBRect:
      // The bounds of the object as it is shown; all there is for an equation.
      if (object->kind == ObjectKind::kEquation) object->place = RectOf(data(), out_.unit);
      break;
    case Word::kArcTheta:
      object->start = Number(data());
      break;
    case Word::kArcDTheta:
      object->sweep = Number(data());
      break;
    case Word::kRadius:
      object->radius = Length(data(), out_.unit);
      break;
    case Word::kPoint:
      out_.points.push_back(PointOf(data(), out_.unit));
      break;
    case Word::kSmoothed:
      object->smooth = data() == "Yes";
      break;
    default:
      break;
  }
}

// What is drawn from point to point is rotated around the middle of what the points span.
void Drawings::Reader::PlaceByPoints(Object* object) const {
  if (object->count == 0) return;
  Point low = out_.points[object->first];
  Point high = low;
  for (std::uint32_t i = 1; i < object->count; ++i) {
    const Point& point = out_.points[object->first + i];
    low = {std::min(low.x, point.x), std::min(low.y, point.y)};
    high = {std::max(high.x, point.x), std::max(high.y, point.y)};
  }
  object->place = {low.x, low.y, high.x - low.x, high.y - low.y};
}

void Drawings::Reader::ReadObject(ObjectKind kind, std::uint32_t begin) {
  Object object;
  object.kind = kind;
  object.first = static_cast<std::uint32_t>(out_.points.size());
  TextShape shape;
  TextLine line;
  ImportedImage image;
  std::string equation;
  model::Children(reader_, [&] {
    const Word word = CurrentWord();
    if (word == Word::kNone || ReadStyle(word)) return;
    if (kind == ObjectKind::kTextFrame) ReadTextFrame(word, &shape);
    if (kind == ObjectKind::kTextLine) ReadTextLine(word, &line);
    if (kind == ObjectKind::kImage) ReadImage(word, &image);
    if (word == Word::kMathFullForm) equation = EquationText(Text());
    Child(word, &object);
  });
  object.count = static_cast<std::uint32_t>(out_.points.size()) - object.first;
  object.style = CurrentStyle();
  PlaceByPoints(&object);
  switch (kind) {
    case ObjectKind::kTextFrame:
      object.detail = static_cast<std::uint32_t>(out_.text_frames.size());
      out_.text_frames.push_back(shape);
      break;
    case ObjectKind::kTextLine:
      if (line.pieces.empty()) return;
      object.detail = static_cast<std::uint32_t>(out_.text_lines.size());
      out_.text_lines.push_back(std::move(line));
      break;
    case ObjectKind::kImage:
      image.span = {begin, offset_ + reader_->end()};
      image.place = object.place;
      image.embedded = document_.At(image.span).find("\n=") != std::string_view::npos;
      object.detail = static_cast<std::uint32_t>(out_.images.size());
      out_.images.push_back(std::move(image));
      break;
    case ObjectKind::kEquation:
      object.detail = static_cast<std::uint32_t>(out_.equations.size());
      out_.equations.push_back(equation.empty() ? "equation" : std::move(equation));
      break;
    default:
      break;
  }
  Add(object);
}

void Drawings::Reader::ReadFrameProperty(Word word, Open* frame) {
  FramePlace& place = frame->place;
  switch (word) {
    case Word::kTag:
      frame->tag = Text();
      break;
    case Word::kFrameType:
      place.kind = FrameKindOf(data(), place.kind);
      break;
    case Word::kAnchorAlign:
      place.alignment = AlignmentOf(data());
      break;
    case Word::kAnchorBeside:
      place.beside_frame = data() == "TextFrame";
      break;
    case Word::kNsOffset:
      place.near_side_offset = Length(data(), out_.unit);
      break;
    case Word::kBlOffset:
      place.baseline_offset = Length(data(), out_.unit);
      break;
    case Word::kFloat:
      place.floating = data() == "Yes";
      break;
    case Word::kCropped:
      place.cropped = data() == "Yes";
      break;
    default:
      if (!ReadStyle(word)) Child(word, &frame->object);
      break;
  }
}

void Drawings::Reader::ReadPageProperty(Word word, PageShape* page) {
  switch (word) {
    case Word::kPageSize: {
      const std::vector<double> size = Lengths(data(), out_.unit);
      if (size.size() >= 2) std::tie(page->width, page->height) = std::tie(size[0], size[1]);
      break;
    }
    case Word::kPageTag:
      page->name = Name();
      break;
    case Word::kPageType:
      page->left_master = data() == "LeftMasterPage";
      page->right_master = data() == "RightMasterPage";
      break;
    case Word::kPageBackground:
      page->background = Name();
      break;
    default:
      break;
  }
}

// A frame's own properties come before its content, which changes the running state.
void Drawings::Reader::Seal(Open* frame) {
  if (frame->sealed) return;
  frame->sealed = true;
  frame->object.style = CurrentStyle();
  frame->place.width = frame->object.place.width;
  frame->place.height = frame->object.place.height;
  if (frame->object.kind != ObjectKind::kFrameBegin) return;
  frame->index = static_cast<std::uint32_t>(out_.objects.size());
  if (names_frames_ && !frame->tag.empty()) out_.named_frames.try_emplace(frame->tag, frame->index);
  Add(frame->object);
}

void Drawings::Reader::CloseFrame(Open* frame) {
  Seal(frame);
  out_.objects[frame->index].detail = static_cast<std::uint32_t>(out_.objects.size());
  Object end = frame->object;
  end.kind = ObjectKind::kFrameEnd;
  Add(end);
}

// The content of a page or of an anchored frame, up to its end. Frames lie in frames to any depth, so the
// open ones are a list.
void Drawings::Reader::ReadContent(std::size_t inside, Open* anchored, PageShape* page) {
  std::vector<Open> open;
  while (reader_->Next()) {
    if (reader_->kind() == Piece::kGroupEnd) {
      if (reader_->depth() < inside) break;
      CloseFrame(&open.back());
      open.pop_back();
      continue;
    }
    Open* const frame = open.empty() ? anchored : &open.back();
    const bool is_group = reader_->kind() == Piece::kGroup;
    const std::optional<ObjectKind> kind = is_group ? ObjectOf(reader_->name()) : std::nullopt;
    if (kind) {
      if (frame != nullptr) Seal(frame);
      if (*kind == ObjectKind::kFrameBegin) {
        open.emplace_back().object.kind = ObjectKind::kFrameBegin;
      } else {
        ReadObject(*kind, offset_ + reader_->begin());
      }
      continue;
    }
    const std::size_t depth = reader_->depth() - (is_group ? 1U : 0U);
    const Word word = CurrentWord();
    if (word != Word::kNone && frame != nullptr && !frame->sealed) ReadFrameProperty(word, frame);
    if (word != Word::kNone && frame == nullptr && page != nullptr) ReadPageProperty(word, page);
    // A group that was not read.
    while (reader_->depth() > depth && reader_->Next()) {
    }
  }
  while (!open.empty()) {
    CloseFrame(&open.back());
    open.pop_back();
  }
}

void Drawings::Reader::ReadFrame(const model::AnchoredFrame& frame) {
  AnchoredShape shape;
  shape.objects.begin = static_cast<std::uint32_t>(out_.objects.size());
  mif::Reader reader(document_.At(frame.span));
  reader_ = &reader;
  offset_ = frame.span.begin;
  Open open;
  open.object.kind = ObjectKind::kRectangle;
  if (!frame.span.Empty() && reader.Next() && reader.kind() == Piece::kGroup) {
    ReadContent(reader.depth(), &open, nullptr);
  }
  Seal(&open);
  shape.place = open.place;
  shape.shape = open.object;
  shape.objects.end = static_cast<std::uint32_t>(out_.objects.size());
  out_.frames.push_back(shape);
}

void Drawings::Reader::ReadPage(const model::Page& page) {
  PageShape shape;
  shape.objects.begin = static_cast<std::uint32_t>(out_.objects.size());
  mif::Reader reader(document_.At(page.span));
  reader_ = &reader;
  offset_ = page.span.begin;
  names_frames_ = page.kind == model::FlowKind::kReference;
  if (reader.Next() && reader.kind() == Piece::kGroup) ReadContent(reader.depth(), nullptr, &shape);
  shape.objects.end = static_cast<std::uint32_t>(out_.objects.size());
  out_.pages.push_back(shape);
}

Drawings::Drawings(const model::Document& document) {
  frames.reserve(document.frames.size());
  pages.reserve(document.pages.size());
  if (document.format != model::Format::kMif) {
    frames.resize(document.frames.size());
    return;
  }
  Reader reader(document, this);
  reader.ReadUnit();
  frames.emplace_back();
  // Anchored frames stand before the pages in the file.
  for (std::size_t i = 1; i < document.frames.size(); ++i) reader.ReadFrame(document.frames[i]);
  for (const model::Page& page : document.pages) reader.ReadPage(page);
}

std::vector<Rect> ColumnsOf(const TextShape& shape, const Rect& text) {
  const auto count = static_cast<double>(shape.columns);
  const double width = std::max(0.0, (text.width - (count - 1) * shape.gap) / count);
  std::vector<Rect> columns;
  for (std::uint32_t i = 0; i < shape.columns; ++i) {
    columns.push_back({text.x + i * (width + shape.gap), text.y, width, text.height});
  }
  return columns;
}

std::unordered_map<std::uint32_t, FlowPlace> Drawings::FollowFlows(const model::Document& document) const {
  std::unordered_map<std::uint32_t, FlowPlace> flow_of;
  std::unordered_map<std::uint32_t, std::uint32_t> next;
  for (const TextShape& shape : text_frames) next[shape.number] = shape.next;
  for (model::Id id = 1; id < document.flows.size(); ++id) {
    const model::Flow& flow = document.flows[id];
    std::uint32_t place = 0;
    const auto follow = [&](std::uint32_t number) {
      while (number != 0 && flow_of.try_emplace(number, FlowPlace{id, place}).second) {
        ++place;
        const auto found = next.find(number);
        number = found == next.end() ? 0 : found->second;
      }
    };
    follow(flow.text_frame);
    for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) {
      if (document.items[i].kind == model::ItemKind::kTextFrame) follow(document.items[i].ref);
    }
  }
  return flow_of;
}

}  // namespace qelm::embedded::render
