#include "schemes/format_conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "common/text.h"
#include "embedded/model/files.h"
#include "schemes/conversion_backup.h"
#include "schemes/settings_session.h"
#include "support/failing_host.h"
#include "support/normal_form.h"
#include "support/old_settings.h"

namespace qelm::schemes {
namespace {

using namespace testing;  // the notation of settings_session.h

constexpr char kPath[] = "/settings/main.fm";
constexpr char kBackup300[] = "/settings/main.fm.BACKUP_before_3.00_conversion.fm";

std::string ReadSource(const std::string& path) {
  std::ifstream file(std::string(QELM_SOURCE_DIR) + "/" + path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class FormatConversion : public ::testing::Test {
 protected:
  FormatConversion() {
    session.platform.files["/plugin/QELM_MainSettings_Template.fm"] =
        ReadSource("assets/QELM_MainSettings_Template.fm");
    session.platform.files["/languages/English.po"] = ReadSource("assets/languages/English.po");
    EXPECT_TRUE(session.messenger.LoadLanguage("/languages", "English"));
  }
  ConversionResult To300(host::Id* document, host::Host& host) {
    return ConvertTo300(host, session.messenger, options, document);
  }
  ConversionResult To300(host::Id* document) { return To300(document, session.host()); }
  ConversionResult To304(host::Id* document) {
    return ConvertTo304(session.host(), session.messenger, options, document);
  }
  // The example in today's format, open.
  host::Id Converted() {
    host::Id document = session.Open(kPath, OldSettings(OldSettingsExample()));
    EXPECT_EQ(To300(&document).error, "");
    EXPECT_EQ(To304(&document).error, "");
    return document;
  }
  std::string& File(const std::string& path) { return session.platform.files[path]; }

  SettingsSession session;
  ConversionOptions options{.plugin_folder = "/plugin"};
};

TEST_F(FormatConversion, ResultIsTheGoldenOneAndNothingIsLeftToDo) {
  const host::Id document = Converted();
  EXPECT_EQ(FormatOf(session.host(), document), SettingsFormat::kCurrent);
  std::string error;
  const auto read = embedded::model::BuildMif(File(kPath), &error);
  ASSERT_NE(read, nullptr) << error;
  EXPECT_TRUE(read->warnings.empty());
  std::string lines;
  for (const std::string& line : test::NormalForm(*read)) lines += line + "\n";
  EXPECT_EQ(lines, ReadSource("tests/schemes/converted-settings.txt"));
  // Paragraphs name formats that the catalog has by now, and no attribute is declared any longer.
  EXPECT_EQ(File(kPath).find("<Pgf ", File(kPath).find("<TextFlow")), std::string::npos);
  EXPECT_EQ(File(kPath).find("<EDAttrDef "), std::string::npos);
}

TEST_F(FormatConversion, BackupNamesAreNumberedFrom2To99) {
  EXPECT_EQ(BackupName(session.platform, kPath, "3.00"), kBackup300);
  File(kBackup300) = "one";
  const auto numbered = [](int number) {
    return std::string(kPath) + ".BACKUP_(" + std::to_string(number) + ")_before_3.00_conversion.fm";
  };
  for (int number = 2; number <= 99; ++number) {
    EXPECT_EQ(BackupName(session.platform, kPath, "3.00"), numbered(number));
    File(numbered(number)) = "another";
  }
  const std::size_t files = session.platform.files.size();
  host::Id document = session.Open(kPath, OldSettings(OldSettingsExample()));
  const ConversionResult result = To300(&document);
  EXPECT_EQ(result.error, "") << "without a free name there is no backup, and the conversion goes on";
  EXPECT_EQ(result.backup, "");
  EXPECT_EQ(session.platform.files.size(), files + 1);
  EXPECT_EQ(File(kBackup300), "one");
  EXPECT_EQ(FormatOf(session.host(), document), SettingsFormat::k300);
}

TEST_F(FormatConversion, WhatIsMissingIsNamed) {
  const auto with = [](const std::string& from, const std::string& to) {
    return common::ReplaceAll(OldSettings(OldSettingsExample()), from, to);
  };
  OldElement without_colors = OldSettingsExample();
  without_colors.children.pop_back();
  struct Row {
    std::string content;
    std::string error;
  };
  const std::vector<Row> rows = {
      {OldSettings(without_colors), "Couldn't find the <ColorList> element!"},
      {with("`Rule'", "`OldRule'"), "Couldn't find the <Rule> element definition!"},
      {with("`Attribute'", "`Pair'"), "Couldn't find the <Attribute> element definition!"},
      {with("`TSP_MainSettings'", "`Settings'"), "Couldn't find the <TSP_MainSettings> element definition!"},
  };
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::string path = "/" + std::to_string(i) + ".fm";
    host::Id document = session.Open(path, rows[i].content);
    const ConversionResult result = To300(&document);
    EXPECT_EQ(result.error, rows[i].error);
    EXPECT_EQ(File(path), rows[i].content) << "the file is as it was";
    EXPECT_EQ(File(result.backup), rows[i].content);
    EXPECT_TRUE(session.host().documents.Switch(document, host::DocumentSwitch::kModified));
  }
  host::Id document = session.Open(kPath, OldSettings(OldSettingsExample()));
  session.platform.files.erase("/plugin/QELM_MainSettings_Template.fm");
  EXPECT_NE(To300(&document).error.find("/plugin/QELM_MainSettings_Template.fm"), std::string::npos);
  host::Id other = session.Open("/other.xml", E("QELM_MainSettings", ""));
  EXPECT_EQ(To304(&other).error, "Couldn't find the <RuleSettings> element definition!");
}

// The operations without which nothing is converted, each made to fail the first and the last time.
TEST_F(FormatConversion, FailuresAreToldAndLeaveTheFileAndTheBackup) {
  const std::string old = OldSettings(OldSettingsExample());
  struct Row {
    const char* operation;
    const char* first;
    const char* last;
  };
  const std::vector<Row> rows = {
      {"Editing::DefineElement", "Couldn't create the <Name> element!",
       "Couldn't change the <TSP_MainSettings> element definition!"},
      {"Editing::InsertElement", "Couldn't create the <Name> element!",
       "Couldn't create the <XPathExpression> element!"},
      {"Editing::SetText", "Couldn't create the <Name> element!",
       "Couldn't create the <XPathExpression> element!"},
      {"Editing::SetAttributes", "Couldn't change the <Attribute> element!",
       "Couldn't change the <SchemeCategories_XPath> element!"},
      {"Editing::SetDefinition", "Couldn't change the <TSP_MainSettings> element!",
       "Couldn't change the <TSP_MainSettings> element!"},
      {"Documents::ImportFormats", "The formats and element definitions of the template",
       "The formats and element definitions of the template"},
      {"Documents::Open", "A critical error occurred while attempting to save a backup of the original file.",
       "The template for main settings files cannot be opened"},
      {"Documents::Save", "A critical error occurred while attempting to save a backup of the original file.",
       "The converted main settings file cannot be saved"},
  };
  std::map<std::string, std::int64_t> calls;
  {
    FailingHost host(session.host());
    host::Id document = session.Open(kPath, old);
    EXPECT_EQ(To300(&document, host.roles()).error, "");
    calls = host.calls();
    session.host().documents.Close(document, true);
  }
  for (const Row& row : rows) {
    for (const bool first : {true, false}) {
      SCOPED_TRACE(std::string(row.operation) + (first ? " first" : " last"));
      File(kBackup300).clear();
      session.platform.files.erase(kBackup300);
      host::Id document = session.Open(kPath, old);
      FailingHost host(session.host());
      host.FailAt(row.operation, first ? 1 : calls[row.operation]);
      const ConversionResult result = To300(&document, host.roles());
      EXPECT_EQ(host.failed(), row.operation);
      EXPECT_TRUE(result.error.starts_with(first ? row.first : row.last)) << result.error;
      EXPECT_EQ(File(kPath), old);
      const bool kept = !(first && std::string(row.operation) == "Documents::Save");
      EXPECT_EQ(result.backup, kept ? kBackup300 : "");
      EXPECT_EQ(session.platform.files.contains(kBackup300), kept);
      if (document != host::kNone) {
        EXPECT_EQ(session.host().documents.Path(document), kPath);
        session.host().documents.Close(document, true);
      }
    }
  }
}

TEST_F(FormatConversion, BackgroundsAreAddedInXmlWithTheLinesAroundAsTheyWere) {
  const std::string before =
      "<QELM_MainSettings>\n  <!-- ours -->\n  <SchemeCategories><SchemeCategory><ColoringSchemes><Scheme>\n"
      "    <Rule>\n      <RuleSettings>\n        <Name>Red</Name>\n      </RuleSettings>\n    </Rule>\n"
      "    <Rule><RuleSettings/></Rule>\n"
      "  </Scheme></ColoringSchemes></SchemeCategory></SchemeCategories>\n</QELM_MainSettings>\n";
  host::Id document = session.Open("/main.xml", before);
  const ConversionResult result = To304(&document);
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.backup, "/main.xml.BACKUP_before_3.04_conversion.fm");
  EXPECT_EQ(File(result.backup), before) << "the same file, whatever its name says";
  std::string after =
      common::ReplaceAll(before, "</Name>\n", "</Name>\n        <BkgdColor>None</BkgdColor>\n");
  after = common::ReplaceAll(after, "<RuleSettings/>",
                             "<RuleSettings><BkgdColor>None</BkgdColor></RuleSettings>");
  EXPECT_EQ(File("/main.xml"), after);
  EXPECT_EQ(FormatOf(session.host(), document), SettingsFormat::kCurrent);
}

TEST_F(FormatConversion, FormatsAreToldApart) {
  const auto rules = [](const std::string& settings) {
    return MainSettings(Category("A", "", SchemeOf("S", "", settings)));
  };
  struct Row {
    std::string content;
    SettingsFormat format;
  };
  const std::vector<Row> rows = {
      {E("TSP_MainSettings", ""), SettingsFormat::kBefore300},
      {MainSettings("", ""), SettingsFormat::kCurrent},
      {rules(RuleOf(T("Name", "Red"))), SettingsFormat::k300},
      {rules(RuleOf(T("Name", "Red") + T("BkgdColor", "None"))), SettingsFormat::kCurrent},
      {rules(RuleOf(T("BkgdColor", "None")) + RuleOf("")), SettingsFormat::kCurrent},
  };
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const host::Id document = session.Open("/" + std::to_string(i) + ".xml", rows[i].content);
    EXPECT_EQ(FormatOf(session.host(), document), rows[i].format) << rows[i].content;
  }
  EXPECT_EQ(FormatOf(session.host(), session.OpenSource("assets/QELM_MainSettings_Template.fm")),
            SettingsFormat::kCurrent);
}

}  // namespace
}  // namespace qelm::schemes
