// qelm filter and qelm restore: what is written where, what stays, and how a run ends.
#include <gtest/gtest.h>

#include <sstream>

#include "cli/program.h"
#include "support/mif_files.h"

namespace qelm {
namespace {

using nlohmann::json;
using testing::Program;
using testing::ProgramResult;

TEST(Filter, DuplicateDeletesFromACopyAndLeavesTheSource) {
  Program program;
  const std::string before = program.folder.Read("doc.mif");
  const std::string out = program.folder.File("out.mif");
  const ProgramResult result = program.Run({"filter", program.document(), "--scheme", "Audience/Admin",
                                            "--mode", "duplicate", "-o", out, "--json"});
  ASSERT_EQ(result.status, 0) << result.err;
  const json object = result.Json();
  EXPECT_EQ(object["output"], out);
  EXPECT_EQ(object["elements"], 7) << "what is in a deleted element is not visited";
  EXPECT_EQ(object["kept"], 6);
  EXPECT_EQ(object["deleted"], 1);
  EXPECT_EQ(object["hidden"], 0);
  EXPECT_EQ(program.folder.Read("doc.mif"), before);
  const std::string dump = program.Dump(out);
  EXPECT_EQ(dump.find("for users"), std::string::npos);
  EXPECT_NE(dump.find("for admins"), std::string::npos);
  EXPECT_EQ(program.folder.Names(), (std::vector<std::string>{"doc.mif", "main.xml", "out.mif"}));
}

TEST(Filter, SourceModeHidesInPlaceAndRestoreGivesItBack) {
  Program program;
  const std::string before = program.Dump(program.document());
  const ProgramResult filtered = program.Run(
      {"filter", program.document(), "--scheme", "By/path/No users", "--mode", "source", "--json"});
  ASSERT_EQ(filtered.status, 0) << filtered.err;
  EXPECT_EQ(filtered.Json()["hidden"], 1);
  EXPECT_NE(program.Dump(program.document()).find("{Hidden}for users{}"), std::string::npos);
  const json conditions = program.Run({"info", program.document(), "--json"}).Json()["conditions"];
  EXPECT_EQ(conditions, json::parse(R"([{"name": "Hidden", "shown": false}])"));

  const ProgramResult restored = program.Run({"restore", program.document(), "--json"});
  ASSERT_EQ(restored.status, 0) << restored.err;
  EXPECT_EQ(restored.Json()["changed"], true);
  EXPECT_EQ(program.Dump(program.document()), before);
}

TEST(Filter, DryRunCountsAndWritesNothing) {
  Program program;
  const std::string before = program.folder.Read("doc.mif");
  for (const char* mode : {"source", "duplicate"}) {
    const ProgramResult result = program.Run(
        {"filter", program.document(), "--scheme", "Audience/Admin", "--mode", mode, "--dry-run", "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    const json object = result.Json();
    EXPECT_EQ(object["hidden"].get<int>() + object["deleted"].get<int>(), 1) << mode;
    EXPECT_TRUE(object["output"].is_null());
  }
  EXPECT_EQ(program.folder.Read("doc.mif"), before);
  EXPECT_EQ(program.folder.Names(), (std::vector<std::string>{"doc.mif", "main.xml"}));
}

TEST(Filter, OutputThatIsTheSourceIsRefusedHoweverItIsWritten) {
  Program program;
  const std::string before = program.folder.Read("doc.mif");
  std::filesystem::create_symlink("doc.mif", program.folder.File("link.mif"));
  for (const std::string& out :
       {program.document(), program.folder.path() + "/./doc.mif", program.folder.File("link.mif")}) {
    const ProgramResult result = program.Run({"filter", program.document(), "--scheme", "Audience/Admin",
                                              "--mode", "duplicate", "-o", out, "--json"});
    EXPECT_EQ(result.status, 2) << out;
    EXPECT_EQ(result.Json()["result"], 107);
  }
  EXPECT_EQ(program.folder.Read("doc.mif"), before);
}

TEST(Filter, FailedRunLeavesAnEarlierOutput) {
  Program program;
  const std::string table = program.folder.Write("table.mif", testing::Mif(R"(
<Doc>
  <Table .format="Grid">
    <TableBody>
      <Row><Cell>1</Cell></Row>
    </TableBody>
  </Table>
</Doc>)"));
  program.folder.Write("out.mif", "of yesterday");
  const ProgramResult result = program.Run({"filter", table, "--scheme", "By/path/No cells", "--mode",
                                            "duplicate", "-o", program.folder.File("out.mif")});
  EXPECT_EQ(result.status, 5) << result.err;
  EXPECT_EQ(program.folder.Read("out.mif"), "of yesterday");
  EXPECT_EQ(program.folder.Names(),
            (std::vector<std::string>{"doc.mif", "main.xml", "out.mif", "table.mif"}));
}

TEST(Filter, LossOfTheRootNeedsAYes) {
  Program program;
  const std::string before = program.folder.Read("doc.mif");
  const std::vector<std::string> command = {"filter", program.document(), "--scheme", "By/path/Title only",
                                            "--mode", "source",           "--events", "-"};
  struct Row {
    std::vector<std::string> options;
    const char* answer;
    const char* by;
  };
  program.folder.Write("answers", "* -> yes\n");
  const Row rows[] = {{{}, "no", "default"},
                      {{"--no"}, "no", "policy"},
                      {{"--answers", program.folder.File("answers")}, "yes", "file"},
                      {{"--yes"}, "yes", "policy"}};
  for (const Row& row : rows) {
    program.folder.Write("doc.mif", before);
    std::vector<std::string> arguments = command;
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    const ProgramResult result = program.Run(arguments);
    const bool yes = std::string(row.answer) == "yes";
    EXPECT_EQ(result.status, yes ? 0 : 5) << result.err;
    EXPECT_EQ(program.folder.Read("doc.mif") == before, !yes);
    EXPECT_NE(result.err.find("\"answer\":\"" + std::string(row.answer) + "\",\"by\":\"" + row.by + "\""),
              std::string::npos)
        << result.err;
  }
}

TEST(Filter, EventsFileHoldsOneObjectALine) {
  Program program;
  const std::string path = program.folder.File("events");
  for (int run = 0; run < 2; ++run) {
    program.Run({"filter", program.document(), "--scheme", "By/path/Title only", "--mode", "source",
                 "--events", path});
  }
  std::size_t questions = 0;
  std::istringstream lines(program.folder.Read("events"));
  for (std::string line; std::getline(lines, line);) {
    if (json::parse(line)["event"] == "question") ++questions;
  }
  EXPECT_EQ(questions, 2U) << "a second run appends";
}

TEST(Filter, EscEndsTheRunAndNothingIsWritten) {
  Program program;
  std::string wide = "<Doc>\n";
  for (int i = 0; i < 300; ++i) wide += "<P Audience=\"user\">text</P>\n";
  const std::string content = testing::Mif(wide + "</Doc>");
  const std::string path = program.folder.Write("wide.mif", content);
  for (const char* mode : {"source", "duplicate"}) {
    bool pressed = true;
    program.esc = [&pressed] { return std::exchange(pressed, false); };
    const ProgramResult result = program.Run({"filter", path, "--scheme", "Audience/Admin", "--mode", mode,
                                              "-o", program.folder.File("out.mif"), "--json"});
    EXPECT_EQ(result.status, 130) << mode << result.err;
    EXPECT_EQ(result.Json()["result"], 108);
  }
  EXPECT_EQ(program.folder.Read("wide.mif"), content);
  EXPECT_EQ(program.folder.Names(), (std::vector<std::string>{"doc.mif", "main.xml", "wide.mif"}));
}

TEST(Restore, NothingToRestoreWritesNothing) {
  Program program;
  // Restoring shows all conditional text, so that a document is unchanged only when it did that before.
  testing::MifFile file;
  file.flows = {{.text = "<Doc>\n<P>a</P>\n</Doc>"}};
  file.show_all = true;
  const std::string shown = program.folder.Write("shown.mif", testing::Mif(file));
  const std::string before = program.folder.Read("shown.mif");
  const ProgramResult result = program.Run({"restore", shown, "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.Json()["changed"], false);
  EXPECT_TRUE(result.Json()["output"].is_null());
  EXPECT_EQ(program.folder.Read("shown.mif"), before);
}

}  // namespace
}  // namespace qelm
