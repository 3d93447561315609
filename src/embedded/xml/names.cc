#include "embedded/xml/names.h"

#include <algorithm>
#include <charconv>

#include "embedded/xml/encoding.h"

namespace qelm::embedded::xml {
namespace {

struct Range {
  char16_t first;
  char16_t last;
};
// Letters that both the fourth and the fifth edition of XML 1.0 take in names, as far as documents are named
// in them: Latin, Greek, Cyrillic, Hebrew, Arabic, Thai, kana, Han, Hangul.
constexpr Range kLetters[] = {
    {0x00C0, 0x00D6}, {0x00D8, 0x00F6}, {0x00F8, 0x0131}, {0x0134, 0x013E}, {0x0141, 0x0148},
    {0x014A, 0x017E}, {0x0388, 0x038A}, {0x038E, 0x03A1}, {0x03A3, 0x03CE}, {0x0401, 0x040C},
    {0x040E, 0x044F}, {0x0451, 0x045C}, {0x05D0, 0x05EA}, {0x0621, 0x063A}, {0x0641, 0x064A},
    {0x0E01, 0x0E2E}, {0x1E00, 0x1E9B}, {0x3041, 0x3094}, {0x30A1, 0x30FA}, {0x4E00, 0x9FA5},
    {0xAC00, 0xD7A3},
};

bool IsAsciiLetter(char32_t c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// An escape at the beginning of a text: its length and character, length 0 when there is none.
struct Escape {
  std::size_t length = 0;
  char32_t character = 0;
};

Escape EscapeAt(std::string_view text) {
  constexpr std::size_t kFewest = 4;
  constexpr std::size_t kMost = 6;
  if (!text.starts_with("_x")) return {};
  const std::size_t end = text.find('_', 2);
  if (end == std::string_view::npos || end - 2 < kFewest || end - 2 > kMost) return {};
  std::uint32_t code = 0;
  const char* last = text.data() + end;
  const auto result = std::from_chars(text.data() + 2, last, code, 16);
  const bool is_code =
      result.ec == std::errc() && result.ptr == last && code <= 0x10FFFF && (code < 0xD800 || code >= 0xE000);
  return is_code ? Escape{end + 1, code} : Escape{};
}

// Whether reading takes what begins at `begin` of the text for an escape that was made: one of a character
// that needs it, or one of an underscore before such an escape. The `_` that ends an escape begins the next.
template <typename Needed>
bool IsMade(std::string_view text, std::size_t begin, Needed needed) {
  for (std::string_view rest = text.substr(begin);;) {
    const Escape escape = EscapeAt(rest);
    if (escape.length == 0) return false;
    if (needed(escape.character, begin, begin + escape.length)) return true;
    if (escape.character != '_') return false;
    rest.remove_prefix(escape.length - 1);
  }
}

// `needed` tells of the character `c` at [begin, end) of the name whether it has to be escaped there. Bytes
// that are no UTF-8, and the two characters that XML never allows, become U+FFFD.
template <typename Needed>
std::string Escaped(std::string_view name, Needed needed) {
  std::string result;
  for (std::size_t at = 0; at < name.size();) {
    const std::size_t begin = at;
    const char32_t c = NextCharacter(name, &at);
    if (!needed(c, begin, at) && !(c == '_' && IsMade(name, begin, needed))) {
      AppendUtf8(c == 0xFFFE || c == 0xFFFF ? 0xFFFD : c, &result);
      continue;
    }
    char digits[8];
    const auto end = std::to_chars(digits, digits + sizeof digits, static_cast<std::uint32_t>(c), 16).ptr;
    result.append("_x");
    for (auto length = end - digits; length < 4; ++length) result.push_back('0');
    for (const char* digit = digits; digit != end; ++digit) {
      result.push_back(*digit >= 'a' ? static_cast<char>(*digit - 'a' + 'A') : *digit);
    }
    result.push_back('_');
  }
  return result;
}

template <typename Needed>
std::string Unescaped(std::string_view name, Needed needed) {
  if (name.find("_x") == std::string_view::npos) return std::string(name);
  std::string result;
  for (std::size_t at = 0; at < name.size();) {
    const bool was_made = name[at] == '_' && IsMade(name, at, needed);
    if (was_made) {
      const Escape escape = EscapeAt(name.substr(at));
      AppendUtf8(escape.character, &result);
      at += escape.length;
    } else {
      result.push_back(name[at++]);
    }
  }
  return result;
}

bool NeededInName(char32_t c, std::size_t begin, std::size_t /*end*/) {
  return begin == 0 ? !IsNameStart(c) : !IsNameCharacter(c);
}
// Blanks separate values; other controls would not come back as they are.
bool NeededInToken(char32_t c, std::size_t /*begin*/, std::size_t /*end*/) { return c <= ' '; }

// Control characters that XML 1.0 does not allow, not even as references.
bool NeededInContent(char32_t c, std::size_t /*begin*/, std::size_t /*end*/) {
  return c < ' ' && c != '\t' && c != '\n' && c != '\r';
}

}  // namespace

bool IsNameStart(char32_t c) {
  if (c < 0x80) return IsAsciiLetter(c) || c == '_' || c == ':';
  const auto* after =
      std::upper_bound(std::begin(kLetters), std::end(kLetters), c,
                       [](char32_t value, const Range& range) { return value < range.first; });
  return after != std::begin(kLetters) && c <= (after - 1)->last;
}

bool IsNameCharacter(char32_t c) {
  return IsNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == 0xB7;
}

bool IsNameToken(std::string_view text) {
  if (text.empty()) return false;
  for (std::size_t at = 0; at < text.size();) {
    if (!IsNameCharacter(NextCharacter(text, &at))) return false;
  }
  return true;
}

bool IsName(std::string_view text) {
  std::size_t at = 0;
  return IsNameToken(text) && IsNameStart(NextCharacter(text, &at));
}

std::string ToName(std::string_view name) {
  if (name.empty()) return "_x_";
  return Escaped(name, NeededInName);
}

std::string ToToken(std::string_view value) {
  if (value.empty()) return "_x_";
  return Escaped(value, NeededInToken);
}

std::string FromName(std::string_view name) {
  if (name == "_x_") return {};
  return Unescaped(name, NeededInName);
}

std::string FromToken(std::string_view token) {
  if (token == "_x_") return {};
  return Unescaped(token, NeededInToken);
}

std::string ToContent(std::string_view text) { return Escaped(text, NeededInContent); }

std::string FromContent(std::string_view text) { return Unescaped(text, NeededInContent); }

std::string ToData(std::string_view text) {
  return Escaped(text, [text](char32_t c, std::size_t begin, std::size_t end) {
    if (c < ' ' || c == 0x7F) return true;
    if (c == ' ') return begin == 0 || end == text.size();
    if (c == '?') return end == text.size();
    return c == '>' && begin > 0 && text[begin - 1] == '?';
  });
}

std::string FromData(std::string_view data) {
  return Unescaped(data, [](char32_t, std::size_t, std::size_t) { return true; });
}

}  // namespace qelm::embedded::xml
