// qelm serve: one session held open for clients on a socket.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <atomic>
#include <cerrno>
#include <ostream>
#include <system_error>

#include "cli/client_requests.h"
#include "cli/command.h"
#include "cli/session.h"
#include "cli/socket_server.h"

namespace qelm::cli {
namespace {

// A signal has no other way to tell the program.
std::atomic<int> stop_pipe{-1};
std::atomic<bool> stopping{false};

void HandleStop(int) {
  const int error = errno;
  stopping.store(true);
  const char byte = 0;
  // A pipe that is full has told it already.
  [[maybe_unused]] const ssize_t written = ::write(stop_pipe.load(), &byte, 1);
  errno = error;
}

// While this lives, SIGTERM and SIGINT make a descriptor readable instead of ending the process.
class StopSignals {
 public:
  StopSignals() {
    if (::pipe2(ends_.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
      throw Failure(ExitStatus::kFile, "no pipe for signals: " + std::generic_category().message(errno));
    }
    stopping.store(false);
    stop_pipe.store(ends_[1]);
    struct sigaction action {};
    action.sa_handler = HandleStop;
    for (std::size_t i = 0; i < kSignals.size(); ++i) ::sigaction(kSignals[i], &action, &before_[i]);
  }
  ~StopSignals() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) ::sigaction(kSignals[i], &before_[i], nullptr);
    for (const int end : ends_) ::close(end);
  }
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  int descriptor() const { return ends_[0]; }

 private:
  static constexpr std::array<int, 2> kSignals = {SIGTERM, SIGINT};
  std::array<int, 2> ends_{};
  std::array<struct sigaction, 2> before_{};
};

// Which client is meant when the plug-in notifies one by its name: the one that said the name last. A client
// has one name at a time.
class Names {
 public:
  void Say(const std::string& name, SocketServer::Client client) {
    Forget(client);
    clients_[name] = client;
  }
  void Forget(SocketServer::Client client) {
    std::erase_if(clients_, [client](const auto& entry) { return entry.second == client; });
  }
  // Nothing where nobody has that name.
  std::optional<SocketServer::Client> Find(std::string_view name) const {
    const auto found = clients_.find(name);
    if (found == clients_.end()) return std::nullopt;
    return found->second;
  }

 private:
  std::map<std::string, SocketServer::Client, std::less<>> clients_;
};

class ServeCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  bool NeedsUserSession() const override { return true; }
  Outcome Run(Session& session) override;

 private:
  std::string socket_;
};

CLI::App* ServeCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program,
      {"serve", "Hold one session open for other programs, on a socket",
       "Clients send one JSON object a line and get one back: {\"call\": STRING}, {\"open\": PATH},\n"
       "{\"save\": PATH, \"as\": PATH}, {\"close\": PATH}. Only the user who started it may connect.\n"
       "SIGTERM and Ctrl-C end it; what was not saved by a client is not saved then.",
       "qelm serve --socket /tmp/qelm.sock"});
  command->add_option("--socket", socket_, "Where the socket is made; it is removed at the end")
      ->required()
      ->type_name("PATH");
  return command;
}

Outcome ServeCommand::Run(Session& session) {
  StopSignals signals;
  // Whoever started the server may be gone, and what is told to standard error is then told to nobody.
  ::signal(SIGPIPE, SIG_IGN);
  SocketServer server(socket_);
  ClientRequests requests(session);
  Names names;
  std::uint64_t count = 0;
  // One client's question would keep all others waiting, and a run under way ends with the server.
  session.user().SetUnattended();
  session.user().SetSilent();
  session.options().quiet = true;  // of notices, which answers carry
  session.user().SetEsc([] { return stopping.load(); });
  session.clients().SetReceiver([&](std::string_view name, std::string_view text) {
    const std::optional<SocketServer::Client> client = names.Find(name);
    return client &&
           server.Send(*client, nlohmann::ordered_json({{"event", text}}).dump(), SocketServer::Kind::kEvent);
  });
  SocketServer::Handler handler;
  handler.line = [&](SocketServer::Client client, std::string_view line) {
    ++count;
    const std::uint64_t before = session.plugin().calls.registrations;
    const std::string answer = requests.Answer(line);
    if (session.plugin().calls.registrations != before) {
      names.Say(session.plugin().filter_run.notification_client, client);
    }
    server.Send(client, answer);
  };
  handler.too_long = [&](SocketServer::Client client) {
    server.Send(client, ClientRequests::ErrorText("the line is longer than " +
                                                  std::to_string(SocketServer::kLongestLine) +
                                                  " bytes; it was passed over"));
  };
  handler.gone = [&](SocketServer::Client client) { names.Forget(client); };
  if (!session.options().json) session.environment().out << "listening on " << socket_ << std::endl;
  server.Run(handler, signals.descriptor());
  session.clients().SetReceiver(nullptr);
  Outcome outcome;
  outcome.members = {{"socket", socket_}, {"requests", count}};
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeServeCommand() { return std::make_unique<ServeCommand>(); }

}  // namespace qelm::cli
