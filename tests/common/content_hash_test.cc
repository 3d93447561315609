#include "common/content_hash.h"

#include <gtest/gtest.h>

#include <set>

namespace qelm::common {
namespace {

TEST(ContentHash, EveryByteAndTheLengthCount) {
  std::set<std::string> seen;
  std::size_t contents = 0;
  for (const std::size_t size : {0U, 1U, 7U, 8U, 31U, 32U, 33U, 63U, 64U, 100U}) {
    std::string content(size, '\0');
    seen.insert(ContentHash(content));
    ++contents;
    for (char& byte : content) {
      for (const char other : {'\1', '\x80'}) {
        byte = other;
        seen.insert(ContentHash(content));
        ++contents;
      }
      byte = '\0';
    }
  }
  EXPECT_EQ(seen.size(), contents);
}

TEST(ContentHash, ComesToTheSameInPieces) {
  const std::string content =
      "A content of which each piece is of another length, groups of bytes or less than one.";
  for (std::size_t length = 1; length < content.size(); ++length) {
    ContentHasher hasher(content.size());
    for (std::size_t at = 0; at < content.size(); at += length)
      hasher.Add(std::string_view(content).substr(at, length));
    EXPECT_EQ(hasher.Digits(), ContentHash(content)) << length;
  }
}

// It is written into files that other machines read.
TEST(ContentHash, IsTheSameEverywhere) {
  EXPECT_EQ(ContentHash("The source of a copy, told by its content."), "da39587adc0bee5f");
}

}  // namespace
}  // namespace qelm::common
