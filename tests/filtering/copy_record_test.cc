// What a copy's record says of its files, and that one which was cut is made whole again.
#include "filtering/copy_record.h"

#include <gtest/gtest.h>

#include "common/content_hash.h"
#include "embedded/adapter/platform.h"
#include "support/temp_folder.h"

namespace qelm::filtering {
namespace {

// Records of other machines say it so: the size, and the hash of the hashes of blocks of 64 KB.
std::string MarkOf(std::string_view content) {
  constexpr std::size_t kBlock = 65536;
  std::string hashes;
  std::size_t at = 0;
  for (; at + kBlock <= content.size(); at += kBlock) {
    hashes += common::ContentHash(content.substr(at, kBlock));
  }
  hashes += common::ContentHash(content.substr(at));
  return std::to_string(content.size()) + "-" + common::ContentHash(hashes);
}

TEST(ContentMark, IsThatOfTheContentWhateverItsPieces) {
  for (const std::size_t size : {0U, 1U, 65535U, 65536U, 65537U, 131072U, 200000U}) {
    std::string content;
    for (std::size_t i = 0; i < size; ++i) content.push_back(static_cast<char>(i * 7 + i / 251));
    const std::string_view all = content;
    for (const std::size_t length : {1U, 31U, 4096U, 65535U, 65536U, 70001U, 300000U}) {
      std::vector<std::string_view> pieces{{}};
      for (std::size_t at = 0; at < size; at += length) pieces.push_back(all.substr(at, length));
      EXPECT_EQ(ContentMark(pieces), MarkOf(content)) << size << " in pieces of " << length;
    }
  }
}

TEST(CopyRecord, OneThatWasCutIsMadeWhole) {
  const testing::TempFolder folder;
  embedded::adapter::PosixPlatform platform;
  const std::string source = folder.Write("a.mif", "source");
  folder.Write("out/b.mif", "");
  const auto make = [&] {
    CopyRecord record(platform, folder.File("out"), "a.mif");
    ASSERT_TRUE(record.Read());
    record.IsCopyOf(source);
    record.Begin(source);
    for (const char* name : {"out/b.mif", "out/a.mif"}) {
      record.Expect(folder.File(name));
      ASSERT_TRUE(platform.ReplaceFile(folder.File(name), name)) << platform.LastError();
    }
    EXPECT_TRUE(record.Seal()) << record.why();
  };
  make();
  const std::string name = "out/.qelm-made-a.mif.txt";
  const std::string whole = folder.Read(name);
  EXPECT_TRUE(whole.ends_with("complete\n")) << whole;
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    folder.Write(name, whole.substr(0, size));
    make();
    EXPECT_EQ(folder.Read(name), whole) << "cut at " << size;
  }
}

}  // namespace
}  // namespace qelm::filtering
