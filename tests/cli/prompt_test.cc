// The prompt of `qelm xpath FILE`: at a terminal, made by the system for the test, and over a stream.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <filesystem>

#include "cli/program.h"

namespace qelm::testing {
namespace {

TEST(Prompt, LinesOfAStreamAreAnsweredInTurn) {
  Program program;
  const ProgramResult result =
      program.Run({"xpath", program.document()},
                  "/*\n\n  :names\n//Section[]\n:nams\n:explain\n:explain //P\n//Section\n");
  EXPECT_EQ(result.status, 4) << "one was refused";
  EXPECT_EQ(result.out.find("xpath>"), std::string::npos) << "nobody is asked";
  EXPECT_NE(result.out.find("attributes: @"), std::string::npos) << result.out;
  EXPECT_NE(result.err.find("XPATH_ERR_EMPTY_PREDICATE"), std::string::npos);
  EXPECT_NE(result.err.find("did you mean \":names\"?"), std::string::npos) << result.err;
  EXPECT_NE(result.err.find(":explain needs an expression"), std::string::npos) << result.err;
  EXPECT_NE(result.out.find("descendant-or-self::P"), std::string::npos) << result.out;
  EXPECT_NE(result.out.rfind("Section[2]"), std::string::npos)
      << "the prompt goes on behind what was refused";
  EXPECT_EQ(program.Run({"xpath", program.document()}, "//Section\n:quit\n//Section[]\n").status, 0);
}

// A program at a pseudo-terminal.
class Terminal {
 public:
  explicit Terminal(std::vector<std::string> arguments, const std::string& state_folder) {
    pid_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (pid_ != 0) return;
    ::setenv("XDG_STATE_HOME", state_folder.c_str(), 1);
    ::setenv("TERM", "dumb", 1);
    ::setenv("INPUTRC", "/dev/null", 1);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  ~Terminal() {
    if (pid_ <= 0) return;
    ::close(terminal_);
    ::waitpid(pid_, nullptr, 0);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void Type(const std::string& keys) {
    EXPECT_EQ(::write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  // Waits until the screen shows the text; what was shown up to there is forgotten.
  bool Shows(const std::string& text) {
    constexpr int kPatience = 20000;
    for (;;) {
      const std::size_t at = screen_.find(text);
      if (at != std::string::npos) {
        screen_.erase(0, at + text.size());
        return true;
      }
      pollfd waiting{terminal_, POLLIN, 0};
      if (::poll(&waiting, 1, kPatience) <= 0) return false;
      char bytes[4096];
      const ssize_t count = ::read(terminal_, bytes, sizeof bytes);
      if (count <= 0) return false;
      screen_.append(bytes, static_cast<std::size_t>(count));
    }
  }
  // Waits for the prompt, and until the line is edited by the program: it shows the prompt first, and up to
  // then the terminal edits the line in its own way.
  bool Prompts() {
    if (!Shows("xpath> ")) return false;
    constexpr int kTries = 20000;
    for (int i = 0; i < kTries; ++i) {
      termios mode{};
      if (::tcgetattr(terminal_, &mode) == 0 && (mode.c_lflag & ICANON) == 0) return true;
      ::poll(nullptr, 0, 1);
    }
    return false;
  }
  int Status() {
    int status = -1;
    ::waitpid(pid_, &status, 0);
    pid_ = 0;
    ::close(terminal_);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  const std::string& screen() const { return screen_; }

 private:
  int terminal_ = -1;
  pid_t pid_ = 0;
  std::string screen_;
};

TEST(Prompt, ATerminalHasCompletionEditingAndHistory) {
  const std::string qelm = QELM_BINARY_DIR "/qelm";
  if (!std::filesystem::exists(qelm)) GTEST_SKIP() << "the program is not built";
  TempFolder state;
  Program program;
  const std::vector<std::string> arguments = {qelm, "--profile", state.path(), "xpath", program.document()};
  {
    Terminal terminal(arguments, state.path());
    ASSERT_TRUE(terminal.Prompts()) << terminal.screen();
    terminal.Type("//Sec\t[@Aud\t='admin']\r");
    EXPECT_TRUE(terminal.Shows("//Section[@Audience='admin']")) << terminal.screen();
    EXPECT_TRUE(terminal.Shows("1 match")) << terminal.screen();
    ASSERT_TRUE(terminal.Prompts()) << terminal.screen();
    terminal.Type("//Sectiom[]\x1b[D\x1b[D\x7fn\r");  // two to the left, one away: //Section[]
    EXPECT_TRUE(terminal.Shows("XPATH_ERR_EMPTY_PREDICATE")) << terminal.screen();
    EXPECT_TRUE(terminal.Shows("  //Section[]\r\n  ..........^")) << terminal.screen();
    ASSERT_TRUE(terminal.Prompts()) << terminal.screen();
    terminal.Type("\x1b[A\x1b[A\r");
    EXPECT_TRUE(terminal.Shows("1 match")) << "the line before the last is back: " << terminal.screen();
    ASSERT_TRUE(terminal.Prompts()) << terminal.screen();
    terminal.Type(":quit\r");
    EXPECT_EQ(terminal.Status(), 0);
  }
  Terminal later(arguments, state.path());
  ASSERT_TRUE(later.Prompts());
  later.Type("\x1b[A\x1b[A\r");
  EXPECT_TRUE(later.Shows("1 match")) << "lines of earlier sessions are kept: " << later.screen();
  ASSERT_TRUE(later.Prompts()) << later.screen();
  later.Type("\x04");
  EXPECT_EQ(later.Status(), 0);
}

}  // namespace
}  // namespace qelm::testing
