#include "embedded/xml/write.h"

#include <charconv>
#include <cstdint>

#include "embedded/xml/encoding.h"

namespace qelm::embedded::xml {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Whether XML 1.0 allows a character at all.
bool IsAllowed(char32_t c) {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  return c != 0xFFFE && c != 0xFFFF;
}

// Appends `text` character by character; `special` gives the replacement of an ASCII character, or nothing.
template <typename Special>
void AppendWith(std::string_view text, std::string* out, Special special) {
  std::size_t plain = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    const char32_t c = NextCharacter(text, &at);
    std::string_view instead;
    if (c < 0x80) instead = special(static_cast<char>(c));
    if (instead.empty() && IsAllowed(c) && (c != 0xFFFD || at - begin > 1)) continue;
    out->append(text.substr(plain, begin - plain));
    out->append(instead.empty() ? kReplacement : instead);
    plain = at;
  }
  out->append(text.substr(plain));
}

struct Entity {
  std::string_view name;
  char character;
};
constexpr Entity kEntities[] = {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"apos", '\''}, {"quot", '"'}};

// What a reference stands for, without `&` and `;`. False for entities other than XML's own.
bool AppendReference(std::string_view name, std::string* text) {
  if (name.starts_with('#')) {
    const bool is_hex = name.starts_with("#x");
    const std::string_view digits = name.substr(is_hex ? 2 : 1);
    std::uint32_t code = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), code, is_hex ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != digits.data() + digits.size()) return false;
    AppendUtf8(code, text);
    return true;
  }
  for (const Entity& entity : kEntities) {
    if (entity.name == name) {
      text->push_back(entity.character);
      return true;
    }
  }
  return false;
}

// What neither text nor a value may hold as it is. A carriage return would come back as a line end.
std::string_view Escape(char c) {
  switch (c) {
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '&':
      return "&amp;";
    case '\r':
      return "&#13;";
    default:
      return {};
  }
}

}  // namespace

void AppendText(std::string_view text, std::string* out) { AppendWith(text, out, Escape); }

void AppendValue(std::string_view value, char quote, std::string* out) {
  AppendWith(value, out, [quote](char c) -> std::string_view {
    switch (c) {
      case '\t':
        return "&#9;";
      case '\n':
        return "&#10;";
      case '"':
        return quote == '"' ? std::string_view("&quot;") : std::string_view();
      case '\'':
        return quote == '\'' ? std::string_view("&apos;") : std::string_view();
      default:
        return Escape(c);
    }
  });
}

void SplitTag(std::string_view tag, std::vector<TagAttribute>* attributes, std::size_t* tail) {
  attributes->clear();
  std::size_t at = 1;
  while (at < tag.size() && !IsBlank(tag[at]) && tag[at] != '>' && tag[at] != '/') ++at;
  for (;;) {
    const std::size_t blank = at;
    while (at < tag.size() && IsBlank(tag[at])) ++at;
    if (at >= tag.size() || tag[at] == '>' || tag[at] == '/') {
      *tail = blank;
      return;
    }
    TagAttribute attribute;
    attribute.begin = at;
    while (at < tag.size() && tag[at] != '=' && !IsBlank(tag[at])) ++at;
    attribute.name_end = at;
    while (at < tag.size() && tag[at] != '"' && tag[at] != '\'') ++at;
    const char quote = at < tag.size() ? tag[at] : '"';
    attribute.value_begin = at + 1;
    attribute.value_end = tag.find(quote, attribute.value_begin);
    if (attribute.value_end == std::string_view::npos) {
      *tail = tag.size();
      return;
    }
    attribute.end = at = attribute.value_end + 1;
    attributes->push_back(attribute);
  }
}

bool ReadValue(std::string_view raw, std::string* value) {
  value->clear();
  for (std::size_t at = 0; at < raw.size(); ++at) {
    const char c = raw[at];
    if (c == '&') {
      const std::size_t end = raw.find(';', at);
      if (end == std::string_view::npos || !AppendReference(raw.substr(at + 1, end - at - 1), value))
        return false;
      at = end;
    } else if (c == '\r' && at + 1 < raw.size() && raw[at + 1] == '\n') {
      continue;
    } else {
      value->push_back(IsBlank(c) ? ' ' : c);
    }
  }
  return true;
}

}  // namespace qelm::embedded::xml
