// The lines of a file, whatever ends them and in whatever order they are asked for.

#include "embedded/model/source_lines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace qelm::test {
namespace {

using namespace embedded::model;

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
