// The words that stand for a color in rules and are none.
#pragma once

#include <string_view>

namespace qelm::schemes {

// Whether the name asks for no color of the document: none at all, the one of the element definitions, or the
// one that the text has.
inline bool IsNoColor(std::string_view name) {
  return name == "None" || name == "<from EDD>" || name == "<skip>";
}

}  // namespace qelm::schemes
