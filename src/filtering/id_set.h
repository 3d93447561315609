// A set of element ids as one bit an id: made for ids that are dense, as those of a document are. Asking and
// adding are constant time, and a million elements take 125 KB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/interface/types.h"

namespace qelm::filtering {

class IdSet {
 public:
  // Empties the set and makes room for ids below `limit`. Larger ones may be added; they make it grow.
  void Reset(host::Id limit) { words_.assign(limit / kBits + 1, 0); }

  void Add(host::Id id) {
    const std::size_t word = id / kBits;
    if (word >= words_.size()) words_.resize(word + 1, 0);
    words_[word] |= Bit(id);
  }

  bool Holds(host::Id id) const {
    const std::size_t word = id / kBits;
    return word < words_.size() && (words_[word] & Bit(id)) != 0;
  }

 private:
  static constexpr host::Id kBits = 64;
  static std::uint64_t Bit(host::Id id) { return std::uint64_t{1} << (id % kBits); }

  std::vector<std::uint64_t> words_;
};

}  // namespace qelm::filtering
