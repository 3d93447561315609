// The words that stand for a color in rules and are none.
#pragma once

#include <string_view>

namespace qelm::schemes {

// The text gets the color again that its element definition gives it.
inline constexpr std::string_view kColorOfDefinition = "<from EDD>";

// Whether a rule's color asks for no color of the document: none at all, the one of the element definitions,
// or the one that the text has.
inline bool IsNoColor(std::string_view name) {
  return name == "None" || name == kColorOfDefinition || name == "<skip>";
}

// Whether a rule's background asks for no color of the document. The other words are for text only: as a
// background they would be names of colors.
inline bool IsNoBackground(std::string_view name) { return name.empty() || name == "None"; }

}  // namespace qelm::schemes
