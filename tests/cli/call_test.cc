// qelm call: calls from the command line, and what becomes of what they changed.
#include <gtest/gtest.h>

#include "cli/program.h"

namespace qelm::testing {
namespace {

std::vector<std::string> Filtering(const std::string& type, const std::string& document) {
  return {"--", "SetScheme---filter---Audience---Admin", "SetParm---Filter_Type---" + type,
          "FilterFile---" + document};
}

std::vector<std::string> Joined(std::vector<std::string> first, const std::vector<std::string>& rest) {
  first.insert(first.end(), rest.begin(), rest.end());
  return first;
}

// Runs with the options of the fixture before the mark, behind which everything is a call.
ProgramResult Call(Program& program, std::vector<std::string> options,
                   const std::vector<std::string>& calls) {
  options.insert(options.begin(), {"call", "--profile", program.folder.File("profile"), "--main-settings",
                                   program.folder.File("main.xml")});
  return program.RunPlain(Joined(options, calls));
}

TEST(CallCommand, PrintsAnIntegerForEachString) {
  Program program;
  const ProgramResult result =
      Call(program, {program.document()},
           {"--", "Hello", "GetParm---QELMVersionMajor", "info", "--json", "[x]", ""});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "1\n1\n101\n101\n101\n101\n");
  const auto json = Call(program, {"--json"}, {"--", "FilterFile---nowhere.mif"}).Json();
  EXPECT_EQ(json["results"].dump(), R"([{"call":"FilterFile---nowhere.mif","from":"call","result":104}])");
  EXPECT_EQ(json["saved"].dump(), "[]");
}

TEST(CallCommand, WithoutAStringThereIsNothingToDo) {
  Program program;
  EXPECT_EQ(Call(program, {program.document()}, {}).status, 2);
  EXPECT_EQ(Call(program, {program.document()}, {"--"}).status, 2);
  EXPECT_EQ(Call(program, {"-o", program.folder.File("out.mif")}, {"--", "Hello"}).status, 2);
}

TEST(CallCommand, FiltersByteForByteAsTheFilterCommand) {
  for (const auto& [type, mode] : {std::pair("Source", "source"), {"Source_NR", "source-nr"}}) {
    Program program;
    const std::string called = program.folder.File("called.mif");
    const std::string filtered = program.folder.File("filtered.mif");
    const std::string before = program.folder.Read("doc.mif");
    const ProgramResult result =
        Call(program, {program.document(), "-o", called}, Filtering(type, program.document()));
    EXPECT_EQ(result.out, "1\n1\n1\n") << result.err;
    program.Run({"filter", program.document(), "--scheme", "Audience/Admin", "--mode", mode, "-o", filtered});
    EXPECT_EQ(program.folder.Read("called.mif"), program.folder.Read("filtered.mif")) << mode;
    EXPECT_NE(program.folder.Read("called.mif"), before);
    EXPECT_EQ(program.folder.Read("doc.mif"), before);
  }
}

TEST(CallCommand, ADuplicateComesWhereTheFilterCommandPutsIt) {
  Program program;
  const std::string before = program.folder.Read("doc.mif");
  const auto saved = Call(program, {program.document(), "--json"}, Filtering("Duplicate", program.document()))
                         .Json()["saved"];
  ASSERT_EQ(saved.size(), 1U);
  const std::string name = std::filesystem::path(saved[0].get<std::string>()).filename().string();
  const std::string copy = program.folder.Read(name);
  EXPECT_EQ(program.folder.Read("doc.mif"), before);
  const auto filter =
      program
          .Run({"filter", program.document(), "--scheme", "Audience/Admin", "--mode", "duplicate", "--json"})
          .Json();
  EXPECT_EQ(filter["output"], saved[0]);
  EXPECT_EQ(program.folder.Read(name), copy);
}

TEST(CallCommand, NothingIsSavedWhenAnOperationFailed) {
  Program program;
  const std::string before = program.folder.Read("doc.mif");
  const ProgramResult failed = Call(program, {program.document()},
                                    {"--", "SetScheme---filter---By/path---Broken",
                                     "SetParm---Filter_Type---Source", "FilterFile---" + program.document()});
  EXPECT_EQ(failed.out, "1\n1\n0\n");
  EXPECT_NE(failed.err.find("nothing was saved"), std::string::npos) << failed.err;
  EXPECT_EQ(program.folder.Read("doc.mif"), before);
}

TEST(CallCommand, ABookInPlaceIsFilteredAsByTheFilterCommand) {
  const std::filesystem::path pump = QELM_SOURCE_DIR "/examples/pump";
  Program program;
  for (const char* name : {"called", "filtered"}) {
    std::filesystem::copy(pump, program.folder.File(name), std::filesystem::copy_options::recursive);
  }
  const std::string called = program.folder.File("called/pump.book.mif");
  const ProgramResult result = Call(program, {called}, Filtering("Source", called));
  EXPECT_EQ(result.out, "1\n1\n1\n") << result.err;
  program.Run({"filter", program.folder.File("filtered/pump.book.mif"), "--scheme", "Audience/Admin",
               "--mode", "source"});
  for (const auto& file : std::filesystem::directory_iterator(pump)) {
    if (file.path().extension() != ".mif") continue;
    const std::string name = file.path().filename().string();
    EXPECT_EQ(program.folder.Read("called/" + name), program.folder.Read("filtered/" + name)) << name;
  }
}

TEST(RunCommand, CallsAreStepsToo) {
  Program program;
  const std::string script =
      program.folder.Write("s.qelm",
                           "copy doc.mif $WORK/d.mif\nopen $WORK/d.mif\n"
                           "call SetScheme---filter---Audience---Admin\nexpect result 1\n"
                           "call SetParm---Filter_Type---S\n"
                           "call FilterFile---$WORK/d.mif\nexpect result 1\n"
                           "call FilterFile---$WORK/e.mif\nexpect result 104\n"
                           "save\nexpect text $WORK/d.mif InCondition\n");
  const ProgramResult result = program.Run({"run", script});
  EXPECT_EQ(result.status, 0) << result.out << result.err;
}

}  // namespace
}  // namespace qelm::testing
