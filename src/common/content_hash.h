// A short text that tells contents apart: 64 bits in hexadecimal digits, the same on every machine. It
// recognizes what was changed by accident, not by somebody who means to deceive.
//
// Four lanes take eight bytes each in turn, so that a large file costs little more than reading it; each step
// is that of FNV-1a with a word for a byte, and a shift that brings what changed in high bits down again.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace qelm::common {

// Of a content that comes in pieces, which need not lie beside each other.
class ContentHasher {
 public:
  // `size` is that of the whole content, in bytes.
  explicit ContentHasher(std::size_t size);
  void Add(std::string_view piece);
  // When everything was added.
  std::string Digits() const;

 private:
  static constexpr std::size_t kLanes = 4;
  static constexpr std::size_t kGroup =
      kLanes * sizeof(std::uint64_t);  // bytes that all lanes take at a time

  std::string_view AddGroups(std::string_view bytes);

  std::array<std::uint64_t, kLanes> lanes_;
  std::uint64_t start_;
  std::array<char, kGroup> rest_{};  // less than a group
  std::size_t rest_size_ = 0;
};

std::string ContentHash(std::string_view content);

}  // namespace qelm::common
