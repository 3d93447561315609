// The main flow of a document laid out in pages.
//
// Strips come one after the other. Those that stay together are gathered, and a gathering goes to the column
// at hand when it fits into what is left there - footnotes and all - else to the next one; one that is too
// high for any column is broken. A page is handed on as soon as it is full, so that a document of any length
// takes the memory of a few pages.
#pragma once

#include <vector>

#include "embedded/render/page.h"
#include "embedded/render/running.h"
#include "embedded/render/strips.h"

namespace qelm::embedded::render {

class FlowLayout {
 public:
  // Everything must outlive this. `first_number`: of the first page.
  FlowLayout(Setting& setting, const PageDesigns& designs, std::string_view number_style,
             std::int64_t first_number, PageSink* sink);

  // Lays out the document. Returns how many pages were made, also where the sink ended it.
  std::size_t Run();

  // Where each page begins in the main flow, by item.
  struct PageStart {
    std::uint32_t item = 0;
    std::int64_t number = 0;
    std::string text;
  };
  const std::vector<PageStart>& page_starts() const { return page_starts_; }

 private:
  bool Take(Strip&& strip);
  bool PlaceGroup();
  void PlaceOneByOne();
  bool Start(StartAt start);
  double Needed(const std::vector<Strip>& strips, std::size_t count) const;
  double Room() const;
  double RepeatedHeight(const Strip& strip) const;
  void PlaceStrip(Strip&& strip);
  void PlaceHeading(const Strip& next);
  void PlaceNotes();
  void NumberNote(const NoteBlock& note);
  void NextColumn();
  void Advance();
  void BeginColumn();
  void EndColumn();
  void BeginPage();
  void EndPage();
  void SkipToText();
  void AddText(const BackgroundFlow& text);
  void EmitRest();
  double SeparatorHeight() const;
  const Rect& Column() const { return page_.design->columns[column_]; }

  Setting& setting_;
  const PageDesigns& designs_;
  std::string_view number_style_;
  std::int64_t first_number_;
  PageSink* sink_;
  RunningText running_;
  StripMaker maker_;
  bool going_ = true;
  std::size_t pages_ = 0;

  LaidPage page_;
  std::size_t column_ = 0;
  double y_ = 0;        // below what stands in the column
  double behind_ = 0;   // space after it
  bool at_top_ = true;  // nothing stands in the column yet
  double side_bottom_ = 0;
  std::vector<std::shared_ptr<NoteBlock>> notes_;  // of the column
  double notes_height_ = 0;
  std::vector<std::shared_ptr<NoteBlock>> carried_;  // what did not fit into the column before
  std::int64_t page_notes_ = 0;
  std::shared_ptr<const TableParts> open_table_;  // of the strip that was placed last
  std::vector<Strip> group_;
  double group_height_ = 0;
  double group_reach_ = 0;     // how far down its text goes
  std::vector<Strip> floats_;  // wait for the top of a column
  std::vector<PageStart> page_starts_;
};

}  // namespace qelm::embedded::render
