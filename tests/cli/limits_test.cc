// The limits of the manual that a file can come to, and what has none: input that a program or an attacker
// made.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "cli/program.h"

namespace qelm {
namespace {

namespace fs = std::filesystem;
using testing::Program;
using testing::ProgramResult;

std::string Times(int count, const std::function<std::string(int)>& text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text(i);
  return all;
}
std::string Times(int count, const std::string& text) {
  return Times(count, [&](int) { return text; });
}

std::string Mif(const std::string& catalogs, const std::string& content) {
  return "<MIFFile 2015>\n" + catalogs +
         "<TextFlow <TFTag `A'> <TFAutoConnect Yes> <Para <ParaLine <ElementBegin <ETag `Doc'> > " + content +
         "<ElementEnd `Doc'> > > >\n";
}

// Each entity names the one before.
std::string Entities(int count, const std::string& first, const std::string& each) {
  const auto name = [](int i) { return "e" + std::to_string(i); };
  return "<!DOCTYPE Doc [<!ENTITY e0 '" + first + "'>" +
         Times(count,
               [&](int i) {
                 std::string value = each;
                 for (std::size_t at = 0; (at = value.find('&', at)) != std::string::npos; ++at) {
                   value.insert(at + 1, name(i) + ";");
                 }
                 return "<!ENTITY " + name(i + 1) + " '" + value + "'>";
               }) +
         "]><Doc>&" + name(count) + ";</Doc>";
}

struct Row {
  const char* what;
  const char* name;
  std::string content;
  const char* query;  // has one match
  const char* said;   // empty: it is opened, and goes into the other format and back
};

TEST(Limits, OfWhatAFileHoldsAreToldOrThereAreNone) {
  const std::string letters(1'000'000, 'x');
  const std::vector<Row> rows = {
      {"chain of entities", "a.xml", Entities(990, "x", "&"), "/Doc[text()='x']", ""},
      {"too long a chain of entities", "a.xml", Entities(1100, "x", "&"), "", "too many entities"},
      {"expansion of entities", "a.xml", Entities(39, "ha", "&&"), "", "amplification"},
      {"levels of elements", "a.xml", Times(100'000, "<a>") + Times(100'000, "</a>"), "/a", ""},
      {"text", "a.xml", "<Doc>" + letters + "</Doc>", "/Doc", ""},
      {"an attribute", "a.xml", "<Doc a='" + letters + "'/>", "/Doc[@a]", ""},
      {"attributes", "a.xml",
       "<Doc " + Times(5000, [](int i) { return "a" + std::to_string(i) + "='v' "; }) + "/>",
       "/Doc[@a4999='v']", ""},
      {"a string", "a.mif", Mif("", "<String `" + letters + "'> "), "/Doc", ""},
      {"levels of statements", "a.mif",
       "<MIFFile 2015>\n" + Times(100'000, "<A ") + Times(100'000, ">") + "\n", "", ""},
      {"statements that do not end", "a.mif", "<MIFFile 2015>\n" + Times(100'000, "<A "), "", "<A> began"},
      {"conditions", "a.mif",
       Mif("<ConditionCatalog " +
               Times(3000,
                     [](int i) {
                       const std::string name = std::to_string(i);
                       return "<Condition <CTag `C" + name + "'> <CState CHidden> > ";
                     }) +
               ">\n",
           Times(3000,
                 [](int i) {
                   return "<Conditional <InCondition `C" + std::to_string(i) + "'> > <String `x'> ";
                 }) +
               "<Unconditional > "),
       "/Doc", ""},
      {"tables", "a.mif",
       Mif("<Tbls " +
               Times(1000,
                     [](int i) {
                       return "<Tbl <TblID " + std::to_string(i + 1) +
                              "> <TblNumColumns 1> <TblBody <Row <Cell <CellContent <Para <ParaLine "
                              "<String `x'> > > > > > > > ";
                     }) +
               ">\n",
           Times(1000, [](int i) { return "<ATbl " + std::to_string(i + 1) + "> "; })),
       "/Doc", ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    Program program;
    const std::string path = program.folder.Write(row.name, row.content);
    const ProgramResult opened = program.Run({"info", path});
    if (*row.said != '\0') {
      EXPECT_EQ(opened.status, 3);
      EXPECT_NE(opened.err.find(path), std::string::npos) << opened.err;
      EXPECT_NE(opened.err.find(row.said), std::string::npos) << opened.err;
      continue;
    }
    EXPECT_EQ(opened.status, 0) << opened.err;
    if (*row.query == '\0') continue;
    for (const char* form : {"--json", "--quiet"}) {
      EXPECT_EQ(program.Run({"dump", path, form}).status, 0) << form;
    }
    const std::string other = program.folder.File(fs::path(path).extension() == ".xml" ? "b.mif" : "b.xml");
    EXPECT_EQ(program.Run({"convert", path, other}).status, 0);
    for (const std::string& file : {path, other}) {
      EXPECT_EQ(program.Run({"xpath", file, row.query, "--json"}).Json()["count"], 1) << file;
    }
  }
}

// Files of which nothing is on the disk but their length.
TEST(Limits, OfSizesAreToldBeforeTheFileIsRead) {
  Program program;
  const auto sparse = [&](const std::string& name, std::uintmax_t size) {
    const std::string path = program.folder.Write(name, "");
    fs::resize_file(path, size);
    return path;
  };
  const std::string document = sparse("a.mif", std::uintmax_t{1} << 32U);
  const ProgramResult opened = program.Run({"info", document});
  EXPECT_EQ(opened.status, 3);
  EXPECT_NE(opened.err.find(document + ": the file is larger than 4 gigabytes"), std::string::npos)
      << opened.err;
  sparse("big.png", (std::uintmax_t{1} << 30U) + 1);
  const std::string shows = program.folder.Write(
      "b.mif", Mif("<AFrames <Frame <ID 1> <FrameType Inline> <ShapeRect 0 0 1in 1in> <ImportObject "
                   "<ImportObFileDI `<c\\>big.png'> <ShapeRect 0 0 1in 1in> > > >\n",
                   "<AFrame 1> "));
  const ProgramResult printed = program.Run({"convert", shows, program.folder.File("b.pdf")});
  EXPECT_EQ(printed.status, 0) << printed.err;
  EXPECT_NE(printed.err.find("big.png: the file is larger than a gigabyte"), std::string::npos)
      << printed.err;
}

}  // namespace
}  // namespace qelm
