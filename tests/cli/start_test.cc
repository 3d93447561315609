// How a command starts the plug-in: what it writes, and what it does not.
#include <gtest/gtest.h>

#include <filesystem>

#include "cli/program.h"

namespace qelm {
namespace {

using testing::Program;
using testing::ProgramResult;

TEST(Start, OnlyASessionOfAUserPreparesTheProfile) {
  Program program;
  const std::string profile = program.folder.File("user");
  const std::string installed = profile + "/Adobe/FrameMaker/18/Brenwick/QELM/QELM_Local_Settings.txt";
  const std::vector<std::string> command = {"settings", "XPATH_MAX_MATCHES", "--profile", profile, "--json"};
  EXPECT_EQ(program.RunPlain(command).status, 0);
  EXPECT_FALSE(std::filesystem::exists(profile));
  std::vector<std::string> session = command;
  session.push_back("--install");
  const ProgramResult result = program.RunPlain(session);
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.Json()["local_settings"], installed);
  EXPECT_EQ(program.RunPlain(command).Json()["local_settings"], installed);
}

TEST(Start, AFilterRunIsLoggedWhereTheSettingsAskForIt) {
  Program program;
  const auto filter = [&program](const std::string& mode) {
    return program.Run({"filter", program.document(), "--scheme", "By/path/No users", "--mode", "duplicate",
                        "--yes", "-o", program.folder.File("out.mif"), "--set",
                        "QELM_DEBUG_LOG_FOLDER=" + program.folder.path(), "--set",
                        "QELM_DEBUG_MODE=" + mode});
  };
  EXPECT_EQ(filter("OFF").status, 0);
  EXPECT_FALSE(std::filesystem::exists(program.folder.File("QELM_debug_log.txt")));
  const ProgramResult result = filter("WriteFilterLog");
  EXPECT_EQ(result.status, 0) << result.err;
  const std::string log = program.folder.Read("QELM_debug_log.txt");
  std::size_t at = 0;
  for (const char* text : {"This is a debug log for the QELM plugin.", "**LAUNCHING DUPLICATE FILE FILTER",
                           "FILEPATH: ", "EVENT/ACTION: Preparing to delete\r\n", "ELEMENT TAG: Section\r\n",
                           "(bw_DeleteElement)", "**FILTER COMPLETE**"}) {
    at = log.find(text, at);
    ASSERT_NE(at, std::string::npos) << text << "\n" << log;
  }
}

}  // namespace
}  // namespace qelm
