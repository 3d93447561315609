// qelm color, qelm uncolor and qelm filter --remove-coloring: what is written where, and how a run ends.
#include <gtest/gtest.h>

#include "cli/program.h"
#include "support/mif_files.h"

namespace qelm {
namespace {

using nlohmann::json;
using testing::Program;
using testing::ProgramResult;

constexpr const char* kSettings = R"(<QELM_MainSettings>
  <SchemeCategories>
    <SchemeCategory><CategorySettings><Name>Review</Name></CategorySettings>
      <FilterSchemes>
        <Scheme><SchemeSettings><Name>All</Name></SchemeSettings>
          <Attribute><Name>Nothing</Name><Value>x</Value></Attribute></Scheme>
      </FilterSchemes>
      <ColoringSchemes>
        <Scheme><SchemeSettings><Name>By audience</Name></SchemeSettings>
          <Rule><RuleSettings><Name>Red</Name><Style>3</Style></RuleSettings>
            <Attribute><Name>Audience</Name><Value>admin</Value></Attribute></Rule>
          <Rule><RuleSettings><Name>Blue</Name></RuleSettings>
            <Attribute><Name>Audience</Name><Value>&lt;any value></Value></Attribute></Rule></Scheme>
        <Scheme><SchemeSettings><Name>Odd color</Name></SchemeSettings>
          <Rule><RuleSettings><Name>Beige</Name></RuleSettings>
            <Attribute><Name>Audience</Name><Value>admin</Value></Attribute></Rule></Scheme>
      </ColoringSchemes>
    </SchemeCategory>
  </SchemeCategories>
  <SchemeCategories_XPath>
    <SchemeCategory><CategorySettings><Name>Path</Name></CategorySettings>
      <ColoringSchemes>
        <Scheme><SchemeSettings><Name>Paragraphs</Name></SchemeSettings>
          <Rule><RuleSettings><Name>Red</Name></RuleSettings>
            <XPathExpressions><XPathExpression>//P</XPathExpression></XPathExpressions></Rule></Scheme>
        <Scheme><SchemeSettings><Name>Broken</Name></SchemeSettings>
          <Rule><RuleSettings><Name>Red</Name></RuleSettings>
            <XPathExpressions><XPathExpression>//P[</XPathExpression></XPathExpressions></Rule></Scheme>
      </ColoringSchemes>
    </SchemeCategory>
  </SchemeCategories_XPath>
</QELM_MainSettings>)";

class Color : public ::testing::Test {
 protected:
  Color() : settings(program.folder.Write("color.xml", kSettings)) {
    doc = program.folder.Write(
        "c.mif", testing::Mif(R"(<Doc><P Audience="admin">one</P><P Audience="user">two</P></Doc>)"));
  }
  ProgramResult Run(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(),
                     {"--profile", program.folder.File("profile"), "--main-settings", settings});
    return program.RunPlain(arguments);
  }

  Program program;
  std::string settings;
  std::string doc;
};

TEST_F(Color, WritesTheOutputAndTellsWhatEachRuleDid) {
  const std::string before = program.folder.Read("c.mif");
  const std::string out = program.folder.File("out.mif");
  const ProgramResult result = Run({"color", doc, "--scheme", "Review/By audience", "-o", out, "--json"});
  ASSERT_EQ(result.status, 0) << result.err;
  const json object = result.Json();
  EXPECT_EQ(object["result"], 1);
  EXPECT_EQ(object["output"], out);
  EXPECT_EQ(object["colored"], 2);
  EXPECT_EQ(object["rules"], json::parse(R"([
      {"index": 0, "color": "Red", "style": "Underline", "elements": 1},
      {"index": 1, "color": "Blue", "style": "None", "elements": 1}])"));
  EXPECT_EQ(program.folder.Read("c.mif"), before);
  EXPECT_NE(program.Dump(out).find("{Red,Underline}one"), std::string::npos) << program.Dump(out);
  EXPECT_NE(program.Dump(out).find("{Blue}two"), std::string::npos);
}

TEST_F(Color, ReplacesTheFileAndUncolorGivesItBack) {
  const std::string before = program.folder.Read("c.mif");
  for (const char* method : {"0", "1"}) {
    ASSERT_EQ(Run({"color", doc, "--scheme", "Path/Paragraphs"}).status, 0);
    EXPECT_NE(program.folder.Read("c.mif"), before);
    const std::string setting = std::string("COLOR_IMPORT_ELEM_DEFS_TO_UNCOLOR=") + method;
    const ProgramResult result = Run({"uncolor", doc, "--set", setting, "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.Json()["changed"], true);
    EXPECT_EQ(program.folder.Read("c.mif"), before);
  }
}

TEST_F(Color, SelectionIsTheFirstElementThatTheExpressionFinds) {
  const std::string out = program.folder.File("out.mif");
  ASSERT_EQ(Run({"color", doc, "--scheme", "Path/Paragraphs", "--selection", "//P[2]", "-o", out}).status, 0);
  EXPECT_EQ(program.Dump(out).find("{Red}one"), std::string::npos);
  EXPECT_NE(program.Dump(out).find("{Red}two"), std::string::npos);
}

TEST_F(Color, EndsWithTheStatusOfWhatWentWrong) {
  const std::string before = program.folder.Read("c.mif");
  std::string paragraphs = "<Doc>";
  for (int i = 0; i < 101; ++i) paragraphs += "<P>p</P>\n";
  const std::string many = program.folder.Write("many.mif", testing::Mif(paragraphs + "</Doc>"));
  const std::string plain = program.folder.Write("plain.mif", testing::Mif("text"));
  const std::string book = program.folder.Write("b.mif", testing::MifBook({"<c>c.mif"}));
  struct Row {
    std::vector<std::string> arguments;
    int status;
    const char* said;
  };
  const Row rows[] = {
      {{"color", doc}, 5, "--scheme"},
      {{"color", doc, "--scheme", "Review/By"}, 4, "there is no coloring scheme"},
      {{"color", doc, "--scheme", "Path/Broken"}, 4, "//P["},
      {{"color", doc, "--scheme", "Review/Odd color"}, 5, "Beige"},
      {{"color", many, "--scheme", "Path/Paragraphs", "--set", "XPATH_MAX_MATCHES=100"},
       4,
       "XPATH_MAX_MATCHES"},
      {{"color", doc, "--scheme", "Path/Paragraphs", "--selection", "//Q"}, 5, "//Q"},
      {{"color", doc, "--scheme", "Path/Paragraphs", "--selection", "//P/text()"}, 5, "no element"},
      {{"color", doc, "--scheme", ""}, 2, "--scheme"},
      {{"color", doc, "--scheme", "<none>"}, 4, "there is no coloring scheme"},
      {{"color", plain, "--scheme", "Path/Paragraphs"}, 5, "no structure"},
      {{"color", book, "--scheme", "Path/Paragraphs", "-o", doc}, 2, "book"},
      {{"color", book, "--scheme", "Path/Paragraphs", "--selection", "//P"}, 2, "book"},
      {{"uncolor", program.folder.File("none.mif")}, 3, "no such file"},
  };
  for (const Row& row : rows) {
    const ProgramResult result = Run(row.arguments);
    EXPECT_EQ(result.status, row.status) << row.said << ": " << result.err;
    EXPECT_NE(result.err.find(row.said), std::string::npos) << result.err;
  }
  EXPECT_EQ(program.folder.Read("c.mif"), before);
}

TEST_F(Color, ComponentThatFailsDoesNotKeepTheOthersFromBeingWritten) {
  const std::string plain = testing::Mif("text");
  for (const bool last : {false, true}) {
    program.folder.Write("c.mif", testing::Mif(R"(<Doc><P Audience="admin">one</P></Doc>)"));
    program.folder.Write("plain.mif", plain);
    const std::string book =
        program.folder.Write("b.mif", last ? testing::MifBook({"<c>c.mif", "<c>plain.mif"})
                                           : testing::MifBook({"<c>plain.mif", "<c>c.mif"}));
    const ProgramResult result = Run({"color", book, "--scheme", "Review/By audience"});
    EXPECT_EQ(result.status, 5) << last << result.err;
    EXPECT_NE(result.out.find("plain.mif: the main flow has no structure"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("c.mif: written"), std::string::npos) << result.out;
    EXPECT_NE(program.Dump(doc).find("{Red,Underline}one"), std::string::npos) << last;
    EXPECT_EQ(program.folder.Read("plain.mif"), plain);
  }
}

TEST_F(Color, ComponentThatCannotBeOpenedIsSomethingFound) {
  const std::string book = program.folder.Write("b.mif", testing::MifBook({"<c>c.mif", "<c>gone.mif"}));
  const ProgramResult result = Run({"color", book, "--scheme", "Review/By audience", "--yes"});
  EXPECT_EQ(result.status, 1) << result.err;
  EXPECT_NE(result.out.find("gone.mif: cannot be opened"), std::string::npos) << result.out;
}

TEST_F(Color, FilterTakesItAwayWhenAsked) {
  ASSERT_EQ(Run({"color", doc, "--scheme", "Review/By audience"}).status, 0);
  const std::string out = program.folder.File("out.mif");
  const ProgramResult result =
      Run({"filter", doc, "--scheme", "Review/All", "--mode", "duplicate", "--remove-coloring", "-o", out});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(program.Dump(out).find("{Red"), std::string::npos);
  EXPECT_NE(program.Dump(doc).find("{Red"), std::string::npos);
}

}  // namespace
}  // namespace qelm
