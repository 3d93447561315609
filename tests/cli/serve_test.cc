// qelm serve: the program as a process of its own, with clients on its socket.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "cli/program.h"

namespace qelm::testing {
namespace {

constexpr int kPatience = 60'000;  // milliseconds; only a server that hangs needs them
constexpr char kHello[] = R"({"call": "Hello"})";
constexpr char kOne[] = R"({"result":1,"from":"call"})";

class Client {
 public:
  explicit Client(const std::string& path) : fd_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    connected_ = ::connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
  }
  ~Client() { ::close(fd_); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  bool connected() const { return connected_; }

  // False when the server has cut the client off.
  bool Write(std::string_view data) {
    while (!data.empty()) {
      const ssize_t size = ::send(fd_, data.data(), data.size(), MSG_NOSIGNAL);
      if (size <= 0) return false;
      data.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
  }
  // As much as the server takes without being waited for.
  void WriteWhatGoes(std::string_view data) {
    (void)::send(fd_, data.data(), data.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }
  // "" when nothing comes any more.
  std::string Line() {
    while (in_.find('\n') == std::string::npos) {
      pollfd wait{fd_, POLLIN, 0};
      char data[4096];
      const ssize_t size = ::poll(&wait, 1, kPatience) == 1 ? ::recv(fd_, data, sizeof(data), 0) : 0;
      if (size <= 0) return "";
      in_.append(data, static_cast<std::size_t>(size));
    }
    const std::string line = in_.substr(0, in_.find('\n'));
    in_.erase(0, line.size() + 1);
    return line;
  }
  std::string Ask(const std::string& request) { return Write(request + "\n") ? Line() : ""; }
  void EndWriting() { ::shutdown(fd_, SHUT_WR); }

 private:
  int fd_;
  bool connected_ = false;
  std::string in_;
};

// A server on a socket of its own; ended by SIGTERM.
class Server {
 public:
  explicit Server(Program& program) : path_(program.folder.File("socket")) {
    int out[2];
    EXPECT_EQ(::pipe(out), 0);
    std::vector<std::string> arguments = {QELM_BINARY_DIR "/qelm",
                                          "serve",
                                          "--socket",
                                          path_,
                                          "--profile",
                                          program.folder.File("profile"),
                                          "--main-settings",
                                          program.folder.File("main.xml"),
                                          "--plugin-dir",
                                          QELM_SOURCE_DIR "/assets"};
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    process_ = ::fork();
    if (process_ == 0) {
      ::dup2(out[1], STDOUT_FILENO);
      ::dup2(::open("/dev/null", O_WRONLY), STDERR_FILENO);
      ::close(out[0]);
      ::close(out[1]);
      ::execv(pointers[0], pointers.data());
      ::_exit(127);
    }
    ::close(out[1]);
    char first = 0;
    EXPECT_EQ(::read(out[0], &first, 1), 1) << "it does not listen";
    ::close(out[0]);
  }
  ~Server() {
    if (process_ > 0) End();
  }

  // The exit status.
  int End() {
    ::kill(process_, SIGTERM);
    int status = 0;
    ::waitpid(std::exchange(process_, 0), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  const std::string& path() const { return path_; }
  pid_t process() const { return process_; }

 private:
  std::string path_;
  pid_t process_ = 0;
};

class Serve : public ::testing::Test {
 protected:
  static bool IsError(const std::string& answer) {
    const auto json = nlohmann::json::parse(answer, nullptr, false);
    return json.is_object() && json.contains("error") && !json["error"]["message"].get<std::string>().empty();
  }
  static std::string Request(const std::string& verb, const std::string& text) {
    return nlohmann::json({{verb, text}}).dump();
  }
  std::size_t Descriptors() const {
    const std::filesystem::directory_iterator all("/proc/" + std::to_string(server_.process()) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
  }

  Program program_;
  Server server_{program_};
};

TEST_F(Serve, FiltersAsTheCommandDoesAndTellsTheClientThatIsRegistered) {
  Client registered(server_.path());
  Client other(server_.path());
  EXPECT_EQ(registered.Ask(R"({"call": "SetNotificationClient---CMS"})"), kOne);
  EXPECT_EQ(registered.Ask(R"({"call": "SetNotificationStatus---1"})"), kOne);
  EXPECT_EQ(other.Ask(Request("open", program_.document())), R"({"result":1})");
  EXPECT_EQ(other.Ask(R"({"call": "SetScheme---filter---Audience---Admin"})"), kOne);
  EXPECT_EQ(other.Ask(R"({"call": "SetParm---Filter_Type---Source"})"), kOne);
  EXPECT_EQ(other.Ask(Request("call", "FilterFile---" + program_.document())),
            R"({"result":1,"from":"filter"})");
  for (const char* event : {"QELM_Filter_Start", "QELM_Filter_RestoreDoc_Start",
                            "QELM_Filter_RestoreDoc_Complete", "QELM_Filter_Complete"}) {
    EXPECT_EQ(registered.Line(), std::string(R"({"event":")") + event + "\"}");
  }
  const std::string before = program_.folder.Read("doc.mif");
  const std::string out = program_.folder.File("out.mif");
  EXPECT_EQ(other.Ask(nlohmann::json({{"save", program_.document()}, {"as", out}}).dump()),
            R"({"result":1})");
  EXPECT_EQ(other.Ask(Request("close", out)), R"({"result":1})");
  EXPECT_EQ(program_.folder.Read("doc.mif"), before);
  program_.Run({"filter", program_.document(), "--scheme", "Audience/Admin", "--mode", "source"});
  EXPECT_EQ(program_.folder.Read("out.mif"), program_.folder.Read("doc.mif"));
}

TEST_F(Serve, WhatIsNoRequestGetsAnErrorAndTheSessionGoesOn) {
  Client client(server_.path());
  const std::string rubbish[] = {"",
                                 "rubbish",
                                 "[]",
                                 "null",
                                 "{}",
                                 "{\"call\": 1}",
                                 "{\"cal\": \"Hello\"}",
                                 "{\"call\": \"Hello\"",
                                 "{\"call\": \"Hello\", \"open\": \"a\"}",
                                 "{\"call\": \"Hello\", \"as\": \"a\"}",
                                 "{\"as\": \"a\"}",
                                 "{\"open\": \"\"}",
                                 "{\"open\": \"a\\u0000b\"}",
                                 "{\"open\": \"/nowhere.mif\"}",
                                 "{\"save\": \"/nowhere.mif\"}",
                                 "{\"close\": \"/nowhere.mif\"}",
                                 "\xff\xfe",
                                 std::string(100, '\0'),
                                 std::string(500'000, '['),
                                 std::string(1'048'577, 'x')};
  for (const std::string& request : rubbish) {
    EXPECT_TRUE(IsError(client.Ask(request))) << request.substr(0, 100);
    EXPECT_EQ(client.Ask(kHello), kOne) << request.substr(0, 100);
  }
  std::string longest = R"({"call": ")";
  longest.append(1'048'576 - longest.size() - 2, 'x').append("\"}");
  EXPECT_EQ(client.Ask(longest), R"({"result":101,"from":"call"})");
}

TEST_F(Serve, OneClientDoesNoHarmToAnother) {
  Client good(server_.path());
  Client half(server_.path());
  half.Write(R"({"call": "Hel)");
  EXPECT_EQ(good.Ask(kHello), kOne);

  // Without a line end for 100 MB: told once, and passed over.
  Client endless(server_.path());
  const std::string block(1 << 20, 'x');
  for (int i = 0; i < 100; ++i) ASSERT_TRUE(endless.Write(block));
  EXPECT_EQ(good.Ask(kHello), kOne);
  EXPECT_TRUE(IsError(endless.Ask("")));
  EXPECT_EQ(endless.Ask(kHello), kOne);

  // One that asks and never reads is not heard any more.
  Client deaf(server_.path());
  for (int i = 0; i < 20'000; ++i) deaf.WriteWhatGoes(std::string(kHello) + "\n");
  EXPECT_EQ(good.Ask(kHello), kOne);

  // One that goes away in the middle.
  {
    Client gone(server_.path());
    gone.Write(Request("open", program_.document()) + "\n{\"call\"");
  }
  EXPECT_EQ(good.Ask(kHello), kOne);
  half.Write("lo\"}\n");
  EXPECT_EQ(half.Line(), kOne);

  // What was asked before a client ended its side is answered.
  Client ended(server_.path());
  ended.Write(std::string(kHello) + "\n" + kHello + "\n" + kHello);
  ended.EndWriting();
  EXPECT_EQ(ended.Line() + ended.Line() + ended.Line(), std::string(kOne) + kOne);
}

TEST_F(Serve, ConnectionsLeaveNothingBehind) {
  {
    Client first(server_.path());
    EXPECT_EQ(first.Ask(kHello), kOne);
  }
  Client last(server_.path());
  EXPECT_EQ(last.Ask(kHello), kOne);
  const std::size_t before = Descriptors();
  for (int i = 0; i < 500; ++i) {
    Client client(server_.path());
    ASSERT_EQ(client.Ask(kHello), kOne);
  }
  EXPECT_EQ(last.Ask(kHello), kOne);
  EXPECT_LE(Descriptors(), before + 1);  // one may not have been dropped yet
}

TEST_F(Serve, TheSocketIsTheOwnersAndGoesAtTheEnd) {
  struct stat there {};
  ASSERT_EQ(::lstat(server_.path().c_str(), &there), 0);
  EXPECT_EQ(there.st_mode & 0777, 0600U);
  const ProgramResult second = program_.Run({"serve", "--socket", server_.path()});
  EXPECT_EQ(second.status, 3);
  EXPECT_NE(second.err.find("another server"), std::string::npos) << second.err;
  Client client(server_.path());
  EXPECT_EQ(client.Ask(Request("open", program_.document())), R"({"result":1})");
  EXPECT_EQ(client.Ask(R"({"call": "SetScheme---filter---Audience---Admin"})"), kOne);
  EXPECT_EQ(client.Ask(R"({"call": "SetParm---Filter_Type---Source"})"), kOne);
  EXPECT_EQ(client.Ask(Request("call", "FilterFile---" + program_.document())),
            R"({"result":1,"from":"filter"})");
  const std::string before = program_.folder.Read("doc.mif");
  EXPECT_EQ(server_.End(), 0);
  EXPECT_EQ(client.Line(), "");
  EXPECT_NE(::lstat(server_.path().c_str(), &there), 0);
  EXPECT_EQ(program_.folder.Read("doc.mif"), before);
}

TEST_F(Serve, OthersAreNotServed) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the administrator can be somebody else";
  // As if somebody had opened the way since.
  for (const std::string& path : {program_.folder.path(), server_.path()}) {
    ASSERT_EQ(::chmod(path.c_str(), 0777), 0);
  }
  const pid_t other = ::fork();
  if (other == 0) {
    if (::setuid(65534) != 0) ::_exit(1);
    Client client(server_.path());
    ::_exit(!client.connected() ? 2 : client.Ask(kHello).empty() ? 0 : 3);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(other, &status, 0), other);
  EXPECT_EQ(status, 0) << "no answer came";
  EXPECT_EQ(Client(server_.path()).Ask(kHello), kOne);
  const std::string beside = program_.folder.File("beside");
  const ProgramResult open = program_.Run({"serve", "--socket", beside});
  EXPECT_EQ(open.status, 3);
  EXPECT_NE(open.err.find("other users"), std::string::npos) << open.err;
  EXPECT_FALSE(std::filesystem::exists(beside));
}

// Whoever opens a pipe waits for its other end.
TEST_F(Serve, PipesAndPagesAreNotOpenedOrSaved) {
  const std::string pipe = program_.folder.File("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  Client client(server_.path());
  EXPECT_NE(client.Ask(Request("open", pipe)).find("not an ordinary file"), std::string::npos);
  EXPECT_EQ(client.Ask(Request("open", program_.document())), R"({"result":1})");
  for (const std::string& name : {pipe, program_.folder.File("pages.pdf")}) {
    const nlohmann::json save = {{"save", program_.document()}, {"as", name}};
    EXPECT_NE(client.Ask(save.dump()).find("error"), std::string::npos) << name;
  }
  EXPECT_FALSE(std::filesystem::exists(program_.folder.File("pages.pdf")));
}

TEST_F(Serve, ALeftOverSocketIsReplacedAndAFileIsNot) {
  const std::string path = server_.path();
  ::kill(server_.process(), SIGKILL);
  server_.End();
  EXPECT_FALSE(Client(path).connected());
  EXPECT_TRUE(std::filesystem::exists(path));
  Server again(program_);
  EXPECT_EQ(Client(path).Ask(kHello), kOne);
  const std::string file = program_.folder.Write("file", "precious");
  const ProgramResult refused = program_.Run({"serve", "--socket", file});
  EXPECT_EQ(refused.status, 3);
  EXPECT_EQ(program_.folder.Read("file"), "precious");
  EXPECT_EQ(program_.Run({"serve", "--socket", program_.folder.File(std::string(200, 'x'))}).status, 3);
}

}  // namespace
}  // namespace qelm::testing
