// UTF-8 by characters: counting, cutting, decoding and encoding.
//
// A character is a byte that is not a continuation byte, with the continuation bytes behind it. In
// well-formed text that is a code point; in damaged text it still gives every byte to one character, so that
// positions agree between all operations and nothing is ever cut inside a character.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qelm::common {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

inline bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// Whether the text is ASCII only.
bool IsAscii(std::string_view text);

// Whether the text is well-formed UTF-8: no stray or missing bytes, no overlong forms, no surrogates.
bool IsWellFormed(std::string_view text);

// The number of characters.
std::size_t CountCharacters(std::string_view text);

// The offset in bytes of the character with that index; the size of the text when it has no such character.
std::size_t OffsetOfCharacter(std::string_view text, std::size_t index);

// The index of the character to which the byte at `offset` belongs.
std::size_t CharacterAtOffset(std::string_view text, std::size_t offset);

// The first `count` characters, and what is left without them.
std::string_view FirstCharacters(std::string_view text, std::size_t count);
std::string_view WithoutFirstCharacters(std::string_view text, std::size_t count);

// Cuts the text to at most `count` characters.
void Bound(std::string& text, std::size_t count);
std::string Bounded(std::string_view text, std::size_t count);

// The most characters of a name or value (of an element, attribute, color, scheme and so on).
inline constexpr std::size_t kNameLimit = 255;

// The code point of the character at `*offset`, which is moved behind it. A character that is not well-formed
// gives kReplacementCharacter. `*offset` must be below the size of the text.
char32_t DecodeCharacter(std::string_view text, std::size_t* offset);

// Appends the code point; one that is none appends kReplacementCharacter.
void AppendCharacter(char32_t code_point, std::string* text);

// The code points of the text, one a character.
std::u32string CodePoints(std::string_view text);

// With which some editors begin a file in UTF-8.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Text of a file that a person may have saved with any editor, as UTF-8: a byte order mark decides between
// UTF-8 and UTF-16 and is taken away; without one, text that is not well-formed UTF-8 is read as
// Windows-1252.
std::string DecodeTextFile(std::string_view bytes);

// A text for a file that has the encoding, and the byte order mark, of the file with the bytes `like`.
// Nothing when that encoding lacks a character of the text.
std::optional<std::string> EncodeTextFile(std::string_view text, std::string_view like);

}  // namespace qelm::common
