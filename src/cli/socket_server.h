// Clients on a Unix domain socket who send lines and get lines, served in turn: one line of one client at a
// time, then one of the next who has a complete one.
//
// Everything happens in one thread, in Run. No client can do harm to another: what one sends is kept up to
// the length of a line and then passed over up to its end; one that does not take what it gets is not read
// any more, and is cut off when events that nobody asked it about pile up; a new one waits when there are too
// many.
#pragma once

#include <poll.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qelm::cli {

class SocketServer {
 public:
  using Client = std::uint64_t;  // never used twice

  static constexpr std::size_t kLongestLine = std::size_t{1} << 20;  // without its end
  static constexpr std::size_t kMostClients = 128;

  struct Handler {
    std::function<void(Client client, std::string_view line)> line;
    std::function<void(Client client)> too_long;
    std::function<void(Client client)> gone;
  };

  // Listens at `path`; only the user that this process runs as may connect. What is left there of a server
  // that did not end well is replaced; where one listens, where there is something else, or in a folder in
  // which others may replace files, throws Failure.
  explicit SocketServer(const std::string& path);
  // Cuts off all clients and removes the socket, unless it is another one by now.
  ~SocketServer();
  SocketServer(const SocketServer&) = delete;
  SocketServer& operator=(const SocketServer&) = delete;

  // Serves until `stop` (a file descriptor) can be read.
  void Run(const Handler& handler, int stop);

  // Sends a line, for which the end is added. A client that lets events pile up is cut off; one that takes
  // its time with an answer it asked for is not. False when there is no such client any more.
  enum class Kind : std::uint8_t { kAnswer, kEvent };
  bool Send(Client client, std::string_view line, Kind kind = Kind::kAnswer);

 private:
  struct Connection {
    int fd = -1;
    std::string in;             // what came, from `begin` on
    std::size_t begin = 0;      // of the first line that was not handled
    std::size_t searched = 0;   // there is no line end before this
    bool passing_over = false;  // a line that is too long
    bool ended = false;         // nothing more will come
    bool broken = false;        // cannot be served any more
    std::string out;            // what was not sent yet, from `sent` on
    std::size_t sent = 0;

    bool Waiting() const { return out.size() > sent; }
  };

  void Listen();
  void Remove() const;
  std::vector<pollfd> PollList(int stop) const;
  void Accept();
  void Read(Connection* connection, Client client, const Handler& handler);
  static bool HasLine(Connection* connection);
  static bool MayHandle(Connection* connection);
  void HandleLine(Connection* connection, Client client, const Handler& handler);
  static void Flush(Connection* connection);
  void DropEnded(const Handler& handler);

  std::string path_;
  int listener_ = -1;
  dev_t device_ = 0;  // of the socket's file
  ino_t inode_ = 0;
  bool pause_accepting_ = false;
  std::map<Client, Connection> connections_;
  Client last_ = 0;
};

}  // namespace qelm::cli
