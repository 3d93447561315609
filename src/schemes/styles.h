// The styles that a coloring rule may ask for, by the numbers that settings documents hold.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace qelm::schemes {

// The order is that of the stored numbers, which deliberately is not the order in which editors offer the
// styles. Both 0 and 8 are no decoration.
enum Style : std::int32_t {
  kStyleNone = 0,
  kStyleOverline = 1,
  kStyleStrikethrough = 2,
  kStyleUnderline = 3,
  kStyleDoubleUnderline = 4,
  kStyleChangeBar = 5,
  kStyleNumericUnderline = 6,
  kStyleNumericUnderlineChangeBar = 7,
  kStyleNoneAgain = 8,
};

inline constexpr std::array<std::string_view, 9> kStyleNames = {
    "None",       "Overline",   "Strikethrough",   "Underline", "Double UL",
    "Change Bar", "Numeric UL", "Num UL / Ch Bar", "None"};

// The name of a style by its number; that of 0 for numbers that are no style.
std::string_view StyleName(std::int32_t style);

// The number of a style by its name in the table or by its long form ("Double Underline"); -1 for other
// names.
std::int32_t StyleByName(std::string_view name);

// The number in the text of a Style element: what its first four characters say, as far as they are digits; 0
// for numbers that are no style.
std::int32_t ReadStyle(std::string_view text);

}  // namespace qelm::schemes
