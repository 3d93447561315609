#include "embedded/adapter/file_replacing.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>

#include "embedded/adapter/descriptor.h"

namespace qelm::embedded::adapter {
namespace {

constexpr std::string_view kBefore = ".qelm-";
constexpr std::string_view kBehind = ".new";
constexpr std::string_view kLockEnding = ".lck";
constexpr std::size_t kLongestPart = 200;  // of a name, for what comes before and behind it
constexpr int kTries = 25;
constexpr useconds_t kPauseMicroseconds = 20000;
constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kPermissions = 07777;
constexpr std::string_view kChanged =
    "it was changed on disk since it was opened. Open it again, or save under another name; with --overwrite "
    "it "
    "is replaced all the same";

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string Reason(int error) { return std::strerror(error); }

// The file that a path means once symbolic links are followed; the path itself where there is none yet.
std::string Resolved(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  return real ? std::string(real.get()) : path;
}

std::string NameBeside(const std::string& path) {
  std::string name = path.substr(path.rfind('/') + 1);
  if (name.size() > kLongestPart) {
    const std::size_t hash = std::hash<std::string>()(name);
    name = name.substr(0, kLongestPart - 20) + std::to_string(hash);
  }
  return FolderOf(path) + "/" + std::string(kBefore) + name + std::string(kBehind);
}

// Removes a file beside whose writer has ended; false when it is in use or cannot be removed.
bool RemoveStale(const std::string& name) {
  const Descriptor file(::open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!file.Valid()) return errno == ENOENT;
  struct stat held {};
  struct stat there {};
  if (::fstat(file.Get(), &held) != 0 || !S_ISREG(held.st_mode) || !TakeLock(file.Get(), false)) return false;
  // Only what is locked now may go: another one may have taken its name meanwhile.
  if (::lstat(name.c_str(), &there) != 0 || there.st_ino != held.st_ino || there.st_dev != held.st_dev) {
    return true;
  }
  return ::unlink(name.c_str()) == 0;
}

// Creates the file beside and locks it. -1 when that is not possible, and `why` says why.
int CreateBeside(const std::string& name, mode_t mode, std::string* why) {
  for (int tries = 0; tries < kTries; ++tries) {
    const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (file < 0 && errno != EEXIST) {
      *why = Reason(errno);
      return -1;
    }
    if (file < 0) {
      if (!RemoveStale(name)) ::usleep(kPauseMicroseconds);
      continue;
    }
    struct stat made {};
    // Somebody may have taken it for an abandoned one before it was locked.
    if (TakeLock(file, true) && ::fstat(file, &made) == 0 && made.st_nlink > 0) return file;
    ::close(file);
  }
  const std::string owner = OwnerAndTime(name);
  *why = "another run of QELM is writing it" + (owner.empty() ? owner : " (" + owner + ")");
  return -1;
}

// Gives the new file the owner and permissions of the old one. Who may not give a file away keeps it.
bool TakeOver(int file, const struct stat& made, const struct stat& old) {
  if (old.st_uid != made.st_uid || old.st_gid != made.st_gid) {
    if (::fchown(file, old.st_uid, old.st_gid) != 0 && ::fchown(file, made.st_uid, old.st_gid) != 0)
      errno = 0;
  }
  return ::fchmod(file, old.st_mode & kPermissions) == 0;
}

// A name may disappear from a folder after a crash unless the folder is flushed as well. A file system that
// cannot do that is no reason to fail: the content is safe already.
void FlushFolder(const std::string& folder) {
  const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor.Valid()) ::fsync(descriptor.Get());
}

// `old` is null where there is no file yet.
std::string WriteBeside(const std::string& path, const FileContent& content, const struct stat* old) {
  const std::string beside = NameBeside(path);
  std::string why;
  const Descriptor file(CreateBeside(beside, old != nullptr ? kOwnerOnly : content.mode_of_new, &why));
  if (!file.Valid()) return why;
  struct stat made {};
  const auto unchanged = [&] { return content.expected.empty() || StateOf(path) == content.expected; };
  // What a new file's permissions are the process' mask has decided; until it is complete it is private.
  const bool written = unchanged() && ::fstat(file.Get(), &made) == 0 &&
                       (old != nullptr || ::fchmod(file.Get(), kOwnerOnly) == 0) &&
                       WriteAll(file.Get(), content.pieces) &&
                       TakeOver(file.Get(), made, old != nullptr ? *old : made) && ::fsync(file.Get()) == 0 &&
                       unchanged() && ::rename(beside.c_str(), path.c_str()) == 0;
  if (!written) {
    const int error = errno;
    why = unchanged() ? Reason(error) : std::string(kChanged);
    if (::unlink(beside.c_str()) != 0) ::unlink(beside.c_str());
    return why;
  }
  FlushFolder(FolderOf(path));
  return {};
}

// Devices and pipes hold nothing that could be lost, and cannot be renamed over.
std::string WriteThrough(const std::string& path, std::span<const std::string_view> content) {
  Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
  if (file.Valid() && WriteAll(file.Get(), content) && file.Close()) return {};
  return Reason(errno);
}

std::string HeldByFrameMaker(const std::string& path) {
  const std::size_t name = path.rfind('/') + 1;
  const std::size_t dot = path.rfind('.');
  std::array<std::string, 2> locks = {path + std::string(kLockEnding), {}};
  if (dot != std::string::npos && dot > name) locks[1] = path.substr(0, dot) + std::string(kLockEnding);
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

std::string ReplaceBeside(const std::string& given, const FileContent& content, bool ignore_locks) {
  const std::string path = Resolved(given);
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    return errno == ENOENT ? WriteBeside(path, content, nullptr) : Reason(errno);
  }
  if (S_ISDIR(status.st_mode)) return Reason(EISDIR);
  if (!S_ISREG(status.st_mode)) return WriteThrough(path, content.pieces);
  if (std::string why = WhyProtected(path, ignore_locks); !why.empty()) return why;
  return WriteBeside(path, content, &status);
}

std::string StateOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return {};
  return std::to_string(status.st_dev) + " " + std::to_string(status.st_ino) + " " +
         std::to_string(status.st_size) + " " + std::to_string(status.st_mtim.tv_sec) + " " +
         std::to_string(status.st_mtim.tv_nsec);
}

void RemoveAbandoned(const std::string& folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> names(::opendir(folder.c_str()), &::closedir);
  while (const dirent* entry = names ? ::readdir(names.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name.starts_with(kBefore) && name.ends_with(kBehind)) RemoveStale(folder + "/" + std::string(name));
  }
}

}  // namespace qelm::embedded::adapter
