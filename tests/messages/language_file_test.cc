// Language files as a whole: kept byte for byte, completed from English, checked against it.
#include "messages/language_file.h"

#include <gtest/gtest.h>

#include "messages/language.h"
#include "messages/language_check.h"
#include "messages/language_update.h"

namespace qelm::messages {
namespace {

constexpr char kEnglish[] = R"(# The English texts of QELM.
#
# How it is done.
msgid ""
msgstr ""
"Content-Type: text/plain; charset=UTF-8\n"
"Language: en\n"
"Language-Team: English\n"
"PO-Revision-Date: 2025-01-01 00:00+0000\n"

# ---- Labels

msgctxt "Menus"
msgid "Color Document..."
msgstr ""

# ---- Messages

#. Placeholders: %s: the file; %d: the line
msgctxt "General Strings"
msgid "QELM_MSG_GEN_1"
msgstr ""
"File %s,\n"
"line %d."

msgctxt "General Strings"
msgid "QELM_MSG_GEN_2"
msgstr "Two."

#. A note
msgctxt "General Strings"
msgid "QELM_MSG_GEN_3"
msgstr "Three %s"
)";

LanguageFile Read(std::string_view content) {
  LanguageFile file;
  LanguageProblem problem;
  EXPECT_TRUE(file.Read(content, &problem)) << problem.line << ": " << problem.text;
  return file;
}

std::vector<std::string> Findings(const LanguageFile& file) {
  std::vector<std::string> texts;
  for (const LanguageFinding& finding : CheckLanguage(Read(kEnglish), file)) {
    texts.push_back(std::to_string(finding.line) + " " + finding.id + " " +
                    std::string(FaultText(finding.fault)));
  }
  return texts;
}

TEST(LanguageFile, WritesBackWhatItRead) {
  const std::string contents[] = {
      "",
      "\n\n# only a comment",
      kEnglish,
      "\xEF\xBB\xBFmsgid \"A\"\r\nmsgstr \"a\"\r\n\r\n#~ msgid \"old\"\r\n#~ msgstr \"alt\"\r\n# end\r\n",
      "msgid \"A\"\nmsgstr \"no line end\"",
      "msgid \"A\"\rmsgstr \"a\"\rmsgid \"B\"\rmsgstr \"b\"\r",
      "  msgid   \"A\"\n\t\"B\"\n\n# inside\nmsgstr \"x\\x41\"\n\n\n",
      "#~ broken \"\n#~ msgid \"half\"\n#~| msgid \"before\"\n#~ \"more\"\nmsgid \"A\"\nmsgstr \"a\"\n#~ "
      "msgid\n",
  };
  for (const std::string& content : contents) EXPECT_EQ(Read(content).Write(), content);
}

TEST(LanguageFile, ObsoleteEntriesAreReadAndNotInUse) {
  const LanguageFile file = Read(
      "msgid \"A\"\nmsgstr \"a\"\n\n# kept\n#~ msgctxt \"S\"\n#~ msgid \"O\"\n#~ msgstr \"\"\n#~ \"alt\"\n"
      "#~ msgid \"half\"\n\nmsgid \"B\"\nmsgstr \"b\"\n"
      "#~ msgid \"half\"\n#, fuzzy\nmsgid \"C\"\nmsgstr \"c\"\n");
  ASSERT_EQ(file.Entries().size(), 4U);
  EXPECT_TRUE(file.Entries()[1].obsolete);
  EXPECT_EQ(file.Entries()[1].text, "alt");
  EXPECT_EQ(file.Entries()[2].source, "#~ msgid \"half\"\n\nmsgid \"B\"\nmsgstr \"b\"\n");
  Language language;
  ASSERT_TRUE(language.Read(file.Write(), nullptr));
  EXPECT_TRUE(language.Find("", "B"));
  EXPECT_FALSE(language.Find("S", "O"));
}

TEST(LanguageUpdate, AddsWhatIsMissingAndLeavesTheRest) {
  constexpr std::string_view kHeader = "# Mine\nmsgid \"\"\nmsgstr \"Language: de\\n\"\n";
  constexpr std::string_view kOne =
      "\n# checked by Eva\n#, no-wrap\nmsgctxt  \"General Strings\"\n"
      "msgid \"QELM_MSG_GEN_1\"\n  msgstr \"Zeile %2$d in %1$s\"\n";
  constexpr std::string_view kExtra = "\nmsgctxt \"General Strings\"\nmsgid \"MINE\"\nmsgstr \"x\"\n";
  constexpr std::string_view kLabel = "\nmsgctxt \"Menus\"\nmsgid \"Color Document...\"\nmsgstr \"\"\n";
  constexpr std::string_view kTwo =
      "\n# Not translated yet: the text is the English one. Translate it and remove this line.\n"
      "msgctxt \"General Strings\"\nmsgid \"QELM_MSG_GEN_2\"\nmsgstr \"Two.\"\n";
  constexpr std::string_view kOld =
      "\n# from 2.0\n#~ msgctxt \"General Strings\"\n#~ msgid \"QELM_MSG_GEN_3\"\n#~ msgstr \"Drei %s\"\n";
  constexpr std::string_view kThree =
      "\n# from 2.0\n#. A note\nmsgctxt \"General Strings\"\nmsgid \"QELM_MSG_GEN_3\"\nmsgstr \"Drei %s\"\n";
  const auto join = [](std::initializer_list<std::string_view> parts) {
    std::string all;
    for (const std::string_view part : parts) all += part;
    return all;
  };
  LanguageFile file = Read(join({kHeader, kOne, kExtra, kOld, "\n# end\n"}));
  const UpdateCounts counts = AddMissingEntries(Read(kEnglish), &file);
  EXPECT_EQ(counts.added, 2U);
  EXPECT_EQ(counts.revived, 1U);
  EXPECT_EQ(file.Write(), join({kHeader, kLabel, kOne, kTwo, kThree, kExtra, "\n# end\n"}));

  const std::string once = file.Write();
  LanguageFile again = Read(once);
  EXPECT_EQ(AddMissingEntries(Read(kEnglish), &again).added, 0U);
  EXPECT_EQ(again.Write(), once);
  EXPECT_EQ(Findings(again), (std::vector<std::string>{"5 Color Document... is not translated",
                                                       "16 QELM_MSG_GEN_2 is marked as not translated yet",
                                                       "26 MINE is not in the English file"}));
}

// What an older text said does not come back with placeholders that would be filled wrongly.
TEST(LanguageUpdate, ObsoleteTranslationsThatNoLongerFitStayWhereTheyAre) {
  constexpr char kOld[] = "#~ msgctxt \"General Strings\"\n#~ msgid \"QELM_MSG_GEN_3\"\n#~ msgstr \"Drei\"\n";
  LanguageFile file = Read(kOld);
  EXPECT_EQ(AddMissingEntries(Read(kEnglish), &file).revived, 0U);
  EXPECT_TRUE(file.Write().ends_with(kOld));
}

TEST(LanguageUpdate, AddedLinesEndLikeTheOthers) {
  LanguageFile file =
      Read("msgid \"\"\r\nmsgstr \"Language: de\\n\"\r\n\r\nmsgid \"x\"\r\nmsgstr \"no end\"");
  AddMissingEntries(Read(kEnglish), &file);
  const std::string content = file.Write();
  for (std::size_t at = content.find('\n'); at != content.npos; at = content.find('\n', at + 1)) {
    EXPECT_EQ(content[at - 1], '\r') << at;
  }
  EXPECT_TRUE(content.ends_with("\r\nmsgid \"x\"\r\nmsgstr \"no end\"")) << content;
}

TEST(LanguageUpdate, NewFileHasEveryTextAndIsToBeTranslated) {
  const LanguageFile file = MakeLanguageFile(Read(kEnglish), {"French", "fr", "2026-01-31 14:05"});
  const std::string content = file.Write();
  Language language;
  LanguageProblem problem;
  ASSERT_TRUE(language.Read(content, &problem)) << problem.text;
  EXPECT_EQ(*language.Find(kGeneralStrings, "QELM_MSG_GEN_1"), "File %s,\nline %d.");
  EXPECT_TRUE(content.starts_with("# The French texts of QELM.\n#\n# How it is done.\n")) << content;
  for (const char* line : {"\"Language: fr\\n\"", "\"Language-Team: French\\n\"", "# ---- Messages",
                           "\"PO-Revision-Date: 2026-01-31 14:05\\n\""}) {
    EXPECT_NE(content.find(line), std::string::npos) << line;
  }
  EXPECT_EQ(Findings(Read(content)).size(), 4U);
}

TEST(LanguageCheck, NamesEveryFaultWithItsLine) {
  const LanguageFile file = Read(
      "msgctxt \"Menus\"\nmsgid \"Color Document...\"\nmsgstr \"Dokument %s\"\n"
      "msgctxt \"General Strings\"\nmsgid \"QELM_MSG_GEN_1\"\nmsgstr \"Zeile %d in %s\"\n"
      "#, fuzzy\nmsgctxt \"General Strings\"\nmsgid \"QELM_MSG_GEN_2\"\nmsgstr \"Zwei\"\n"
      "msgctxt \"General Strings\"\nmsgid \"QELM_MSG_GEN_4\"\nmsgstr \"Vier\"\n");
  EXPECT_EQ(Findings(file),
            (std::vector<std::string>{"1 Color Document... has other placeholders than the English text",
                                      "4 QELM_MSG_GEN_1 has other placeholders than the English text",
                                      "8 QELM_MSG_GEN_2 is marked as fuzzy and not in use",
                                      "0 QELM_MSG_GEN_3 is missing",
                                      "11 QELM_MSG_GEN_4 is not in the English file"}));
}

}  // namespace
}  // namespace qelm::messages
