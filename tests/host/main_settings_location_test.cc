#include "host/main_settings_location.h"

#include <gtest/gtest.h>

#include "host/user_session.h"

namespace qelm {
namespace {

using testing::UserSession;

constexpr char kLocalSettings[] = "QELM_Local_Settings.txt";
constexpr char kLocalCopy[] = "QELM_MainSettings_LocalCopy.fm";

class MainSettingsLocation : public ::testing::Test {
 protected:
  // Starts with these local settings and runs the command with that choice.
  void Choose(const std::string& local_settings, const std::string& path) {
    session.WriteUserFile(kLocalSettings, local_settings);
    ASSERT_TRUE(session.Start());
    session.browser.choice = path;
    Again();
  }
  void Again() {
    session.user.shown.clear();
    SetMainSettingsLocation(*session.plugin);
  }
  // Of the messages, in order; all begin with this.
  std::string Messages() const {
    constexpr std::string_view kStart = "QELM_MSG_";
    std::string list;
    for (const std::string& id : session.user.shown) {
      list += (list.empty() ? "" : " ") + id.substr(std::min(id.size(), kStart.size()));
    }
    return list;
  }
  std::string InForce() {
    EXPECT_EQ(session.plugin->settings.paths.main_settings,
              session.roles().documents.Path(session.plugin->main_settings));
    return session.plugin->settings.paths.main_settings;
  }

  UserSession session;
  std::string local_copy = session.WriteUserFile(kLocalCopy, testing::MainSettingsXml());
  std::string team = session.folder.Write("team.xml", testing::MainSettingsXml());
};

TEST_F(MainSettingsLocation, TheChoiceIsUsedAndWritten) {
  session.platform.read_only = {team};  // it has no changes to be saved
  Choose("; one\r\nMAIN_SETTINGS_PATH=DEFAULT\r\n; three", team);
  EXPECT_EQ(Messages(), "STGS_EDIT_13 STGS_EDIT_21");
  EXPECT_EQ(session.browser.title, "Main settings file path");
  EXPECT_EQ(session.browser.start, local_copy);
  EXPECT_EQ(session.UserText(kLocalSettings),
            "; one\r\n;MAIN_SETTINGS_PATH=DEFAULT\r\n;MAIN_SETTINGS_PATH=" + local_copy +
                "\r\nMAIN_SETTINGS_PATH=" + team + "\r\n; three");
  EXPECT_EQ(InForce(), team);
  EXPECT_EQ(session.plugin->settings.paths.configured_main_settings, team);
  const host::Id only = session.roles().documents.FirstOpenDocument();
  EXPECT_EQ(only, session.plugin->main_settings) << "the one before is closed";
  ASSERT_TRUE(session.Start());
  EXPECT_EQ(InForce(), team);
}

TEST_F(MainSettingsLocation, WithoutAYesOrAChoiceNothingHappens) {
  session.user.no = {"QELM_MSG_STGS_EDIT_13"};
  Choose("; one\n;\n", team);
  session.user.no.clear();
  session.browser.choice.clear();
  Again();
  EXPECT_EQ(session.UserText(kLocalSettings), "; one\n;\n");
  EXPECT_EQ(InForce(), local_copy);
}

TEST_F(MainSettingsLocation, AFileThatCannotBeUsedChangesNothing) {
  struct Row {
    const char* content;  // null: there is no file
    const char* messages;
  };
  const Row rows[] = {
      {nullptr, "STGS_EDIT_13 STGS_EDIT_15"},
      {"<Doc>", "STGS_EDIT_13 STGS_EDIT_15"},
      {"<Doc/>", "STGS_EDIT_13 STGS_EDIT_14"},
      {"<QELM_MainSettings><SchemeCategories/></QELM_MainSettings>", "STGS_EDIT_13 STGS_EDIT_14"},
      {"<Book 8.0>\n", "STGS_EDIT_13 STGS_EDIT_14"},
  };
  for (const Row& row : rows) {
    const std::string path = session.folder.File("other.fm");
    if (row.content != nullptr) session.folder.Write("other.fm", row.content);
    Choose("; one\n;\n", path);
    EXPECT_EQ(Messages(), row.messages) << (row.content == nullptr ? "missing" : row.content);
    EXPECT_EQ(session.UserText(kLocalSettings), "; one\n;\n");
    EXPECT_EQ(InForce(), local_copy);
    EXPECT_EQ(session.roles().documents.NextOpenDocument(session.plugin->main_settings), host::kNone);
  }
}

TEST_F(MainSettingsLocation, MissingColorsAreOffered) {
  const std::string before = testing::MainSettingsWithoutColors();
  const std::string path = session.folder.Write("main.fm", before);
  session.user.no = {"QELM_MSG_STGS_EDIT_16"};
  Choose(";\n;\n", path);
  EXPECT_EQ(Messages(), "STGS_EDIT_13 STGS_EDIT_16 STGS_EDIT_21");
  EXPECT_EQ(session.folder.Read("main.fm"), before);

  session.user.no.clear();
  session.platform.read_only = {path};
  Choose(";\n;\n", path);
  EXPECT_EQ(Messages(), "STGS_EDIT_13 STGS_EDIT_16 STGS_EDIT_18 STGS_EDIT_19");
  EXPECT_EQ(session.folder.Read("main.fm"), before);
  EXPECT_EQ(session.UserText(kLocalSettings), ";\n;\n");
  EXPECT_EQ(InForce(), local_copy);

  session.platform.read_only.clear();
  Again();
  EXPECT_EQ(Messages(), "STGS_EDIT_13 STGS_EDIT_16 STGS_EDIT_18 STGS_EDIT_21");
  EXPECT_NE(session.folder.Read("main.fm").find("<ColorTag `BkgdColor'>"), std::string::npos);
  EXPECT_EQ(InForce(), path);
}

TEST_F(MainSettingsLocation, ALocalSettingsFileThatCannotBeWrittenIsTold) {
  session.platform.read_only = {session.UserFile(kLocalSettings)};
  Choose(";\n;\n", team);
  EXPECT_EQ(Messages(), "STGS_EDIT_13 STGS_EDIT_20");
  EXPECT_EQ(session.UserText(kLocalSettings), ";\n;\n");
  EXPECT_EQ(InForce(), team) << "for this session";
}

TEST_F(MainSettingsLocation, ActiveSchemesGoWithTheNewFile) {
  const std::string settings =
      "DEFAULT_SCHEME_CATEGORY=Quality\nCOLOR_DEFAULT_COLORING_SCHEME=Draft\n"
      "VAL_DEFAULT_VALIDATION_SCHEME=Strict\n";
  Choose(settings, team);
  EXPECT_EQ(Messages(), "STGS_EDIT_13 STGS_EDIT_21");
  EXPECT_EQ(session.plugin->schemes.coloring.name, "Draft");

  std::string other = testing::MainSettingsXml();
  for (std::size_t at = other.find("Draft"); at != std::string::npos; at = other.find("Draft")) {
    other.replace(at, 5, "Final");
  }
  session.browser.choice = session.folder.Write("other.xml", other);
  Again();
  EXPECT_EQ(Messages(), "STGS_EDIT_13 STGS_EDIT_21 GEN_36");
  EXPECT_FALSE(session.plugin->schemes.coloring.Active());
  EXPECT_EQ(session.plugin->settings.color_default_coloring_scheme, "<none>");
  EXPECT_EQ(session.plugin->schemes.validation.name, "Strict");
}

}  // namespace
}  // namespace qelm
