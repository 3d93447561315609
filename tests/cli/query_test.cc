// The commands that only look: xpath, schemes, info, dump, settings, and convert between the two formats.
#include <gtest/gtest.h>

#include <filesystem>

#include <sstream>

#include "cli/program.h"
#include "support/mif_files.h"

namespace qelm {
namespace {

using nlohmann::json;
using testing::Program;
using testing::ProgramResult;

TEST(XPath, MatchesCarryNumberPathAndValue) {
  Program program;
  struct Row {
    const char* expression;
    const char* matches;
  };
  const Row rows[] = {
      {"//Section[@Audience='user']",
       R"([{"element": 4, "tag": "Section", "path": "/Doc[1]/Section[2]", "attribute": null,
            "value": "for users"}])"},
      {"//*/@Audience",
       R"([{"element": 2, "tag": "Section", "path": "/Doc[1]/Section[1]/@Audience", "attribute": "Audience",
            "value": "admin"},
           {"element": 4, "tag": "Section", "path": "/Doc[1]/Section[2]/@Audience", "attribute": "Audience",
            "value": "user"}])"},
      {"/Doc/Title/text()",
       R"([{"element": 1, "tag": null, "path": "/Doc[1]/Title[1]/text()[1]", "attribute": null,
            "value": "Pump"}])"},
      {"//Nothing", "[]"},
  };
  for (const Row& row : rows) {
    const ProgramResult result = program.Run({"xpath", program.document(), row.expression, "--json"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.Json()["matches"], json::parse(row.matches)) << row.expression;
    EXPECT_EQ(result.Json()["count"], json::parse(row.matches).size());
  }
}

TEST(XPath, TextOutputIsALineAMatch) {
  Program program;
  EXPECT_EQ(program.Run({"xpath", program.document(), "//P", "--values"}).out,
            "for admins\nfor users\nfor all of them\n");
  EXPECT_EQ(program.Run({"xpath", program.document(), "//P", "--first"}).out,
            "/Doc[1]/Section[1]/P[1]\tfor admins\n");
  EXPECT_EQ(program.Run({"xpath", program.document(), "//P", "--max", "2", "--json"}).Json()["count"], 2);
}

TEST(XPath, ContextIsANumberOrAnExpression) {
  Program program;
  for (const char* context : {"4", "//Section[@Audience='user']"}) {
    EXPECT_EQ(program.Run({"xpath", program.document(), "P", "--context", context, "--values"}).out,
              "for users\n");
  }
  EXPECT_EQ(program.Run({"xpath", program.document(), "P", "--context", "8"}).status, 2);
  EXPECT_EQ(program.Run({"xpath", program.document(), "P", "--context", "//None"}).status, 2);
}

TEST(XPath, RefusedExpressionShowsWhere) {
  Program program;
  const ProgramResult result = program.Run({"xpath", program.document(), "//P/foo::bar", "--json"});
  EXPECT_EQ(result.status, 4);
  const json error = result.Json()["error"];
  EXPECT_EQ(error["id"], "XPATH_ERR_UNKNOWN_AXIS");
  EXPECT_EQ(error["code"], 50156);
  EXPECT_EQ(error["position"], 4);
  EXPECT_FALSE(error["message"].get<std::string>().empty());
  EXPECT_NE(result.err.find("  //P/foo::bar\n  ....^\n"), std::string::npos) << result.err;
  const auto hint = [&](const char* expression) {
    return program.Run({"xpath", program.document(), expression}).err;
  };
  EXPECT_NE(hint("//P/chld::Q").find("chld (did you mean \"child\"?)"), std::string::npos);
  EXPECT_NE(hint("//P[contans(Q,'a')]").find("contans (did you mean \"contains\"?)"), std::string::npos);
  EXPECT_NE(hint("//P/fmprop::PgfTga").find("PgfTga (did you mean \"PgfTag\"?)"), std::string::npos);
  EXPECT_EQ(hint("//P/zzzzzzzz::Q").find("did you mean"), std::string::npos);
}

TEST(XPath, RefusalsAreWrittenIntoAReport) {
  Program program;
  const std::string report = program.folder.File("refused.mif");
  EXPECT_EQ(program.Run({"xpath", program.document(), "//P[]", "--report", report}).status, 4);
  const std::string dump = program.Dump(report);
  EXPECT_NE(dump.find("//P[]"), std::string::npos) << dump;
  EXPECT_NE(dump.find("....^"), std::string::npos) << dump;
  const std::string none = program.folder.File("none.mif");
  EXPECT_EQ(program.Run({"xpath", program.document(), "//P", "--report", none}).status, 0);
  EXPECT_FALSE(std::filesystem::exists(none)) << "nothing was refused";
}

TEST(XPath, ExpressionsOfAFileGoOnAfterARefusedOne) {
  Program program;
  const ProgramResult result = program.Run({"xpath", program.document(), "--expressions", "-"},
                                           "//Title\n//Title[\n4\tP\r\n99\tP\n//Section\n");
  EXPECT_EQ(result.status, 4);
  std::vector<json> lines;
  std::istringstream text(result.out);
  for (std::string line; std::getline(text, line);) lines.push_back(json::parse(line));
  ASSERT_EQ(lines.size(), 5U) << result.out;
  EXPECT_EQ(lines[0]["count"], 1);
  EXPECT_TRUE(lines[1].contains("error"));
  EXPECT_EQ(lines[2]["matches"][0]["value"], "for users");
  EXPECT_TRUE(lines[3].contains("error")) << "there is no element of that number";
  EXPECT_EQ(lines[4]["count"], 3);
}

TEST(XPath, ExplainTellsWhatEachStepKept) {
  Program program;
  const std::string path = program.folder.Write("doc.xml", "<a><b x='1'/><b/><c><b x='1'/></c></a>");
  const ProgramResult text = program.Run({"xpath", path, "//b[@x=1]", "--explain"});
  EXPECT_EQ(text.status, 0) << text.err;
  EXPECT_NE(text.out.find("descendant-or-self::b[attribute::x=1]\n"), std::string::npos) << text.out;
  const json found = program.Run({"xpath", path, "//b[@x=1]", "--explain", "--json"}).Json();
  EXPECT_EQ(found["count"], 2);
  const json step = found["explain"]["steps"][1];
  EXPECT_EQ(step["kept"], 2);
  EXPECT_EQ(step["predicates"][0]["asked"], 3);
  EXPECT_EQ(program.Run({"xpath", path, "//b", "--explain", "--first"}).status, 2);
}

TEST(XPath, CutNodeSetsAreReportedAsIncomplete) {
  Program program;
  std::string wide = "<Doc>";
  for (int i = 0; i < 150; ++i) wide += "<P/>";
  const std::string path = program.folder.Write("wide.xml", wide + "</Doc>");
  const ProgramResult result =
      program.Run({"xpath", path, "//P", "--set", "XPATH_MAX_MATCHES=100", "--json"});
  EXPECT_EQ(result.Json()["count"], 100);
  EXPECT_EQ(result.Json()["complete"], false);
  EXPECT_EQ(result.Json()["alerts"].size(), 1U);
}

TEST(Schemes, AreListedAndShown) {
  Program program;
  const json list = program.Run({"schemes", "list", "--json"}).Json()["schemes"];
  ASSERT_EQ(list.size(), 5U);
  EXPECT_EQ(list[0], json::parse(R"({"category": "Audience", "name": "Admin", "kind": "filter",
                                     "family": "classic"})"));
  EXPECT_EQ(program.Run({"schemes", "list", "--kind", "coloring"}).out, "");
  const json shown = program.Run({"schemes", "show", "By/path/No users", "--json"}).Json()["schemes"];
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0]["expressions"], json::parse(R"(["//Section[@Audience='user']"])"));
  EXPECT_EQ(shown[0]["use_negative_logic"], true);
  EXPECT_EQ(program.Run({"schemes", "show", "Audience/Admin", "--kind", "coloring"}).status, 4);
}

TEST(Settings, SayWhereEachValueCameFrom) {
  Program program;
  const std::string file =
      program.folder.Write("settings.txt", "; mine\nXPATH_MAX_MATCHES=700\nVAL_RULE_1_ENABLED=no\n");
  const ProgramResult result =
      program.Run({"settings", "XPATH_MAX_MATCHES", "VAL_RULE_1_ENABLED", "VAL_RULE_2_ENABLED",
                   "--local-settings", file, "--set", "VAL_RULE_1_ENABLED=yes", "--json"});
  ASSERT_EQ(result.status, 0) << result.err;
  const json settings = result.Json()["settings"];
  EXPECT_EQ(settings[0], json::parse(R"({"key": "XPATH_MAX_MATCHES", "value": "700", "source": "file",
                                         "line": 2})"));
  EXPECT_EQ(settings[1]["source"], "command line");
  EXPECT_EQ(settings[2]["source"], "default");
  EXPECT_EQ(result.Json()["local_settings"], file);
}

TEST(Info, TellsWhatIsInADocument) {
  Program program;
  const json info = program.Run({"info", program.document(), "--json"}).Json();
  EXPECT_EQ(info["kind"], "document");
  EXPECT_EQ(info["format"], "mif");
  EXPECT_EQ(info["version"], "10.0");
  EXPECT_EQ(info["counts"]["elements"], 8);
  EXPECT_EQ(info["show_all"], false);
  json sections;
  for (const json& definition : info["definitions"]) {
    if (definition["name"] == "Section") sections = definition["elements"];
  }
  EXPECT_EQ(sections, 3);
  bool main_flow = false;
  for (const json& flow : info["flows"]) main_flow = main_flow || (flow["main"] && flow["elements"] == 8);
  EXPECT_TRUE(main_flow);
}

TEST(Info, PagesAndMetadataAreThoseOfTheDocument) {
  Program program;
  std::string document = testing::Mif("<Doc>\n<P>one</P>\n<P><!Page/>two</P>\n</Doc>");
  document.insert(document.find("<Document \n") + 11,
                  " <PDFDocInfo <Key `Author'> <Value `A. Writer'>>\n <DStartPage 5>\n");
  const std::string path = program.folder.Write("pages.mif", document);
  EXPECT_EQ(program.Run({"info", path, "--json"}).Json()["metadata"], json({{"Author", "A. Writer"}}));
  EXPECT_NE(program.Run({"info", path}).out.find("Author:       A. Writer\n"), std::string::npos);
  const json info = program.Run({"info", path, "--pages", "--json"}).Json();
  ASSERT_EQ(info["pages"].size(), 2U);
  EXPECT_EQ(info["first_page"], 5);
  EXPECT_EQ(info["pages"][1]["ordinal"], 2);
  EXPECT_EQ(info["pages"][1]["columns"], 1);
  EXPECT_EQ(info["double_sided"], false);
  const std::string book = program.folder.Write("book.mif", testing::MifBook({"pages.mif"}));
  EXPECT_EQ(program.Run({"info", book, "--pages"}).status, 2);
}

TEST(Info, ListsTheComponentsOfABook) {
  Program program;
  const std::string book = program.folder.Write("b.mif", testing::MifBook({"<c>doc.mif", "<c>gone.mif"}));
  const ProgramResult result = program.Run({"info", book, "--json"});
  ASSERT_EQ(result.status, 0) << result.err;
  const json info = result.Json();
  EXPECT_EQ(info["kind"], "book");
  ASSERT_EQ(info["components"].size(), 2U);
  EXPECT_EQ(info["components"][0]["found"], true);
  EXPECT_EQ(info["components"][1]["found"], false);
  EXPECT_NE(program.Run({"info", book}).out.find("gone.mif - not found"), std::string::npos);
  EXPECT_EQ(program.Run({"xpath", book, "//Chapter", "--json"}).Json()["count"], 2)
      << "the book's own elements";
}

TEST(Dump, ShowsStructureAndMarkedText) {
  Program program;
  EXPECT_EQ(program.Dump(program.document()), R"(flow A (body)
  Doc
    Title
      Pump
    Section Audience="admin"
      P
        for admins
    Section Audience="user"
      P
        for users
    Section
      P
        for {Red,Underline}all{} of them
)");
}

TEST(Dump, JsonHoldsNodesAndRuns) {
  Program program;
  const std::string path = program.folder.Write("t.mif", testing::Mif(R"(
<Doc Kind="a|b">
  <P>x {Hidden}y{}</P>
  <Table .format="Grid">
    <TableBody>
      <Row {Hidden}><Cell>1</Cell></Row>
    </TableBody>
  </Table>
</Doc>)"));
  const ProgramResult result = program.Run({"dump", path, "--json"});
  ASSERT_EQ(result.status, 0) << result.err;
  const json flows = result.Json()["flows"];
  const json& root = flows[0]["root"];
  EXPECT_EQ(root["attributes"], json::parse(R"([["Kind", ["a", "b"]]])"));
  EXPECT_EQ(root["children"][0]["children"],
            json::parse(R"([{"text": "x "}, {"text": "y", "conditions": ["Hidden"]}])"));
  const json& row = root["children"][1]["children"][0]["children"][0];
  EXPECT_EQ(row["conditions"], json::parse(R"(["Hidden"])"));
  EXPECT_FALSE(row["children"][0].contains("conditions"));
}

}  // namespace
}  // namespace qelm
