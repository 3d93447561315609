#include "embedded/adapter/platform.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/temp_folder.h"

namespace qelm::embedded::adapter {
namespace {

using testing::TempFolder;

mode_t ModeOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0);
  return status.st_mode & 07777;
}

TEST(ReplaceFile, KeepsPermissionsAndLeavesNothingBeside) {
  const TempFolder folder;
  PosixPlatform platform;
  const std::string path = folder.Write("a.mif", "old");
  ::chmod(path.c_str(), 0640);
  ASSERT_TRUE(platform.ReplaceFile(path, "new"));
  EXPECT_EQ(folder.Read("a.mif"), "new");
  EXPECT_EQ(ModeOf(path), 0640U);
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"a.mif"}));
}

TEST(ReplaceFile, FollowsALinkToItsTarget) {
  const TempFolder folder;
  PosixPlatform platform;
  folder.Write("shared/a.mif", "old");
  ASSERT_EQ(::symlink("shared/a.mif", folder.File("link.mif").c_str()), 0);
  ASSERT_TRUE(platform.ReplaceFile(folder.File("link.mif"), "new"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.File("link.mif")));
  EXPECT_EQ(folder.Read("shared/a.mif"), "new");
}

TEST(ReplaceFile, WhatCannotBeReplacedStaysAndSaysWhy) {
  const TempFolder folder;
  PosixPlatform platform;
  EXPECT_FALSE(platform.ReplaceFile(folder.path(), "new"));
  EXPECT_EQ(platform.LastError(), "Is a directory");
  EXPECT_FALSE(platform.ReplaceFile(folder.File("missing/a.mif"), "new"));
  EXPECT_EQ(platform.LastError(), "No such file or directory");
  // The owner of the machine may write everything, whatever a file's permissions are.
  if (::geteuid() == 0) return;
  const std::string path = folder.Write("a.mif", "old");
  ::chmod(path.c_str(), 0444);
  EXPECT_FALSE(platform.ReplaceFile(path, "new"));
  EXPECT_EQ(folder.Read("a.mif"), "old");
}

TEST(PosixPlatform, ReadsWhatIsAFileOnly) {
  const TempFolder folder;
  PosixPlatform platform;
  const std::string content("a\0b\n", 4);
  EXPECT_EQ(platform.ReadFile(folder.Write("a", content)), content);
  EXPECT_EQ(platform.ReadFile(folder.Write("empty", "")), "");
  EXPECT_FALSE(platform.ReadFile(folder.path()));
  EXPECT_FALSE(platform.ReadFile(folder.File("missing")));
  EXPECT_EQ(platform.FolderNames(folder.path()), (std::vector<std::string>{"a", "empty"}));
  // A size of nothing says nothing of what is in it.
  EXPECT_FALSE(platform.ReadFile("/proc/self/status").value_or("").empty());
}

TEST(PosixPlatform, CopiesAppendsAndMakesFolders) {
  const TempFolder folder;
  PosixPlatform platform;
  const std::string deep = folder.File("one/two/three");
  ASSERT_TRUE(platform.MakeFolder(deep));
  ASSERT_TRUE(platform.MakeFolder(deep)) << "one that is there is no failure";
  const std::string log = folder.File("log.txt");
  ASSERT_TRUE(platform.AppendFile(log, "a") && platform.AppendFile(log, "b"));
  ASSERT_TRUE(platform.CopyFile(log, deep + "/copy.txt"));
  EXPECT_EQ(folder.Read("one/two/three/copy.txt"), "ab");
  EXPECT_FALSE(platform.MakeFolder(log)) << "a file is in the way";
  EXPECT_FALSE(platform.CopyFile(folder.File("missing"), log));
  EXPECT_EQ(folder.Read("log.txt"), "ab");
}

TEST(PosixPlatform, StartsProgramsWithoutAShell) {
  const TempFolder folder;
  PosixPlatform platform;
  const std::string made = folder.File("made; by touch");
  ASSERT_TRUE(platform.Start("touch", {made}));
  for (int tries = 0; tries < 500 && !platform.FileExists(made); ++tries) ::usleep(10000);
  EXPECT_TRUE(platform.FileExists(made));
  EXPECT_FALSE(platform.Start(folder.File("no-such-program"), {}));
}

TEST(PosixPlatform, EnvironmentOfItsOwn) {
  PosixPlatform platform;
  EXPECT_FALSE(platform.Environment("PATH").empty());
  platform.SetEnvironment("PATH", "elsewhere");
  EXPECT_EQ(platform.Environment("PATH"), "elsewhere");
  EXPECT_EQ(platform.Environment("QELM_NO_SUCH_VARIABLE"), "");
}

}  // namespace
}  // namespace qelm::embedded::adapter
