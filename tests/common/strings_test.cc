#include "common/strings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qelm::common {
namespace {

// Three characters, six bytes: a letter with an accent, a letter from beyond the first plane, an ASCII
// letter.
constexpr std::string_view kMixed = "\u00E9\U00010428a";

struct IndexRow {
  std::string_view text;
  std::string_view needle;
  std::int32_t start;
  bool case_sensitive;
  std::int32_t expected;
};

TEST(IndexOf, CountsCharacters) {
  const std::vector<IndexRow> rows = {
      {"banana", "an", 0, true, 1},
      {"banana", "an", 2, true, 3},
      {"banana", "an", 4, true, -1},
      {"banana", "a", -7, true, 1},
      {"banana", "bananas", 0, true, -1},
      {"banana", "AN", 0, true, -1},
      {"banana", "AN", 2, false, 3},
      {"", "", 0, true, 0},
      {"abc", "", 0, true, 0},
      {"abc", "", 3, true, 3},
      {"abc", "", 4, true, -1},
      {"abc", "a", 99, true, -1},
      {kMixed, "a", 0, true, 2},
      {kMixed, "a", 2, true, 2},
      {kMixed, "a", 3, true, -1},
      {kMixed, "\u00C9", 0, false, 0},
      {kMixed, "\U00010400A", 0, false, 1},
      {"\u00C4\u00D6\u00DC", "\u00FC", 0, false, 2},
      {"stra\u00DFe", "SS", 0, false, -1},  // one character is never two
  };
  for (const IndexRow& row : rows) {
    EXPECT_EQ(IndexOf(row.text, row.needle, row.start, row.case_sensitive), row.expected)
        << row.text << " / " << row.needle << " from " << row.start;
  }
}

TEST(StrRIndexOf, FindsTheLastOneUpToAPosition) {
  EXPECT_EQ(bw_StrRIndexOf("banana", "a", 0, true), 5);
  EXPECT_EQ(bw_StrRIndexOf("banana", "a", 5, true), 5);
  EXPECT_EQ(bw_StrRIndexOf("banana", "a", 4, true), 3);
  EXPECT_EQ(bw_StrRIndexOf("banana", "ana", 0, true), 3);
  EXPECT_EQ(bw_StrRIndexOf("banana", "A", 2, false), 1);
  EXPECT_EQ(bw_StrRIndexOf("banana", "b", 0, true), 0);
  EXPECT_EQ(bw_StrRIndexOf("banana", "x", 0, true), -1);
  EXPECT_EQ(bw_StrRIndexOf("\u00E9a\u00E9a", "a", 2, true), 1);
  EXPECT_EQ(bw_StrRIndexOf("", "a", 0, true), -1);
}

TEST(StrRIndexOf, StopsAtTheGuard) {
  std::string said;
  const GuardSink guard = [&said](std::string_view text) { said = text; };
  EXPECT_EQ(bw_StrRIndexOf(std::string(9999, 'a'), "a", 0, true, guard), 9998);
  EXPECT_EQ(said, "");
  EXPECT_EQ(bw_StrRIndexOf(std::string(20000, 'a'), "a", 0, true, guard), -1);
  EXPECT_EQ(said, "Endless loop in bw_StrRIndexOf! This is a critical error. Please contact Brenwick.");
}

TEST(EqualsIgnoreCase, FoldsEachCharacter) {
  EXPECT_TRUE(EqualsIgnoreCase("Audience", "aUDIENCE"));
  EXPECT_TRUE(EqualsIgnoreCase("\u03A3\u0391\u03A3", "\u03C3\u03B1\u03C2"));
  EXPECT_FALSE(EqualsIgnoreCase("a", "ab"));
  EXPECT_FALSE(EqualsIgnoreCase("\xC3", "\xC4"));  // damaged bytes are not alike
  EXPECT_TRUE(EqualsIgnoreCase("", ""));
}

TEST(ClausesAreTerminated, StopsAtTheGuard) {
  int times = 0;
  const GuardSink guard = [&times](std::string_view) { ++times; };
  EXPECT_EQ(ClausesAreTerminated(std::string(5000, '(') + std::string(5000, ')'), "(", ")", guard), -1);
  EXPECT_EQ(times, 0);
  EXPECT_EQ(ClausesAreTerminated(std::string(30000, '('), "(", ")", guard), 10000);
  EXPECT_EQ(times, 1);
}

std::string XedOut(std::string text, bool single_quotes = true, bool double_quotes = true,
                   std::string_view filler = "X") {
  bw_XOutLiterals(text, filler, single_quotes, double_quotes);
  return text;
}

TEST(XOutLiterals, KeepsPositionsAndMarks) {
  EXPECT_EQ(XedOut("a[b='x]y']"), "a[b='XXX']");
  EXPECT_EQ(XedOut("'it\"s' \"a'b\""), "'XXXX' \"XXX\"");
  EXPECT_EQ(XedOut("a='\u00E9\U00010428'"), "a='XX'");
  EXPECT_EQ(XedOut("'\x80z'"), "'\x80X'");
  EXPECT_EQ(XedOut("''"), "''");
  EXPECT_EQ(XedOut("a='open"), "a='XXXX");
  EXPECT_EQ(XedOut("a='"), "a='");
  EXPECT_EQ(XedOut("'a' \"b\"", true, false), "'X' \"b\"");
  EXPECT_EQ(XedOut("'a' \"b\"", false, true), "'a' \"X\"");
  EXPECT_EQ(XedOut("'a'", false, false), "'a'");
  EXPECT_EQ(XedOut("'ab'", true, true, "\u2022"), "'\u2022\u2022'");
  EXPECT_EQ(XedOut("'a'", true, true, "XX"), "'a'");
  EXPECT_EQ(XedOut("'a'", true, true, ""), "'a'");
}

TEST(XOutLiterals, StopsAtTheGuard) {
  std::string text;
  for (int literal = 0; literal < 10001; ++literal) text += "'a'";
  int times = 0;
  bw_XOutLiterals(text, "X", true, true, [&times](std::string_view) { ++times; });
  EXPECT_EQ(times, 1);
  EXPECT_EQ(text.substr(0, 6), "'X''X'");
  EXPECT_EQ(text.substr(text.size() - 6), "'X''a'");
}

}  // namespace
}  // namespace qelm::common
