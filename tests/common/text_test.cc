#include "common/text.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "common/numbers.h"
#include "common/paths.h"
#include "common/utf8.h"

namespace qelm::common {
namespace {

TEST(Utf8, DamagedTextKeepsEveryByteInOneCharacter) {
  struct Row {
    std::string_view text;
    std::u32string expected;
  };
  const std::vector<Row> rows = {
      {"a\u00E9\u20AC\U0001F600", U"a\u00E9\u20AC\U0001F600"},
      {"\x80z", U"\uFFFDz"},              // begins inside a character
      {"a\xC3", U"a\uFFFD"},              // ends inside one
      {"\xC0\xAF/", U"\uFFFD/"},          // overlong
      {"\xED\xA0\x80.", U"\uFFFD."},      // half of a surrogate pair
      {"\xF4\x90\x80\x80!", U"\uFFFD!"},  // beyond the last code point
      {"\xE2\x82\xAC\xAC-", U"\uFFFD-"},  // one byte too many
      {"\xFFok", U"\uFFFDok"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(CodePoints(row.text), row.expected);
    EXPECT_EQ(CountCharacters(row.text), row.expected.size());
    EXPECT_EQ(IsWellFormed(row.text), row.expected.find(U'\uFFFD') == std::u32string::npos);
    EXPECT_EQ(std::string(FirstCharacters(row.text, 1)) + std::string(WithoutFirstCharacters(row.text, 1)),
              row.text);
  }
  EXPECT_TRUE(IsWellFormed("\uFFFD"));
}

TEST(Utf8, EncodesWhatItDecodes) {
  for (const char32_t code_point :
       {U'\x7F', U'\x80', U'\u07FF', U'\u0800', U'\uFFFF', U'\U00010000', static_cast<char32_t>(0x10FFFF)}) {
    std::string text;
    AppendCharacter(code_point, &text);
    std::size_t offset = 0;
    EXPECT_EQ(DecodeCharacter(text, &offset), code_point);
    EXPECT_EQ(offset, text.size());
  }
  std::string text;
  AppendCharacter(0xD800, &text);
  AppendCharacter(0x110000, &text);
  EXPECT_EQ(text, "\uFFFD\uFFFD");
}

TEST(Utf8, PositionsInBytesAndCharacters) {
  constexpr std::string_view kText = "a\u00E9\u20ACb";
  const std::vector<std::size_t> offsets = {0, 1, 3, 6, 7, 7};
  for (std::size_t index = 0; index < offsets.size(); ++index) {
    EXPECT_EQ(OffsetOfCharacter(kText, index), offsets[index]);
  }
  const std::vector<std::size_t> indexes = {0, 1, 1, 2, 2, 2, 3, 4};
  for (std::size_t offset = 0; offset < indexes.size(); ++offset) {
    EXPECT_EQ(CharacterAtOffset(kText, offset), indexes[offset]);
  }
}

TEST(Utf8, BoundNeverCutsACharacter) {
  std::string text;
  for (int i = 0; i < 300; ++i) text += "\u20AC";
  Bound(text, kNameLimit);
  EXPECT_EQ(text.size(), 3 * kNameLimit);
  EXPECT_EQ(Bounded("short", kNameLimit), "short");
}

TEST(DecodeTextFile, KnowsWhatEditorsWrite) {
  using namespace std::string_literals;
  EXPECT_EQ(DecodeTextFile("\xEF\xBB\xBFKEY=\u00E9"), "KEY=\u00E9");
  EXPECT_EQ(DecodeTextFile("\xFF\xFEK\0\xE9\0"s), "K\u00E9");
  EXPECT_EQ(DecodeTextFile("\xFE\xFF\0K\0\xE9"s), "K\u00E9");
  EXPECT_EQ(DecodeTextFile("caf\xE9 \x80"), "caf\u00E9 \u20AC");  // Windows-1252
  EXPECT_EQ(DecodeTextFile("caf\u00E9"), "caf\u00E9");
  EXPECT_EQ(DecodeTextFile(""), "");
}

TEST(Text, TrimsWhiteSpaceAtBothEnds) {
  EXPECT_EQ(Trim(" \t\u00A0 a b \r\n"), "a b");
  EXPECT_EQ(Trim(" \u00A0 "), "");
  EXPECT_EQ(Trim("\u20AC "), "\u20AC");
}

TEST(Text, LinesEndAsEverySystemEndsThem) {
  EXPECT_EQ(SplitLines("a\nb\r\nc\rd"), (std::vector<std::string_view>{"a", "b", "c", "d"}));
  EXPECT_EQ(SplitLines("a\n\nb\n"), (std::vector<std::string_view>{"a", "", "b"}));
  EXPECT_EQ(SplitLines("a\r\n\r\nb"), (std::vector<std::string_view>{"a", "", "b"}));
  EXPECT_TRUE(SplitLines("").empty());
  for (const std::size_t length : {127U, 128U, 129U, 500U}) {
    const std::string line(length, 'x');
    for (const std::string_view end : {"\n", "\r", "\r\n"}) {
      const std::string text = line + std::string(end) + line;
      EXPECT_EQ(SplitLines(text), (std::vector<std::string_view>{line, line})) << length;
    }
  }
}

TEST(Text, ContainsIgnoreCaseWithAndWithoutAscii) {
  EXPECT_TRUE(ContainsIgnoreCase("Pump Manual", "MAN"));
  EXPECT_FALSE(ContainsIgnoreCase("Pump", "pumps"));
  EXPECT_TRUE(ContainsIgnoreCase("\u00DCberdruck", "\u00FCBER"));
  EXPECT_TRUE(ContainsIgnoreCase("", ""));
}

TEST(Text, ReplacesFromLeftToRight) {
  EXPECT_EQ(ReplaceAll("aaa", "aa", "b"), "ba");
  EXPECT_EQ(ReplaceAll("a.b", ".", ".."), "a..b");
  EXPECT_EQ(ReplaceAll("abc", "", "x"), "abc");
}

TEST(Numbers, AreReadAsFarAsTheyGo) {
  EXPECT_EQ(ReadInteger("12abc"), 12);
  EXPECT_EQ(ReadInteger("-7 "), -7);
  EXPECT_EQ(ReadInteger("abc"), 0);
  EXPECT_EQ(ReadInteger("+5"), 0);
  EXPECT_EQ(ReadInteger("-"), 0);
  EXPECT_EQ(ReadInteger("99999999999999999999"), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(ReadInteger("-99999999999999999999"), std::numeric_limits<std::int64_t>::min());
  EXPECT_DOUBLE_EQ(ReadReal("8.5in"), 8.5);
  EXPECT_DOUBLE_EQ(ReadReal("8,5"), 8.0);
  EXPECT_DOUBLE_EQ(ReadReal("inf"), 0.0);
  EXPECT_DOUBLE_EQ(ReadReal("wide"), 0.0);
}

TEST(Numbers, AnIntegerIsDigitsOnly) {
  std::int64_t value = 5;
  EXPECT_TRUE(IsInteger("-9223372036854775808", &value));
  EXPECT_EQ(value, std::numeric_limits<std::int64_t>::min());
  EXPECT_TRUE(IsInteger("007", &value));
  EXPECT_EQ(value, 7);
  for (const std::string_view text : {"", "-", "+1", "1 ", " 1", "1.0", "9223372036854775808", "\u0661"}) {
    EXPECT_FALSE(IsInteger(text, &value)) << text;
  }
  EXPECT_EQ(value, 7);
}

TEST(Paths, ComeInWithEitherSeparator) {
  EXPECT_EQ(PlatformPath("..\\variables\\p 1"), "../variables/p 1");
  EXPECT_EQ(PlatformPath("http://host/a\\b"), "http://host/a\\b");
  EXPECT_EQ(JoinPath("a/", "b"), "a/b");
  EXPECT_EQ(JoinPath("a", "b"), "a/b");
  EXPECT_EQ(JoinPath("", "b"), "b");
  EXPECT_EQ(FileName("/a/b.mif"), "b.mif");
  EXPECT_EQ(FolderOf("/a/b.mif"), "/a");
  EXPECT_EQ(FolderOf("/b.mif"), "/");
  EXPECT_EQ(FolderOf("b.mif"), "");
  EXPECT_TRUE(IsAbsolutePath("C:/x"));
  EXPECT_FALSE(IsAbsolutePath("x/y"));
}

}  // namespace
}  // namespace qelm::common
