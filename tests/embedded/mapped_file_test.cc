#include "embedded/adapter/mapped_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "embedded/adapter/platform.h"
#include "support/temp_folder.h"

namespace qelm::embedded::adapter {
namespace {

using testing::TempFolder;

constexpr std::size_t kSize = (std::size_t{5} << 20U) + 7;

// Into the file, in place of a new one: as few programs save.
void WriteInto(const std::string& path, std::size_t at, std::string_view text) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(static_cast<std::streamoff>(at));
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
  file.close();
  std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) + std::chrono::seconds(1));
}

TEST(MappedFile, FilesThatAreSmallOrMissingAreLeftToBeRead) {
  const TempFolder folder;
  EXPECT_FALSE(MapLargeFile(folder.Write("small.mif", "<MIFFile 7.00>")));
  EXPECT_FALSE(MapLargeFile(folder.File("missing.mif")));
  EXPECT_FALSE(MapLargeFile(folder.File("")));
}

TEST(MappedFile, AnotherFileInItsPlaceLeavesItAsItWas) {
  const TempFolder folder;
  const std::string path = folder.Write("a.mif", std::string(kSize, 'a'));
  const auto bytes = MapLargeFile(path);
  ASSERT_TRUE(bytes);
  PosixPlatform platform;
  ASSERT_TRUE(platform.ReplaceFile(path, "new"));
  EXPECT_TRUE(bytes->Intact());
  EXPECT_EQ(*bytes, std::string(kSize, 'a'));
}

TEST(MappedFile, WhatRestsIsThereAgainWhenItIsLookedAt) {
  const TempFolder folder;
  const auto bytes = MapLargeFile(folder.Write("a.mif", std::string(kSize, 'a')));
  ASSERT_TRUE(bytes);
  bytes->Rest(10, kSize);
  RestMapped(bytes->substr(kSize - 1));
  RestMapped("no file's");
  EXPECT_EQ(*bytes, std::string(kSize, 'a'));
}

TEST(MappedFile, PiecesOfAFileThatWasChangedAreNotWritten) {
  const TempFolder folder;
  const std::string path = folder.Write("a.mif", std::string(kSize, 'a'));
  const std::string other = folder.Write("b.mif", std::string(kSize, 'b'));
  auto bytes = MapLargeFile(path);
  const auto others = MapLargeFile(other);
  ASSERT_TRUE(bytes && others);
  EXPECT_NE(ChangedMappedFile(), path);
  WriteInto(path, 100, "changed");
  EXPECT_FALSE(bytes->Intact());
  EXPECT_EQ(ChangedMappedFile(), path);
  PosixPlatform platform;
  const std::string target = folder.Write("out.mif", "old");
  const std::string_view pieces[] = {"new ", others->substr(3), bytes->substr(4096)};
  EXPECT_FALSE(platform.ReplaceFileByPieces(target, pieces));
  EXPECT_NE(platform.LastError().find("was changed on disk"), std::string::npos) << platform.LastError();
  EXPECT_EQ(folder.Read("out.mif"), "old");
  EXPECT_TRUE(platform.ReplaceFileByPieces(target, std::span(pieces).first(2)));
  bytes.reset();
  EXPECT_EQ(ChangedMappedFile(), path);  // for the rest of the run
}

TEST(MappedFileDeathTest, BytesThatAFileLostEndTheProcessWithItsName) {
  const TempFolder folder;
  const std::string path = folder.Write("a.mif", std::string(kSize, 'a'));
  const auto bytes = MapLargeFile(path);
  ASSERT_TRUE(bytes);
  std::filesystem::resize_file(path, 4096);
  EXPECT_EQ(bytes->front(), 'a');
  EXPECT_EXIT(
      {
        volatile char last = bytes->back();
        (void)last;
      },
      ::testing::ExitedWithCode(3), "a.mif: the file was made shorter");
}

}  // namespace
}  // namespace qelm::embedded::adapter
