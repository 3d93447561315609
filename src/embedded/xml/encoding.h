// The encodings in which an XML file may come: which one a file has, and text from and to it.
//
// A file is recognized as the XML recommendation tells (appendix F): by its byte order mark, by the pattern
// of its first bytes, and by the encoding that its declaration names. Inside, text is UTF-8; what is written
// into a file has to be in the file's own encoding.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qelm::embedded::xml {

enum class Encoding : std::uint8_t { kUtf8, kUtf16Little, kUtf16Big, kLatin1, kAscii, kUnsupported };

// The encoding of a whole file. `declared`, where given, takes the name that the declaration gives; it stays
// as it is when there is none.
Encoding DetectEncoding(std::string_view bytes, std::string* declared = nullptr);

// How many bytes a character of ASCII takes: 1 or 2.
constexpr std::uint32_t UnitSize(Encoding encoding) {
  return encoding == Encoding::kUtf16Little || encoding == Encoding::kUtf16Big ? 2 : 1;
}

// The ASCII character that begins at an offset; '\0' for any other character and outside the bytes.
char AsciiAt(std::string_view bytes, std::uint32_t offset, Encoding encoding);

// Bytes of a file as UTF-8. Damaged UTF-16 gives U+FFFD.
std::string ToUtf8(std::string_view bytes, Encoding encoding);

// What becomes of a character that the encoding lacks.
enum class Missing : std::uint8_t {
  kReference,  // `&#N;`, in text and attribute values
  kEscape,     // `_xHHHH_`, in names and processing instructions
};

// Appends UTF-8 text in the encoding.
void AppendEncoded(std::string_view text, Encoding encoding, Missing missing, std::string* bytes);

// Whether the encoding has every character of the text.
bool Holds(Encoding encoding, std::string_view text);

// Appends one character as UTF-8, and reads the one at `*at`, which goes behind it. A byte that is no part of
// a character reads as U+FFFD.
void AppendUtf8(char32_t c, std::string* text);
char32_t NextCharacter(std::string_view text, std::size_t* at);

}  // namespace qelm::embedded::xml
