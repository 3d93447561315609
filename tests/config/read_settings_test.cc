#include "config/read_settings.h"

#include <gtest/gtest.h>

#include <set>

#include "config/settings_table.h"
#include "support/memory_platform.h"
#include "support/tree_host.h"

namespace qelm::config {
namespace {

using testing::MemoryPlatform;
using testing::RecordingUser;

LocalSettings Read(std::string_view text) {
  LocalSettings settings;
  ReadSettingsText(text, &settings);
  return settings;
}

std::string Value(const LocalSettings& settings, std::string_view key) {
  const std::vector<std::string> values = ValueTexts(*FindSetting(key), settings);
  std::string text;
  for (const std::string& value : values) text += (text.empty() ? "" : "|") + value;
  return text;
}

TEST(ReadSettings, EveryDefaultOfTheTableIsThatOfTheField) {
  const LocalSettings fresh;
  LocalSettings read = Read("\n\n");
  for (const Setting& setting : AllSettings()) {
    EXPECT_EQ(Value(read, setting.key), Value(fresh, setting.key)) << setting.key;
    EXPECT_EQ(Value(read, setting.key), setting.default_text) << setting.key;
  }
}

TEST(ReadSettings, ValuesByTheRulesOfTheirKind) {
  struct Row {
    std::string_view line;
    std::string_view key;
    std::string_view expected;
  };
  const std::vector<Row> rows = {
      {"VAL_RULE_1_ENABLED=no", "VAL_RULE_1_ENABLED", "0"},
      {"VAL_RULE_1_ENABLED=on", "VAL_RULE_1_ENABLED", "0"},
      {"VAL_RULE_1_ENABLED=off", "VAL_RULE_1_ENABLED", "0"},
      {"VAL_RULE_1_ENABLED=maybe", "VAL_RULE_1_ENABLED", "1"},
      {"VAL_RULE_1_ENABLED=", "VAL_RULE_1_ENABLED", "1"},
      {"VAL_RULE_3_ENABLED = Yes ", "VAL_RULE_3_ENABLED", "1"},
      {"VAL_RULE_3_ENABLED=TRUE", "VAL_RULE_3_ENABLED", "1"},
      {"VAL_RULE_3_ENABLED=1", "VAL_RULE_3_ENABLED", "1"},
      {"VAL_RULE_3_ENABLED=maybe", "VAL_RULE_3_ENABLED", "0"},
      {"XPATH_MAX_MATCHES=5", "XPATH_MAX_MATCHES", "100"},
      {"XPATH_MAX_MATCHES=99999999999999999999", "XPATH_MAX_MATCHES", "1000000"},
      {"XPATH_MAX_MATCHES=2000 nodes", "XPATH_MAX_MATCHES", "2000"},
      {"XPATH_MAX_MATCHES=many", "XPATH_MAX_MATCHES", "100"},
      {"XPATH_HISTORY_MAX_LENGTH=999", "XPATH_HISTORY_MAX_LENGTH", "200"},
      {"XPATH_HISTORY_MAX_LENGTH=-3", "XPATH_HISTORY_MAX_LENGTH", "0"},
      {"BF_POST_PROCESS_PDF_PAGE_WIDTH_IN=8.25", "BF_POST_PROCESS_PDF_PAGE_WIDTH_IN", "8.25"},
      {"BF_POST_PROCESS_METADATA_TABLE_IDENTIFIER~a=b ", "BF_POST_PROCESS_METADATA_TABLE_IDENTIFIER", "a=b"},
      {"BF_POST_PROCESS_METADATA_TABLE_IDENTIFIER=a", "BF_POST_PROCESS_METADATA_TABLE_IDENTIFIER", ""},
      {"CONFIG_FILE_COLOR_DELIMITER==", "CONFIG_FILE_COLOR_DELIMITER", "="},
      {"FILT_HIDE_CONTENT_AFTER_NO_RESTORE_FILTER=ask", "FILT_HIDE_CONTENT_AFTER_NO_RESTORE_FILTER", "2"},
      {"FILT_HIDE_CONTENT_AFTER_NO_RESTORE_FILTER=never", "FILT_HIDE_CONTENT_AFTER_NO_RESTORE_FILTER", "0"},
      {"PROMPT_SET_WYSIWYG_TO_COMPLETE_OPERATION=ask", "PROMPT_SET_WYSIWYG_TO_COMPLETE_OPERATION", "1"},
      {"BF_POST_PROCESS_DEFAULT_VAR_IMPORT_FOLDER=..\\vars", "BF_POST_PROCESS_DEFAULT_VAR_IMPORT_FOLDER",
       "../vars"},
      {"FILES_TO_OPEN_ON_STARTUP=a.fm\nFILES_TO_OPEN_ON_STARTUP=\nFILES_TO_OPEN_ON_STARTUP=;b.fm",
       "FILES_TO_OPEN_ON_STARTUP", "a.fm|;b.fm"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Value(Read(row.line), row.key), row.expected) << row.line;
  }
}

TEST(ReadSettings, TheFirstLineThatBeginsWithTheKeyCounts) {
  const auto tag = [](std::string_view text) { return Read(text).source_file_filter_condition_tag; };
  EXPECT_EQ(tag("SOURCE_FILE_FILTER_CONDITION_TAG=A\nSOURCE_FILE_FILTER_CONDITION_TAG=B"), "A");
  EXPECT_EQ(tag("SOURCE_FILE_FILTER_CONDITION_TAG_OLD=A\nSOURCE_FILE_FILTER_CONDITION_TAG=B"), "A");
  EXPECT_EQ(tag("SOURCE_FILE_FILTER_CONDITION_TAG=B\nSOURCE_FILE_FILTER_CONDITION_TAG_OLD=A"), "B");
  EXPECT_EQ(tag("SOURCE_FILE_FILTER_CONDITION_TAG=\nSOURCE_FILE_FILTER_CONDITION_TAG=B"), "Hidden");
  EXPECT_EQ(tag(";SOURCE_FILE_FILTER_CONDITION_TAG=A\n----------SOURCE_FILE_FILTER_CONDITION_TAG=A"),
            "Hidden");
  EXPECT_EQ(tag("source_file_filter_condition_tag=A"), "Hidden");
  EXPECT_EQ(tag(" SOURCE_FILE_FILTER_CONDITION_TAG=A"), "Hidden");
  EXPECT_EQ(tag("SOURCE_FILE_FILTER_CONDITION_TAG"), "Hidden");
}

TEST(ReadSettings, ValuesThatFollowFromOthers) {
  EXPECT_EQ(Read("").filter_type, 3);
  EXPECT_EQ(Read("FILT_DEFAULT_FILTER_TYPE=Dup").filter_type, 3);
  EXPECT_EQ(Read("FILT_DEFAULT_FILTER_TYPE=duplicate").filter_type, 1);
  EXPECT_EQ(Read("QELM_DEBUG_MODE=DoPrompts").debug_mode, 1);
  EXPECT_EQ(Read("QELM_DEBUG_MODE=WriteFilterLog\nQELM_DEBUG_LOG_FILENAME=x").qelm_debug_log_filename, "x");
  EXPECT_EQ(Read("QELM_DEBUG_MODE=writefilterlog\nQELM_DEBUG_LOG_FILENAME=x").qelm_debug_log_filename, "");

  LocalSettings inches = Read(
      "BF_POST_PROCESS_PDF_PAGE_WIDTH_IN=8.5\nBF_POST_PROCESS_PDF_PAGE_HEIGHT_IN=11\n"
      "BF_POST_PROCESS_PDF_PAGE_WIDTH_CM=1");
  EXPECT_EQ(inches.pdf_page_width, 40108032);
  EXPECT_EQ(inches.pdf_page_height, 51904512);
  LocalSettings centimetres = Read(
      "BF_POST_PROCESS_PDF_PAGE_HEIGHT_IN=11\nBF_POST_PROCESS_PDF_PAGE_WIDTH_CM=21\n"
      "BF_POST_PROCESS_PDF_PAGE_HEIGHT_CM=29.7");
  EXPECT_EQ(centimetres.pdf_page_width, 39011973);
  EXPECT_EQ(centimetres.pdf_page_height, 55174076);
  EXPECT_EQ(Read("BF_POST_PROCESS_PDF_PAGE_HEIGHT_CM=29.7").pdf_page_height, 0);
}

TEST(ReadSettings, LinesThatNoKeyTakesAreNoticed) {
  const LocalSettings settings = Read(
      "; comment\n\nXPATH_MAX_MATCH=5\nNOTEPAD_EXE_PATH=a\nNOTEPAD_EXE_PATH=b\n"
      "  VAL_RULE_1_ENABLED=no\n???");
  ASSERT_EQ(settings.notices.size(), 4U);
  EXPECT_EQ(settings.notices[0].line, 3U);
  EXPECT_EQ(settings.notices[0].text,
            "\"XPATH_MAX_MATCH\" is not a setting; did you mean XPATH_MAX_MATCHES?");
  EXPECT_EQ(settings.notices[1].line, 5U);
  EXPECT_NE(settings.notices[1].text.find("no effect"), std::string::npos);
  EXPECT_NE(settings.notices[2].text.find("beginning of its line"), std::string::npos);
  EXPECT_EQ(settings.notices[3].text, "\"?\?\?\" is not a setting");
}

class LocalSettingsFile : public ::testing::Test {
 protected:
  LocalSettingsFile() {
    settings.paths.local_settings = "user/QELM_Local_Settings.txt";
    settings.paths.local_copy = "user/QELM_MainSettings_LocalCopy.fm";
  }
  bool ReadFile(bool report = true) {
    const MainSettingsCheck check = [this](const std::string& path) {
      checked.push_back(path);
      return good.contains(path);
    };
    return ReadLocalSettings(messenger, platform, debug_log, report, check, &settings);
  }
  void SetFile(const std::string& text) { platform.files[settings.paths.local_settings] = text; }
  void AddLocalCopy() {
    platform.files[settings.paths.local_copy] = "";
    good.insert(settings.paths.local_copy);
  }

  testing::TreeHost host;
  MemoryPlatform& platform{host.platform};
  RecordingUser& user{host.user};
  messages::Messenger messenger{user, platform};
  messages::DebugLog debug_log{host.roles()};
  LocalSettings settings;
  std::set<std::string> good;
  std::vector<std::string> checked;
};

TEST_F(LocalSettingsFile, AMissingOrNearlyEmptyFileGivesTheDefaults) {
  AddLocalCopy();
  EXPECT_FALSE(ReadFile());
  ASSERT_EQ(user.notes.size(), 1U);
  EXPECT_EQ(
      user.notes[0].find("--> QELM message <--\n\nThe settings file at:\n\nuser/QELM_Local_Settings.txt\n\n"
                         "...appears to be invalid, or perhaps the file is empty. "),
      0U);
  SetFile("XPATH_MAX_MATCHES=500\n");
  EXPECT_FALSE(ReadFile(false));
  EXPECT_EQ(settings.xpath_max_matches, 10000);
  EXPECT_EQ(user.notes.size(), 1U);
  SetFile("XPATH_MAX_MATCHES=500\n;\nQELM_DEBUG_MODE=DoPrompts");
  EXPECT_TRUE(ReadFile());
  EXPECT_EQ(settings.xpath_max_matches, 500);
  EXPECT_TRUE(messenger.DebugPrompts());
}

// "Off" in the file is off for the session that had it on, too.
TEST_F(LocalSettingsFile, TheDebugLogIsOpenedAsTheyAskForIt) {
  AddLocalCopy();
  SetFile("QELM_DEBUG_MODE=WriteFilterLog\nQELM_DEBUG_LOG_FOLDER=logs\nQELM_DEBUG_LOG_FILENAME=run.txt");
  EXPECT_TRUE(ReadFile());
  EXPECT_EQ(platform.files["user/logs/run.txt"].find("This is a debug log for the QELM plugin."), 0U);
  EXPECT_EQ(debug_log.options().limit, 10);
  platform.files["user/logs/run.txt"] += "entries";
  EXPECT_TRUE(ReadFile());
  EXPECT_EQ(platform.files["user/logs/run.txt"].find("entries"), std::string::npos);
  SetFile(";\n;");
  EXPECT_TRUE(ReadFile());
  EXPECT_FALSE(debug_log.Writes());
}

TEST_F(LocalSettingsFile, WordsThatStandForTheLocalCopy) {
  AddLocalCopy();
  for (const std::string value :
       {"DEFAULT", "DEFAULT_PATH", "<none>", "QELM_MainSettings_LocalCopy.fm", ""}) {
    settings.paths.main_settings.clear();
    SetFile(";\nMAIN_SETTINGS_PATH=" + value);
    EXPECT_TRUE(ReadFile());
    EXPECT_EQ(settings.paths.main_settings, settings.paths.local_copy) << value;
    EXPECT_EQ(settings.paths.configured_main_settings, settings.paths.local_copy);
  }
}

TEST_F(LocalSettingsFile, ADocumentThatPassesTheCheckIsTaken) {
  AddLocalCopy();
  good.insert("/shared/main.fm");
  SetFile(";\nMAIN_SETTINGS_PATH=\\shared\\main.fm");
  EXPECT_TRUE(ReadFile());
  EXPECT_EQ(settings.paths.main_settings, "/shared/main.fm");
  checked.clear();
  EXPECT_TRUE(ReadFile());
  EXPECT_TRUE(checked.empty()) << "the same path is not checked again";
  good.insert("user/team.xml");
  SetFile(";\nMAIN_SETTINGS_PATH=team.xml");
  EXPECT_TRUE(ReadFile());
  EXPECT_EQ(settings.paths.main_settings, "user/team.xml") << "seen from the settings file";
}

TEST_F(LocalSettingsFile, OneThatFailsFallsBackToTheLocalCopy) {
  AddLocalCopy();
  SetFile(";\nMAIN_SETTINGS_PATH=/lost.fm");
  EXPECT_TRUE(ReadFile());
  EXPECT_EQ(settings.paths.main_settings, settings.paths.local_copy);
  EXPECT_TRUE(user.notes.empty());
}

TEST_F(LocalSettingsFile, WithoutALocalCopyEverythingStaysAsItWas) {
  settings.paths.main_settings = "/before.fm";
  SetFile(";\nMAIN_SETTINGS_PATH=/lost.fm");
  EXPECT_TRUE(ReadFile(false));
  EXPECT_TRUE(user.notes.empty());
  EXPECT_TRUE(ReadFile());
  EXPECT_EQ(settings.paths.main_settings, "/before.fm");
  ASSERT_EQ(user.notes.size(), 1U);
  EXPECT_NE(user.notes[0].find("could not be located:\n\nuser/QELM_MainSettings_LocalCopy.fm\n\n...QELM will "
                               "certainly malfunction"),
            std::string::npos);
  platform.files["lang/English.po"] =
      "msgctxt \"General Strings\"\nmsgid \"QELM_MSG_GEN_8\"\nmsgstr \"None at %s.\"\n";
  ASSERT_TRUE(messenger.LoadLanguage("lang", "English"));
  EXPECT_TRUE(ReadFile());
  EXPECT_EQ(user.notes[1], "--> QELM message <--\n\nNone at /before.fm.");
}

}  // namespace
}  // namespace qelm::config
