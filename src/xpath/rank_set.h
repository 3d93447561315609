// Sets of ranks, the places of elements in a document's order. A set is a bitmap over the whole document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qelm::xpath {

// A list of ranks; what it is sorted by is said where it is used.
using RankList = std::vector<std::uint32_t>;

class RankSet {
 public:
  RankSet() = default;
  explicit RankSet(std::uint32_t size) : words_(size / 64 + 1) {}

  bool Contains(std::uint32_t rank) const { return (words_[rank / 64] >> (rank % 64) & 1U) != 0; }
  void Insert(std::uint32_t rank) { words_[rank / 64] |= Bit(rank); }
  // False when the rank was in the set already.
  bool Add(std::uint32_t rank) {
    std::uint64_t& word = words_[rank / 64];
    const std::uint64_t before = word;
    word |= Bit(rank);
    return word != before;
  }
  // Inserts the ranks [begin, end).
  void InsertRange(std::uint32_t begin, std::uint32_t end) {
    if (begin >= end) return;
    const std::uint64_t first = ~std::uint64_t{0} << (begin % 64);
    const std::uint64_t last = ~std::uint64_t{0} >> (63 - (end - 1) % 64);
    const std::size_t from = begin / 64;
    const std::size_t to = (end - 1) / 64;
    if (from == to) {
      words_[from] |= first & last;
      return;
    }
    words_[from] |= first;
    for (std::size_t word = from + 1; word < to; ++word) words_[word] = ~std::uint64_t{0};
    words_[to] |= last;
  }

 private:
  static std::uint64_t Bit(std::uint32_t rank) { return std::uint64_t{1} << (rank % 64); }

  std::vector<std::uint64_t> words_;
};

}  // namespace qelm::xpath
