#include "embedded/adapter/file_replacing.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>

#include "embedded/adapter/descriptor.h"
#include "embedded/adapter/file_places.h"
#include "embedded/adapter/mapped_file.h"

namespace qelm::embedded::adapter {
namespace {

constexpr std::string_view kBefore = ".qelm-";
constexpr std::string_view kBehind = ".new";
constexpr std::string_view kHeld = ".held";
constexpr std::string_view kLockEnding = ".lck";
constexpr std::size_t kLongestPart = 200;  // of a name, for what comes before and behind it
constexpr int kTries = 25;
constexpr useconds_t kPauseMicroseconds = 20000;
constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kPermissions = 07777;
constexpr std::string_view kChanged =
    "it was changed on disk since it was opened. Open it again, or save under another name; with "
    "--overwrite it is replaced all the same";

std::string Reason(int error) { return std::strerror(error); }

// The file that a path means once symbolic links are followed; the path itself where there is none yet.
std::string Resolved(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  return real ? std::string(real.get()) : path;
}

// `more` tells one beside from that of another writer.
std::string NameBeside(const std::string& path, const std::string& more = {}) {
  std::string name = path.substr(path.rfind('/') + 1);
  if (name.size() > kLongestPart) {
    const std::size_t hash = std::hash<std::string>()(name);
    name = name.substr(0, kLongestPart - 20) + std::to_string(hash);
  }
  return FolderOf(path) + "/" + std::string(kBefore) + name + more + std::string(kBehind);
}

// What became of a file beside that somebody else made. In the way: it cannot be told whether its writer has
// ended, as there are no locks there or it is another user's, or it cannot be removed.
enum class Leftover { kGone, kInUse, kInTheWay };

// A lock over the network is only for who may write, while some files may only be read.
int OpenToLock(const std::string& name) {
  constexpr int kFlags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const int file = ::open(name.c_str(), O_RDWR | kFlags);
  return file < 0 && errno == EACCES ? ::open(name.c_str(), O_RDONLY | kFlags) : file;
}

// Removes a file beside whose writer has ended.
Leftover RemoveStale(const std::string& name) {
  const Descriptor file(OpenToLock(name));
  if (!file.Valid()) return errno == ENOENT ? Leftover::kGone : Leftover::kInTheWay;
  struct stat held {};
  struct stat there {};
  if (::fstat(file.Get(), &held) != 0 || !S_ISREG(held.st_mode)) return Leftover::kInTheWay;
  if (!TakeLock(file.Get(), false)) return errno == EWOULDBLOCK ? Leftover::kInUse : Leftover::kInTheWay;
  // Only what is locked now may go: another one may have taken its name meanwhile.
  if (::lstat(name.c_str(), &there) != 0 || there.st_ino != held.st_ino || there.st_dev != held.st_dev) {
    return Leftover::kGone;
  }
  return ::unlink(name.c_str()) == 0 ? Leftover::kGone : Leftover::kInTheWay;
}

std::string WhyNotCreated(const std::string& name, int error) {
  if (error != EACCES && error != EPERM) return Reason(error);
  return Reason(error) + ": the folder " + FolderOf(name) +
         " does not allow new files, and a file is replaced by a new one";
}

std::string WhyOccupied(const std::string& name, Leftover leftover) {
  std::string owner = OwnerAndTime(name);
  if (!owner.empty()) owner = " (" + owner + ")";
  if (leftover != Leftover::kInTheWay) return "another run of QELM is writing it" + owner;
  return "a file of another run of QELM is in the way, " + name + owner +
         ". Wait for that run; where it has ended, remove the file, or use --ignore-lock";
}

// Creates a file beside the path and locks it; `name` becomes its name, with `kind` in it. -1 when that is
// not possible, and `why` says why.
int CreateBeside(const std::string& path, const std::string& kind, mode_t mode, bool ignore_locks,
                 std::string* name, std::string* why) {
  *name = NameBeside(path, kind);
  Leftover leftover = Leftover::kGone;
  for (int tries = 0; tries < kTries; ++tries) {
    const int file = ::open(name->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (file < 0 && errno != EEXIST) {
      *why = WhyNotCreated(*name, errno);
      return -1;
    }
    if (file < 0) {
      leftover = RemoveStale(*name);
      if (leftover == Leftover::kInTheWay && ignore_locks) {
        *name = NameBeside(path, kind + "." + std::to_string(::getpid()));
      } else if (leftover != Leftover::kGone) {
        ::usleep(kPauseMicroseconds);
      }
      continue;
    }
    struct stat made {};
    // Somebody may have taken it for an abandoned one before it was locked.
    if (TakeLock(file, true) && ::fstat(file, &made) == 0 && made.st_nlink > 0) return file;
    ::close(file);
  }
  *why = WhyOccupied(*name, leftover);
  return -1;
}

// A file may be in use for a moment; the second try is often the one that does it.
void RemoveBeside(const std::string& name) {
  if (::unlink(name.c_str()) != 0) ::unlink(name.c_str());
}

// Gives the new file the owner and permissions of the old one. Who may not give a file away keeps it.
bool TakeOver(int file, const struct stat& made, const struct stat& old) {
  if (old.st_uid != made.st_uid || old.st_gid != made.st_gid) {
    if (::fchown(file, old.st_uid, old.st_gid) != 0 && ::fchown(file, made.st_uid, old.st_gid) != 0)
      errno = 0;
  }
  return ::fchmod(file, old.st_mode & kPermissions) == 0;
}

// By the time of the content: that of the entry is set by the renaming, when the state is written down
// already.
std::string StateText(const struct stat& status) {
  return std::to_string(status.st_dev) + " " + std::to_string(status.st_ino) + " " +
         std::to_string(status.st_size) + " " + std::to_string(status.st_mtim.tv_sec) + " " +
         std::to_string(status.st_mtim.tv_nsec);
}

// `old` is null where there is no file yet.
std::string WriteBeside(const std::string& path, const FileContent& content, const struct stat* old,
                        bool ignore_locks) {
  std::string beside;
  std::string why;
  const mode_t mode = old != nullptr ? kOwnerOnly : content.mode_of_new;
  Descriptor file(CreateBeside(path, {}, mode, ignore_locks, &beside, &why));
  if (!file.Valid()) return why;
  struct stat made {};
  struct stat complete {};
  const auto unchanged = [&] { return content.expected.empty() || StateOf(path) == content.expected; };
  const auto intact = [&] { return MappedPiecesIntact(content.pieces); };
  // What a new file's permissions are the process' mask has decided; until it is complete it is private.
  const bool written =
      unchanged() && ::fstat(file.Get(), &made) == 0 &&
      (old != nullptr || ::fchmod(file.Get(), kOwnerOnly) == 0) && WriteAll(file.Get(), content.pieces) &&
      TakeOver(file.Get(), made, old != nullptr ? *old : made) &&
      (content.flushed_later != nullptr || ::fsync(file.Get()) == 0) && ::fstat(file.Get(), &complete) == 0 &&
      unchanged() && intact() && ::rename(beside.c_str(), path.c_str()) == 0;
  if (!written) {
    const int error = errno;
    why = !unchanged() ? std::string(kChanged) : !intact() ? std::string(kMappedFileChanged) : Reason(error);
    RemoveBeside(beside);
    return why;
  }
  // Once it has its name, others may change it or put theirs in its place.
  if (content.written != nullptr) *content.written = StateText(complete);
  if (content.flushed_later == nullptr) {
    FlushFolder(FolderOf(path));
  } else {
    *content.flushed_later = file.Close() ? 0 : errno;
  }
  return {};
}

// Devices and pipes hold nothing that could be lost, and cannot be renamed over.
std::string WriteThrough(const std::string& path, std::span<const std::string_view> content) {
  Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
  if (file.Valid() && WriteAll(file.Get(), content) && file.Close()) return {};
  return Reason(errno);
}

// Whether NAME.lck is the lock of NAME with this ending: else it is that of a document from which the file
// was made.
bool IsFrameMakers(std::string_view ending) {
  constexpr std::array<std::string_view, 3> kEndings = {".mif", ".fm", ".book"};
  const auto same = [](char own, char small) {
    return own == small || (own >= 'A' && own <= 'Z' && own - 'A' + 'a' == small);
  };
  return std::any_of(kEndings.begin(), kEndings.end(), [&](std::string_view known) {
    return std::equal(ending.begin(), ending.end(), known.begin(), known.end(), same);
  });
}

std::string HeldByFrameMaker(const std::string& path) {
  const std::size_t name = path.rfind('/') + 1;
  const std::size_t dot = path.rfind('.');
  std::array<std::string, 2> locks = {path + std::string(kLockEnding), {}};
  const bool has_ending = dot != std::string::npos && dot > name;
  if (has_ending && IsFrameMakers(std::string_view(path).substr(dot)))
    locks[1] = path.substr(0, dot) + std::string(kLockEnding);
  for (const std::string& lock : locks) {
    struct stat status {};
    if (lock.empty() || lock == path || ::stat(lock.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
      continue;
    return "it is open elsewhere (" + OwnerAndTime(lock) + "; its lock file is " + lock +
           "). Close it there; where nobody has it open, remove the lock file, or use --ignore-lock";
  }
  return {};
}

// An owner who may write everything, whatever the permissions are, protects a file by them all the same.
std::string Unwritable(const std::string& path, const struct stat& status) {
  constexpr mode_t kAnybodyWrites = 0222;
  if (S_ISREG(status.st_mode) && (status.st_mode & kAnybodyWrites) == 0) return Reason(EACCES);
  return ::access(path.c_str(), R_OK | W_OK) == 0 ? std::string() : Reason(errno);
}

}  // namespace

void FlushFolder(const std::string& folder) {
  const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor.Valid()) ::fsync(descriptor.Get());
}

bool TakeLock(int file, bool where_there_are_none) {
  if (::flock(file, LOCK_EX | LOCK_NB) == 0) return true;
  return errno != EWOULDBLOCK && where_there_are_none;
}

std::string OwnerAndTime(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return {};
  std::array<char, 4096> buffer;
  struct passwd entry {};
  struct passwd* found = nullptr;
  ::getpwuid_r(status.st_uid, &entry, buffer.data(), buffer.size(), &found);
  std::tm parts{};
  std::array<char, 32> time{};
  ::localtime_r(&status.st_mtime, &parts);
  std::strftime(time.data(), time.size(), "%Y-%m-%d %H:%M:%S", &parts);
  const std::string user =
      found != nullptr ? std::string(found->pw_name) : "user " + std::to_string(status.st_uid);
  return user + ", since " + time.data();
}

std::string WhyProtected(const std::string& path, bool ignore_locks) {
  const std::string file = Resolved(path);
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) return errno == ENOENT ? std::string() : Reason(errno);
  std::string why = Unwritable(file, status);
  if (why.empty() && !ignore_locks && S_ISREG(status.st_mode)) why = HeldByFrameMaker(file);
  return why;
}

std::string WhyTaken(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return {};
  if (::stat(path.c_str(), &status) == 0 || errno != ENOENT) return {};
  return "a symbolic link of that name leads to nothing. Remove the link, or make what it leads to";
}

std::string ReplaceBeside(const std::string& given, const FileContent& content, bool ignore_locks) {
  const std::string path = Resolved(given);
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    if (errno != ENOENT) return Reason(errno);
    std::string why = WhyTaken(path);
    return why.empty() ? WriteBeside(path, content, nullptr, ignore_locks) : why;
  }
  if (S_ISDIR(status.st_mode)) return Reason(EISDIR);
  if (!S_ISREG(status.st_mode)) {
    std::string why = WriteThrough(path, content.pieces);
    if (why.empty() && content.written != nullptr) *content.written = StateOf(path);
    return why;
  }
  if (std::string why = WhyProtected(path, ignore_locks); !why.empty()) return why;
  return WriteBeside(path, content, &status, ignore_locks);
}

FileHold::FileHold(const std::string& path, bool ignore_locks, std::string* why)
    : file_(CreateBeside(path, std::string(kHeld), kOwnerOnly, ignore_locks, &name_, why)) {}

// While it is still locked, so that nobody who waits takes it for an abandoned one.
FileHold::~FileHold() {
  if (Valid()) RemoveBeside(name_);
}

std::string StateOf(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? StateText(status) : std::string();
}

void RemoveAbandoned(const std::string& folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> names(::opendir(folder.c_str()), &::closedir);
  while (const dirent* entry = names ? ::readdir(names.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name.starts_with(kBefore) && name.ends_with(kBehind)) RemoveStale(folder + "/" + std::string(name));
  }
}

}  // namespace qelm::embedded::adapter
