// The text of one flow put into its columns, page after page.
//
// Strips come one after the other. Those that stay together are gathered, and a gathering goes to the column
// at hand when it fits into what is left there - footnotes and all - else to the next one; one that is too
// high for any column is broken. Where the pages come from is the business of who fills them.
#pragma once

#include <deque>
#include <span>
#include <vector>

#include "embedded/render/page.h"
#include "embedded/render/running.h"
#include "embedded/render/strips.h"

namespace qelm::embedded::render {

// The pages that a flow runs through.
class FlowPages {
 public:
  virtual ~FlowPages() = default;
  // Whether there is a page behind the one at hand. Pages that can be made are always there.
  virtual bool HasNext() const = 0;
  // Goes to the next page with columns for the flow, which is then the one at hand. False when there is none
  // or printing was ended.
  virtual bool Next() = 0;
  virtual LaidPage& Page() = 0;
  // The flow's columns on the page at hand; at least one.
  virtual const std::vector<Column>& Columns() const = 0;
};

// Where a page begins in a flow.
struct PageStart {
  std::uint32_t item = 0;
  std::int64_t number = 0;
  std::string text;
};

class FlowFiller {
 public:
  // Everything must outlive this. `running`: is told of the paragraphs; null: nobody is.
  FlowFiller(Setting& setting, bool double_sided, model::Id flow, FlowPages* pages, RunningText* running);

  // Begins with the text on the page at hand.
  void Begin();
  // Places the next paragraph of the text, at the end all that still waits. False when everything is placed,
  // or has no place.
  bool Step();
  // Whether there was text for which there is no place.
  bool is_cut() const { return cut_; }
  const std::vector<PageStart>& page_starts() const { return page_starts_; }

 private:
  bool Take(Strip&& strip);
  void Settle();
  void NoteCut(const Strip& strip);
  void Finish();
  void PlaceGroup();
  bool PlaceInPieces(Strip* strip);
  void Start(StartAt start);
  void ToNewPage();
  double Needed(std::span<const Strip> strips) const;
  bool Fits(std::span<const Strip> strips) const;
  double Room() const;
  double RepeatedHeight(const Strip& strip) const;
  double FootingHeight(const TableParts* table) const;
  double FootingBelow(const Strip& strip) const { return strip.foots ? 0 : FootingHeight(strip.table.get()); }
  void PlaceStrip(Strip&& strip);
  void PlaceHeading(const Strip& next);
  void BreakTable();
  void TakeNote(std::shared_ptr<NoteBlock> note);
  void PlaceNotes();
  bool PlaceNote(NoteBlock* note, bool any_placed, double* y);
  void NumberNote(NoteBlock* note);
  void PlaceFloats();
  void NextColumn();
  void Advance();
  void BeginPage();
  void BeginColumn();
  void EndColumn();
  void Balance();
  bool IsLastColumn() const { return column_ + 1 >= pages_.Columns().size() && !pages_.HasNext(); }
  double SeparatorHeight() const;
  const Column& Here() const { return pages_.Columns()[column_]; }
  std::vector<Mark>& Marks() { return pages_.Page().body[text_].marks; }

  Setting& setting_;
  bool double_sided_;
  model::Id id_;
  const model::Flow& flow_;
  FlowPages& pages_;
  RunningText* running_;
  StripMaker maker_;
  bool going_ = true;
  bool finished_ = false;
  bool cut_ = false;

  std::size_t column_ = 0;
  std::size_t text_ = 0;  // of the column, among those of the page
  double y_ = 0;          // below what stands in the column
  double behind_ = 0;     // space after it
  bool at_top_ = true;    // nothing stands in the column yet
  bool page_empty_ = true;
  double side_bottom_ = 0;
  // Of a frame with balanced columns: what stands in it, the index of the paragraph that begins with it, and
  // where its marks begin.
  std::vector<Strip> balanced_;
  std::vector<std::size_t> balanced_begins_;
  std::size_t first_balanced_ = 0;
  bool frame_has_notes_ = false;
  std::vector<std::shared_ptr<NoteBlock>> notes_;  // of the column
  double notes_height_ = 0;
  std::vector<std::shared_ptr<NoteBlock>> carried_;  // what did not fit into the column before
  std::int64_t page_notes_ = 0;
  std::shared_ptr<const TableParts> open_table_;  // of which more is to come
  std::vector<Strip> group_;
  double group_height_ = 0;
  double group_reach_ = 0;    // how far down its text goes
  std::deque<Strip> floats_;  // wait for the top of a column
  std::vector<PageStart> page_starts_;
};

}  // namespace qelm::embedded::render
