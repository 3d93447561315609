// Files that belong to somebody else at the moment, and what would take a command outside its folders.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "cli/program.h"

namespace qelm {
namespace {

namespace fs = std::filesystem;
using testing::Program;
using testing::ProgramResult;

const std::vector<std::string> kFilter = {"--scheme", "By/path/No users", "--mode", "source", "--yes"};

std::vector<std::string> Filter(const std::string& document, std::vector<std::string> more = {}) {
  std::vector<std::string> arguments = {"filter", document};
  arguments.insert(arguments.end(), kFilter.begin(), kFilter.end());
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

TEST(Locks, ADocumentThatFrameMakerHasOpenIsNotWritten) {
  Program program;
  const std::string before = testing::Program().Dump(program.document());
  const std::string lock = program.document() + ".lck";
  std::ofstream(lock) << "anna";
  const ProgramResult held = program.Run(Filter(program.document()));
  EXPECT_EQ(held.status, 3);
  EXPECT_NE(held.err.find(lock), std::string::npos) << held.err;
  EXPECT_EQ(program.Dump(program.document()), before);
  EXPECT_EQ(program.Run(Filter(program.document(), {"-o", program.folder.File("other.mif")})).status, 0)
      << "another file may be written";
  EXPECT_EQ(program.Run(Filter(program.document(), {"--ignore-lock"})).status, 0);
  EXPECT_NE(program.Dump(program.document()), before);
}

TEST(Locks, ADocumentThatWasChangedMeanwhileIsNotReplaced) {
  for (const bool overwrite : {false, true}) {
    Program program;
    const std::string path = program.document();
    const std::string changed =
        program.folder.Read(fs::path(path).filename().string()) + "# by somebody else\n";
    // The Esc key is looked for while the document is open.
    bool written = false;
    program.esc = [&] {
      if (!written) std::ofstream(path, std::ios::binary) << changed;
      written = true;
      return false;
    };
    const ProgramResult result = program.Run(
        Filter(path, overwrite ? std::vector<std::string>{"--overwrite"} : std::vector<std::string>{}));
    ASSERT_TRUE(written);
    EXPECT_EQ(result.status, overwrite ? 0 : 3) << result.err;
    if (overwrite) continue;
    EXPECT_NE(result.err.find("it was changed on disk"), std::string::npos) << result.err;
    EXPECT_EQ(program.folder.Read(fs::path(path).filename().string()), changed);
  }
}

TEST(Locks, ACopyThatWasCutIsNotOpened) {
  Program program;
  fs::create_directories(program.folder.File("copy/one/two"));
  program.folder.Write("copy/QELM-unfinished.txt", "");
  for (const char* name : {"copy/a.mif", "copy/one/two/a.mif"}) {
    const std::string copy = program.folder.File(name);
    fs::copy_file(program.document(), copy);
    for (const char* command : {"info", "dump", "uncolor"}) {
      const ProgramResult result = program.Run({command, copy});
      EXPECT_EQ(result.status, 3);
      EXPECT_NE(result.err.find("not completed"), std::string::npos) << result.err;
    }
  }
}

TEST(NoWayIn, DevicesAndPipesAreNotRead) {
  Program program;
  const std::string pipe = program.folder.File("pipe.mif");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  fs::create_symlink("/dev/zero", program.folder.File("zero.mif"));
  for (const std::string& path : {pipe, program.folder.File("zero.mif"), std::string("/dev/zero")}) {
    const ProgramResult result = program.Run({"info", path});
    EXPECT_EQ(result.status, 3) << path;
    EXPECT_NE(result.err.find("not a file"), std::string::npos) << result.err;
  }
}

TEST(NoWayIn, XmlReadsNothingOutsideItsFile) {
  Program program;
  const std::string secret = program.folder.Write("secret.txt", "the secret");
  const std::string dtd = program.folder.Write("evil.dtd", "<!ENTITY said 'the secret'>");
  const std::string path =
      program.folder.Write("a.xml", "<!DOCTYPE Doc SYSTEM \"" + dtd + "\" [<!ENTITY x SYSTEM \"file://" +
                                        secret + "\">]>\n<Doc><P>&x;&said;</P></Doc>\n");
  const ProgramResult result = program.Run({"dump", path});
  EXPECT_EQ(result.out.find("the secret"), std::string::npos) << result.out;
  std::string laughs = "<!DOCTYPE Doc [<!ENTITY a0 'ha'>";
  for (int i = 1; i < 40; ++i) {
    const std::string inner = "&a" + std::to_string(i - 1) + ";";
    laughs += "<!ENTITY a" + std::to_string(i) + " '" + inner + inner + "'>";
  }
  const ProgramResult bomb =
      program.Run({"info", program.folder.Write("b.xml", laughs + "]><Doc>&a39;</Doc>")});
  EXPECT_EQ(bomb.status, 3);
  EXPECT_NE(bomb.err.find("amplification"), std::string::npos) << bomb.err;
}

}  // namespace
}  // namespace qelm
