// Where the settings files lie, which language a session starts with, and what is written about the settings.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "config/read_settings.h"
#include "config/settings_paths.h"
#include "config/settings_table.h"
#include "config/startup_language.h"
#include "support/memory_platform.h"
#include "support/null_roles.h"

namespace qelm::config {
namespace {

class FakeSession : public testing::NullSession {
 public:
  std::string language = "German";
  std::string_view PluginFolder() override { return "/plugin"; }
  std::int32_t MajorVersion() override { return 18; }
  std::string_view InterfaceLanguage() override { return language; }
};

TEST(SettingsPaths, QelmIniDecidesBetweenTheTwoFolders) {
  FakeSession session;
  testing::MemoryPlatform platform;
  platform.environment["APPDATA"] = "C:\\Users\\u\\Roaming";
  const std::string user_folder = "C:/Users/u/Roaming/Adobe/FrameMaker/18/Brenwick/QELM";
  EXPECT_EQ(FindSettingsPaths(session, platform).local_settings, user_folder + "/QELM_Local_Settings.txt");
  for (const std::string value : {"USER_PROFILE", "install", "", "anything"}) {
    platform.files["/plugin/QELM.ini"] = "; x\nSETTINGS_LOCATION=" + value + "\n";
    EXPECT_TRUE(FindSettingsPaths(session, platform).per_user) << value;
  }
  platform.files["/plugin/QELM.ini"] = ";SETTINGS_LOCATION=USER\r\nSETTINGS_LOCATION = INSTALL_FOLDER\r\n";
  const SettingsPaths paths = FindSettingsPaths(session, platform);
  EXPECT_FALSE(paths.per_user);
  EXPECT_EQ(paths.local_settings, "/plugin/QELM_Local_Settings.txt");
  EXPECT_EQ(paths.report, "/plugin/QELM_Plugin_Report.fm");
}

TEST(SettingsPaths, AMissingFileOfTheUserIsTakenFromThePlugin) {
  FakeSession session;
  testing::MemoryPlatform platform;
  platform.environment["APPDATA"] = "/u";
  const std::string folder = "/u/Adobe/FrameMaker/18/Brenwick/QELM/";
  platform.files["/plugin/QELM_Local_Settings.txt"] = "";
  platform.files["/plugin/QELM_MainSettings_LocalCopy.fm"] = "";
  platform.files[folder + "QELM_Local_Settings.txt"] = "";
  const SettingsPaths paths = FindSettingsPaths(session, platform);
  EXPECT_EQ(paths.local_settings, folder + "QELM_Local_Settings.txt");
  EXPECT_EQ(paths.local_copy, "/plugin/QELM_MainSettings_LocalCopy.fm");
  EXPECT_EQ(paths.report, folder + "QELM_Plugin_Report.fm");
}

TEST(SettingsPaths, ApplicationDataFallsBack) {
  testing::MemoryPlatform platform;
  EXPECT_EQ(ApplicationDataFolder(platform), "");
  platform.environment["HOME"] = "/home/u";
  EXPECT_EQ(ApplicationDataFolder(platform), "/home/u/.config");
  platform.environment["XDG_CONFIG_HOME"] = "relative";
  EXPECT_EQ(ApplicationDataFolder(platform), "/home/u/.config");
  platform.environment["XDG_CONFIG_HOME"] = "/xdg";
  EXPECT_EQ(ApplicationDataFolder(platform), "/xdg");
  platform.environment["APPDATA"] = "/appdata";
  EXPECT_EQ(ApplicationDataFolder(platform), "/appdata");
}

std::string FileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(StartupLanguage, FallsBackToEnglishWithANoticeThatSaysWhy) {
  struct Row {
    const char* setting;
    bool damaged;  // the user's own files
    const char* language;
    std::vector<std::string> said;
  };
  const std::vector<Row> rows = {
      {"English", false, "English", {}},
      {"German", false, "German", {}},
      {"DEFAULT", false, "German", {}},
      {"Klingon",
       false,
       "English",
       {"\"Klingon\"", "The languages are: English, German.", "English is used instead."}},
      {"../secret/German", false, "English", {"\"../secret/German\"", "English is used instead."}},
      {"German", true, "English", {"/user/languages/German.po:2: ", "English is used instead."}},
      {"English",
       true,
       "English",
       {"/user/languages/English.po:1: ", "The English file of the plug-in's folder"}},
  };
  for (const Row& row : rows) {
    FakeSession session;
    testing::MemoryPlatform platform;
    testing::RecordingUser user;
    platform.files["/plugin/languages/English.po"] = "msgid \"A\"\nmsgstr \"a\"\n";
    platform.files["/plugin/languages/German.po"] = "msgid \"A\"\nmsgstr \"a\"\n";
    if (row.damaged) {
      platform.files["/user/languages/German.po"] = "msgid \"A\"\nmsgstr \"cut\n";
      platform.files["/user/languages/English.po"] = "msgid \"A";
    }
    messages::Messenger messenger(user, platform);
    LocalSettings settings;
    settings.paths.plugin_folder = "/plugin";
    settings.paths.settings_folder = "/user";
    settings.startup_language = row.setting;
    EXPECT_TRUE(LoadStartupLanguage(session, messenger, settings)) << row.setting;
    EXPECT_EQ(messenger.LanguageName(), row.language) << row.setting;
    ASSERT_EQ(user.notes.size(), row.said.empty() ? 0U : 1U) << row.setting;
    for (const std::string& text : row.said) EXPECT_NE(user.notes[0].find(text), std::string::npos) << text;
  }
}

// Wherever a file was cut, the session has its texts or the English ones, and a language in any case.
TEST(StartupLanguage, ACutFileNeverEndsTheStart) {
  const std::string german = FileText(std::string(QELM_SOURCE_DIR) + "/assets/languages/German.po");
  ASSERT_GT(german.size(), 10000U);
  int refused = 0;
  for (std::size_t size = 0; size < german.size(); size += 1009) {
    FakeSession session;
    testing::MemoryPlatform platform;
    testing::RecordingUser user;
    platform.files["/plugin/languages/English.po"] = "msgid \"A\"\nmsgstr \"a\"\n";
    platform.files["/plugin/languages/German.po"] = german.substr(0, size);
    messages::Messenger messenger(user, platform);
    LocalSettings settings;
    settings.paths.plugin_folder = "/plugin";
    settings.startup_language = "German";
    ASSERT_TRUE(LoadStartupLanguage(session, messenger, settings)) << size;
    const bool english = messenger.LanguageName() == "English";
    EXPECT_EQ(user.notes.size(), english ? 1U : 0U) << size;
    if (english) ++refused;
  }
  EXPECT_GT(refused, 10);
}

// A document about the settings is written by hand around a part that follows from the table of settings. The
// right text of that part is left in the build folder when the document has another.
void ExpectPart(const std::string& document, const std::string& part) {
  if (FileText(std::string(QELM_SOURCE_DIR) + "/" + document).find(part) != std::string::npos) return;
  const std::string right = std::string(QELM_BINARY_DIR) + "/" + document.substr(document.rfind('/') + 1);
  std::ofstream(right, std::ios::binary) << part;
  ADD_FAILURE() << document << " does not say what the table of settings says; see " << right;
}

TEST(SettingsDocuments, TheTemplateHasEveryKeyAtItsDefault) {
  std::string part;
  for (const Setting& setting : AllSettings()) {
    part += "; " + std::string(setting.meaning) + " (" + KindText(setting) + ")\n";
    part += ";" + std::string(setting.key) + setting.separator + std::string(setting.default_text) + "\n\n";
  }
  ExpectPart("assets/QELM_Local_Settings.txt", part);
}

TEST(SettingsDocuments, TheManualHasEveryKey) {
  std::string part = "| key | kind | default | meaning |\n|---|---|---|---|\n";
  for (const Setting& setting : AllSettings()) {
    const std::string text =
        setting.default_text.empty() ? "" : "`" + std::string(setting.default_text) + "`";
    part += "| `" + std::string(setting.key) + "` | " + KindText(setting) + " | " + text + " | " +
            std::string(setting.meaning) + " |\n";
  }
  ExpectPart("docs/manual/settings.md", part);
}

TEST(SettingsDocuments, TheTemplateUncommentedGivesTheDefaults) {
  std::string text = FileText(std::string(QELM_SOURCE_DIR) + "/assets/QELM_Local_Settings.txt");
  for (const Setting& setting : AllSettings()) {
    const std::size_t at = text.find("\n;" + std::string(setting.key));
    if (at != std::string::npos) text.erase(at + 1, 1);
  }
  LocalSettings settings;
  ReadSettingsText(text, &settings);
  EXPECT_TRUE(settings.notices.empty());
  for (const Setting& setting : AllSettings()) {
    const std::vector<std::string> values = ValueTexts(setting, settings);
    EXPECT_EQ(values.empty() ? std::string() : values.front(), setting.default_text) << setting.key;
  }
}

}  // namespace
}  // namespace qelm::config
