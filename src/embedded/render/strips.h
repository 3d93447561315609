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
  }

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
  bool AddLines(const std::shared_ptr<const LaidParagraph>& laid);
  Strip LineStrip(const std::shared_ptr<const LaidParagraph>& laid, std::uint32_t index);
  Strip SideHead(const std::shared_ptr<const LaidParagraph>& laid) const;
  void AddSeparators(const LaidParagraph& laid, std::uint32_t index, Strip* strip) const;
  void AddObjects(const LaidParagraph& laid, const LaidLine& line, Strip* strip);
  void AddFrame(std::uint32_t frame, const LaidLine& line, Strip* strip);
  std::shared_ptr<NoteBlock> SetNote(std::uint32_t part);
  bool Give(Strip&& strip);

  Setting& setting_;
  std::uint32_t depth_;
  double width_ = 0;
  double side_width_ = 0;
  std::optional<StoryReader> reader_;
  const TakeStrip* take_ = nullptr;
  bool keep_next_ = false;     // what comes next stays with what was before
  std::vector<Strip> behind_;  // frames that come behind the line at hand
};

// All strips of a text that is short: a cell, a footnote, a header.
std::vector<Strip> MakeStrips(Setting& setting, std::uint32_t first, std::uint32_t end, double width,
                              std::uint32_t depth);

// Sets a table (a part of the document) to a column's width. False when `take` ended it.
bool SetTable(Setting& setting, std::uint32_t part, double width, std::uint32_t depth, bool glued,
              const TakeStrip& take);

}  // namespace qelm::embedded::render
