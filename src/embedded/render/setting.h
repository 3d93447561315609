// What laying out one document needs to know of it, made once: its formats, colors, numbers, and where links
// lead. Everything that reads text or sets it gets this.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "embedded/model/hypertext.h"
#include "embedded/model/numbering.h"
#include "embedded/render/color.h"
#include "embedded/render/design/formats.h"
#include "embedded/render/design/variables.h"
#include "embedded/render/fonts.h"
#include "embedded/render/graphics.h"
#include "embedded/render/indicators.h"
#include "embedded/render/table_format.h"

namespace qelm::embedded::render {

// What a link is in the PDF: the attributes of its tag; empty where it leads nowhere. `file` is the path as
// the document names it, empty for the document itself; `target` the place's name.
using LinkResolver = std::function<std::string(std::string_view file, std::string_view target)>;
// The name of a place of this document in the PDF, empty when nothing leads there.
using PlaceNamer = std::function<std::string(std::string_view target)>;

// How footnotes are numbered and set.
struct NoteStyle {
  std::string tag = "Footnote";  // of their paragraphs
  std::string number_style = "Arabic";
  std::string labels;  // instead of numbers, one character each, where the style is Custom
  std::string anchor_prefix, anchor_suffix, number_prefix, number_suffix = "\t";
  LetterPosition anchor_position = LetterPosition::kSuperscript;
  LetterPosition number_position = LetterPosition::kNormal;
  std::int64_t first = 1;
  bool restarts_on_pages = true;

  std::string Number(std::int64_t number) const;
};

struct ChangeBarStyle {
  double gap = 18;
  double width = 2;
  std::string color = "Black";
  enum class Side : std::uint8_t { kLeft, kRight, kInside, kOutside } side = Side::kLeft;
};

struct FrameTexts;

struct Place {
  std::uint32_t item = 0;
  std::string name;  // in the PDF
};

struct Setting {
  Setting(const model::Document& for_document, Fonts& with_fonts, Graphics& with_graphics);

  const model::Document& document;
  Fonts& fonts;
  Graphics& graphics;
  Formats formats;
  TableFormats tables;
  std::vector<std::vector<Indicator>> indicators;  // by condition set; empty: none are shown
  std::vector<bool> shown;                         // by condition set
  std::vector<model::ParagraphNumber> numbers;     // by paragraph
  NoteStyle notes;
  NoteStyle table_notes;
  ChangeBarStyle change_bars;
  double most_note_height = 1e9;
  std::vector<Place> places;  // in the order of the items
  LinkResolver link;
  PageFacts facts;  // of the page that is being filled
  PrintTime time;
  // The numbers of footnotes as they stand on their pages, by part.
  std::unordered_map<std::uint32_t, std::string> note_numbers;
  std::unordered_set<std::uint32_t> table_note_parts;  // of the footnotes that lie in tables

  std::unordered_set<std::string> placed;   // the places that were drawn
  std::shared_ptr<FrameTexts> frame_texts;  // of graphics whose text goes on in another one (frame_text.h)
  int open_frames = 0;                      // frames that are being drawn, one in the other
  std::int64_t next_note = 1;               // before it is known on which page it stands
  std::int64_t next_table_note = 1;
  double table_note_width = 468;
  bool table_goes_on = false;        // what is read stands where a table is continued
  std::vector<std::string> notices;  // of text that has no place
  std::string language;              // of the document, as in "en-us"; empty: not said

  // Notes where the document's own targets are, for those that `namer` has a name for.
  void FindPlaces(const PlaceNamer& namer);
  const Face& FaceOf(const FontFormat& format);

 private:
  void ReadSettings();
  std::unordered_map<const FontFormat*, const Face*> faces_;
};

}  // namespace qelm::embedded::render
