#include "embedded/adapter/platform.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "embedded/adapter/file_places.h"
#include "embedded/adapter/filled_folder.h"
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

TEST(Platform, LinksLeadNoOperationOutOfAFolder) {
  const testing::TempFolder folder;
  PosixPlatform platform;
  folder.Write("theirs/a.txt", "theirs");
  folder.Write("out/own/a.txt", "own");
  folder.Write("out/b.txt", "own");
  std::filesystem::create_directory(folder.File("theirs/empty"));
  std::filesystem::create_directory_symlink(folder.File("theirs"), folder.File("out/away"));
  std::filesystem::create_symlink(folder.File("theirs/a.txt"), folder.File("out/file"));
  std::filesystem::create_directory_symlink("own", folder.File("out/inside"));
  std::filesystem::create_directory_symlink(folder.File("out"), folder.File("mine"));
  const std::int64_t kept = platform.KeepInside(folder.File("mine") + "/");
  for (const std::string& out : {folder.File("out/"), folder.File("mine/")}) {
    EXPECT_FALSE(platform.ReplaceFile(out + "away/a.txt", "new"));
    EXPECT_NE(platform.LastError().find("link leads out"), std::string::npos) << platform.LastError();
    EXPECT_FALSE(platform.ReplaceFile(out + "file", "new"));
    EXPECT_FALSE(platform.ReplaceFile(out + "own/../away/../theirs/a.txt", "new"));
    EXPECT_FALSE(platform.AppendFile(out + "file", "new"));
    EXPECT_FALSE(platform.CopyFile(out + "b.txt", out + "away/b.txt"));
    EXPECT_FALSE(platform.MoveFile(out + "b.txt", out + "away/b.txt"));
    EXPECT_FALSE(platform.MoveFile(out + "away/a.txt", out + "c.txt"));
    EXPECT_FALSE(platform.RemoveFile(out + "away/a.txt"));
    EXPECT_FALSE(platform.MakeFolder(out + "away/new"));
    EXPECT_FALSE(platform.RemoveFolder(out + "away/empty"));
    EXPECT_TRUE(platform.ReplaceFile(out + "inside/a.txt", "new"));
    EXPECT_TRUE(platform.MakeFolder(out + "new/newer"));
    EXPECT_TRUE(platform.MakeFolder(out)) << platform.LastError();
  }
  EXPECT_EQ(folder.Read("theirs/a.txt"), "theirs");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.File("theirs")), {}), 2);
  EXPECT_EQ(folder.Read("out/own/a.txt"), "new");
  EXPECT_TRUE(platform.RemoveFile(folder.File("out/file"))) << "the link itself";
  platform.LetGo(kept);
  EXPECT_TRUE(platform.MakeFolder(folder.File("out/away/new"))) << "nothing is kept for ever";
}

TEST(ReplaceFile, WhatCannotBeReplacedStaysAndSaysWhy) {
  const TempFolder folder;
  PosixPlatform platform;
  EXPECT_FALSE(platform.ReplaceFile(folder.path(), "new"));
  EXPECT_EQ(platform.LastError(), "Is a directory");
  EXPECT_FALSE(platform.ReplaceFile(folder.File("missing/a.mif"), "new"));
  EXPECT_EQ(platform.LastError(), "No such file or directory");
  const std::string path = folder.Write("a.mif", "old");
  ::chmod(path.c_str(), 0444);
  EXPECT_FALSE(platform.ReplaceFile(path, "new")) << "protected, also from who may write everything";
  EXPECT_FALSE(platform.MoveFile(folder.Write("b", "new"), path));
  EXPECT_EQ(folder.Read("a.mif"), "old");
}

TEST(ReplaceFile, WhatFrameMakerHasOpenStaysAndItsOwnerIsNamed) {
  for (const char* lock : {"a.mif.lck", "a.lck"}) {
    const TempFolder folder;
    PosixPlatform platform;
    const std::string path = folder.Write("a.mif", "old");
    folder.Write(lock, "");
    EXPECT_FALSE(platform.ReplaceFile(path, "new"));
    EXPECT_NE(platform.LastError().find(folder.File(lock)), std::string::npos) << platform.LastError();
    EXPECT_NE(platform.LastError().find(", since 20"), std::string::npos) << platform.LastError();
    EXPECT_FALSE(platform.CopyFile(folder.Write("b", "new"), path));
    EXPECT_FALSE(platform.MoveFile(folder.File("b"), path));
    EXPECT_EQ(folder.Read("a.mif"), "old");
    EXPECT_TRUE(platform.ReplaceFile(folder.File("a.pdf"), "made")) << "it is no document of FrameMaker's";
    EXPECT_TRUE(platform.ReplaceFile(folder.File("a.pdf"), "made again"));
    platform.SetIgnoreLocks(true);
    EXPECT_TRUE(platform.ReplaceFile(path, "new"));
  }
}

TEST(ReplaceFile, AFileBesideThatCannotBeLockedIsNamedAndPassedOver) {
  const TempFolder folder;
  PosixPlatform platform;
  const std::string path = folder.Write("a.mif", "old");
  const std::string beside = folder.File(".qelm-a.mif.new");
  ASSERT_EQ(::symlink("elsewhere", beside.c_str()), 0);
  EXPECT_FALSE(platform.ReplaceFile(path, "new"));
  EXPECT_NE(platform.LastError().find(beside), std::string::npos) << platform.LastError();
  EXPECT_EQ(folder.Read("a.mif"), "old");
  platform.SetIgnoreLocks(true);
  ASSERT_TRUE(platform.ReplaceFile(path, "new")) << platform.LastError();
  EXPECT_EQ(folder.Read("a.mif"), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(beside));
}

TEST(ReplaceFile, AnotherWritersFileBesideIsALockWhileHeLives) {
  const TempFolder folder;
  PosixPlatform platform;
  const std::string path = folder.Write("a.mif", "old");
  const std::string beside = folder.Write(".qelm-a.mif.new", "half");
  const int writer = ::open(beside.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(writer, LOCK_EX), 0);
  EXPECT_FALSE(platform.ReplaceFile(path, "new"));
  EXPECT_NE(platform.LastError().find("another run of QELM"), std::string::npos) << platform.LastError();
  ASSERT_TRUE(platform.ReplaceFile(folder.File("b.mif"), "other"));
  EXPECT_EQ(folder.Read(".qelm-a.mif.new"), "half") << "the other one's work is left alone";
  ::close(writer);
  ASSERT_TRUE(platform.ReplaceFile(path, "new"));
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"a.mif", "b.mif"}));
}

TEST(ReplaceFile, WhatKilledWritersLeftInTheFolderGoes) {
  const TempFolder folder;
  PosixPlatform platform;
  folder.Write(".qelm-other.mif.new", "half");
  folder.Write(".qelm-mine", "not one of those");
  ASSERT_TRUE(platform.ReplaceFile(folder.File("a.mif"), "new"));
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{".qelm-mine", "a.mif"}));
}

TEST(ReplaceFile, NamesAsLongAsTheyMayBe) {
  const TempFolder folder;
  PosixPlatform platform;
  const std::string name(255, 'n');
  ASSERT_TRUE(platform.ReplaceFile(folder.File(name), "old"));
  ASSERT_TRUE(platform.ReplaceFile(folder.File(name), "new"));
  EXPECT_EQ(folder.Read(name), "new");
}

TEST(ReplaceUnchanged, WhatSomebodyElseChangedStays) {
  const TempFolder folder;
  PosixPlatform platform;
  const std::string path = folder.Write("a.mif", "old");
  std::string state = platform.FileState(path);
  const std::string_view content = "new";
  ASSERT_TRUE(platform.ReplaceFile(path, "theirs"));
  EXPECT_FALSE(platform.ReplaceUnchanged(path, std::span(&content, 1), &state));
  EXPECT_NE(platform.LastError().find("--overwrite"), std::string::npos);
  EXPECT_EQ(folder.Read("a.mif"), "theirs");
  state = platform.FileState(path);
  EXPECT_TRUE(platform.ReplaceUnchanged(path, std::span(&content, 1), &state));
  EXPECT_EQ(state, platform.FileState(path));
  ASSERT_TRUE(PosixPlatform().ReplaceFile(path, "theirs again"));
  EXPECT_FALSE(platform.ReplaceUnchanged(path, std::span(&content, 1), &state));
}

TEST(FillingAFolder, IsForOneAtATimeAndMarkedUntilItIsComplete) {
  const TempFolder folder;
  PosixPlatform one;
  PosixPlatform other;
  bool was_marked = true;
  ASSERT_TRUE(one.BeginFilling(folder.path(), &was_marked));
  EXPECT_FALSE(was_marked);
  EXPECT_FALSE(one.IsUnfinished(folder.path() + "/.")) << "it is its own";
  EXPECT_TRUE(other.IsUnfinished(folder.path()));
  EXPECT_FALSE(other.BeginFilling(folder.path(), &was_marked));
  EXPECT_NE(other.LastError().find("another run"), std::string::npos) << other.LastError();
  EXPECT_TRUE(one.EndFilling(folder.path(), false));
  ASSERT_TRUE(other.IsUnfinished(folder.path()));
  ASSERT_TRUE(other.BeginFilling(folder.path(), &was_marked));
  EXPECT_TRUE(was_marked);
  EXPECT_TRUE(other.EndFilling(folder.path(), true));
  EXPECT_EQ(folder.Names(), std::vector<std::string>());
}

TEST(HoldingAFile, IsForOneAtATimeAndLeavesNothing) {
  const TempFolder folder;
  const std::string path = folder.File("a.mif");
  PosixPlatform other;
  {
    PosixPlatform one;
    ASSERT_TRUE(one.HoldFile(path));
    EXPECT_TRUE(one.ReplaceFile(path, "mine")) << "it is its own";
    EXPECT_FALSE(other.HoldFile(path));
    EXPECT_NE(other.LastError().find("another run"), std::string::npos) << other.LastError();
    EXPECT_TRUE(other.HoldFile(folder.File("b.mif")));
    one.ReleaseFile(path);
    EXPECT_TRUE(other.HoldFile(path));
    EXPECT_FALSE(one.HoldFile(path));
    EXPECT_TRUE(one.HoldFile(folder.File("c.mif")));
  }
  EXPECT_TRUE(other.HoldFile(folder.File("c.mif")));
  for (const char* name : {"a.mif", "b.mif", "c.mif"}) other.ReleaseFile(folder.File(name));
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"a.mif"});
}

TEST(PosixPlatform, ALinkThatLeadsNowhereIsSomebodys) {
  const TempFolder folder;
  PosixPlatform platform;
  const std::string from = folder.Write("from", "mine");
  const std::string link = folder.File("link");
  std::filesystem::create_symlink(folder.File("nothing"), link);
  EXPECT_FALSE(platform.ReplaceFile(link, "mine"));
  EXPECT_NE(platform.LastError().find("leads to nothing"), std::string::npos) << platform.LastError();
  EXPECT_FALSE(platform.AppendFile(link, "mine"));
  EXPECT_FALSE(platform.MoveFile(from, link));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"from", "link"}));
}

TEST(FillingAFolder, WhatCannotBeFlushedStaysSo) {
  const TempFolder folder;
  FilledFolder filled(nullptr);
  const std::string gone = folder.File("gone");
  const std::string lost = folder.Write("a", "") + "/is/no/folder";
  filled.Written(gone, true, 0);
  EXPECT_EQ(filled.FlushAll(), "") << "what somebody took away needs none";
  filled.Written(lost, false, 0);
  filled.Appended(lost + "-theirs");
  EXPECT_EQ(filled.FlushAll(), "") << "they do not wait";
  filled.Appended(lost);
  EXPECT_NE(filled.Flush(lost), "");
  EXPECT_NE(filled.FlushAll(), "") << "a device may tell of it once";
  filled.Moved(lost, lost + "-before");
  EXPECT_TRUE(filled.Wrote(lost + "-before") && !filled.Wrote(lost));
  EXPECT_NE(filled.FlushAll(), "");
  filled.Removed(lost + "-before");
  EXPECT_EQ(filled.FlushAll(), "");
}

TEST(FillingAFolder, AMarkThatCannotBeWrittenStaysWhereItWas) {
  const TempFolder folder;
  PosixPlatform platform;
  struct rlimit before {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const struct rlimit nothing = {0, before.rlim_max};
  for (const bool left : {false, true}) {
    if (left) folder.Write(std::string(host::kUnfinishedName), "");
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &nothing), 0);
    bool was_marked = false;
    const bool begun = platform.BeginFilling(folder.path(), &was_marked);
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_FALSE(begun);
    EXPECT_EQ(platform.IsUnfinished(folder.path()), left);
  }
  std::signal(SIGXFSZ, handler);
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
  ASSERT_EQ(::mkfifo(folder.File("pipe").c_str(), 0600), 0);
  EXPECT_FALSE(platform.CopyFile(folder.File("pipe"), log)) << "nobody writes into it";
  EXPECT_FALSE(platform.CopyFile("/dev/zero", log));
  EXPECT_EQ(folder.Read("log.txt"), "ab");
}

TEST(PosixPlatform, MovesFilesAndTellsTheirSizes) {
  const TempFolder folder;
  PosixPlatform platform;
  const std::string from = folder.Write("a", "new");
  const std::string to = folder.Write("b", "old");
  EXPECT_EQ(platform.FileSize(from), 3U);
  EXPECT_FALSE(platform.FileSize(folder.path()));
  ASSERT_TRUE(platform.MoveFile(from, to));
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"b"}));
  EXPECT_EQ(folder.Read("b"), "new");
  EXPECT_FALSE(platform.MoveFile(from, to)) << "it is gone";
  EXPECT_GT(platform.FreeSpace(folder.File("not/made/yet")).value_or(0), 0U);
  EXPECT_FALSE(platform.RemoveFolder(folder.path())) << "it holds a file";
  ::chmod(to.c_str(), 0444);
  ASSERT_TRUE(platform.CopyFile(to, from));
  struct stat status {};
  ASSERT_EQ(::stat(from.c_str(), &status), 0);
  EXPECT_NE(status.st_mode & S_IWUSR, 0U) << "a copy can be written";
}

TEST(PosixPlatform, ResolvesPathsAsFarAsTheyExist) {
  const TempFolder folder;
  folder.Write("one/a", "");
  std::filesystem::create_directory_symlink("one", folder.File("link"));
  std::filesystem::create_symlink("nowhere", folder.File("dangling"));
  std::filesystem::create_symlink("loop", folder.File("loop"));
  for (const char* name : {"one/a", "link/a", "link/../link/b", "link/b/", "link/b/c", "link/..", "dangling",
                           "dangling/a", "one/a/b", "one/./b/../c", "b/..", "one/a/"}) {
    const std::string path = folder.File(name);
    EXPECT_EQ(ResolvedPath(path), std::filesystem::weakly_canonical(path).string()) << name;
  }
  for (const char* name : {"", "b", ".", "../b"}) {
    EXPECT_EQ(ResolvedPath(name), std::filesystem::weakly_canonical(name).string()) << name;
  }
  EXPECT_FALSE(ResolvedPath(folder.File("loop")));
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

}  // namespace
}  // namespace qelm::embedded::adapter
