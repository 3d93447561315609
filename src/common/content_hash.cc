#include "common/content_hash.h"

#include <array>
#include <charconv>
#include <cstdint>

namespace qelm::common {

std::string ContentHash(std::string_view content) {
  std::uint64_t hash = 0xCBF29CE484222325ULL;
  for (const char c : content) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3ULL;
  constexpr int kHexadecimal = 16;
  std::array<char, 2 * sizeof hash> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), hash, kHexadecimal);
  return {digits.data(), end.ptr};
}

}  // namespace qelm::common
