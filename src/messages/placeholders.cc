#include "messages/placeholders.h"

#include <algorithm>
#include <charconv>
#include <map>

namespace qelm::messages {
namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kFieldCharacters = "0123456789-+ #.$*";
constexpr std::size_t kMostDigits = 4;

// The position of the first character behind `from` that is none of these.
std::size_t Behind(std::string_view text, std::string_view characters, std::size_t from) {
  return std::min(text.find_first_not_of(characters, from), text.size());
}

// The number of the argument that a placeholder names by "N$" at its beginning, which is taken off; 0 for
// none.
std::size_t TakeNumber(std::string_view* field) {
  const std::size_t digits = Behind(*field, kDigits, 0);
  if (digits == 0 || digits == field->size() || (*field)[digits] != '$') return 0;
  std::size_t number = 0;
  std::from_chars(field->data(), field->data() + digits, number);
  field->remove_prefix(digits + 1);
  return number;
}

}  // namespace

std::optional<std::string> PlaceholderKinds(std::string_view text) {
  std::map<std::size_t, char> kinds;
  std::size_t implicit = 0;
  for (std::size_t at = text.find('%'); at != text.npos; at = text.find('%', at)) {
    const std::size_t end = Behind(text, kFieldCharacters, at + 1);
    if (end == text.size()) return std::nullopt;
    std::string_view field = text.substr(at + 1, end - at - 1);
    at = end + 1;
    if (text[end] == '%' && field.empty()) continue;
    if (text[end] != 's' && text[end] != 'd') return std::nullopt;
    std::size_t number = TakeNumber(&field);
    if (field.find_first_of("$*") != field.npos) return std::nullopt;
    if (number == 0) number = ++implicit;
    kinds[number] = text[end];
  }
  std::string order;
  for (const auto& [number, kind] : kinds) {
    order.push_back(kind);
    if (number != order.size()) return std::nullopt;
  }
  return order;
}

bool PlaceholdersAreSmall(std::string_view text) {
  for (std::size_t at = text.find('%'); at != text.npos; at = text.find('%', at + 1)) {
    const std::size_t end = Behind(text, kFieldCharacters, at + 1);
    for (std::size_t digit = at + 1; digit < end;) {
      const std::size_t behind = Behind(text, kDigits, digit);
      if (behind - digit > kMostDigits) return false;
      digit = behind + 1;
    }
  }
  return true;
}

}  // namespace qelm::messages
