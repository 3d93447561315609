// qelm batch as a process that is killed at some moment, and what the next run makes of that.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "cli/program.h"
#include "embedded/adapter/platform.h"

extern char** environ;

namespace qelm {
namespace {

namespace fs = std::filesystem;
using testing::Program;
using Names = std::vector<std::string>;
using Tree = std::map<std::string, std::string>;

const fs::path kPump = fs::path(QELM_SOURCE_DIR) / "examples/pump";

class KilledBatch : public ::testing::Test {
 protected:
  void SetUp() override { setenv("SOURCE_DATE_EPOCH", "1700000000", 1); }
  void TearDown() override { unsetenv("SOURCE_DATE_EPOCH"); }

  Names Arguments(const std::string& source, const std::string& out, const Names& more) {
    const std::string folder = program.folder.File(out);
    Names arguments = {"batch",
                       kPump / source,
                       "--category",
                       "Editions",
                       "--output",
                       folder + "/<scheme_name>",
                       "--report",
                       folder + "/report.fm",
                       "--variables",
                       kPump / "variables",
                       "--profile",
                       program.folder.File("profile"),
                       "--quiet",
                       "--plugin-dir",
                       QELM_SOURCE_DIR "/assets"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }
  // A process of its own: what was there when it began is nobody's who still runs.
  pid_t Start(const std::string& source, const std::string& out, const Names& more);
  void Run(const std::string& source, const std::string& out, const Names& more = {}) {
    int status = 0;
    ::waitpid(Start(source, out, more), &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
  }
  // Whether the process was still running when the folder had that many files, and was killed then.
  bool KillAt(std::size_t files, const std::string& source, const std::string& out, const Names& more);
  std::size_t CountFiles(const std::string& out);
  Tree Output(const std::string& out) { return testing::BatchOutput(program.folder, out); }

  Program program;
};

std::size_t KilledBatch::CountFiles(const std::string& out) {
  std::size_t count = 0;
  std::error_code error;
  fs::recursive_directory_iterator at(program.folder.File(out), error);
  for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
    if (at->path().filename().string().front() != '.') ++count;
  }
  return count;
}

pid_t KilledBatch::Start(const std::string& source, const std::string& out, const Names& more) {
  Names words = Arguments(source, out, more);
  words.insert(words.begin(), QELM_BINARY_DIR "/qelm");
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  posix_spawn_file_actions_t silent;
  posix_spawn_file_actions_init(&silent);
  posix_spawn_file_actions_addopen(&silent, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&silent, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t process = 0;
  EXPECT_EQ(::posix_spawn(&process, words[0].c_str(), &silent, nullptr, pointers.data(), environ), 0);
  posix_spawn_file_actions_destroy(&silent);
  return process;
}

bool KilledBatch::KillAt(std::size_t files, const std::string& source, const std::string& out,
                         const Names& more) {
  const pid_t process = Start(source, out, more);
  int status = 0;
  bool ended = false;
  while (!ended && CountFiles(out) < files) ended = ::waitpid(process, &status, WNOHANG) == process;
  if (ended) return false;
  ::kill(process, SIGKILL);
  ::waitpid(process, &status, 0);
  return WIFSIGNALED(status);
}

void ExpectSame(const Tree& found, const Tree& expected, const std::string& when) {
  for (const auto& [name, content] : expected) {
    const auto same = found.find(name);
    EXPECT_TRUE(same != found.end() && same->second == content) << name << ", " << when;
  }
  for (const auto& [name, content] : found) EXPECT_TRUE(expected.contains(name)) << name << ", " << when;
}

TEST_F(KilledBatch, IsTakenUpAgainFromAnyMoment) {
  for (const std::string source : {"pump.book.mif", "operation.mif"}) {
    Run(source, "whole");
    const Tree expected = Output("whole");
    const std::size_t all = CountFiles("whole");
    ASSERT_GT(expected.size(), 5U * 3);
    std::size_t killed = 0;
    for (const std::size_t files : {std::size_t{1}, all / 3, all * 2 / 3}) {
      const std::string when = source + " killed at " + std::to_string(files) + " files";
      const Names more = files % 2 == 0 ? Names{"--jobs", "2"} : Names{};
      if (KillAt(files, source, "cut", more)) ++killed;
      Names again = more;
      again.emplace_back("--resume");
      Run(source, "cut", again);
      ExpectSame(Output("cut"), expected, when);
      fs::remove_all(program.folder.File("cut"));
    }
    EXPECT_GT(killed, 0U);
    fs::remove_all(program.folder.File("whole"));
  }
}

// Killed between placing the components of a copy and its book: what was placed is taken back by the list
// that lies there, and what is not in the list stays. A file whose place nobody knows stays where it is, and
// so does what lies behind a link to somewhere else.
TEST_F(KilledBatch, HalfPlacedBookIsDoneOver) {
  Run("pump.book.mif", "whole", {"--no-pdf"});
  const std::string folder = "cut/Service/";
  program.folder.Write(folder + "notes.txt", "half placed");
  program.folder.Write(folder + "operation.mif", program.folder.Read("whole/Service/operation.mif"));
  program.folder.Write(folder + "reference.mif", program.folder.Read("whole/Service/reference.mif"));
  const std::string stage = folder + ".qelm-copy-1/";
  program.folder.Write(stage + "0", program.folder.Read("whole/Service/pump.book.mif"));
  embedded::adapter::PosixPlatform platform;
  std::string lines;
  for (const auto& [number, name] : {std::pair<std::string, std::string>{"7-before", "notes.txt"},
                                     {"6", "reference.mif"},
                                     {"5", "operation.mif"},
                                     {"4", "../../outside.mif"},
                                     {"0", "pump.book.mif"}}) {
    lines += number + "\t" + platform.FileState(program.folder.File(folder + name)) + "\t" + name + "\n";
  }
  const std::string list = program.folder.Write(stage + "placed", lines);
  program.folder.Write(stage + "7-before", "mine");
  const std::string unknown = folder + ".qelm-copy-2/";
  const std::string kept = program.folder.Write(unknown + "9-before", "replaced");
  program.folder.Write("outside.mif", "not in the folder");
  const std::string outside = platform.FileState(program.folder.File("outside.mif"));
  program.folder.Write(unknown + "placed", "3\t" + outside + "\tlink/outside.mif\n");
  const auto before = fs::file_time_type::clock::now() - std::chrono::hours(1);
  fs::create_directory_symlink(program.folder.path(), program.folder.File(folder + "link"));
  fs::last_write_time(fs::path(list).parent_path(), before);
  fs::last_write_time(fs::path(kept).parent_path(), before);
  Run("pump.book.mif", "cut", {"--no-pdf", "--resume"});
  Tree found = Output("cut");
  EXPECT_EQ(found["Service/notes.txt"], "mine");
  found.erase("Service/notes.txt");
  EXPECT_EQ(found["Service/.qelm-copy-2/9-before"], "replaced");
  std::erase_if(found, [](const auto& file) { return file.first.starts_with("Service/.qelm-copy-2/"); });
  ExpectSame(found, Output("whole"), "done over");
  EXPECT_EQ(program.folder.Read("outside.mif"), "not in the folder");
}

}  // namespace
}  // namespace qelm
