#include "embedded/render/drawing.h"

#include <cairo-pdf.h>
#include <cairo.h>

#include <charconv>
#include <numbers>

#include "embedded/render/frame_text.h"

namespace qelm::embedded::render {
namespace {

// Frames in text frames in frames, deeper than this, are left out.
constexpr int kDeepestFrames = 8;

class PageDrawer {
 public:
  PageDrawer(Setting& setting, cairo_t* cr, const PageDesign* design, bool tagged)
      : setting_(setting), cr_(cr), design_(design), tagged_(tagged) {}
  ~PageDrawer() { CloseTable(); }

  void Draw(const std::vector<Mark>& marks) {
    for (const Mark& mark : marks) DrawMark(mark);
    CloseTable();
    // Links stand behind the text, so that they do not break the structure of the paragraphs that hold them.
    for (const std::string& link : links_) {
      cairo_tag_begin(cr_, CAIRO_TAG_LINK, link.c_str());
      cairo_tag_end(cr_, CAIRO_TAG_LINK);
    }
    links_.clear();
  }

 private:
  void DrawMark(const Mark& mark);
  void Fill(double x, double y, double width, double height, const Rgb& color);
  void DrawChangeBar(const Mark& mark);
  void DrawLine(const Mark& mark);
  void DrawLinks(const Mark& mark, const LaidLine& line);
  void BeginGroup(const Mark& mark);
  void EndGroup();
  void Open(const LaidParagraph* paragraph);
  void CloseTable();
  void Tag(const char* name) {
    if (tagged_) cairo_tag_begin(cr_, name, nullptr);
  }
  void EndTag(const char* name) {
    if (tagged_) cairo_tag_end(cr_, name);
  }

  Setting& setting_;
  cairo_t* cr_;
  const PageDesign* design_;
  bool tagged_;
  const LaidParagraph* paragraph_ = nullptr;  // whose tag is open
  std::uint32_t table_ = 0;                   // the same
  std::vector<std::string> groups_;           // open ones within the table
  std::vector<std::string> links_;            // attributes of their tags
};

// The lines of a paragraph are one structure, as far as they stand on one page.
void PageDrawer::Open(const LaidParagraph* paragraph) {
  if (paragraph == paragraph_) return;
  if (paragraph_ != nullptr) EndTag("P");
  paragraph_ = paragraph;
  if (paragraph_ != nullptr) Tag("P");
}

// Rows that follow each other are one table, tables in cells being part of their cell.
void PageDrawer::BeginGroup(const Mark& mark) {
  Open(nullptr);
  const bool row = mark.text == "TR";
  if (row && groups_.empty() && mark.ref != table_) {
    CloseTable();
    table_ = mark.ref;
    Tag("Table");
  }
  if (row && !groups_.empty()) {
    groups_.emplace_back("Table");
    Tag("Table");
  }
  groups_.emplace_back(mark.text);
  Tag(groups_.back().c_str());
}

void PageDrawer::EndGroup() {
  Open(nullptr);
  if (groups_.empty()) return;
  const bool row = groups_.back() == "TR";
  EndTag(groups_.back().c_str());
  groups_.pop_back();
  if (row && !groups_.empty()) {
    EndTag("Table");
    groups_.pop_back();
  }
}

void PageDrawer::CloseTable() {
  Open(nullptr);
  while (!groups_.empty()) {
    EndTag(groups_.back().c_str());
    groups_.pop_back();
  }
  if (table_ != 0) EndTag("Table");
  table_ = 0;
}

void PageDrawer::DrawMark(const Mark& mark) {
  switch (mark.kind) {
    case Mark::Kind::kLine:
      if (groups_.empty() && table_ != 0) CloseTable();
      Open(mark.paragraph.get());
      DrawLine(mark);
      break;
    case Mark::Kind::kFill:
      Fill(mark.x, mark.y, mark.width, mark.height, mark.color);
      break;
    case Mark::Kind::kChangeBar:
      DrawChangeBar(mark);
      break;
    case Mark::Kind::kFrame:
      DrawAnchoredFrame(setting_, cr_, mark.ref, mark.x, mark.y);
      break;
    case Mark::Kind::kReference:
      setting_.graphics.DrawReferenceFrame(cr_, mark.text, mark.x, mark.y);
      break;
    case Mark::Kind::kGroupBegin:
      BeginGroup(mark);
      break;
    case Mark::Kind::kGroupEnd:
      EndGroup();
      break;
  }
}

void PageDrawer::Fill(double x, double y, double width, double height, const Rgb& color) {
  cairo_set_source_rgb(cr_, color.red, color.green, color.blue);
  cairo_rectangle(cr_, x, y, width, height);
  cairo_fill(cr_);
}

void PageDrawer::DrawChangeBar(const Mark& mark) {
  const ChangeBarStyle& style = setting_.change_bars;
  const bool left_page = design_ != nullptr && design_->left;
  using Side = ChangeBarStyle::Side;
  const bool on_left = style.side == Side::kLeft || (style.side == Side::kInside && !left_page) ||
                       (style.side == Side::kOutside && left_page);
  const double x = on_left ? mark.x - style.gap - style.width : mark.x + mark.width + style.gap;
  Fill(x, mark.y, style.width, mark.height, ColorNamed(setting_.document, style.color));
}

void PageDrawer::DrawLine(const Mark& mark) {
  const LaidParagraph& paragraph = *mark.paragraph;
  const LaidLine& line = paragraph.lines()[mark.ref];
  if (tagged_) DrawLinks(mark, line);
  cairo_set_source_rgb(cr_, 0, 0, 0);
  paragraph.Draw(cr_, mark.ref, mark.x, mark.y);
}

// A number in a tag's attributes, which are read with a point whatever the locale is.
std::string Decimal(double value) {
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 2).ptr;
  return std::string(digits, end);
}

void PageDrawer::DrawLinks(const Mark& mark, const LaidLine& line) {
  const StoryParagraph& story = mark.paragraph->story();
  const double top = mark.y - line.ascent;
  const bool last = mark.ref + 1 == mark.paragraph->lines().size();
  for (const StoryPlace& place : story.places) {
    if (place.at < line.begin || (place.at >= line.end && !last)) continue;
    if (mark.repeated || !setting_.placed.insert(std::string(place.name)).second) continue;
    const std::string attributes =
        "name='" + std::string(place.name) + "' x=" + Decimal(mark.x) + " y=" + Decimal(top);
    cairo_tag_begin(cr_, CAIRO_TAG_DEST, attributes.c_str());
    cairo_tag_end(cr_, CAIRO_TAG_DEST);
  }
  for (const StoryLink& link : story.links) {
    if (link.end <= line.begin || link.begin >= line.end) continue;
    for (const LaidParagraph::Stretch& stretch : mark.paragraph->Stretches(mark.ref, link.begin, link.end)) {
      links_.push_back(link.attributes + " rect=[" + Decimal(mark.x + stretch.x) + " " + Decimal(top) + " " +
                       Decimal(stretch.width) + " " + Decimal(line.height) + "]");
    }
  }
}

}  // namespace

void DrawPage(Setting& setting, cairo_t* cr, const LaidPage& page, bool tagged) {
  for (const auto& [part, number] : page.note_numbers) setting.note_numbers[part] = number;
  const PageDesign& design = *page.design;
  if (design.master != model::kNoIndex) setting.graphics.DrawMasterPage(cr, design.master);
  if (design.page != model::kNoIndex) setting.graphics.DrawBodyPage(cr, design.page);
  const auto draw = [&](const LaidText& text) {
    cairo_save(cr);
    if (text.angle != 0) {
      const double x = text.place.x + text.place.width / 2;
      const double y = text.place.y + text.place.height / 2;
      cairo_translate(cr, x, y);
      cairo_rotate(cr, -text.angle * std::numbers::pi / 180);
      cairo_translate(cr, -x, -y);
    }
    PageDrawer(setting, cr, page.design, tagged).Draw(text.marks);
    cairo_restore(cr);
  };
  for (const LaidText& text : page.around) draw(text);
  for (const LaidText& text : page.body) draw(text);
}

void DrawAnchoredFrame(Setting& setting, cairo_t* cr, std::uint32_t frame, double x, double y) {
  if (setting.open_frames >= kDeepestFrames) return;
  ++setting.open_frames;
  cairo_save(cr);
  setting.graphics.DrawFrame(cr, frame, x, y, [&](model::Id flow, std::uint32_t place) {
    PageDrawer(setting, cr, nullptr, false).Draw(FrameMarks(setting, flow, place));
  });
  cairo_restore(cr);
  --setting.open_frames;
}

}  // namespace qelm::embedded::render
