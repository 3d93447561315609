// MIF strings and characters, to and from UTF-8.
//
// A string stands between a backtick and an apostrophe, with escapes inside (MIF reference, "Strings"). Files
// of a level below 8 are ASCII, and `\xHH ` is a character of the Frame Roman set; from level 8 on files are
// UTF-8 and
// `\xHH ` is left for control codes. `\xHH ` always ends in one blank, which belongs to it. An escape that is
// not known is kept as its two characters.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qelm::embedded::mif {

enum class Encoding : std::uint8_t { kFrameRoman, kUtf8 };

// Whether the data is a string: it has both its marks.
bool IsString(std::string_view data);

// What is between the marks, as it stands; empty when the data is no string.
std::string_view Inside(std::string_view data);

// Whether the inside of a string reads the same decoded and not.
bool IsPlain(std::string_view inside, Encoding encoding);

// Appends the inside of a string, decoded to UTF-8. A soft hyphen that only the layout made is left out.
void AppendDecoded(std::string_view inside, Encoding encoding, std::string* text);

// A string statement's data, decoded. For data that is no string, the data itself.
std::string DecodeString(std::string_view data, Encoding encoding);

// UTF-8 as the inside of a string. A character that Frame Roman lacks is written as `\uHHHH`.
std::string Encode(std::string_view text, Encoding encoding);

// The character of `<Char NAME>` as UTF-8; empty for SoftHyphen, which is a line's own, and for unknown
// names.
std::string_view CharNamed(std::string_view name);

}  // namespace qelm::embedded::mif
