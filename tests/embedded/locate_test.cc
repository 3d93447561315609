// Files that are not where a book says they are, and what a file is by its first bytes.

#include "embedded/model/locate.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "embedded/model/files.h"
#include "support/temp_folder.h"

namespace qelm::test {
namespace {

using namespace embedded::model;

class Locate : public ::testing::Test {
 protected:
  // Where the component is found, as seen from the book; "!" before it when that is not where it should be.
  std::string Beside(const std::string& path) {
    const Located located = LocateComponent(folder_.File("b.book"), path);
    if (!located.exists) return "";
    return (located.elsewhere ? "!" : "") + std::filesystem::relative(located.path, folder_.path()).native();
  }
  testing::TempFolder folder_;
};

TEST_F(Locate, AComponentIsFoundBesideTheBook) {
  for (const char* name :
       {"ch1.mif", "part/ch2.mif", "ch3.fm", "ch3.mif", "ch4.fm.mif", "Ch5.MIF", "x/y/ch6.fm"}) {
    folder_.Write(name, "x");
  }
  const char* rows[][2] = {
      {"ch1.mif", "ch1.mif"},  // where it is
      {"ch1.fm", "!ch1.mif"},  // saved as MIF
      {"ch3.fm", "ch3.fm"},    // not replaced by the one beside it
      {"ch4.fm", "!ch4.fm.mif"},
      {"M:\\Docs\\ch1.fm", "!ch1.mif"},          // of another machine
      {"O:/Docs/part/ch2.fm", "!part/ch2.mif"},  // with as much of the path as is here
      {"/nowhere/part/ch2.fm", "!part/ch2.mif"},
      {"../nowhere/ch3.fm", "!ch3.fm"},
      {"CH5.fm", "!Ch5.MIF"},
      {"part", "part"},  // a folder is not looked for, but found
      {"part.fm", ""},
      {"ch6.fm", ""},
      {"M:", ""},
      {"", "."},
  };
  for (const auto& row : rows) EXPECT_EQ(Beside(row[0]), row[1]) << row[0];
}

TEST_F(Locate, AFileIsFoundAtItsPlaceOnly) {
  const std::string there = folder_.Write("a/ch1.mif", "x");
  EXPECT_EQ(LocateFile(folder_.File("a/ch1.fm")).path, there);
  const std::string missing = folder_.File("ch1.fm");
  EXPECT_EQ(LocateFile(missing).path, missing);
  EXPECT_FALSE(LocateFile(missing).exists);
}

TEST(Recognize, ByTheFirstBytes) {
  struct Row {
    std::string_view bytes;
    FileKind kind;
  };
  const Row rows[] = {
      {"<MIFFile 7.00> # x", FileKind::kMifDocument},
      {"<MIFFile 2019>\r\n", FileKind::kMifDocument},
      {"<Book 7.0>", FileKind::kMifBook},
      {"<Book>text</Book>", FileKind::kXml},
      {"<Book id='1'/>", FileKind::kXml},
      {"<?xml version='1.0'?><a/>", FileKind::kXml},
      {"\xEF\xBB\xBF\n<!DOCTYPE a><a/>", FileKind::kXml},
      {"<!-- c --><a/>", FileKind::kXml},
      {"  <a:b-c.d/>", FileKind::kXml},
      {std::string_view("\xFF\xFE<\0a\0>\0", 8), FileKind::kXml},
      {std::string_view("\0<\0a\0/", 6), FileKind::kXml},
      {"\xEF\xBB\xBF<MIFFile 7.00>", FileKind::kEncodedMif},
      {"\n<Book 7.00>", FileKind::kEncodedMif},
      {"<MakerFile 7.0F>\0\0", FileKind::kBinary},
      {"<BookFile 6.0>", FileKind::kBinary},
      {"<MakerDictionary 3.0>", FileKind::kBinary},
      {"", FileKind::kEmpty},
      {" \n", FileKind::kUnknown},
      {"VERSION 300\n", FileKind::kUnknown},
      {"DEPTH=256;", FileKind::kUnknown},
      {"< a>", FileKind::kUnknown},
      {"<a", FileKind::kUnknown},
      {"%PDF-1.4", FileKind::kUnknown},
  };
  for (const Row& row : rows) EXPECT_EQ(Recognize(row.bytes), row.kind) << row.bytes;
}

}  // namespace
}  // namespace qelm::test
