// The formats of text as layout needs them: every paragraph state and character state of a document with all
// its properties, in points.
//
// A paragraph state is a catalog format, or the state before it with changes on top, and states stand on each
// other in chains as long as the document. So each is resolved once, from the nearest one that is resolved
// already. A character state stands on a paragraph's font: first the character format of the catalog, then
// its own overrides. What a file leaves out has the values with which a new document starts.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::render {

enum class LetterCase : std::uint8_t { kAsTyped, kSmallCaps, kLower, kUpper };
enum class LetterPosition : std::uint8_t { kNormal, kSuperscript, kSubscript };

// Views are into the document's source or kept by Formats.
struct FontFormat {
  std::string_view family = "Times New Roman";
  std::string_view weight = "Regular";
  std::string_view angle = "Regular";
  std::string_view variation = "Regular";
  std::string_view language = "USEnglish";
  std::string_view color = "Black";
  std::string_view background;  // empty: none
  double size = 12;
  double spread = 0;      // of an em, in percent, between characters
  double shift_down = 0;  // of the size, in percent
  double stretch = 100;   // of the width, in percent
  model::Underlining underlining = model::Underlining::kNone;
  LetterCase letter_case = LetterCase::kAsTyped;
  LetterPosition position = LetterPosition::kNormal;
  bool overline = false;
  bool strikethrough = false;
  bool change_bar = false;
  bool outline = false;
};

enum class Alignment : std::uint8_t { kLeft, kCenter, kRight, kJustified };
enum class StartAt : std::uint8_t { kAnywhere, kColumn, kPage, kLeftPage, kRightPage };
enum class PlacementStyle : std::uint8_t { kNormal, kRunIn, kSideHead, kStraddle };
enum class CellAlignment : std::uint8_t { kTop, kMiddle, kBottom };
enum class TabKind : std::uint8_t { kLeft, kCenter, kRight, kDecimal };

struct TabStop {
  double position = 0;  // from the column's edge
  TabKind kind = TabKind::kLeft;
  std::string leader;  // repeated over the gap; empty or blanks: nothing
  std::string decimal = ".";
};

struct Margins {
  double left = 0, top = 0, right = 0, bottom = 0;
};

struct ParagraphFormat {
  std::string_view tag;
  FontFormat font;
  Alignment alignment = Alignment::kLeft;
  StartAt start = StartAt::kAnywhere;
  PlacementStyle style = PlacementStyle::kNormal;
  double first_indent = 0;
  double left_indent = 0;
  double right_indent = 0;
  bool first_relative = false;  // the first indent is first_offset from the left one
  double first_offset = 0;
  double space_before = 0;
  double space_after = 0;
  double leading = 2;
  bool fixed_spacing = true;
  bool with_next = false;
  bool with_previous = false;
  bool numbered = false;
  bool number_at_end = false;
  std::string_view number_font;   // a character format
  std::uint32_t block_lines = 1;  // that stay together at either end
  std::int32_t bookmark_level = 0;
  std::string_view run_in_mark;
  std::string_view top_frame;  // reference frames drawn above and below
  std::string_view bottom_frame;
  std::string_view box_color;  // behind the whole paragraph; empty: none
  CellAlignment cell_alignment = CellAlignment::kTop;
  Margins cell_margins;
  bool cell_margin_fixed[4] = {};  // left, top, right, bottom: instead of the table's own, not on top of them
  std::vector<TabStop> tabs;
  bool right_to_left = false;

  double FirstIndent() const { return first_relative ? left_indent + first_offset : first_indent; }
};

class Formats {
 public:
  explicit Formats(const model::Document& document);

  // References stay valid as long as this lives.
  const ParagraphFormat& Paragraph(std::uint32_t paragraph_state);
  const FontFormat& Font(std::uint32_t paragraph_state, std::uint32_t font);
  // A catalog format, null when there is none of the name.
  const ParagraphFormat* CatalogParagraph(std::string_view tag) const;
  // The paragraph's font with a character format of the catalog on top.
  FontFormat WithCharacterFormat(const FontFormat& font, std::string_view tag);

  // Whether any format of the catalog makes bookmarks.
  bool HasBookmarkLevels() const;

  double unit() const { return unit_; }

 private:
  friend struct FormatReader;
  void ReadCatalogs();
  std::string_view Text(std::string_view data);
  void ReadParagraph(std::string_view statement, ParagraphFormat* format);
  void ReadFont(std::string_view statement, FontFormat* font);
  void ApplyFont(std::string_view name, std::string_view data, FontFormat* font);

  const model::Document& document_;
  double unit_;
  std::unordered_map<std::string_view, ParagraphFormat> paragraphs_;
  std::unordered_map<std::string_view, std::vector<std::pair<std::string_view, std::string_view>>> fonts_;
  std::vector<std::unique_ptr<ParagraphFormat>> states_;
  std::unordered_map<std::uint64_t, FontFormat> state_fonts_;
  std::deque<std::string> texts_;
};

}  // namespace qelm::embedded::render
