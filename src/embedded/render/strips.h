// The text of a flow, cell or footnote as strips: lines with the space between them, tables row by row,
// frames that stand below their line, footnotes with the line of their anchor.
//
// Strips come one by one, in order, so that a flow of any length is never in memory as a whole. Which of them
// stay together - the lines at both ends of a paragraph, a heading and what follows it - is said on each.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "embedded/render/page.h"

namespace qelm::embedded::render {

// False ends the making.
using TakeStrip = std::function<bool(Strip&&)>;

class StripMaker {
 public:
  // `depth`: in how many tables and footnotes the text lies.
  StripMaker(Setting& setting, std::uint32_t depth) : setting_(setting), depth_(depth) {}

  // How wide what comes next is set, and the area beside it, 0 when there is none.
  void SetColumn(double width, double side_width) {
    width_ = width;
    side_width_ = side_width;
    straddle_width_ = 0;
  }
  // How wide paragraphs are that reach over that area as well, and where they begin, from the column's edge.
  void SetStraddle(double x, double width) {
    straddle_x_ = x;
    straddle_width_ = width;
  }

  // Called before a paragraph is set that does not stay with what is before it, so that the column is the one
  // in which that ends.
  void SetSettle(std::function<void()> settle) { settle_ = std::move(settle); }

  // Begins with the items [first, end).
  void Begin(std::uint32_t first, std::uint32_t end) { reader_.emplace(setting_, first, end, depth_); }
  // Sets the next paragraph of them and the tables behind it. False when there is none, or `take` ended it.
  bool Step(const TakeStrip& take);
  // Sets the items [first, end).
  void Run(std::uint32_t first, std::uint32_t end, const TakeStrip& take);
  // Sets the text of a footnote, which begins with its number.
  void RunNote(std::uint32_t part, const TakeStrip& take);

 private:
  bool AddParagraph(StoryParagraph story);
  bool AddLines(const std::shared_ptr<const LaidParagraph>& laid, std::uint32_t end);
  bool AddAllLines(const std::shared_ptr<const LaidParagraph>& laid) {
    return AddLines(laid, static_cast<std::uint32_t>(laid->lines().size()));
  }
  bool AddBesideFrame(StoryParagraph story, std::uint32_t frame);
  std::uint32_t RunInFrame(const StoryParagraph& story) const;
  bool GiveBehind();
  Strip LineStrip(const std::shared_ptr<const LaidParagraph>& laid, std::uint32_t index);
  Strip SideHead(const std::shared_ptr<const LaidParagraph>& laid);
  void AddSeparators(const LaidParagraph& laid, std::uint32_t index, Strip* strip) const;
  void AddObjects(const LaidParagraph& laid, const LaidLine& line, Strip* strip);
  void AddFrame(std::uint32_t frame, const LaidLine& line, Strip* strip);
  std::shared_ptr<NoteBlock> SetNote(std::uint32_t part);
  bool Give(Strip&& strip);

  Setting& setting_;
  std::uint32_t depth_;
  double width_ = 0;
  double side_width_ = 0;
  double straddle_x_ = 0;
  double straddle_width_ = 0;  // 0: none does
  bool straddles_ = false;     // the paragraph at hand
  double text_x_ = 0;          // of it
  double text_width_ = 0;
  std::optional<StoryReader> reader_;
  const TakeStrip* take_ = nullptr;
  std::function<void()> settle_;
  bool keep_next_ = false;  // what comes next stays with what was before
  // The frame that runs into the paragraph at hand.
  struct RunIn {
    std::uint32_t frame = 0;  // 0: none
    Mark mark;                // in the first line
    std::uint32_t lines = 0;  // that stand beside it
    double text_x = 0;        // of these
    double missing = 0;       // height that they lack to be as high
  };
  RunIn run_in_;
  std::vector<Strip> behind_;  // frames that come behind the line at hand
};

// All strips of a text that is short: a cell, a footnote, a header.
std::vector<Strip> MakeStrips(Setting& setting, std::uint32_t first, std::uint32_t end, double width,
                              std::uint32_t depth);

// Sets a table (a part of the document) to a column's width. False when `take` ended it.
bool SetTable(Setting& setting, std::uint32_t part, double width, std::uint32_t depth, bool glued,
              const TakeStrip& take);

}  // namespace qelm::embedded::render
