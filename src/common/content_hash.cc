#include "common/content_hash.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>

namespace qelm::common {
namespace {

constexpr std::uint64_t kStart = 0xCBF29CE484222325ULL;
constexpr std::uint64_t kPrime = 0x9E3779B97F4A7C15ULL;  // odd, its bits in no pattern
constexpr std::size_t kLanes = 4;
constexpr std::size_t kWord = sizeof(std::uint64_t);

std::uint64_t Step(std::uint64_t hash, std::uint64_t word) {
  hash = (hash ^ word) * kPrime;
  return hash ^ (hash >> 32);
}

// Of up to eight bytes, the first one lowest whatever the machine's own order is.
std::uint64_t WordOf(std::string_view bytes) {
  std::array<char, kWord> word{};
  std::copy(bytes.begin(), bytes.end(), word.begin());
  if constexpr (std::endian::native == std::endian::big) std::reverse(word.begin(), word.end());
  return std::bit_cast<std::uint64_t>(word);
}

}  // namespace

std::string ContentHash(std::string_view content) {
  std::array<std::uint64_t, kLanes> lanes = {kStart, kStart + 1, kStart + 2, kStart + 3};
  std::uint64_t hash = Step(kStart, content.size());
  for (; content.size() >= kLanes * kWord; content.remove_prefix(kLanes * kWord)) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      // Of a length that is known beforehand the compiler makes one load.
      lanes[lane] = Step(lanes[lane], WordOf({content.data() + lane * kWord, kWord}));
    }
  }
  for (; !content.empty(); content.remove_prefix(std::min(content.size(), kWord))) {
    hash = Step(hash, WordOf(content.substr(0, kWord)));
  }
  for (const std::uint64_t lane : lanes) hash = Step(hash, lane);
  constexpr int kHexadecimal = 16;
  std::array<char, 2 * sizeof hash> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), hash, kHexadecimal);
  return {digits.data(), end.ptr};
}

}  // namespace qelm::common
