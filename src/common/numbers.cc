#include "common/numbers.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace qelm::common {
namespace {

bool IsDigit(char byte) { return byte >= '0' && byte <= '9'; }

// The length of the optional "-" and the digits at the start; 0 when there is no digit.
std::size_t IntegerLength(std::string_view text) {
  const std::size_t sign = text.starts_with('-') ? 1 : 0;
  std::size_t end = sign;
  while (end < text.size() && IsDigit(text[end])) ++end;
  return end == sign ? 0 : end;
}

}  // namespace

bool IsInteger(std::string_view text, std::int64_t* value) {
  if (text.empty() || IntegerLength(text) != text.size()) return false;
  std::int64_t number = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc()) return false;
  if (value != nullptr) *value = number;
  return true;
}

std::int64_t ReadInteger(std::string_view text) {
  text = text.substr(0, IntegerLength(text));
  if (text.empty()) return 0;
  std::int64_t number = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc()) return number;
  return text.front() == '-' ? std::numeric_limits<std::int64_t>::min()
                             : std::numeric_limits<std::int64_t>::max();
}

double ReadReal(std::string_view text) {
  double number = 0.0;
  const auto result =
      std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  return result.ec == std::errc() && std::isfinite(number) ? number : 0.0;
}

}  // namespace qelm::common
