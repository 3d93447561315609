// Sessions of the plug-in on the command line: single commands, menus, session files.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

#include "cli/program.h"

namespace qelm::testing {
namespace {

TEST(CommandCommand, ByNumberAndByNameIsTheSame) {
  Program program;
  const ProgramResult number = program.Run({"command", "25", program.document(), "--json"});
  const ProgramResult name =
      program.Run({"command", "QELM_Cmd_CheckTabularScheme", program.document(), "--json"});
  EXPECT_EQ(number.status, 5);
  EXPECT_EQ(number.Json()["alerts"], name.Json()["alerts"]);
  EXPECT_EQ(number.Json()["alerts"].size(), 1U);
}

TEST(CommandCommand, SavesWhatItChanged) {
  Program program;
  const std::string before = program.folder.Read("doc.mif");
  const std::string out = program.folder.File("out.mif");
  ASSERT_EQ(program.Run({"command", "20", program.document(), "--yes", "-o", out}).status, 0);
  EXPECT_EQ(program.folder.Read("doc.mif"), before);
  EXPECT_EQ(program.Dump(out).find("Underline"), std::string::npos);
  ASSERT_EQ(program.Run({"command", "20", program.document(), "--yes"}).status, 0);
  EXPECT_EQ(program.Dump(program.document()), program.Dump(out));
}

TEST(MenusCommand, EveryCommandStandsInAMenu) {
  Program program;
  const ProgramResult result =
      program.Run({"menus", "--host-version", "17", "--set", "QELM_LICENSE_TYPE=INTERNAL"});
  const auto commands =
      program.Run({"menus", "--json", "--host-version", "17", "--set", "QELM_LICENSE_TYPE=INTERNAL"})
          .Json()["commands"];
  EXPECT_EQ(commands.size(), 38U);
  for (const auto& command : commands) {
    EXPECT_NE(result.out.find("  " + command["name"].get<std::string>() + "\n"), std::string::npos)
        << command;
  }
}

// An event log without what differs from run to run.
std::string Normalized(std::string log, const std::vector<std::pair<std::string, std::string>>& folders) {
  for (const auto& [folder, name] : folders) {
    for (std::size_t at = log.find(folder); at != std::string::npos; at = log.find(folder, at + 1)) {
      log.replace(at, folder.size(), name);
    }
  }
  return std::regex_replace(log, std::regex("in [0-9]+ min [0-9]+ s"), "in N min N s");
}

// With UPDATE_GOLDEN in the environment the golden file is written anew, to be looked through.
TEST(RunCommand, AWorkingDayShowsWhatItAlwaysShowed) {
  Program program;
  const std::string work = program.folder.File("work");
  const std::string log = program.folder.File("events");
  const ProgramResult result = program.RunPlain(
      {"run", QELM_SOURCE_DIR "/examples/pump/working-day.qelm", "--work", work, "--events", log});
  EXPECT_EQ(result.status, 0) << result.out << result.err;
  const std::string events =
      Normalized(program.folder.Read("events"), {{work, "WORK"}, {QELM_SOURCE_DIR, "SOURCE"}});
  const std::string golden = QELM_SOURCE_DIR "/tests/cli/golden/working-day.jsonl";
  if (std::getenv("UPDATE_GOLDEN") != nullptr) std::ofstream(golden) << events;
  std::ostringstream expected;
  expected << std::ifstream(golden).rdbuf();
  EXPECT_EQ(events, expected.str());
}

TEST(RunCommand, AReviewTellsOfValuesAsTheyAreWritten) {
  Program program;
  const ProgramResult result = program.RunPlain({"run", QELM_SOURCE_DIR "/examples/pump/review.qelm"});
  EXPECT_EQ(result.status, 0) << result.out << result.err;
}

TEST(RunCommand, TheWorkFolderGoesUnlessItWasNamed) {
  Program program;
  const std::string script = program.folder.Write("s.qelm", "copy doc.mif $WORK/d.mif\nopen $WORK/d.mif\n");
  const auto steps = program.RunPlain({"run", script, "--json"}).Json()["steps"];
  EXPECT_EQ(steps.size(), 2U);
  const std::string work = program.folder.File("work");
  EXPECT_EQ(program.RunPlain({"run", script, "--work", work}).status, 0);
  EXPECT_TRUE(std::filesystem::exists(work + "/d.mif"));
}

// Lines that are no steps, and what is said of them.
TEST(RunCommand, MistakesInAScriptNameFileAndLine) {
  struct Row {
    const char* line;
    const char* told;
  };
  const Row rows[] = {{"opne doc.mif", "(did you mean \"open\"?)"},
                      {"open", "expected: open FILE"},
                      {"open a b", "expected: open FILE"},
                      {"open \"doc.mif", "expected: open FILE"},
                      {"expect nothing", "is nothing that can be expected"},
                      {"command QELM_Cmd_ColorDog", "(did you mean \"QELM_Cmd_ColorDoc\"?)"},
                      {"set NO_SUCH_KEY=1\nstart", "is not a setting"},
                      {"answer yes\nstart", "PATTERN"}};
  for (const Row& row : rows) {
    Program program;
    const std::string script =
        program.folder.Write("s.qelm", std::string("# a script\n\n") + row.line + "\n");
    const ProgramResult result = program.Run({"run", script});
    EXPECT_EQ(result.status, 2) << row.line;
    EXPECT_NE(result.err.find(script + ":"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find(row.told), std::string::npos) << result.err;
  }
}

TEST(RunCommand, NothingRunsWhenALineCannotBeRead) {
  Program program;
  const std::string script = program.folder.Write("s.qelm", "copy doc.mif copy.mif\nnonsense\n");
  EXPECT_EQ(program.Run({"run", script}).status, 2);
  EXPECT_FALSE(std::filesystem::exists(program.folder.File("copy.mif")));
}

TEST(RunCommand, ExitStatusTellsWhatWentWrong) {
  struct Row {
    const char* script;
    int status;
  };
  const Row rows[] = {{"open doc.mif\nexpect active doc.mif\n", 0},
                      {"# no step starts the session\n", 0},
                      {"open doc.mif\nexpect alert Hello\n", 1},
                      {"open missing.mif\n", 3},
                      {"copy missing.mif $WORK/a.mif\n", 3},
                      {"select //Doc\n", 5},
                      {"open doc.mif\nselect //[\n", 4}};
  for (const Row& row : rows) {
    Program program;
    const std::string script = program.folder.Write("s.qelm", row.script);
    const ProgramResult result = program.Run({"run", script});
    EXPECT_EQ(result.status, row.status) << row.script << result.out << result.err;
  }
}

TEST(RunCommand, EditsOfAUserReachTheDocument) {
  Program program;
  const std::string script = program.folder.Write("s.qelm",
                                                  "copy doc.mif $WORK/d.mif\n"
                                                  "open $WORK/d.mif\n"
                                                  "select //Section[2]/P\n"
                                                  "text  for   everybody\n"
                                                  "select //Section[2]\n"
                                                  "set-attribute Audience user \"power user\"\n"
                                                  "expect count 1 //Section[@Audience='power user']\n"
                                                  "remove-attribute Audience\n"
                                                  "expect count 1 //Section[@Audience]\n"
                                                  "insert P\n"
                                                  "expect count 4 //P\n"
                                                  "delete\n"
                                                  "expect count 3 //P\n"
                                                  "save $WORK/out.mif\n"
                                                  "expect text $WORK/out.mif for   everybody\n");
  const ProgramResult result = program.Run({"run", script});
  EXPECT_EQ(result.status, 0) << result.out << result.err;
}

}  // namespace
}  // namespace qelm::testing
