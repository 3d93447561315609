// Text in symbol fonts, which have pictures in the places of letters: what the letters stand for in Unicode,
// so that another font shows the same when the symbol font is not installed.
#pragma once

#include <string>
#include <string_view>

namespace qelm::embedded::render {

// Whether text in fonts of that family is known to be symbols.
bool IsSymbolFamily(std::string_view family);

// The text with every letter that the family has a symbol for replaced by that.
std::string SymbolText(std::string_view family, std::string_view text);

}  // namespace qelm::embedded::render
