// Breaking a text into lines for dialogs, whose lines hold a fixed number of characters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qelm::messages {

// The lines of the text, each of at most `width` characters (not bytes; `width` is at least 1). The text's
// own line ends are kept, empty lines too; a line that is too long is broken at its last fitting blank, which
// goes, and a word that is longer than a line is cut at the width. A line end at the very end begins no
// further line.
std::vector<std::string> WrapLines(std::string_view text, std::size_t width);

}  // namespace qelm::messages
