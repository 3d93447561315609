// qelm schemes convert: which conversions it does, what it leaves on the disk, and what it says.
#include <gtest/gtest.h>

#include "cli/program.h"
#include "support/old_settings.h"

namespace qelm {
namespace {

using testing::Program;
using testing::ProgramResult;

ProgramResult Convert(Program& program, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"schemes", "convert"});
  return program.Run(std::move(arguments));
}

// The names of files beside it that begin with the name.
std::vector<std::string> Beside(const Program& program, const std::string& name) {
  std::vector<std::string> found;
  for (const std::string& file : program.folder.Names()) {
    if (file.starts_with(name)) found.push_back(file);
  }
  return found;
}

TEST(SchemesConvert, InPlaceWithBackupsAndTheSecondTimeNothing) {
  Program program;
  const std::string old = testing::OldSettings(testing::OldSettingsExample());
  const std::string file = program.folder.Write("house.fm", old);
  const ProgramResult result = Convert(program, {file});
  EXPECT_EQ(result.status, 0) << result.err;
  const std::string backup = file + ".BACKUP_before_3.00_conversion.fm";
  EXPECT_EQ(result.out, file + ": converted to format 3.00; the file before: " + backup + "\n" + file +
                            ": converted to format 3.04; the file before: " + file +
                            ".BACKUP_before_3.04_conversion.fm\n");
  EXPECT_EQ(program.folder.Read("house.fm.BACKUP_before_3.00_conversion.fm"), old);
  const std::string converted = program.folder.Read("house.fm");
  const ProgramResult again = Convert(program, {file});
  EXPECT_EQ(again.status, 0);
  EXPECT_EQ(again.out, file + ": the format is that of today; there is nothing to convert\n");
  EXPECT_EQ(program.folder.Read("house.fm"), converted);
  EXPECT_EQ(Beside(program, "house.fm").size(), 3U);
  const ProgramResult list = program.RunPlain(
      {"schemes", "list", "--profile", program.folder.File("profile"), "--main-settings", file});
  EXPECT_NE(list.out.find("coloring    xpath    By path/Marks"), std::string::npos) << list.out;
}

TEST(SchemesConvert, IntoAnotherFileTheSourceStays) {
  Program program;
  const std::string old = testing::OldSettings(testing::OldSettingsExample());
  const std::string file = program.folder.Write("house.fm", old);
  const std::string output = program.folder.File("new.xml");
  const nlohmann::json object = Convert(program, {file, "-o", output, "--json"}).Json();
  EXPECT_EQ(object["output"], output);
  ASSERT_EQ(object["conversions"].size(), 2U);
  EXPECT_EQ(object["conversions"][0]["to"], "3.00");
  EXPECT_TRUE(object["conversions"][1]["backup"].is_null());
  EXPECT_EQ(program.folder.Read("house.fm"), old);
  EXPECT_EQ(Beside(program, "house.fm"), (std::vector<std::string>{"house.fm"}));
  EXPECT_NE(program.folder.Read("new.xml").find("<Name>Beginner</Name>"), std::string::npos);
  EXPECT_EQ(Convert(program, {file, "-o", file}).status, 2);
  EXPECT_EQ(Convert(program, {file, "--no-backup"}).status, 0);
  EXPECT_EQ(Beside(program, "house.fm"), (std::vector<std::string>{"house.fm"}));
}

TEST(SchemesConvert, FailuresNameTheFileAndLeaveIt) {
  Program program;
  EXPECT_EQ(Convert(program, {program.document()}).status, 3) << "no main settings document";
  testing::OldElement settings = testing::OldSettingsExample();
  settings.children.pop_back();
  const std::string old = testing::OldSettings(settings);
  const std::string file = program.folder.Write("house.fm", old);
  const ProgramResult result = Convert(program, {file});
  EXPECT_EQ(result.status, 5);
  EXPECT_NE(result.err.find(file +
                            ": not converted to format 3.00: Couldn't find the <ColorList> element!; the "
                            "file before: " +
                            file + ".BACKUP_before_3.00_conversion.fm"),
            std::string::npos)
      << result.err;
  EXPECT_EQ(program.folder.Read("house.fm"), old);
  EXPECT_EQ(Beside(program, "house.fm").size(), 2U);
}

TEST(SchemesConvert, WhoeverUsesAnOldDocumentIsTold) {
  Program program;
  const std::string file =
      program.folder.Write("house.fm", testing::OldSettings(testing::OldSettingsExample()));
  const ProgramResult check = program.RunPlain(
      {"schemes", "check", "--profile", program.folder.File("profile"), "--main-settings", file});
  EXPECT_EQ(check.status, 1);
  EXPECT_NE(check.out.find("the document has the format of before 3.00"), std::string::npos) << check.out;
  const std::string command = "qelm schemes convert \"" + file + "\"";
  const std::size_t told = check.err.find(command);
  EXPECT_NE(told, std::string::npos) << check.err;
  EXPECT_EQ(check.err.find(command, told + 1), std::string::npos) << "once";
}

}  // namespace
}  // namespace qelm
