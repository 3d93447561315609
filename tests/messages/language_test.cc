#include "messages/language.h"

#include <gtest/gtest.h>

#include <vector>

namespace qelm::messages {
namespace {

std::string Text(const Language& language, std::string_view id) {
  return std::string(language.Find(kGeneralStrings, id).value_or("(none)"));
}

TEST(Language, ReadsTextsOverSeveralLinesWithEscapes) {
  Language language;
  LanguageProblem problem;
  ASSERT_TRUE(
      language.Read("\xEF\xBB\xBF# a comment\r\n"
                    "msgid \"\"\r\nmsgstr \"\"\r\n\"Content-Type: text/plain; charset=UTF-8\\n\"\r\n\r\n"
                    "#, c-format\r\nmsgctxt \"General Strings\"\r\nmsgid \"A\"\r\n"
                    "msgstr \"\"\r\n\"one\\n\"\r\n  \"two\\ttab \\\"quoted\\\" \\\\ \\x41\\102\"\r\n"
                    "msgctxt \"Dialogs\"\nmsgid \"A\"\nmsgstr \"other section\"\n",
                    &problem))
      << problem.line << ": " << problem.text;
  EXPECT_EQ(Text(language, "A"), "one\ntwo\ttab \"quoted\" \\ AB");
  EXPECT_EQ(*language.Find("Dialogs", "A"), "other section");
}

TEST(Language, LeavesOutWhatGettextLeavesOut) {
  Language language;
  ASSERT_TRUE(
      language.Read("msgctxt \"General Strings\"\nmsgid \"EMPTY\"\nmsgstr \"\"\n\n"
                    "#, fuzzy\nmsgctxt \"General Strings\"\nmsgid \"FUZZY\"\nmsgstr \"maybe\"\n\n"
                    "#~ msgctxt \"General Strings\"\n#~ msgid \"OLD\"\n#~ msgstr \"old\"\n\n"
                    "msgctxt \"General Strings\"\nmsgid \"MANY\"\nmsgid_plural \"MANYS\"\n"
                    "msgstr[0] \"first\"\nmsgstr[1] \"second\"\n",
                    nullptr));
  EXPECT_EQ(Text(language, "EMPTY"), "(none)");
  EXPECT_EQ(Text(language, "FUZZY"), "(none)");
  EXPECT_EQ(Text(language, "OLD"), "(none)");
  EXPECT_EQ(Text(language, "MANY"), "first");
}

TEST(Language, RefusesDamagedFilesAtTheirLine) {
  struct Row {
    std::string_view content;
    std::size_t line;
    std::string_view part;
  };
  const std::vector<Row> rows = {
      {"msgid \"A\"\nmsgstr \"open\n", 2, "does not end"},
      {"msgid \"A\"\nmsgstr \"\n", 2, "does not end"},
      {"msgid \"A\"\nmsgstr \"a\" b\n", 2, "follows"},
      {"msgid \"A\"\nmsgstr \"\\q\"\n", 2, "escape"},
      {"msgid \"A\"\nmsgstr \"ends with \\\n", 2, "backslash"},
      {"msgid \"A\"\nmsgstr \"\\xZZ\"\n", 2, "escape"},
      {"\n\"floating\"\n", 2, "keyword"},
      {"msgid \"A\"\n\nmsgid \"B\"\n", 3, "msgstr"},
      {"\nmsgid \"A\"\n", 2, "msgstr"},
      {"msgstr \"a\"\n", 1, "msgid"},
      {"message \"A\"\n", 1, "no keyword"},
      {"msgid\n", 1, "quotation marks"},
      {"msgid \"A\"\nmsgstr \"a\"\n\nmsgid \"A\"\nmsgstr \"b\"\n", 4, "twice"},
      {"msgid \"A\"\nmsgstr \"\\xC3\"\n", 1, "UTF-8"},
  };
  for (const Row& row : rows) {
    Language language;
    ASSERT_TRUE(language.Read("msgctxt \"General Strings\"\nmsgid \"KEEP\"\nmsgstr \"kept\"\n", nullptr));
    LanguageProblem problem;
    EXPECT_FALSE(language.Read(row.content, &problem)) << row.content;
    EXPECT_EQ(problem.line, row.line) << row.content;
    EXPECT_NE(problem.text.find(row.part), std::string::npos) << problem.text;
    EXPECT_EQ(Text(language, "KEEP"), "kept");
  }
}

TEST(Language, FindsEachOfManyTexts) {
  std::string content;
  for (int i = 0; i < 3000; ++i) {
    const std::string id = std::to_string(i);
    content += "msgctxt \"General Strings\"\nmsgid \"" + id + "\"\nmsgstr \"a\"\n\"\\t" + id + "\"\n";
  }
  Language language;
  ASSERT_TRUE(language.Read(content, nullptr));
  for (int i = 0; i < 3000; ++i) EXPECT_EQ(Text(language, std::to_string(i)), "a\t" + std::to_string(i));
  EXPECT_EQ(Text(language, "3000"), "(none)");
}

TEST(Language, ReadsOneSectionAgain) {
  Language language;
  ASSERT_TRUE(
      language.Read("msgctxt \"General Strings\"\nmsgid \"A\"\nmsgstr \"a\"\n"
                    "msgctxt \"Dialogs\"\nmsgid \"D\"\nmsgstr \"d\"\n",
                    nullptr));
  ASSERT_TRUE(
      language.ReadSection("msgctxt \"General Strings\"\nmsgid \"B\"\nmsgstr \"b\"\n"
                           "msgctxt \"Dialogs\"\nmsgid \"D\"\nmsgstr \"changed\"\n",
                           kGeneralStrings, nullptr));
  EXPECT_EQ(Text(language, "A"), "(none)");
  EXPECT_EQ(Text(language, "B"), "b");
  EXPECT_EQ(*language.Find("Dialogs", "D"), "d");
}

}  // namespace
}  // namespace qelm::messages
