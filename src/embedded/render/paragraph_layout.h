// A paragraph set in lines: its text shaped by Pango, broken to a width, with every line's place in it.
//
// A paragraph is shaped once. What is set keeps Pango's layout, and pages refer to lines of it.
#pragma once

#include <memory>
#include <vector>

#include "embedded/render/story.h"

typedef struct _PangoLayout PangoLayout;
typedef struct _PangoLayoutLine PangoLayoutLine;
typedef struct _cairo cairo_t;

namespace qelm::embedded::render {

struct LaidLine {
  PangoLayoutLine* line = nullptr;  // of the paragraph's layout
  double x = 0;                     // from the paragraph's left edge
  double width = 0;
  double ascent = 0;        // from the line's top to its baseline
  double height = 0;        // with the leading below
  std::uint32_t begin = 0;  // bytes of the text
  std::uint32_t end = 0;
  std::uint32_t first_object = 0;  // index into StoryParagraph::objects
  std::uint32_t end_object = 0;
  bool change_bar = false;
};

// Dots and the like between text and a tab stop.
struct LaidLeader {
  std::uint32_t line = 0;
  double x = 0;
  double width = 0;
  std::string_view text;
};

class LaidParagraph {
 public:
  // `width`: of the column. The setting must outlive this.
  LaidParagraph(Setting& setting, StoryParagraph story, double width);
  ~LaidParagraph();
  LaidParagraph(const LaidParagraph&) = delete;
  LaidParagraph& operator=(const LaidParagraph&) = delete;

  const StoryParagraph& story() const { return story_; }
  const ParagraphFormat& format() const { return *format_; }
  const std::vector<LaidLine>& lines() const { return lines_; }
  double Height() const;

  // The text of a line as it is shown, objects left out.
  std::string LineText(std::uint32_t line) const;

  // Draws a line whose baseline begins at x, y: x is the paragraph's left edge.
  void Draw(cairo_t* cr, std::uint32_t line, double x, double y) const;
  // The stretches of a line between two bytes of the text, from the paragraph's left edge.
  struct Stretch {
    double x = 0;
    double width = 0;
  };
  std::vector<Stretch> Stretches(std::uint32_t line, std::uint32_t begin, std::uint32_t end) const;

 private:
  void SetAttributes(Setting& setting);
  void AddObjects(Setting& setting, void* list);
  void SetTabs(double left);
  void MeasureLines(Setting& setting);
  void FindLeaders(const LaidLine& line, std::uint32_t index);
  void DrawLeader(cairo_t* cr, const LaidLeader& leader, double x, double y) const;

  Setting& setting_;
  StoryParagraph story_;
  const ParagraphFormat* format_;
  PangoLayout* layout_ = nullptr;
  double left_ = 0;  // of the layout in the column
  std::vector<LaidLine> lines_;
  std::vector<LaidLeader> leaders_;
};

// What stands in the text for a footnote, in the font around it.
std::string NoteNumber(const Setting& setting, const StoryObject& object);

// Draws objects in lines - frames, numbers of footnotes - as the layouts made with the context come to them.
void DrawObjectsInLines(PangoContext* context);

}  // namespace qelm::embedded::render
