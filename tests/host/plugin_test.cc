// The start of the plug-in, and what it makes of files that are missing or damaged.
#include "host/plugin.h"

#include <gtest/gtest.h>

#include <sstream>

#include "embedded/adapter/clients.h"
#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "embedded/adapter/user_interface.h"
#include "support/temp_folder.h"

namespace qelm {
namespace {

using namespace embedded::adapter;

constexpr char kMainSettings[] =
    "<QELM_MainSettings><SchemeCategories_XPath><SchemeCategory><FilterSchemes/></SchemeCategory>"
    "</SchemeCategories_XPath></QELM_MainSettings>";
constexpr char kLocalSettings[] =
    "; local settings\nXPATH_MAX_MATCHES=700\nXPATH_EXPRESSION_MAX_LENGTH=150\n";
constexpr char kEnglish[] =
    "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
    "msgctxt \"General Strings\"\nmsgid \"QELM_MSG_HEADER_1\"\nmsgstr \"QELM: \"\n\n"
    "msgctxt \"General Strings\"\nmsgid \"QELM_MSG_GEN_10\"\nmsgstr \"There is no document.\"\n";

// A plug-in folder in order, which a test spoils before it starts the plug-in.
struct Start {
  Start() {
    folder.Write("QELM.ini", "SETTINGS_LOCATION=INSTALL_FOLDER\n");
    folder.Write("QELM_Local_Settings.txt", kLocalSettings);
    folder.Write("QELM_MainSettings_LocalCopy.fm", kMainSettings);
    folder.Write("languages/English.po", kEnglish);
  }

  bool Run() {
    EmbeddedHost::Options options;
    options.plugin_folder = folder.path();
    options.file_error = [this] { return platform.LastError(); };
    host = std::make_unique<EmbeddedHost>(options, user, dialogs, clients, platform);
    plugin = std::make_unique<Plugin>(host->roles());
    return plugin->Initialize(start);
  }

  // Whether an alert says all of this.
  bool Said(const std::string& text) const {
    for (const std::string& alert : user.Alerts()) {
      if (alert.find(text) != std::string::npos) return true;
    }
    return false;
  }

  testing::TempFolder folder;
  PosixPlatform platform;
  std::istringstream in;
  std::ostringstream messages;
  EventLog events;
  ScriptedUserInterface user{{.in = in, .messages = messages, .events = events}};
  NoDialogs dialogs{events};
  RecordedClients clients{events};
  StartOptions start;
  std::unique_ptr<EmbeddedHost> host;
  std::unique_ptr<Plugin> plugin;
};

TEST(Initialize, TakesSettingsLanguageAndMainSettingsFromTheFolder) {
  Start start;
  ASSERT_TRUE(start.Run());
  EXPECT_TRUE(start.user.Alerts().empty()) << start.user.Alerts().front();
  EXPECT_EQ(start.plugin->settings.xpath_max_matches, 700);
  EXPECT_EQ(start.plugin->messenger.Get("QELM_MSG_GEN_10"), "There is no document.");
  ASSERT_NE(start.plugin->main_settings, host::kNone);
  EXPECT_FALSE(
      start.host->roles().documents.Switch(start.plugin->main_settings, host::DocumentSwitch::kOnScreen))
      << "the main settings document is open without being shown";
  EXPECT_EQ(start.host->roles().documents.ActiveDocument(), host::kNone);
}

TEST(Initialize, EngineHasTheLimitsOfTheSettings) {
  Start start;
  ASSERT_TRUE(start.Run());
  xpath::bw_ParseXPath(start.plugin->engine, "//" + std::string(149, 'a'), 0);
  EXPECT_EQ(xpath::LastParseError(start.plugin->engine).id, "XPATH_ERR_TOO_DAMNED_LONG");
  EXPECT_LT(xpath::bw_ParseXPath(start.plugin->engine, "//" + std::string(148, 'a'), 0), xpath::kFirstError);
}

TEST(Initialize, MissingLocalSettingsMeanDefaults) {
  Start start;
  std::filesystem::remove(start.folder.File("QELM_Local_Settings.txt"));
  ASSERT_TRUE(start.Run());
  EXPECT_TRUE(start.Said("QELM_Local_Settings.txt"));
  EXPECT_EQ(start.plugin->settings.xpath_max_matches, 10000);
  EXPECT_NE(start.plugin->main_settings, host::kNone);
}

TEST(Initialize, UnknownLanguageFallsBackToEnglishAndSaysSo) {
  Start start;
  start.start.settings = {{"STARTUP_LANGUAGE", "Klingon"}};
  ASSERT_TRUE(start.Run());
  EXPECT_TRUE(start.Said("Klingon"));
  EXPECT_EQ(start.plugin->messenger.Get("QELM_MSG_GEN_10"), "There is no document.");
}

TEST(Initialize, DamagedLanguageLeavesThePluginRunning) {
  Start start;
  start.folder.Write("languages/English.po", std::string_view(kEnglish).substr(0, sizeof(kEnglish) - 20));
  ASSERT_TRUE(start.Run());
  EXPECT_FALSE(start.plugin->messenger.LanguageActive());
  EXPECT_FALSE(start.user.Alerts().empty());
}

// Without a document of their own, the schemes are what is missing, not the plug-in.
TEST(Initialize, NoMainSettingsMeanNoSchemes) {
  for (const char* content : {"", "<Other/>", "<QELM_MainSettings>"}) {
    Start start;
    start.folder.Write("QELM_MainSettings_LocalCopy.fm", content);
    ASSERT_TRUE(start.Run()) << content;
    EXPECT_EQ(start.plugin->main_settings, host::kNone) << content;
    EXPECT_TRUE(start.Said("QELM_MainSettings_LocalCopy.fm")) << content;
  }
}

TEST(Initialize, MainSettingsNamedForTheRunAreUsedOrTheStartFails) {
  struct Row {
    const char* name;
    const char* content;
    bool works;
  };
  // A name that the local settings would take for "the local copy" is a name all the same.
  const Row rows[] = {{"mine.xml", kMainSettings, true},
                      {"DEFAULT.xml", kMainSettings, true},
                      {"other.xml", "<Other/>", false},
                      {"cut.xml", "<QELM_MainSettings>", false},
                      {"missing.xml", nullptr, false}};
  const auto before = std::filesystem::current_path();
  for (const Row& row : rows) {
    Start start;
    if (row.content != nullptr) start.folder.Write(row.name, row.content);
    std::filesystem::current_path(start.folder.path());
    start.start.main_settings_path = row.name;
    EXPECT_EQ(start.Run(), row.works) << row.name;
    if (row.works) {
      EXPECT_EQ(start.host->roles().documents.Path(start.plugin->main_settings),
                std::filesystem::weakly_canonical(start.folder.path()).string() + "/./" + row.name);
    } else {
      EXPECT_TRUE(start.Said(row.name));
    }
    std::filesystem::current_path(before);
  }
}

TEST(Initialize, SettingsOfTheRunStandAboveTheFile) {
  Start start;
  start.start.settings = {{"XPATH_MAX_MATCHES", "800"}};
  ASSERT_TRUE(start.Run());
  EXPECT_EQ(start.plugin->settings.xpath_max_matches, 800);
}

}  // namespace
}  // namespace qelm
