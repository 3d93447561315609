// The text of a flow, cell or footnote as paragraphs to be set: what is shown of it, in order.
//
// Hidden and deleted text is left out, and a paragraph whose mark is hidden runs on into the next. Objects in
// the text - frames, footnotes - stand as one replacement character each; tables are named, to be set behind
// their paragraph. A head that runs in becomes the beginning of the paragraph behind it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "embedded/render/setting.h"

namespace qelm::embedded::render {

// Offsets are bytes of StoryParagraph::text.
struct StoryRun {
  std::uint32_t end = 0;
  std::uint32_t paragraph_state = 0;
  std::uint32_t font = 0;
  std::uint16_t conditions = 0;
  std::optional<std::string> format;  // a character format instead of `font`
};

struct StoryObject {
  enum class Kind : std::uint8_t { kFrame, kNote, kNoteNumber };
  std::uint32_t at = 0;
  Kind kind = Kind::kFrame;
  std::uint32_t ref = 0;   // frame; part of the footnote
  std::uint32_t item = 0;  // of the anchor
};

struct StoryLink {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
  std::string attributes;  // of the link in the PDF
};

struct StoryPlace {
  std::uint32_t at = 0;
  std::string_view name;  // kept by Setting
};

struct StoryMarker {
  std::string type;
  std::string text;
};

struct StoryParagraph {
  std::uint32_t paragraph = 0;  // index into Document::paragraphs; 0: there is none
  std::uint32_t state = 0;
  std::uint32_t first_item = 0;
  std::uint32_t end_item = 0;
  std::string text;
  std::size_t number_length = 0;  // of the number, which the text begins with
  std::vector<StoryRun> runs;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> item_starts;  // the item behind each piece of text
  std::vector<StoryObject> objects;
  std::vector<StoryLink> links;
  std::vector<StoryPlace> places;
  std::vector<StoryMarker> markers;   // of headers and footers
  std::vector<std::uint32_t> tables;  // parts
  bool goes_on = false;               // behind what was split off
  bool is_split = false;              // more of it follows
};

// Text that is longer than this is set in several pieces: the widths of a font's longest stretches have to be
// numbers of 32 bits.
inline constexpr std::uint32_t kLongestText = 1U << 16;

// Cuts a text at a byte that begins a character. Returns what is behind.
StoryParagraph SplitText(StoryParagraph* story, std::uint32_t cut);
// Cuts a text that is longer than that, at a blank where there is one. Returns what is behind.
StoryParagraph SplitLongText(StoryParagraph* story);

class StoryReader {
 public:
  // Reads the items [first, end). `depth`: how many tables and footnotes the text lies in.
  StoryReader(Setting& setting, std::uint32_t first, std::uint32_t end, std::uint32_t depth);
  // The text of a footnote begins with its number.
  void BeginWithNote(std::uint32_t part) { note_ = part; }

  // The next paragraph; false when there is none.
  bool Next(StoryParagraph* paragraph);

 private:
  bool ReadParagraph(StoryParagraph* paragraph);
  bool Visit(const model::Item& item, StoryParagraph* paragraph);
  void AddText(StoryParagraph* paragraph, const model::Item& item, std::string_view text);
  void AddRun(StoryParagraph* paragraph, const model::Item& item, std::optional<std::string> format);
  void AddVariable(StoryParagraph* paragraph, const model::Item& item);
  void AddObject(StoryParagraph* paragraph, const model::Item& item, StoryObject::Kind kind);
  void ReadMarker(StoryParagraph* paragraph, const model::Item& item);
  void AddPlaces(StoryParagraph* paragraph, std::uint32_t item);
  void EndHotspot(StoryParagraph* paragraph);
  void Finish(StoryParagraph* paragraph);
  void PutNumber(StoryParagraph* paragraph);
  void ShowSymbols(StoryParagraph* paragraph);

  Setting& setting_;
  const model::Document& document_;
  std::uint32_t at_;
  std::uint32_t end_;
  std::uint32_t depth_;
  std::uint32_t note_ = 0;
  std::size_t place_ = 0;  // the next of Setting::places
  std::uint32_t last_state_ = 0;

  // The hypertext link that is open: it reaches as far as its character format does.
  std::string hotspot_;
  std::uint32_t hotspot_begin_ = 0;
  std::uint32_t hotspot_font_ = 0;
  // The cross-reference that is open.
  std::string reference_;
  std::uint32_t reference_begin_ = 0;
};

// Tables and footnotes that lie deeper than this in each other are set as plain text of what is around them.
inline constexpr std::uint32_t kDeepestNesting = 12;

}  // namespace qelm::embedded::render
