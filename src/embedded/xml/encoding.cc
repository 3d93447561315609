#include "embedded/xml/encoding.h"

#include <charconv>

namespace qelm::embedded::xml {
namespace {

struct Known {
  std::string_view name;
  Encoding encoding;
};
// The names that expat knows, in capitals. UTF-16 without an order is told by the bytes.
constexpr Known kKnown[] = {
    {"UTF-8", Encoding::kUtf8},        {"UTF-16", Encoding::kUtf16Big},
    {"UTF-16BE", Encoding::kUtf16Big}, {"UTF-16LE", Encoding::kUtf16Little},
    {"ISO-8859-1", Encoding::kLatin1}, {"US-ASCII", Encoding::kAscii},
};

char ToUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool SameName(std::string_view name, std::string_view capitals) {
  if (name.size() != capitals.size()) return false;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (ToUpper(name[i]) != capitals[i]) return false;
  }
  return true;
}

// The value of `encoding` in a declaration that is ASCII up to its end; empty when there is none.
std::string_view DeclaredName(std::string_view bytes) {
  if (!bytes.starts_with("<?xml")) return {};
  const std::string_view declaration = bytes.substr(0, bytes.find("?>"));
  std::size_t at = declaration.find("encoding");
  if (at == std::string_view::npos) return {};
  at = declaration.find_first_of("'\"", at);
  if (at == std::string_view::npos) return {};
  const std::size_t end = declaration.find(declaration[at], at + 1);
  if (end == std::string_view::npos) return {};
  return declaration.substr(at + 1, end - at - 1);
}

char32_t UnitAt(std::string_view bytes, std::size_t at, Encoding encoding) {
  const auto first = static_cast<unsigned char>(bytes[at]);
  const auto second = static_cast<unsigned char>(bytes[at + 1]);
  return encoding == Encoding::kUtf16Little ? static_cast<char32_t>(first | (second << 8U))
                                            : static_cast<char32_t>((first << 8U) | second);
}

void AppendUnit(char32_t unit, Encoding encoding, std::string* bytes) {
  const char high = static_cast<char>(unit >> 8U);
  const char low = static_cast<char>(unit & 0xFFU);
  bytes->push_back(encoding == Encoding::kUtf16Little ? low : high);
  bytes->push_back(encoding == Encoding::kUtf16Little ? high : low);
}

void AppendUtf16(char32_t c, Encoding encoding, std::string* bytes) {
  if (c < 0x10000) {
    AppendUnit(c, encoding, bytes);
    return;
  }
  AppendUnit(0xD800 + ((c - 0x10000) >> 10U), encoding, bytes);
  AppendUnit(0xDC00 + ((c - 0x10000) & 0x3FFU), encoding, bytes);
}

void AppendNumber(char32_t c, Missing missing, std::string* bytes) {
  char digits[16];
  const int base = missing == Missing::kReference ? 10 : 16;
  const auto end = std::to_chars(digits, digits + sizeof digits, static_cast<std::uint32_t>(c), base).ptr;
  if (missing == Missing::kReference) {
    bytes->append("&#").append(digits, end).push_back(';');
    return;
  }
  bytes->append("_x");
  for (auto length = end - digits; length < 4; ++length) bytes->push_back('0');
  for (const char* digit = digits; digit != end; ++digit) bytes->push_back(ToUpper(*digit));
  bytes->push_back('_');
}

// The first character that an encoding of one byte lacks.
constexpr char32_t FirstMissing(Encoding encoding) { return encoding == Encoding::kLatin1 ? 0x100 : 0x80; }

}  // namespace

Encoding DetectEncoding(std::string_view bytes, std::string* declared) {
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with(std::string_view("<\0", 2))) {
    return Encoding::kUtf16Little;
  }
  if (bytes.starts_with("\xFE\xFF") || bytes.starts_with(std::string_view("\0<", 2)))
    return Encoding::kUtf16Big;
  const bool marked = bytes.starts_with("\xEF\xBB\xBF");
  const std::string_view name = DeclaredName(marked ? bytes.substr(3) : bytes);
  if (name.empty()) return Encoding::kUtf8;
  if (declared != nullptr) *declared = name;
  for (const Known& known : kKnown) {
    if (SameName(name, known.name)) return known.encoding;
  }
  return Encoding::kUnsupported;
}

char AsciiAt(std::string_view bytes, std::uint32_t offset, Encoding encoding) {
  if (UnitSize(encoding) == 1) {
    if (offset >= bytes.size()) return '\0';
    const char c = bytes[offset];
    return static_cast<unsigned char>(c) < 0x80 ? c : '\0';
  }
  if (std::size_t{offset} + 1 >= bytes.size()) return '\0';
  const char32_t unit = UnitAt(bytes, offset, encoding);
  return unit < 0x80 ? static_cast<char>(unit) : '\0';
}

std::string ToUtf8(std::string_view bytes, Encoding encoding) {
  std::string text;
  if (encoding == Encoding::kLatin1) {
    for (const char c : bytes) AppendUtf8(static_cast<unsigned char>(c), &text);
    return text;
  }
  if (UnitSize(encoding) == 1) return std::string(bytes);
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    char32_t c = UnitAt(bytes, at, encoding);
    if (c >= 0xD800 && c < 0xDC00 && at + 3 < bytes.size()) {
      const char32_t low = UnitAt(bytes, at + 2, encoding);
      if (low >= 0xDC00 && low < 0xE000) {
        c = 0x10000 + ((c - 0xD800) << 10U) + (low - 0xDC00);
        at += 2;
      }
    }
    AppendUtf8(c >= 0xD800 && c < 0xE000 ? 0xFFFD : c, &text);
  }
  return text;
}

void AppendEncoded(std::string_view text, Encoding encoding, Missing missing, std::string* bytes) {
  if (encoding == Encoding::kUtf8) {
    bytes->append(text);
    return;
  }
  const char32_t limit = FirstMissing(encoding);
  for (std::size_t at = 0; at < text.size();) {
    const char32_t c = NextCharacter(text, &at);
    if (UnitSize(encoding) == 2) {
      AppendUtf16(c, encoding, bytes);
    } else if (c < limit) {
      bytes->push_back(static_cast<char>(c));
    } else {
      AppendNumber(c, missing, bytes);
    }
  }
}

bool Holds(Encoding encoding, std::string_view text) {
  if (encoding == Encoding::kUtf8 || UnitSize(encoding) == 2) return true;
  for (std::size_t at = 0; at < text.size();) {
    if (NextCharacter(text, &at) >= FirstMissing(encoding)) return false;
  }
  return true;
}

void AppendUtf8(char32_t c, std::string* text) {
  const auto tail = [&](unsigned shift) { text->push_back(static_cast<char>(0x80 | ((c >> shift) & 0x3F))); };
  if (c < 0x80) {
    text->push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    text->push_back(static_cast<char>(0xC0 | (c >> 6U)));
    tail(0);
  } else if (c < 0x10000) {
    text->push_back(static_cast<char>(0xE0 | (c >> 12U)));
    tail(6);
    tail(0);
  } else {
    text->push_back(static_cast<char>(0xF0 | (c >> 18U)));
    tail(12);
    tail(6);
    tail(0);
  }
}

char32_t NextCharacter(std::string_view text, std::size_t* at) {
  constexpr char32_t kBroken = 0xFFFD;
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto lead = static_cast<unsigned char>(text[*at]);
  if (lead < 0x80) {
    ++*at;
    return lead;
  }
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 1;
  if (length == 1 || lead > 0xF4 || *at + length > text.size()) {
    ++*at;
    return kBroken;
  }
  char32_t c = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[*at + i]);
    if ((byte & 0xC0U) != 0x80) {
      ++*at;
      return kBroken;
    }
    c = (c << 6U) | (byte & 0x3FU);
  }
  const bool is_valid = c >= kSmallest[length] && c <= 0x10FFFF && (c < 0xD800 || c >= 0xE000);
  *at += is_valid ? length : 1;
  return is_valid ? c : kBroken;
}

}  // namespace qelm::embedded::xml
