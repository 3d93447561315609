// Two processes that write the same document or book at once. One of them is stopped at a chosen operation by
// the library of the fault tests, so that nothing depends on which is faster.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "cli/program.h"
#include "support/mif_files.h"

namespace qelm {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;
using Tree = std::map<std::string, std::string>;

class TwoRuns : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"a.mif", "b.mif", "c.mif"}) {
      folder().Write("source/" + std::string(name), folder().Read("doc.mif"));
    }
    folder().Write("source/book.mif", testing::MifBook({"<c>a.mif", "<c>b.mif", "<c>c.mif"}));
  }

  // With `stop_at` above 0 the process stops before that operation on a file of the folder.
  pid_t Start(const Names& command, long stop_at = 0, const std::string& log = "") {
    Names words = {QELM_BINARY_DIR "/qelm"};
    words.insert(words.end(), command.begin(), command.end());
    words.insert(words.end(), {"--quiet", "--profile", folder().File("profile"), "--main-settings",
                               folder().File("main.xml"), "--plugin-dir", QELM_SOURCE_DIR "/assets"});
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const pid_t process = ::fork();
    if (process != 0) return process;
    if (stop_at > 0 || !log.empty()) {
      ::setenv("LD_PRELOAD", QELM_BINARY_DIR "/libfailing_files.so", 1);
      ::setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
      ::setenv("QELM_FAULT_ROOT", folder().path().c_str(), 1);
      ::setenv("QELM_FAULT", "stop", 1);
      ::setenv("QELM_FAULT_AT", std::to_string(stop_at).c_str(), 1);
      if (!log.empty()) ::setenv("QELM_FAULT_LOG", log.c_str(), 1);
    }
    const int said = ::open(folder().File("said").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
    ::dup2(said, STDOUT_FILENO);
    ::dup2(said, STDERR_FILENO);
    ::execv(pointers[0], pointers.data());
    ::_exit(127);
  }
  static int Wait(pid_t process) {
    int status = 0;
    EXPECT_EQ(::waitpid(process, &status, 0), process);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  int Run(const Names& command) { return Wait(Start(command)); }

  // Runs the command once; what it did to files, one after the other.
  Names Operations(const Names& command) {
    const std::string log = folder().File("log");
    fs::remove(log);
    EXPECT_EQ(Wait(Start(command, 0, log)), 0) << folder().Read("said");
    std::istringstream lines(folder().Read("log"));
    Names operations;
    for (std::string line; std::getline(lines, line);) operations.push_back(line);
    return operations;
  }
  // Runs the command once, and returns at which of its operations it does that to the file.
  long Find(const Names& command, const std::string& operation, const std::string& path) {
    const Names operations = Operations(command);
    const auto found = std::find(operations.begin(), operations.end(), operation + " " + path);
    if (found != operations.end()) return found - operations.begin() + 1;
    ADD_FAILURE() << operation << " " << path << " was not done";
    return 0;
  }
  // A run that has come to that operation.
  pid_t Stopped(const Names& command, long operation) {
    const pid_t process = Start(command, operation);
    int status = 0;
    EXPECT_EQ(::waitpid(process, &status, WUNTRACED), process);
    EXPECT_TRUE(WIFSTOPPED(status));
    return process;
  }
  int GoOn(pid_t process) {
    ::kill(process, SIGCONT);
    return Wait(process);
  }
  Tree Files(const std::string& name) {
    Tree tree;
    for (const auto& entry : fs::recursive_directory_iterator(folder().File(name))) {
      const std::string file = entry.path().lexically_relative(folder().path());
      if (entry.is_regular_file()) tree[entry.path().filename()] = folder().Read(file);
    }
    return tree;
  }
  testing::TempFolder& folder() { return program_.folder; }

 private:
  testing::Program program_;
};

Names Filter(const std::string& source, const std::string& scheme, const std::string& option,
             const std::string& target) {
  return {"filter", source, "--scheme", scheme, "--mode", "duplicate", option, target};
}

// The mark is flushed first; what is moved into place before it is moved, as an earlier copy gives way to it;
// and all of it, after its last change, before the mark goes.
TEST_F(TwoRuns, ACopyIsOnTheDeviceBeforeItCounts) {
  const Names command = Filter(folder().File("source/book.mif"), "Audience/Admin", "--output-folder",
                               folder().File("made/out"));
  for (int again = 0; again < 2; ++again) {
    const Names done = Operations(command);
    const auto is = [&](const std::string& operation, const std::string& name) {
      return [line = operation + " " + folder().File("made/out/" + name)](const std::string& d) {
        return d == line;
      };
    };
    const auto last = [&](const std::string& operation, const std::string& name) {
      return std::find_if(done.rbegin(), done.rend(), is(operation, name));
    };
    const auto first = [&](const std::string& operation, const std::string& name) {
      return std::find_if(done.begin(), done.end(), is(operation, name));
    };
    const auto complete = last("unlink", "QELM-unfinished.txt");
    ASSERT_NE(complete, done.rend());
    for (const char* name : {"a.mif", "b.mif", "c.mif", ".qelm-made-book.mif.txt"}) {
      ASSERT_NE(last("rename", name), done.rend()) << name;
      EXPECT_TRUE(complete < last("fsync", name) && last("fsync", name) < last("rename", name)) << name;
    }
    const auto named = std::find(done.begin(), done.end(), "fsync " + folder().File("made"));
    EXPECT_TRUE(named != done.end() || again == 1) << "where the folder was made";
    const auto placed = first("rename", ".qelm-made-book.mif.txt");
    EXPECT_LT(first("fsync", "QELM-unfinished.txt"), first("fsync", ".qelm-copy-1/.qelm-0.new"));
    for (const char* name : {".qelm-0.new", ".qelm-1.new", ".qelm-2.new", ".qelm-3.new"}) {
      EXPECT_LT(first("fsync", ".qelm-copy-1/" + std::string(name)), placed) << name;
    }
  }
}

TEST_F(TwoRuns, OnTheSameTargetOneWinsAndTheOtherSaysWhoItWas) {
  const struct {
    const char* source;
    const char* option;
    const char* target;
    const char* last;  // the file that completes it
  } kRows[] = {{"doc.mif", "-o", "out/doc.mif", "out/doc.mif"},
               {"source/book.mif", "--output-folder", "out", "out/book.mif"}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.source);
    fs::remove_all(folder().File("out"));
    fs::create_directory(folder().File("out"));
    const Names first =
        Filter(folder().File(row.source), "By/path/No users", row.option, folder().File(row.target));
    const Names second =
        Filter(folder().File(row.source), "By/path/No cells", row.option, folder().File(row.target));
    // Each of the first command's runs finds what the second one has left, so that they do the same.
    ASSERT_EQ(Run(second), 0) << folder().Read("said");
    const long last = Find(first, "rename", folder().File(row.last));
    const Tree of_first = Files("out");
    ASSERT_EQ(Run(second), 0);
    const Tree of_second = Files("out");
    ASSERT_TRUE(of_first != of_second);

    const pid_t held = Stopped(first, last);
    EXPECT_NE(Run(second), 0);
    const std::string said = folder().Read("said");
    EXPECT_NE(said.find("another run of QELM is writing"), std::string::npos) << said;
    EXPECT_NE(said.find(", since 2"), std::string::npos) << "owner and time: " << said;
    EXPECT_EQ(GoOn(held), 0);
    EXPECT_TRUE(Files("out") == of_first) << "no file of the second, and none is left over";
    EXPECT_EQ(Run(second), 0);
    EXPECT_TRUE(Files("out") == of_second);
  }
}

// Two documents of the same name, each of which would find that nobody has put anything there yet.
TEST_F(TwoRuns, OfTwoBatchesIntoOneFolderTheSecondSaysWhoTheFirstWas) {
  const auto batch = [this](const std::string& source, const char* report) {
    return Names{"batch",
                 folder().File(source),
                 "--category",
                 "By/path",
                 "--shard",
                 "1/4",
                 "--no-pdf",
                 "--output",
                 folder().File("out/<scheme_name>"),
                 "--report",
                 folder().File(report)};
  };
  folder().Write("other/doc.mif", testing::Mif("<Doc>\n<P>of the other</P>\n</Doc>"));
  const Names first = batch("doc.mif", "first.fm");
  const Names second = batch("other/doc.mif", "second.fm");
  const std::string out = "out/No users";
  const std::pair<const char*, const char*> kMoments[] = {
      {"create", ".qelm-.qelm-made-doc.mif.txt.new"},  // that it put anything there is not on record yet
      {"rename", "xml/doc.pdf.xml"}};
  for (const auto& [operation, file] : kMoments) {
    SCOPED_TRACE(file);
    fs::remove_all(folder().File("out"));
    ASSERT_EQ(Run(first), 0) << folder().Read("said");
    const Tree alone = Files(out);
    fs::remove_all(folder().File("out"));
    const long at = Find(first, operation, folder().File(out + "/" + file));
    fs::remove_all(folder().File("out"));
    const pid_t held = Stopped(first, at);
    EXPECT_EQ(Run(second), 1);
    const std::string said = folder().Read("said");
    EXPECT_NE(said.find(folder().File(out + "/doc.mif") + ": "), std::string::npos) << said;
    EXPECT_NE(said.find("another run of QELM is writing"), std::string::npos) << said;
    EXPECT_EQ(GoOn(held), 0) << folder().Read("said");
    EXPECT_TRUE(Files(out) == alone);
    EXPECT_EQ(Run(second), 1) << "it is somebody's now";
    EXPECT_TRUE(Files(out) == alone);
  }
}

// A report has its name from the beginning of its run, and its file at the end.
TEST_F(TwoRuns, BatchesOfOneSecondWriteReportsOfTheirOwnAndAKilledOneLeavesNone) {
  ::setenv("SOURCE_DATE_EPOCH", "1700000000", 1);
  const Names batch = {"batch",      folder().File("doc.mif"),
                       "--category", "By/path",
                       "--shard",    "1/4",
                       "--no-pdf",   "--no-xml",
                       "--output",   folder().File("out/<scheme_name>")};
  const std::string report = "Batch_filter_report_2023_11_14__22_13_20_part_1_of_4";
  const auto reports = [this] {
    Names names;
    for (const auto& [name, content] : Files("out")) {
      if (name.find("report") != std::string::npos) names.push_back(name);
    }
    fs::remove_all(folder().File("out"));
    return names;
  };
  const Names both = {report + "-2.fm", report + ".fm"};
  const long copy = Find(batch, "create", folder().File("out/No users/.qelm-.qelm-made-doc.mif.txt.new"));
  fs::remove_all(folder().File("out"));
  const long end = Find(batch, "create", folder().File("out/.qelm-" + report + ".fm.new"));
  fs::remove_all(folder().File("out"));

  pid_t first = Stopped(batch, copy);
  EXPECT_EQ(Run(batch), 1) << "its copy is being written";
  EXPECT_EQ(GoOn(first), 0) << folder().Read("said");
  EXPECT_EQ(reports(), both);

  first = Stopped(batch, copy);
  folder().Write("out/" + report + ".fm", "mine");
  EXPECT_EQ(GoOn(first), 0) << folder().Read("said");
  EXPECT_EQ(folder().Read("out/" + report + ".fm"), "mine");
  EXPECT_EQ(reports(), both);

  first = Stopped(batch, end);
  ::kill(first, SIGKILL);
  EXPECT_EQ(Wait(first), -1);
  EXPECT_EQ(Run(batch), 0) << folder().Read("said");
  EXPECT_EQ(reports(), Names{report + ".fm"});
  ::unsetenv("SOURCE_DATE_EPOCH");
}

TEST_F(TwoRuns, WhoeverWinsTheFilesAreThoseOfOneRun) {
  const auto command = [this](const std::string& scheme) {
    return Filter(folder().File("source/book.mif"), scheme, "--output-folder", folder().File("out"));
  };
  const Names schemes = {"By/path/No users", "By/path/No cells"};
  std::vector<Tree> alone;
  for (const std::string& scheme : schemes) {
    ASSERT_EQ(Run(command(scheme)), 0);
    alone.push_back(Files("out"));
  }
  ASSERT_TRUE(alone[0] != alone[1]);
  for (int round = 0; round < 4; ++round) {
    std::vector<pid_t> processes;
    for (const std::string& scheme : schemes) processes.push_back(Start(command(scheme)));
    std::size_t done = 0;
    for (const pid_t process : processes) done += Wait(process) == 0 ? 1U : 0U;
    EXPECT_GE(done, 1U);
    const Tree found = Files("out");
    EXPECT_TRUE(found == alone[0] || found == alone[1]) << round;
  }
}

}  // namespace
}  // namespace qelm
