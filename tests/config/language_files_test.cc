// Where language files are found and written, and what is never done to them.
#include "config/language_files.h"

#include <gtest/gtest.h>

#include "support/memory_platform.h"

namespace qelm::config {
namespace {

constexpr char kEnglishText[] =
    "msgid \"\"\nmsgstr \"Language: en\\n\"\n\nmsgctxt \"General Strings\"\nmsgid \"QELM_MSG_GEN_1\"\n"
    "msgstr \"One\"\n";
constexpr char kEmpty[] = "msgid \"\"\nmsgstr \"Language: de\\n\"\n";

class LanguageFilesTest : public ::testing::Test {
 protected:
  LanguageFilesTest() {
    paths.plugin_folder = "/plugin";
    paths.settings_folder = "/user";
    platform.files["/plugin/languages/English.po"] = kEnglishText;
    platform.files["/plugin/languages/German.po"] = kEmpty;
    platform.files["/plugin/languages/readme.txt"] = "";
    platform.files["/plugin/languages/.hidden.po"] = "";
  }

  testing::MemoryPlatform platform;
  SettingsPaths paths;
};

TEST_F(LanguageFilesTest, TheUsersOwnStandBeforeTheShippedOnes) {
  platform.files["/user/languages/German.po"] = kEmpty;
  platform.files["/user/languages/Czech.po"] = kEmpty;
  std::vector<std::string> found;
  for (const LanguagePlace& place : InstalledLanguages(platform, paths)) {
    EXPECT_EQ(FindLanguage(platform, paths, place.name).Path(), place.Path());
    found.push_back(place.Path());
  }
  EXPECT_EQ(found, (std::vector<std::string>{"/user/languages/Czech.po", "/plugin/languages/English.po",
                                             "/user/languages/German.po"}));
  paths.per_user = false;
  EXPECT_EQ(FindLanguage(platform, paths, "German").Path(), "/plugin/languages/German.po");
  EXPECT_EQ(FindLanguage(platform, paths, "Czech").folder, "");
}

TEST_F(LanguageFilesTest, WhatIsMadeOrCompletedIsWrittenToTheUsersFolder) {
  const LanguageOutcome made = CreateLanguage(platform, paths, "French");
  EXPECT_EQ(made.result, LanguageResult::kDone);
  EXPECT_EQ(made.path, "/user/languages/French.po");
  EXPECT_EQ(made.added, 1U);
  EXPECT_NE(platform.files[made.path].find("Language: fr\\n"), std::string::npos)
      << platform.files[made.path];

  const LanguageOutcome completed = UpdateLanguage(platform, paths, "German");
  EXPECT_EQ(completed.path, "/user/languages/German.po");
  EXPECT_EQ(completed.added, 1U);
  EXPECT_EQ(platform.files["/plugin/languages/German.po"], kEmpty);

  paths.per_user = false;
  EXPECT_EQ(UpdateLanguage(platform, paths, "German").path, "/plugin/languages/German.po");
  EXPECT_NE(platform.files["/plugin/languages/German.po"], kEmpty);
}

TEST_F(LanguageFilesTest, ACompleteFileIsNotWritten) {
  platform.read_only = true;
  const LanguageOutcome outcome = UpdateLanguage(platform, paths, "English");
  EXPECT_EQ(outcome.result, LanguageResult::kDone);
  EXPECT_EQ(outcome.path, "/plugin/languages/English.po");
  EXPECT_EQ(UpdateLanguage(platform, paths, "German").result, LanguageResult::kUnwritten);
}

TEST_F(LanguageFilesTest, NoFileIsReplacedByANewOne) {
  platform.files["/user/languages/Czech.po"] = kEmpty;
  const auto before = platform.files;
  for (const char* name : {"German", "german", "CZECH", "English"}) {
    EXPECT_EQ(CreateLanguage(platform, paths, name).result, LanguageResult::kExists) << name;
  }
  for (const char* name :
       {"", ".", "..", "../German", "a/b", "a\\b", "C:x", "what?", "x\ny", " French", "French ", "French.",
        "\xC3", "0123456789012345678901234567890123456789012345678901234567890123456789"}) {
    EXPECT_EQ(CreateLanguage(platform, paths, name).result, LanguageResult::kBadName) << name;
  }
  EXPECT_EQ(platform.files, before);
}

TEST_F(LanguageFilesTest, DamagedFilesAreLeftAsTheyAre) {
  struct Row {
    const char* path;
    std::string content;
    const char* said;
  };
  const Row rows[] = {
      {"/user/languages/German.po", "msgid \"A\"\nmsgstr \"open\n", "/user/languages/German.po:2: "},
      {"/user/languages/German.po", "msgid \"A\"\nmsgstr \"\xE4\"\n",
       "/user/languages/German.po: is not UTF-8"},
      {"/plugin/languages/English.po", "msgid", "/plugin/languages/English.po:1: "},
  };
  for (const Row& row : rows) {
    platform.files[row.path] = row.content;
    const auto before = platform.files;
    std::vector<messages::LanguageFinding> findings;
    const LanguageOutcome checked = CheckLanguage(platform, paths, "German", &findings);
    for (const LanguageOutcome& outcome : {checked, UpdateLanguage(platform, paths, "German")}) {
      EXPECT_EQ(outcome.result, LanguageResult::kDamaged) << row.said;
      EXPECT_NE(outcome.problem.find(row.said), std::string::npos) << outcome.problem;
    }
    EXPECT_EQ(platform.files, before);
    platform.files.erase("/user/languages/German.po");
  }
  EXPECT_EQ(CreateLanguage(platform, paths, "French").result, LanguageResult::kDamaged);
  EXPECT_EQ(UpdateLanguage(platform, paths, "French").result, LanguageResult::kNotThere);
}

}  // namespace
}  // namespace qelm::config
