#include "embedded/mif/strings.h"

#include <array>
#include <charconv>

namespace qelm::embedded::mif {
namespace {

// Frame Roman, 0x80 to 0xFE (MIF reference, "Character sets"). 0xFF is not used.
constexpr std::array<char16_t, 128> kFrameRoman = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5,
    0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, 0x00F2, 0x00F4,
    0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6,
    0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x00A6, 0x00C6, 0x00D8, 0x00D7, 0x00B1, 0x00F0, 0x0160,
    0x00A5, 0x00B5, 0x00B9, 0x00B2, 0x00B3, 0x00BC, 0x00BD, 0x00AA, 0x00BA, 0x00BE, 0x00E6, 0x00F8, 0x00BF,
    0x00A1, 0x00AC, 0x00D0, 0x0192, 0x00DD, 0x00FD, 0x00AB, 0x00BB, 0x2026, 0x00FE, 0x00C0, 0x00C3, 0x00D5,
    0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x00DE, 0x00FF, 0x0178, 0x2044,
    0x00A4, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, 0x0161, 0x00D2, 0x00DA, 0x00DB, 0x00D9,
    0x20AC, 0x02C6, 0x02DC, 0x00AF, 0x02C7, 0x017D, 0x02DA, 0x00B8, 0x02DD, 0x017E, 0xFFFD,
};

// Codes below 0x20 in text and formats, and what they mean (MIF reference, "Char").
struct Control {
  std::string_view name;  // of `<Char NAME>`; empty: only a code
  std::uint8_t code;
  char16_t character;  // 0: nothing is shown
};
constexpr Control kControls[] = {
    {"Tab", 0x08, 0x0009},        {"HardReturn", 0x09, 0x000A},  {"DiscHyphen", 0x04, 0x00AD},
    {"NoHyphen", 0x05, 0x200D},   {"SoftHyphen", 0x06, 0},       {"HardSpace", 0x11, 0x00A0},
    {"ThinSpace", 0x12, 0x2009},  {"EnSpace", 0x13, 0x2002},     {"EmSpace", 0x14, 0x2003},
    {"HardHyphen", 0x15, 0x2011}, {"NumberSpace", 0x10, 0x2007}, {"EnDash", 0xD0, 0x2013},
    {"EmDash", 0xD1, 0x2014},     {"Cent", 0xA2, 0x00A2},        {"Pound", 0xA3, 0x00A3},
    {"Yen", 0xB4, 0x00A5},        {"Dagger", 0xA0, 0x2020},      {"DoubleDagger", 0xE0, 0x2021},
    {"Bullet", 0xA5, 0x2022},
};

void AppendUtf8(char32_t c, std::string* text) {
  if (c < 0x80) {
    text->push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    text->push_back(static_cast<char>(0xC0 | (c >> 6)));
    text->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    text->push_back(static_cast<char>(0xE0 | (c >> 12)));
    text->push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    text->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    text->push_back(static_cast<char>(0xF0 | (c >> 18)));
    text->push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
    text->push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    text->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

// A code of the Frame Roman set, control codes included. 0 when nothing is shown.
char32_t FromCode(unsigned code) {
  if (code >= 0x80) return kFrameRoman[code - 0x80];
  for (const Control& control : kControls) {
    if (control.code == code) return control.character;
  }
  return code;
}

bool ReadHex(std::string_view digits, unsigned* value) {
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), *value, 16);
  return result.ec == std::errc() && result.ptr == digits.data() + digits.size();
}

// Decodes the escape at `at` (a backslash); returns how many bytes it takes.
std::size_t AppendEscape(std::string_view inside, std::size_t at, std::string* text) {
  if (at + 1 >= inside.size()) {
    text->push_back('\\');
    return 1;
  }
  unsigned code = 0;
  switch (inside[at + 1]) {
    case 't':
      text->push_back('\t');
      return 2;
    case '>':
      text->push_back('>');
      return 2;
    case 'q':
      text->push_back('\'');
      return 2;
    case 'Q':
      text->push_back('`');
      return 2;
    case '\\':
      text->push_back('\\');
      return 2;
    case 'n':
      text->push_back('\n');
      return 2;
    case 'x':
      if (at + 3 < inside.size() && ReadHex(inside.substr(at + 2, 2), &code)) {
        const char32_t c = FromCode(code);
        if (c != 0) AppendUtf8(c, text);
        return at + 4 < inside.size() && inside[at + 4] == ' ' ? 5 : 4;
      }
      break;
    case 'u':
      if (at + 5 < inside.size() && ReadHex(inside.substr(at + 2, 4), &code)) {
        AppendUtf8(code, text);
        return 6;
      }
      break;
    default:
      break;
  }
  text->append(inside.substr(at, 2));
  return 2;
}

// The next character of UTF-8 text; a byte that is no part of one counts as itself.
char32_t NextCharacter(std::string_view text, std::size_t* at) {
  const auto lead = static_cast<unsigned char>(text[*at]);
  const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
  if (length == 1 || *at + length > text.size()) {
    ++*at;
    return lead;
  }
  char32_t c = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    c = (c << 6) | (static_cast<unsigned char>(text[*at + i]) & 0x3FU);
  }
  *at += length;
  return c;
}

void AppendHex(char prefix, unsigned value, int digits, std::string* result) {
  constexpr char kDigits[] = "0123456789abcdef";
  result->push_back('\\');
  result->push_back(prefix);
  for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4)
    result->push_back(kDigits[(value >> shift) & 0xF]);
}

// A character outside ASCII in a file of Frame Roman.
void AppendRoman(char32_t c, std::string* result) {
  for (std::size_t i = 0; i + 1 < kFrameRoman.size(); ++i) {
    if (kFrameRoman[i] == c) {
      AppendHex('x', static_cast<unsigned>(i + 0x80), 2, result);
      result->push_back(' ');
      return;
    }
  }
  for (const Control& control : kControls) {
    if (control.character == c) {
      AppendHex('x', control.code, 2, result);
      result->push_back(' ');
      return;
    }
  }
  AppendHex('u', c <= 0xFFFF ? static_cast<unsigned>(c) : 0xFFFDU, 4, result);
}

}  // namespace

bool IsString(std::string_view data) {
  return data.size() >= 2 && data.front() == '`' && data.back() == '\'';
}

std::string_view Inside(std::string_view data) {
  return IsString(data) ? data.substr(1, data.size() - 2) : std::string_view();
}

bool IsPlain(std::string_view inside, Encoding) { return inside.find('\\') == std::string_view::npos; }

void AppendDecoded(std::string_view inside, Encoding, std::string* text) {
  std::size_t at = 0;
  while (at < inside.size()) {
    const std::size_t escape = inside.find('\\', at);
    if (escape == std::string_view::npos) break;
    text->append(inside.substr(at, escape - at));
    at = escape + AppendEscape(inside, escape, text);
  }
  if (at < inside.size()) text->append(inside.substr(at));
}

std::string DecodeString(std::string_view data, Encoding encoding) {
  if (!IsString(data)) return std::string(data);
  std::string text;
  AppendDecoded(Inside(data), encoding, &text);
  return text;
}

std::string Encode(std::string_view text, Encoding encoding) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const char32_t c = NextCharacter(text, &at);
    switch (c) {
      case '\t':
        result += "\\t";
        break;
      case '>':
        result += "\\>";
        break;
      case '\'':
        result += "\\q";
        break;
      case '`':
        result += "\\Q";
        break;
      case '\\':
        result += "\\\\";
        break;
      case '\n':
        result += "\\n";
        break;
      default:
        if (c < 0x80) {
          result.push_back(static_cast<char>(c));
        } else if (encoding == Encoding::kUtf8) {
          AppendUtf8(c, &result);
        } else {
          AppendRoman(c, &result);
        }
    }
  }
  return result;
}

std::string_view CharNamed(std::string_view name) {
  struct Named {
    std::string_view name;
    std::string_view text;
  };
  // The same characters as in kControls, as UTF-8, so that a view can be given back.
  static constexpr Named kNamed[] = {
      {"Tab", "\t"},
      {"HardReturn", "\n"},
      {"DiscHyphen", "\xC2\xAD"},
      {"NoHyphen", "\xE2\x80\x8D"},
      {"HardSpace", "\xC2\xA0"},
      {"ThinSpace", "\xE2\x80\x89"},
      {"EnSpace", "\xE2\x80\x82"},
      {"EmSpace", "\xE2\x80\x83"},
      {"HardHyphen", "\xE2\x80\x91"},
      {"NumberSpace", "\xE2\x80\x87"},
      {"EnDash", "\xE2\x80\x93"},
      {"EmDash", "\xE2\x80\x94"},
      {"Cent", "\xC2\xA2"},
      {"Pound", "\xC2\xA3"},
      {"Yen", "\xC2\xA5"},
      {"Dagger", "\xE2\x80\xA0"},
      {"DoubleDagger", "\xE2\x80\xA1"},
      {"Bullet", "\xE2\x80\xA2"},
  };
  for (const Named& named : kNamed) {
    if (named.name == name) return named.text;
  }
  return {};
}

}  // namespace qelm::embedded::mif
