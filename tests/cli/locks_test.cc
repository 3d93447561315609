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

TEST(Locks, OfACopyInsideOnlyWhatItIsKnownToHavePutThereIsOpened) {
  Program program;
  program.folder.Write("copy/QELM-unfinished.txt", "");
  const std::string pump = QELM_SOURCE_DIR "/examples/pump";
  ASSERT_EQ(program
                .RunPlain({"batch", pump + "/operation.mif", "--category", "Editions", "--output",
                           program.folder.File("copy/<scheme_name>"), "--shard", "3/5", "--variables",
                           pump + "/variables", "--profile", program.folder.File("profile")})
                .status,
            0);
  const std::string made = program.folder.File("copy/Service/operation.mif");
  EXPECT_EQ(program.Run({"info", made}).status, 0);
  const std::string other = program.folder.File("copy/Service/other.mif");
  fs::copy_file(made, other);
  EXPECT_EQ(program.Run({"info", other}).status, 3) << "the copy around it may have put it there";
  program.folder.Write("copy/Service/operation.mif",
                       program.folder.Read("copy/Service/operation.mif") + "\n");
  EXPECT_EQ(program.Run({"info", made}).status, 3);
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

// What lies in an output folder before the run.
TEST(NoWayIn, LinksLeadNoOutputOutOfItsFolder) {
  const std::string pump = QELM_SOURCE_DIR "/examples/pump";
  const struct {
    const char* what;
    const char* link;  // in the output folder, to a folder with somebody's files
    const char* file;  // or to a file
  } kRows[] = {
      {"pump.book.mif", "graphics", ""},
      {"operation.mif", "pdf", ""},
      {"operation.mif", "operation.mif", "operation.mif"},
      {"operation.mif", "../.qelm-batch", ""},
      {"operation.mif", ".qelm-made-operation.mif.txt", "operation.mif"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.what) + " " + row.link);
    Program program;
    const std::string theirs = program.folder.Write("theirs/operation.mif", "theirs");
    const std::string out = program.folder.File("out/Service");
    fs::create_directories(out);
    fs::create_symlink(fs::path(program.folder.File("theirs")) / row.file, fs::path(out) / row.link);
    const ProgramResult result =
        program.RunPlain({"batch", pump + "/" + row.what, "--category", "Editions", "--output",
                          program.folder.File("out") + "/<scheme_name>", "--overwrite", "--shard", "3/5",
                          "--variables", pump + "/variables", "--profile", program.folder.File("profile")});
    EXPECT_NE((result.out + result.err).find("link leads out"), std::string::npos) << result.out;
    EXPECT_EQ(program.folder.Read("theirs/operation.mif"), "theirs");
    EXPECT_EQ(std::distance(fs::directory_iterator(program.folder.File("theirs")), {}), 1);
  }
  // The user's own link to a folder is a folder, also beside the report of a batch; and so is one with a
  // separator at its end.
  Program program;
  fs::create_directory(program.folder.File("other"));
  fs::create_directory_symlink(program.folder.File("other"), program.folder.File("mine"));
  const ProgramResult result = program.RunPlain(
      {"filter", pump + "/pump.book.mif", "--scheme", "Audience/Beginner", "--mode", "duplicate",
       "--output-folder", program.folder.File("mine") + "/", "--profile", program.folder.File("profile")});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_TRUE(fs::exists(program.folder.File("other/graphics/pump.png")));
  fs::create_directory(program.folder.File("outs"));
  fs::create_directory_symlink(program.folder.File("outs"), program.folder.File("outs/Service"));
  const ProgramResult batch =
      program.RunPlain({"batch", pump + "/operation.mif", "--category", "Editions", "--output",
                        program.folder.File("outs") + "/<scheme_name>/", "--shard", "3/5", "--variables",
                        pump + "/variables", "--profile", program.folder.File("profile")});
  EXPECT_EQ(batch.status, 0) << batch.out << batch.err;
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
}

}  // namespace
}  // namespace qelm
