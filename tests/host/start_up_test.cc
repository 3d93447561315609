// What a user's session begins with: stages, colors, default schemes, files, and reading the settings again.
#include "host/start_up.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "host/user_session.h"

namespace qelm {
namespace {

using testing::UserSession;

constexpr char kLocalCopy[] = "QELM_MainSettings_LocalCopy.fm";
constexpr char kLocalSettings[] = "QELM_Local_Settings.txt";

TEST(StartUp, ASettingsFileThatIsNoneGivesDefaults) {
  UserSession session;
  session.WriteUserFile(kLocalSettings, "XPATH_MAX_MATCHES=700");
  ASSERT_TRUE(session.Start());
  EXPECT_TRUE(session.Said("The settings file at:\n\n" + session.UserFile(kLocalSettings) +
                           "\n\n...appears to be invalid, or perhaps the file is empty. "));
  EXPECT_EQ(session.plugin->settings.xpath_max_matches, 10000);
  EXPECT_NE(session.plugin->main_settings, host::kNone);
}

TEST(StartUp, AMainSettingsFileThatIsNoneLeavesThePluginRunning) {
  UserSession session;
  session.WriteUserFile(kLocalCopy, "<Other/>");
  ASSERT_TRUE(session.Start());
  EXPECT_TRUE(session.Said(session.UserFile(kLocalCopy)));
  EXPECT_EQ(session.plugin->main_settings, host::kNone);
  EXPECT_EQ(session.user.status.back(), "");
}

TEST(StartUp, ADamagedLanguageLeavesThePluginRunning) {
  UserSession session;
  session.folder.Write("plugin/languages/English.po", "msgid \"A");
  ASSERT_TRUE(session.Start());
  EXPECT_FALSE(session.plugin->messenger.LanguageActive());
  EXPECT_FALSE(session.user.texts.empty());
}

// A name that the local settings would take for "the local copy" is a name all the same.
TEST(StartUp, MainSettingsNamedForTheRunAreUsedWhateverTheirName) {
  UserSession session;
  session.folder.Write("DEFAULT.xml", testing::MainSettingsXml());
  session.options.install = false;
  session.options.main_settings_path = "DEFAULT.xml";
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(session.folder.path());
  const bool started = session.Start();
  std::filesystem::current_path(before);
  ASSERT_TRUE(started);
  EXPECT_TRUE(session.roles().documents.Path(session.plugin->main_settings).ends_with("/DEFAULT.xml"));
}

TEST(StartUp, MissingColorsAreOffered) {
  const std::string before = testing::MainSettingsWithoutColors();
  UserSession session;
  session.WriteUserFile(kLocalCopy, before);
  session.user.no = {"QELM_MSG_GEN_19"};
  ASSERT_TRUE(session.Start());
  EXPECT_EQ(session.user.shown, std::vector<std::string>{"QELM_MSG_GEN_19"});
  EXPECT_EQ(session.UserText(kLocalCopy), before);

  session.user.no.clear();
  session.platform.read_only = {session.UserFile(kLocalCopy)};
  ASSERT_TRUE(session.Start());
  EXPECT_TRUE(session.Shown("QELM_MSG_GEN_20"));
  EXPECT_EQ(session.UserText(kLocalCopy), before);

  session.platform.read_only.clear();
  ASSERT_TRUE(session.Start());
  EXPECT_NE(session.UserText(kLocalCopy).find("<ColorTag `BkgdColor'>"), std::string::npos);
  session.user.shown.clear();
  ASSERT_TRUE(session.Start());
  EXPECT_TRUE(session.user.shown.empty()) << "they are there now";
}

TEST(StartUp, DefaultSchemesAreActive) {
  UserSession session;
  session.WriteUserFile(kLocalCopy, testing::MainSettingsXml());
  session.WriteUserFile(kLocalSettings,
                        "DEFAULT_SCHEME_CATEGORY=Quality\nCOLOR_DEFAULT_COLORING_SCHEME=Draft\n"
                        "VAL_DEFAULT_VALIDATION_SCHEME=Strict\n");
  ASSERT_TRUE(session.Start());
  EXPECT_TRUE(session.user.texts.empty());
  EXPECT_EQ(session.plugin->schemes.coloring.name, "Draft");
  EXPECT_TRUE(session.plugin->schemes.coloring.is_xpath);
  EXPECT_EQ(session.plugin->schemes.validation.name, "Strict");
  session.WriteUserFile(kLocalSettings,
                        "DEFAULT_SCHEME_CATEGORY=Quality\nCOLOR_DEFAULT_COLORING_SCHEME=Lost\n");
  ASSERT_TRUE(session.Start());
  EXPECT_EQ(session.user.shown, std::vector<std::string>{"QELM_MSG_COLORING_11"});
  EXPECT_EQ(session.plugin->settings.color_default_coloring_scheme, "<none>");
}

TEST(StartUp, AValidationSchemeThatIsNotThereIsWarnedOf) {
  struct Row {
    const char* settings;
    const char* named;  // empty: no warning
  };
  const Row rows[] = {
      {"DEFAULT_SCHEME_CATEGORY=Quality\n", ""},
      {"DEFAULT_SCHEME_CATEGORY=Quality\nVAL_DEFAULT_VALIDATION_SCHEME=Lost\n",
       "Category: Quality\nScheme: Lost\n"},
      {"VAL_DEFAULT_VALIDATION_SCHEME=Strict\n", "Category: <none>\nScheme: Strict\n"},
      {"VAL_DEFAULT_VALIDATION_SCHEME=Lost\nPROMPT_BAD_VAL_SCHEME_ON_STARTUP_WARNING=no\n", ""},
  };
  for (const Row& row : rows) {
    UserSession session;
    session.WriteUserFile(kLocalCopy, testing::MainSettingsXml());
    session.WriteUserFile(kLocalSettings, std::string(";\n") + row.settings);
    ASSERT_TRUE(session.Start());
    const std::string expected =
        "QELM:\n\nYou have auto-validation turned on, but QELM was unable to read settings for the default  "
        "validation scheme:\n\n" +
        std::string(row.named) +
        "\nAuto-validation will not be functional  until you manually set a valid scheme.\n\nYou can "
        "eliminate this warning by specifying a valid default scheme  in your local settings file or by "
        "disabling the warning altogether (also in the local settings file).";
    EXPECT_EQ(session.user.texts,
              *row.named == '\0' ? std::vector<std::string>() : std::vector<std::string>{expected});
  }
}

TEST(StartUp, FilesOfTheSettingsAreOpened) {
  UserSession session;
  session.WriteUserFile("first.xml", "<Doc/>");
  const std::string second = session.folder.Write("second.xml", "<Doc/>");
  const std::string settings =
      "FILES_TO_OPEN_ON_STARTUP=first.xml\nFILES_TO_OPEN_ON_STARTUP=;skipped.xml\n"
      "FILES_TO_OPEN_ON_STARTUP=missing.xml\nFILES_TO_OPEN_ON_STARTUP=" +
      second;
  session.WriteUserFile(kLocalSettings, settings);
  ASSERT_TRUE(session.Start());
  EXPECT_EQ(session.user.shown, std::vector<std::string>{"QELM_MSG_STGS_EDIT_15"});
  host::Documents& documents = session.roles().documents;
  std::vector<std::string> paths;
  for (host::Id open = documents.FirstOpenDocument(); open != host::kNone;
       open = documents.NextOpenDocument(open)) {
    if (documents.Switch(open, host::DocumentSwitch::kOnScreen)) paths.emplace_back(documents.Path(open));
  }
  EXPECT_EQ(paths, (std::vector<std::string>{session.UserFile("first.xml"), second}));

  session.user.shown.clear();
  session.WriteUserFile(kLocalSettings, settings + "\nSUPPRESS_FILE_OPENING_ALERTS=yes");
  ASSERT_TRUE(session.Start());
  EXPECT_TRUE(session.user.shown.empty());
  session.options.install = false;
  ASSERT_TRUE(session.Start());
  EXPECT_EQ(session.roles().documents.ActiveDocument(), host::kNone) << "only in a user's session";
}

TEST(ReadLocalSettingsAgain, FollowsTheFileAndKeepsWhatWasChosen) {
  UserSession session;
  session.WriteUserFile(kLocalCopy, testing::MainSettingsXml());
  session.WriteUserFile(kLocalSettings,
                        "DEFAULT_SCHEME_CATEGORY=Quality\nCOLOR_DEFAULT_COLORING_SCHEME=Draft\n");
  ASSERT_TRUE(session.Start());
  const host::Id before = session.plugin->main_settings;
  session.folder.Write("team.xml", testing::MainSettingsXml());
  session.WriteUserFile(kLocalSettings,
                        "MAIN_SETTINGS_PATH=" + session.folder.File("team.xml") +
                            "\nDEFAULT_SCHEME_CATEGORY=Review\nXPATH_EXPRESSION_MAX_LENGTH=100\n"
                            "COLOR_DEFAULT_COLORING_SCHEME=Other\n"
                            "VAL_DEFAULT_VALIDATION_SCHEME=Strict\n");
  ReadLocalSettingsAgain(*session.plugin, true);
  EXPECT_EQ(session.user.shown, std::vector<std::string>{"QELM_MSG_GEN_25"});
  EXPECT_EQ(session.roles().documents.Path(session.plugin->main_settings), session.folder.File("team.xml"));
  EXPECT_EQ(session.roles().documents.Path(before), "") << "the one before is closed";
  EXPECT_EQ(session.plugin->schemes.coloring.name, "Draft");
  EXPECT_EQ(session.plugin->schemes.validation.category, "Quality");
  EXPECT_EQ(session.plugin->schemes.validation.name, "Strict");
  xpath::bw_ParseXPath(session.plugin->engine, "//" + std::string(100, 'a'), 0);
  EXPECT_EQ(xpath::LastParseError(session.plugin->engine).id, "XPATH_ERR_TOO_DAMNED_LONG");
}

}  // namespace
}  // namespace qelm
