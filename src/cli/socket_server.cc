#include "cli/socket_server.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "cli/exit_status.h"
#include "common/paths.h"

namespace qelm::cli {
namespace {

constexpr std::size_t kChunk = std::size_t{1} << 16;
constexpr std::size_t kMostWaiting = std::size_t{1} << 16;  // answers; then the client is not read any more
constexpr std::size_t kMostEvents = std::size_t{1} << 20;   // beyond this it is cut off
constexpr int kBacklog = 64;
constexpr int kPauseMilliseconds = 100;
constexpr int kLockTries = 20;
constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kOthers = 0077;

[[noreturn]] void Fail(const std::string& path, const std::string& why) {
  throw Failure(ExitStatus::kFile, path + ": " + why);
}

std::string Reason(int error) { return std::generic_category().message(error); }

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return fd_; }
  int Release() { return std::exchange(fd_, -1); }

 private:
  int fd_;
};

// While this lives, no other server looks at or changes the sockets in the folder: two that start at the same
// time would both find a left-over socket, and the second would remove that of the first.
class FolderLock {
 public:
  explicit FolderLock(const std::string& socket_path)
      : folder_(::open(FolderOf(socket_path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (folder_.get() < 0) Fail(FolderOf(socket_path), Reason(errno));
    CheckOwner(FolderOf(socket_path));
    // Anybody may hold a lock on a folder that all can read, so it is not waited for without end.
    for (int tries = 0; ::flock(folder_.get(), LOCK_EX | LOCK_NB) != 0; ++tries) {
      if (errno != EINTR && errno != EWOULDBLOCK) Fail(FolderOf(socket_path), Reason(errno));
      if (tries == kLockTries) Fail(FolderOf(socket_path), "another program keeps the folder locked");
      ::poll(nullptr, 0, kPauseMilliseconds);
    }
  }

 private:
  static std::string FolderOf(const std::string& path) {
    const std::string_view folder = common::FolderOf(path);
    if (!folder.empty()) return std::string(folder);
    return path.starts_with('/') ? "/" : ".";
  }

  // Whoever may remove names from the folder could put a socket of his own in the place of this one, and
  // clients would tell him what they have to say. A group that is the user's own is nobody else.
  void CheckOwner(const std::string& name) const {
    struct stat status {};
    if (::fstat(folder_.get(), &status) != 0) Fail(name, Reason(errno));
    const bool owned = status.st_uid == ::geteuid() || status.st_uid == 0;
    const bool shared =
        (status.st_mode & S_IWOTH) != 0 || ((status.st_mode & S_IWGRP) != 0 && status.st_gid != ::getegid());
    if (owned && (!shared || (status.st_mode & S_ISVTX) != 0)) return;
    Fail(name, "other users may replace files of this folder, the socket too; take a folder of your own");
  }

  Descriptor folder_;
};

// Restores what it was on every way out. There is one thread while the server is made.
class Mask {
 public:
  explicit Mask(mode_t mask) : before_(::umask(mask)) {}
  ~Mask() { ::umask(before_); }
  Mask(const Mask&) = delete;
  Mask& operator=(const Mask&) = delete;

 private:
  mode_t before_;
};

// Rights on the socket's file keep others out; whoever comes in all the same, by rights that somebody changed
// since, is not served either.
bool IsOwn(int connection) {
  ucred peer{};
  socklen_t size = sizeof(peer);
  return ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid();
}

sockaddr_un AddressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof(address.sun_path)) {
    Fail(path, "the path is too long for a socket; there is room for " +
                   std::to_string(sizeof(address.sun_path) - 1) + " bytes");
  }
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

bool HasInput(int descriptor) {
  pollfd polled{descriptor, POLLIN, 0};
  return ::poll(&polled, 1, 0) > 0;
}

const sockaddr* Generic(const sockaddr_un& address) { return reinterpret_cast<const sockaddr*>(&address); }

Descriptor NewSocket(const std::string& path) {
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (fd < 0) Fail(path, Reason(errno));
  return Descriptor(fd);
}

// Makes sure that nothing lies at the path, by removing a socket at which nobody listens.
void MakeRoom(const std::string& path, const sockaddr_un& address) {
  struct stat there {};
  if (::lstat(path.c_str(), &there) != 0) return;
  if (!S_ISSOCK(there.st_mode)) Fail(path, "there is a file of that name already, and it is no socket");
  const Descriptor probe = NewSocket(path);
  // A server that is too busy to take the connection is a server too.
  if (::connect(probe.get(), Generic(address), sizeof(address)) == 0 || errno == EAGAIN) {
    Fail(path, "another server listens there; give this one another path");
  }
  if (errno != ECONNREFUSED || ::unlink(path.c_str()) != 0) {
    Fail(path, "the socket that lies there cannot be replaced: " + Reason(errno));
  }
}

}  // namespace

SocketServer::SocketServer(const std::string& path) : path_(path) {
  const sockaddr_un address = AddressOf(path_);
  const FolderLock lock(path_);
  MakeRoom(path_, address);
  Descriptor socket = NewSocket(path_);
  // Before it has a name, so that there is no moment at which another user could connect.
  const Mask mask(kOthers);
  if (::fchmod(socket.get(), kOwnerOnly) != 0 ||
      ::bind(socket.get(), Generic(address), sizeof(address)) != 0) {
    Fail(path_, Reason(errno));
  }
  struct stat made {};
  if (::chmod(path_.c_str(), kOwnerOnly) != 0 || ::lstat(path_.c_str(), &made) != 0 ||
      ::listen(socket.get(), kBacklog) != 0) {
    const int error = errno;
    ::unlink(path_.c_str());
    Fail(path_, Reason(error));
  }
  device_ = made.st_dev;
  inode_ = made.st_ino;
  listener_ = socket.Release();
}

SocketServer::~SocketServer() {
  for (const auto& [client, connection] : connections_) ::close(connection.fd);
  Remove();
  ::close(listener_);
}

void SocketServer::Remove() const {
  struct stat there {};
  if (::lstat(path_.c_str(), &there) != 0 || there.st_dev != device_ || there.st_ino != inode_) return;
  ::unlink(path_.c_str());
}

void SocketServer::Run(const Handler& handler, int stop) {
  bool more = false;  // complete lines that wait for their turn
  while (true) {
    std::vector<pollfd> list = PollList(stop);
    const int timeout = more ? 0 : pause_accepting_ ? kPauseMilliseconds : -1;
    pause_accepting_ = false;
    if (::poll(list.data(), list.size(), timeout) < 0 && errno != EINTR) Fail(path_, Reason(errno));
    if (list[0].revents != 0) return;
    auto polled = list.begin() + 2;
    for (auto& [client, connection] : connections_) {
      const auto events = (polled++)->revents;
      if ((events & (POLLOUT | POLLERR | POLLHUP)) != 0) Flush(&connection);
      if ((events & (POLLIN | POLLERR | POLLHUP)) != 0) Read(&connection, client, handler);
    }
    more = false;
    for (auto& [client, connection] : connections_) {
      if (!MayHandle(&connection)) continue;
      if (HasInput(stop)) return;
      HandleLine(&connection, client, handler);
      more = more || MayHandle(&connection);
    }
    DropEnded(handler);
    // At the end, as the list that was polled knows nothing of new clients.
    if ((list[1].revents & POLLIN) != 0) Accept();
  }
}

std::vector<pollfd> SocketServer::PollList(int stop) const {
  std::vector<pollfd> list{{stop, POLLIN, 0}, {listener_, POLLIN, 0}};
  // poll passes over what is below 0.
  if (connections_.size() >= kMostClients || pause_accepting_) list[1].fd = -1;
  for (const auto& [client, connection] : connections_) {
    const bool reads = !connection.ended && connection.out.size() - connection.sent < kMostWaiting &&
                       connection.in.size() - connection.begin <= kLongestLine;
    const int events = (reads ? POLLIN : 0) | (connection.Waiting() ? POLLOUT : 0);
    list.push_back({connection.fd, static_cast<decltype(pollfd::events)>(events), 0});
  }
  return list;
}

void SocketServer::Accept() {
  while (connections_.size() < kMostClients) {
    const int fd = ::accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) {
      // Without descriptors the new client waits; asking again at once would take all the time there is.
      pause_accepting_ = errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM;
      return;
    }
    Descriptor connection(fd);
    if (IsOwn(fd)) connections_[++last_].fd = connection.Release();
  }
}

void SocketServer::Read(Connection* connection, Client client, const Handler& handler) {
  if (connection->ended || connection->in.size() - connection->begin > kLongestLine) return;
  std::array<char, kChunk> chunk;
  const ssize_t size = ::recv(connection->fd, chunk.data(), chunk.size(), 0);
  if (size < 0) {
    connection->broken = errno != EAGAIN && errno != EINTR;
    return;
  }
  connection->ended = size == 0;
  std::string_view data(chunk.data(), static_cast<std::size_t>(size));
  if (connection->passing_over) {
    const std::size_t end = data.find('\n');
    connection->passing_over = end == std::string_view::npos;
    data.remove_prefix(connection->passing_over ? data.size() : end + 1);
  }
  // What was handled is taken out now and then, so that each byte is moved a few times at most.
  if (connection->begin > connection->in.size() / 2) {
    connection->in.erase(0, connection->begin);
    connection->searched -= connection->begin;
    connection->begin = 0;
  }
  connection->in.append(data);
  if (HasLine(connection) || connection->in.size() - connection->begin <= kLongestLine) return;
  connection->passing_over = true;
  std::string().swap(connection->in);
  connection->begin = connection->searched = 0;
  handler.too_long(client);
}

// Afterwards `searched` is where the line ends, if there is one.
bool SocketServer::HasLine(Connection* connection) {
  const std::size_t end = connection->in.find('\n', connection->searched);
  connection->searched = std::min(end, connection->in.size());
  return end != std::string::npos;
}

bool SocketServer::MayHandle(Connection* connection) {
  const bool takes = connection->out.size() - connection->sent < kMostWaiting;
  return !connection->broken && takes && HasLine(connection);
}

void SocketServer::HandleLine(Connection* connection, Client client, const Handler& handler) {
  const std::size_t end = connection->searched;
  const std::string_view line =
      std::string_view(connection->in).substr(connection->begin, end - connection->begin);
  if (line.size() > kLongestLine) {
    handler.too_long(client);
  } else {
    handler.line(client, line);
  }
  connection->begin = connection->searched = end + 1;
  if (connection->begin < connection->in.size()) return;
  // A client that once sent a long line does not keep the room for it.
  if (connection->in.capacity() > kChunk) {
    std::string().swap(connection->in);
  } else {
    connection->in.clear();
  }
  connection->begin = connection->searched = 0;
}

bool SocketServer::Send(Client client, std::string_view line, Kind kind) {
  const auto found = connections_.find(client);
  if (found == connections_.end() || found->second.broken) return false;
  Connection& connection = found->second;
  connection.out.append(line).push_back('\n');
  Flush(&connection);
  const bool piled_up = connection.out.size() - connection.sent > kMostEvents;
  if (kind == Kind::kEvent && piled_up) connection.broken = true;
  return !connection.broken;
}

void SocketServer::Flush(Connection* connection) {
  while (connection->Waiting() && !connection->broken) {
    const std::string_view rest = std::string_view(connection->out).substr(connection->sent);
    const ssize_t size = ::send(connection->fd, rest.data(), rest.size(), MSG_NOSIGNAL);
    if (size < 0) {
      if (errno == EINTR) continue;
      connection->broken = errno != EAGAIN;
      break;
    }
    connection->sent += static_cast<std::size_t>(size);
  }
  if (connection->Waiting()) {
    // A client that is always a little behind must not let this grow.
    if (connection->sent < kChunk) return;
    connection->out.erase(0, connection->sent);
    connection->sent = 0;
    return;
  }
  if (connection->out.capacity() > kChunk) {
    std::string().swap(connection->out);
  } else {
    connection->out.clear();
  }
  connection->sent = 0;
}

void SocketServer::DropEnded(const Handler& handler) {
  for (auto at = connections_.begin(); at != connections_.end();) {
    Connection& connection = at->second;
    const bool done = connection.ended && !connection.Waiting() && !HasLine(&connection);
    if (!connection.broken && !done) {
      ++at;
      continue;
    }
    const Client client = at->first;
    ::close(connection.fd);
    at = connections_.erase(at);
    handler.gone(client);
  }
}

}  // namespace qelm::cli
