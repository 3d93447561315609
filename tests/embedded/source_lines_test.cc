// The lines of a file, whatever ends them and in whatever order they are asked for.

#include "embedded/model/source_lines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace qelm::test {
namespace {

using namespace embedded::model;

// Memory that may go: bytes in stretches of a megabyte, and how often each was let go.
struct Resting : BytesPlace {
  explicit Resting(std::string text) : bytes(std::move(text)), rested(bytes.size() >> 20U) {}
  void Rest(std::string_view stretch) const override {
    const auto begin = static_cast<std::size_t>(stretch.data() - bytes.data());
    for (std::size_t at = begin; at + 1 < begin + stretch.size(); at += 1U << 20U) ++rested[at >> 20U];
  }
  std::string bytes;
  mutable std::vector<int> rested;
};

TEST(SourceLines, WhatWasLookedAtMayGo) {
  constexpr std::uint32_t kSize = 32U << 20U;
  std::string text(kSize, 'x');
  for (std::uint32_t at = 15; at < kSize; at += 16) text[at] = '\n';
  const auto place = std::make_shared<const Resting>(text);
  Document document;
  document.source = SourceBytes(place, place->bytes);
  SourceLines lines(document);
  // Where lines are counted, and further back.
  for (std::uint32_t at = 0; at < kSize / 2; at += 4000) {
    ASSERT_EQ(lines.LineAt(kSize / 2 + at), (kSize / 2 + at) / 16 + 1);
    ASSERT_EQ(lines.LineAt(at), at / 16 + 1);
  }
  for (std::size_t stretch = 0; stretch < 24; ++stretch) {
    // The first half was counted, and then looked at once more.
    EXPECT_EQ(place->rested[stretch], stretch < 8 ? 2 : 1) << stretch;
  }
}

TEST(SourceLines, AnyPlaceMayBeAskedForAfterAnyOther) {
  std::mt19937 random(1);
  for (const std::string_view ends : {"\n", "\r\n", "\r", "\n\r"}) {
    std::string text;
    std::vector<std::uint32_t> starts{0};  // of the lines, found by the plain rule
    while (text.size() < 300000) {
      text.append(random() % 60, 'x');
      if (random() % 2000 == 0) text.append(100000, 'y');
      text += ends == "\n\r" ? ends.substr(random() % 2, 1) : ends;  // either
    }
    for (std::uint32_t i = 0; i + 1 < text.size(); ++i) {
      if (text[i] == '\n' || (text[i] == '\r' && text[i + 1] != '\n')) starts.push_back(i + 1);
    }
    Document document;
    document.source = text;
    SourceLines lines(document);
    for (int i = 0; i < 2000; ++i) {
      const auto at = static_cast<std::uint32_t>(random() % text.size());
      const auto next = std::upper_bound(starts.begin(), starts.end(), at);
      ASSERT_EQ(lines.LineAt(at), static_cast<std::uint32_t>(next - starts.begin())) << at;
    }
  }
}

}  // namespace
}  // namespace qelm::test
