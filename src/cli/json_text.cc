#include "cli/json_text.h"

#include "common/utf8.h"

namespace qelm::cli {
namespace {

// Appends a character that cannot stand in a JSON string as it is.
void AppendEscaped(char character, std::string* json) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  switch (character) {
    case '"':
      *json += "\\\"";
      return;
    case '\\':
      *json += "\\\\";
      return;
    case '\n':
      *json += "\\n";
      return;
    case '\r':
      *json += "\\r";
      return;
    case '\t':
      *json += "\\t";
      return;
    default:
      break;
  }
  const auto code = static_cast<unsigned char>(character);
  *json += "\\u00";
  *json += kDigits[code >> 4U];
  *json += kDigits[code & 15U];
}

}  // namespace

void AppendJson(std::string_view text, std::string* json) {
  *json += '"';
  std::string repaired;
  if (!common::IsWellFormed(text)) {
    for (std::size_t offset = 0; offset < text.size();) {
      common::AppendCharacter(common::DecodeCharacter(text, &offset), &repaired);
    }
    text = repaired;
  }
  std::size_t done = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char character = text[i];
    const bool plain = static_cast<unsigned char>(character) >= 0x20 && character != '"' && character != '\\';
    if (plain) continue;
    json->append(text.substr(done, i - done));
    AppendEscaped(character, json);
    done = i + 1;
  }
  json->append(text.substr(done));
  *json += '"';
}

}  // namespace qelm::cli
