#include "common/content_hash.h"

#include <algorithm>
#include <bit>
#include <charconv>

namespace qelm::common {
namespace {

constexpr std::uint64_t kStart = 0xCBF29CE484222325ULL;
constexpr std::uint64_t kPrime = 0x9E3779B97F4A7C15ULL;  // odd, its bits in no pattern
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

ContentHasher::ContentHasher(std::size_t size)
    : lanes_{kStart, kStart + 1, kStart + 2, kStart + 3}, start_(Step(kStart, size)) {}

// Gives back what is less than a group.
std::string_view ContentHasher::AddGroups(std::string_view bytes) {
  std::array<std::uint64_t, kLanes> lanes = lanes_;
  for (; bytes.size() >= kGroup; bytes.remove_prefix(kGroup)) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      // Of a length that is known beforehand the compiler makes one load.
      lanes[lane] = Step(lanes[lane], WordOf({bytes.data() + lane * kWord, kWord}));
    }
  }
  lanes_ = lanes;
  return bytes;
}

void ContentHasher::Add(std::string_view piece) {
  if (rest_size_ > 0) {
    const std::string_view part = piece.substr(0, kGroup - rest_size_);
    std::copy(part.begin(), part.end(), rest_.begin() + static_cast<std::ptrdiff_t>(rest_size_));
    rest_size_ += part.size();
    piece.remove_prefix(part.size());
    if (rest_size_ < kGroup) return;
    AddGroups({rest_.data(), kGroup});
  }
  const std::string_view rest = AddGroups(piece);
  std::copy(rest.begin(), rest.end(), rest_.begin());
  rest_size_ = rest.size();
}

std::string ContentHasher::Digits() const {
  std::uint64_t hash = start_;
  for (std::string_view rest(rest_.data(), rest_size_); !rest.empty();
       rest.remove_prefix(std::min(rest.size(), kWord))) {
    hash = Step(hash, WordOf(rest.substr(0, kWord)));
  }
  for (const std::uint64_t lane : lanes_) hash = Step(hash, lane);
  constexpr int kHexadecimal = 16;
  std::array<char, 2 * sizeof hash> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), hash, kHexadecimal);
  return {digits.data(), end.ptr};
}

std::string ContentHash(std::string_view content) {
  ContentHasher hasher(content.size());
  hasher.Add(content);
  return hasher.Digits();
}

}  // namespace qelm::common
