// The command line itself: what is understood, what is refused, and how.
#include <gtest/gtest.h>

#include <sstream>

#include "cli/cli.h"
#include "cli/program.h"
#include "support/mif_files.h"

namespace qelm {
namespace {

using testing::Program;
using testing::ProgramResult;

TEST(Usage, MistakesAreNamedWithWhatWasPerhapsMeant) {
  Program program;
  const std::string& doc = program.document();
  const std::string answers = program.folder.Write("answers", "restore -> perhaps\n");
  const std::string log = program.folder.File("log.mif");
  struct Row {
    std::vector<std::string> arguments;
    const char* said;
  };
  const Row rows[] = {
      {{}, "a command is needed"},
      {{"fliter", doc}, "did you mean \"filter\""},
      {{"colour", doc}, "unknown command \"colour\""},
      {{"info", doc, "--jsn"}, "did you mean \"--json\""},
      {{"info"}, "TARGET is required"},
      {{"info", doc, doc}, "unexpected argument"},
      {{"filter", doc, "--scheme", "Audience/Admin", "--mode", "copy"}, "--mode"},
      {{"settings", "--set", "XPATH_MAX_MATCHS=5"}, "XPATH_MAX_MATCHES"},
      {{"settings", "XPATH_MAX_MATCHS"}, "XPATH_MAX_MATCHES"},
      {{"info", doc, "--param", "value"}, "NAME=VALUE"},
      {{"info", doc, "--progress", "sometimes"}, "--progress"},
      {{"info", doc, "--yes", "--no"}, "--no"},
      {{"info", doc, "--answers", answers}, "line 1"},
      {{"xpath", doc, "--dump"}, "EXPRESSION"},
      {{"xpath", doc, "//P", "--expressions", "-"}, "EXPRESSION"},
      {{"convert", doc, "out.pdf", "--page", "2"}, "--page"},
      {{"convert", doc, "out"}, ".xml"},
      {{"convert", doc, "out.png", "--page", "010"}, "010 is not a whole number"},
      {{"xpath", doc, "--expressions", answers, "--report", answers}, "the file of --expressions"},
      {{"xpath", doc, "//P", "--report", log, "--events", log}, "the file of --events"},
      {{"convert", doc, log, "--events", log}, "the file of --events"},
      {{"schemes"}, "list, show"},
  };
  for (const Row& row : rows) {
    const ProgramResult result = program.Run(row.arguments);
    EXPECT_EQ(result.status, 2) << row.said;
    EXPECT_NE(result.err.find(row.said), std::string::npos) << result.err;
    EXPECT_EQ(result.out, "") << row.said;
  }
  EXPECT_EQ(program.RunPlain({"xpath", "--", doc, ""}).status, 2) << "not an expression that is asked for";
}

TEST(Usage, OptionsStandBeforeOrAfterTheCommand) {
  Program program;
  const ProgramResult before =
      program.Run({"--json", "--set", "XPATH_MAX_MATCHES=500", "settings", "XPATH_MAX_MATCHES"});
  const ProgramResult after =
      program.Run({"settings", "XPATH_MAX_MATCHES", "--json", "--set", "XPATH_MAX_MATCHES=500"});
  EXPECT_EQ(before.Json()["settings"], after.Json()["settings"]);
  EXPECT_EQ(after.Json()["settings"][0]["value"], "500");
}

// A file may be called like a command.
TEST(Usage, TargetNamedLikeACommand) {
  Program program;
  std::filesystem::copy_file(program.document(), program.folder.File("info"));
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(program.folder.path());
  const ProgramResult result = program.Run({"dump", "info"});
  std::filesystem::current_path(before);
  EXPECT_EQ(result.status, 0) << result.err;
}

TEST(Files, WhatCannotBeReadIsNamed) {
  Program program;
  const testing::TempFolder& folder = program.folder;
  const std::string damaged = testing::Mif("<Doc>\n<P>text</P>\n</Doc>");
  struct Row {
    std::vector<std::string> arguments;
    std::string said;
  };
  const Row rows[] = {
      {{"info", folder.File("missing.mif")}, "missing.mif"},
      {{"info", folder.path()}, folder.path()},
      {{"info", folder.Write("empty.mif", "")}, "empty.mif"},
      {{"info", folder.Write("plain.txt", "no such format\n")}, "plain.txt"},
      {{"info", folder.Write("binary.fm", std::string("<MakerFile 10.0\0\x01", 17))}, "binary"},
      {{"info", folder.Write("cut.mif", damaged.substr(0, damaged.size() / 2))}, "line"},
      {{"info", folder.Write("cut.xml", "<Doc>\n<P>text</Doc>")}, "cut.xml"},
      {{"info", program.document(), "--events", folder.path()}, folder.path()},
      {{"info", program.document(), "--answers", folder.File("missing")}, "missing"},
      {{"info", program.document(), "--local-settings", folder.File("missing")}, "missing"},
      {{"info", program.document(), "--plugin-dir", folder.File("missing")}, "missing"},
      {{"convert", program.document(), folder.File("missing/out.xml")}, "missing/out.xml"},
  };
  for (const Row& row : rows) {
    const ProgramResult result = program.Run(row.arguments);
    EXPECT_EQ(result.status, 3) << row.said;
    EXPECT_NE(result.err.find(row.said), std::string::npos) << result.err;
  }
}

TEST(Files, MainSettingsThatCannotBeUsedEndTheRun) {
  Program program;
  for (const std::string& path : {program.folder.File("missing.xml"), program.document(),
                                  program.folder.Write("broken.xml", "<QELM_MainSettings>")}) {
    const ProgramResult result = program.RunPlain({"info", program.document(), "--main-settings", path});
    EXPECT_EQ(result.status, 3) << path;
    EXPECT_NE(result.err.find(path), std::string::npos) << result.err;
  }
}

// A standard output on which nothing can be written, like a full disk.
TEST(Files, UnwritableStandardOutputIsAFailure) {
  struct Full : std::streambuf {
    int overflow(int) override { return traits_type::eof(); }
  } full;
  Program program;
  std::istringstream in;
  std::ostream out(&full);
  std::ostringstream err;
  cli::Environment environment{in, out, err};
  environment.plugin_folders = program.plugin_folders;
  EXPECT_EQ(cli::Main({"info", program.document(), "--profile", program.folder.path()}, environment), 3);
}

TEST(Json, FailuresKeepTheCommonMembers) {
  Program program;
  const nlohmann::json object = program.Run({"info", program.folder.File("missing.mif"), "--json"}).Json();
  EXPECT_EQ(object["command"], "info");
  EXPECT_EQ(object["result"], 0);
  EXPECT_EQ(object["target"], program.folder.File("missing.mif"));
  EXPECT_TRUE(object["output"].is_null());
  EXPECT_TRUE(object["elapsed_ms"].is_number());
  EXPECT_TRUE(object["alerts"].is_array());
  EXPECT_NE(object["error"]["message"].get<std::string>().find("missing.mif"), std::string::npos);
}

}  // namespace
}  // namespace qelm
