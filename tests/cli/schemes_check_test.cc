// qelm schemes check and qelm check-table: what they print, and how they end.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "cli/program.h"

namespace qelm {
namespace {

using nlohmann::json;
using testing::Program;
using testing::ProgramResult;

constexpr char kSettings[] = R"(<QELM_MainSettings><SchemeCategories><SchemeCategory>
<CategorySettings><Name>Review</Name></CategorySettings><FilterSchemes/><ColoringSchemes><Scheme>
<SchemeSettings><Name>By audience</Name></SchemeSettings>
<Rule><RuleSettings>
<Name>Pink</Name>
<Style>Dotted</Style></RuleSettings>
<Attribute><Name>a</Name><Value>x</Value></Attribute></Rule></Scheme></ColoringSchemes><ValidationSchemes/>
</SchemeCategory></SchemeCategories><SchemeCategories_XPath><SchemeCategory>
<CategorySettings><Name>X</Name></CategorySettings><FilterSchemes><Scheme>
<SchemeSettings><Name>Bad</Name></SchemeSettings><XPathExpressions>
<XPathExpression>//P/foo::x</XPathExpression></XPathExpressions></Scheme></FilterSchemes>
</SchemeCategory></SchemeCategories_XPath></QELM_MainSettings>)";

ProgramResult Check(Program& program, std::vector<std::string> arguments) {
  const std::string settings = program.folder.Write("house.xml", kSettings);
  arguments.insert(arguments.begin(), {"schemes", "check"});
  arguments.insert(arguments.end(),
                   {"--profile", program.folder.File("profile"), "--main-settings", settings});
  return program.RunPlain(std::move(arguments));
}

TEST(SchemesCheck, NamesFileLineSchemeAndPlaceInTheExpression) {
  Program program;
  const ProgramResult result = Check(program, {"--document", program.document()});
  EXPECT_EQ(result.status, 1) << result.err;
  const std::string file = program.folder.File("house.xml");
  EXPECT_TRUE(result.out.starts_with(
      file + ":5: Review/By audience (coloring): the document has no color \"Pink\"\n" + file +
      ":6: Review/By audience (coloring): \"Dotted\" is no style; styles are numbers from 0 to 8\n" + file +
      ":11: X/Bad (filter): the expression is refused (XPATH_ERR_UNKNOWN_AXIS):\n  //P/foo::x\n  ....^\n"))
      << result.out;
  EXPECT_TRUE(result.out.ends_with(file + ": 3 findings\n")) << result.out;
}

TEST(SchemesCheck, JsonAndSarif) {
  Program program;
  const json findings = Check(program, {"--json"}).Json()["findings"];
  ASSERT_EQ(findings.size(), 2U) << "without a document colors are not looked for";
  EXPECT_EQ(findings[0]["id"], "QELM-SCH-18");
  EXPECT_EQ(findings[1]["error"]["position"], 4);
  const json log = Check(program, {"--format", "sarif"}).Json();
  const json& run = log["runs"][0];
  ASSERT_EQ(run["results"].size(), 2U);
  for (const json& result : run["results"]) {
    EXPECT_EQ(run["tool"]["driver"]["rules"].at(result["ruleIndex"].get<std::size_t>())["id"],
              result["ruleId"]);
  }
  EXPECT_EQ(run["results"][0]["locations"][0]["physicalLocation"]["region"]["startLine"], 6);
  EXPECT_EQ(Check(program, {"--format", "sarif", "--json"}).status, 2);
}

TEST(SchemesCheck, ShippedSchemesAreInOrder) {
  Program program;
  const ProgramResult result =
      program.RunPlain({"schemes", "check", "--profile", program.folder.File("profile"), "--document",
                        QELM_SOURCE_DIR "/examples/pump/operation.mif"});
  EXPECT_EQ(result.status, 0) << result.out << result.err;
}

TEST(CheckTable, ExampleIsInOrderAndFaultsNameTheirRow) {
  Program program;
  const std::string example = QELM_SOURCE_DIR "/examples/scheme-table.mif";
  const ProgramResult good = program.Run({"check-table", example, "--json"});
  EXPECT_EQ(good.status, 0) << good.err;
  const json object = good.Json();
  EXPECT_EQ(object["active"], true);
  EXPECT_TRUE(object["problems"].empty());
  EXPECT_EQ(object["scheme"]["rules"].size(), 3U);
  EXPECT_EQ(object["scheme"]["rules"][0]["style"], "Num UL / Ch Bar");

  std::ifstream file(example, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(file)), {});
  const std::string from = "<String `Override'>";
  text.replace(text.find(from), from.size(), "<String `Overide'>");
  const std::string bad = program.folder.Write("bad.mif", text);
  const ProgramResult result = program.Run({"check-table", bad});
  EXPECT_EQ(result.status, 1) << result.err;
  const std::string before = text.substr(0, text.find("<String `Rule'>"));
  const std::size_t row = before.rfind("<Row \n");
  const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(row), '\n');
  EXPECT_TRUE(result.out.starts_with(bad + ":" + std::to_string(line) + ": Row 2: \"Overide\""))
      << result.out;

  const ProgramResult none = program.Run({"check-table", program.document()});
  EXPECT_EQ(none.status, 1);
  EXPECT_NE(none.out.find("no table with scheme data"), std::string::npos) << none.out;
}

}  // namespace
}  // namespace qelm
