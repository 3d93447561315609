// The formats of tables: what the catalog says under a table's tag, and what the table itself changes;
// rulings and shadings as they are drawn.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "embedded/render/color.h"
#include "embedded/render/design/formats.h"

namespace qelm::embedded::render {

struct Ruling {
  double width = 0;  // of each line; 0: nothing is drawn
  double gap = 0;    // between two lines
  bool two_lines = false;
  Rgb color;
};

// 0 is full color, 15 none.
inline constexpr int kNoFill = 15;

struct TableShade {
  int fill = kNoFill;
  std::string color = "Black";
};

enum class TitlePlace : std::uint8_t { kNone, kAbove, kBelow };

struct TableFormat {
  Margins margins;
  double left_indent = 0;
  double right_indent = 0;
  Alignment alignment = Alignment::kLeft;
  StartAt start = StartAt::kAnywhere;
  bool floats = false;
  double space_before = 0;
  double space_after = 0;
  std::uint32_t block_rows = 1;
  TableShade heading;
  TableShade body;
  TableShade other_body;  // of every second group of rows or columns
  bool shade_by_column = false;
  std::uint32_t shade_period = 1;
  std::uint32_t other_shade_period = 1;
  std::string left_ruling, top_ruling, right_ruling, bottom_ruling;
  std::string column_ruling, other_column_ruling, row_ruling, other_row_ruling;
  std::string heading_row_ruling, separator_ruling;
  std::uint32_t other_column = 0;  // the column, from 1, to the right of which the other column ruling stands
  std::uint32_t ruling_period = 1;  // every so many body rows the other row ruling
  bool bottom_ruling_last = false;  // only on the table's last page
  TitlePlace title = TitlePlace::kNone;
  double title_gap = 0;
};

class TableFormats {
 public:
  TableFormats(const model::Document& document, double unit);

  // The format of a table: `statement` is its own.
  TableFormat Of(std::string_view tag, std::string_view statement) const;
  // Null for a name that is empty or unknown.
  const Ruling* RulingNamed(const std::string& name) const;
  // The color of a shading; false when there is nothing to see.
  bool ShadeColor(const TableShade& shade, Rgb* color) const;

 private:
  void ReadRulings(std::string_view catalog);
  void Apply(std::string_view statement, TableFormat* format) const;

  const model::Document& document_;
  double unit_;
  std::unordered_map<std::string, Ruling> rulings_;
  std::unordered_map<std::string, TableFormat> formats_;
};

// A part of a color on white, as MIF counts fills.
bool FillColor(int fill, const Rgb& full, Rgb* color);

}  // namespace qelm::embedded::render
