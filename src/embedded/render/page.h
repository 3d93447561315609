// A page that is laid out: what stands where on it.
//
// Layout makes strips - a line, a table row, a frame of its own - that hold marks relative to their upper
// left corner, and puts strips on pages. A page is a list of marks in the order of drawing and of reading.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/render/design/page_design.h"
#include "embedded/render/paragraph_layout.h"

namespace qelm::embedded::render {

struct Mark {
  enum class Kind : std::uint8_t {
    kLine,        // of `paragraph`; y is the baseline
    kFill,        // a rectangle of one color: shading, rules
    kChangeBar,   // beside the column that x and width say
    kFrame,       // ref: anchored frame
    kReference,   // text: the name of a frame of the reference pages
    kGroupBegin,  // text: the structure that begins here, "TR" or "TD"; ref: the table
    kGroupEnd,
  };
  Kind kind = Kind::kFill;
  bool repeated = false;  // stood on a page before: headings of tables
  std::uint32_t ref = 0;  // a line's index, a frame
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  Rgb color;
  std::string_view text;
  std::shared_ptr<const LaidParagraph> paragraph;
};

struct NoteBlock;
struct TableParts;

struct Strip {
  double height = 0;
  double space_before = 0;  // the larger of this and the one above's `space_after` counts; none at the top
  double space_after = 0;
  bool glued = false;      // stays with the strip above
  bool side_head = false;  // stands beside what follows
  bool straddles = false;  // reaches over the area of the side heads
  bool floats = false;     // goes to the top of a column
  StartAt start = StartAt::kAnywhere;
  std::vector<Mark> marks;
  std::vector<std::shared_ptr<NoteBlock>> notes;
  std::shared_ptr<const TableParts> table;  // of a row that is not the table's heading
  bool foots = false;                       // a row of the table's footing
  bool ends_table = false;                  // its last row
  std::uint32_t first_item =
      model::kNoIndex;  // of what it shows, where something begins that pages are told of
  std::shared_ptr<const LaidParagraph> begins;  // the paragraph that begins here
};

// What a table repeats on every page that it reaches, and where it is broken off.
struct TableParts {
  std::vector<Strip> heading;  // with the title
  double heading_height = 0;
  std::vector<Strip> footing;
  double footing_height = 0;
  std::vector<Mark> broken_off;  // the rule below the last row on a page, where there is no footing
};

// A footnote set in lines, or a frame, to stand at the foot of the column where its anchor stands.
struct NoteBlock {
  std::uint32_t part = 0;  // of the footnote; 0: a frame
  double height = 0;       // of what does not stand on a page yet
  std::vector<Strip> strips;
  std::size_t placed = 0;  // strips that stand on pages
  std::string number;      // where numbers begin anew on each page: that of its anchor
};

// Text in one frame of a page, or in all of those that are upright.
struct LaidText {
  Rect place;        // around whose middle it is turned
  double angle = 0;  // counterclockwise, in degrees
  model::Id flow = 0;
  std::vector<Mark> marks;
};

struct LaidPage {
  std::size_t ordinal = 0;  // from 1 in the document
  std::int64_t number = 0;
  const PageDesign* design = nullptr;
  std::vector<LaidText> around;  // headers, footers
  std::vector<LaidText> body;    // the main flow, then the others
  struct Begin {
    std::shared_ptr<const LaidParagraph> paragraph;
    double y = 0;
  };
  std::vector<Begin> begins;  // the paragraphs of the main flow that begin here
  std::vector<std::pair<std::uint32_t, std::string>> note_numbers;  // of the notes that stand here, by part
};

// Takes pages as they are made, one after the other. False ends the layout.
class PageSink {
 public:
  virtual ~PageSink() = default;
  virtual bool Take(LaidPage&& page) = 0;
};

// Adds marks, moved by x and y.
void PlaceMarks(const std::vector<Mark>& marks, double x, double y, std::vector<Mark>* out);

// The space between two strips, one above the other.
inline double SpaceBetween(const Strip& above, const Strip& below) {
  return above.space_after > below.space_before ? above.space_after : below.space_before;
}

// Puts strips one below the other, the first at x, y. Returns the height that they take; footnotes in them
// are left to the caller.
double StackStrips(const std::vector<Strip>& strips, double x, double y, std::vector<Mark>* out);
double StackedHeight(const std::vector<Strip>& strips);

}  // namespace qelm::embedded::render
