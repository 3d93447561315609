// Preparing the user's folder, and what becomes of a start in a profile that is damaged.
#include "host/installation.h"

#include <gtest/gtest.h>
#include <sys/mount.h>

#include <filesystem>

#include "common/version.h"
#include "host/user_session.h"

namespace qelm {
namespace {

using testing::UserSession;

const std::string kVersionContent = common::VersionText() + "\n\nWARNING! DO NOT MODIFY THIS FILE!\n";
constexpr const char* kFiles[] = {"QELM_Local_Settings.txt", "QELM_MainSettings_LocalCopy.fm",
                                  "QELM_Plugin_Report_Template.fm"};
constexpr char kNoFolder[] =
    "The plugin was unable to create the following directory in which to store your settings:\n\n";

TEST(Installation, AnEmptyProfileGetsItsFiles) {
  UserSession session;
  ASSERT_TRUE(session.Start());
  EXPECT_TRUE(session.user.texts.empty()) << session.user.texts.front();
  for (const char* name : kFiles) EXPECT_EQ(session.UserText(name), session.ShippedText(name)) << name;
  EXPECT_EQ(session.UserText(kVersionFile), kVersionContent);
  const config::SettingsPaths& paths = session.plugin->settings.paths;
  EXPECT_EQ(paths.local_settings, session.UserFile("QELM_Local_Settings.txt"));
  EXPECT_EQ(paths.main_settings, session.UserFile("QELM_MainSettings_LocalCopy.fm"));
  EXPECT_EQ(paths.report_template, session.UserFile("QELM_Plugin_Report_Template.fm"));
  EXPECT_EQ(paths.report, session.UserFile("QELM_Plugin_Report.fm"));
  host::Documents& documents = session.roles().documents;
  EXPECT_EQ(documents.FirstOpenDocument(), session.plugin->main_settings);
  EXPECT_EQ(documents.NextOpenDocument(session.plugin->main_settings), host::kNone)
      << "the templates are closed again";
}

TEST(Installation, WhatIsThereStaysAsItIs) {
  UserSession session;
  session.WriteUserFile("QELM_Local_Settings.txt", "; mine\nXPATH_MAX_MATCHES=700\n");
  session.WriteUserFile(kVersionFile, "0.1\r\n\r\nof old\r\n");
  ASSERT_TRUE(session.Start());
  EXPECT_EQ(session.UserText("QELM_Local_Settings.txt"), "; mine\nXPATH_MAX_MATCHES=700\n");
  EXPECT_EQ(session.plugin->settings.xpath_max_matches, 700);
  EXPECT_EQ(session.UserText(kVersionFile), "0.1\r\n\r\nof old\r\n");
  EXPECT_EQ(InstalledVersion(session.platform, session.UserFile("")), "0.1");
  EXPECT_EQ(session.UserText(kFiles[2]), session.ShippedText(kFiles[2])) << "the missing one is made";
}

TEST(Installation, InTheInstallFolderNothingIsPrepared) {
  UserSession session;
  session.folder.Write("plugin/QELM.ini", "SETTINGS_LOCATION=INSTALL_FOLDER\n");
  ASSERT_TRUE(session.Start());
  EXPECT_FALSE(std::filesystem::exists(session.folder.File("profile")));
  EXPECT_EQ(session.plugin->settings.paths.local_settings,
            session.folder.File("plugin/QELM_Local_Settings.txt"));
}

TEST(DamagedProfile, WithoutAFolderThePluginDoesNotStart) {
  struct Row {
    const char* what;
    void (*spoil)(UserSession&);
    const char* named;
  };
  const Row rows[] = {
      {"a file in the way", [](UserSession& session) { session.folder.Write("profile/Adobe", ""); },
       "/profile/Adobe/FrameMaker/18/Brenwick/QELM\n\n"},
      {"read-only",
       [](UserSession& session) { session.platform.read_only = {session.folder.File("profile")}; },
       "/profile/Adobe/FrameMaker/18/Brenwick/QELM\n\n"},
      {"nowhere to go",
       [](UserSession& session) {
         for (const char* name : {"APPDATA", "XDG_CONFIG_HOME", "HOME"})
           session.platform.SetEnvironment(name, "");
       },
       "Adobe/FrameMaker/18/Brenwick/QELM\n\n"},
  };
  for (const Row& row : rows) {
    UserSession session;
    row.spoil(session);
    EXPECT_FALSE(session.Start()) << row.what;
    ASSERT_EQ(session.user.texts.size(), 2U) << row.what;
    EXPECT_NE(session.user.texts[0].find(kNoFolder), std::string::npos);
    EXPECT_NE(session.user.texts[0].find(row.named), std::string::npos) << session.user.texts[0];
    EXPECT_TRUE(session.user.texts[1].ends_with("QELM cannot initialize."));
    EXPECT_EQ(session.user.status.back(), "") << "the status dialog is gone";
  }
}

constexpr const char* kFileFailures[] = {
    "A critical error occurred while creating and/or retrieving a copy of your local settings at:\n\n",
    "A critical error occurred creating and/or retrieving a copy of your local main settings file at:\n\n",
    "A critical error occurred creating and/or retrieving a copy of your local report template at:\n\n",
};

TEST(DamagedProfile, AFolderInPlaceOfAFileIsTold) {
  for (std::size_t i = 0; i < std::size(kFiles); ++i) {
    UserSession session;
    std::filesystem::create_directories(session.UserFile(kFiles[i]));
    EXPECT_TRUE(session.Start());
    EXPECT_TRUE(session.Said(kFileFailures[i] + session.UserFile(kFiles[i]) + "\n\n")) << kFiles[i];
  }
}

TEST(DamagedProfile, OnAFullDiskThePluginWorksWithDefaults) {
  UserSession session;
  session.platform.read_only = {session.folder.File("profile")};
  session.platform.folders_too = false;
  EXPECT_TRUE(session.Start());
  for (const char* failure : kFileFailures) EXPECT_TRUE(session.Said(failure)) << failure;
  EXPECT_EQ(session.plugin->settings.xpath_max_matches, 10000);
  EXPECT_EQ(session.plugin->main_settings, host::kNone);
  EXPECT_FALSE(std::filesystem::exists(session.UserFile(kVersionFile)));
}

TEST(DamagedProfile, ADiskThatIsReallyFull) {
  UserSession session;
  const std::string profile = session.folder.File("profile");
  std::filesystem::create_directories(profile);
  if (::mount("tmpfs", profile.c_str(), "tmpfs", 0, "size=64k") != 0) GTEST_SKIP() << "no tmpfs for tests";
  EXPECT_TRUE(session.Start());
  EXPECT_TRUE(session.Said(kFileFailures[1]));
  EXPECT_EQ(session.UserText("QELM_Local_Settings.txt"), session.ShippedText("QELM_Local_Settings.txt"));
  std::size_t names = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(session.UserFile("")))
    ++names;
  EXPECT_EQ(names, 3U) << "no half of a file is left";
  EXPECT_EQ(::umount2(profile.c_str(), MNT_DETACH), 0);
}

}  // namespace
}  // namespace qelm
