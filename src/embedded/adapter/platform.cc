#include "embedded/adapter/platform.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
#include <span>

extern char** environ;

namespace qelm::embedded::adapter {
namespace {

// An open file, closed on every way out.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Get() const { return number_; }
  bool Valid() const { return number_ >= 0; }
  // Closing can be what reports that the device is full, so a writer has to ask.
  bool Close() {
    const int result = ::close(number_);
    number_ = -1;
    return result == 0;
  }

 private:
  int number_;
};

bool WriteAll(int file, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = ::write(file, content.data(), content.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// Writes the pieces in their order. Small ones are gathered into blocks, long ones go out as they lie.
bool WriteAll(int file, std::span<const std::string_view> pieces) {
  constexpr std::size_t kBlock = 262144;
  std::string block;
  const auto flush = [&] {
    const bool done = WriteAll(file, block);
    block.clear();
    return done;
  };
  for (const std::string_view piece : pieces) {
    if (block.size() + piece.size() > kBlock && !flush()) return false;
    if (piece.size() > kBlock) {
      if (!WriteAll(file, piece)) return false;
    } else {
      block.append(piece);
    }
  }
  return flush();
}

// Reads to the end. The size is only a hint: a pipe has none, and a file may grow or shrink while it is read.
// By way of a block, because a string that is made larger is filled with zeros first.
bool ReadAll(int file, std::size_t size, std::string* content) {
  constexpr std::size_t kBlock = 262144;
  const auto block = std::make_unique_for_overwrite<char[]>(kBlock);
  content->reserve(size);
  for (;;) {
    const ssize_t count = ::read(file, block.get(), kBlock);
    if (count == 0) return true;
    if (count > 0) {
      content->append(block.get(), static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return false;
    }
  }
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// The file that a path means once symbolic links are followed; the path itself where there is none yet.
std::string Resolved(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  return real ? std::string(real.get()) : path;
}

// A name may disappear from a folder after a crash unless the folder is flushed as well. A file system that
// cannot do that is no reason to fail: the content is safe already.
void FlushFolder(const std::string& folder) {
  const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor.Valid()) ::fsync(descriptor.Get());
}

// Creates a file of its own beside `path`; `name` is then its path. The process' mask applies to `mode`.
int CreateBeside(const std::string& path, mode_t mode, std::string* name) {
  static std::atomic<unsigned> counter{0};
  for (;;) {
    *name = FolderOf(path) + "/.qelm-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
    const int file = ::open(name->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (file >= 0 || errno != EEXIST) return file;
  }
}

// Writes `content` into a new file beside `path` and renames it over. `keep_mode` sets the mode to the
// letter, as the file before had it. Returns 0 or the error.
int WriteBeside(const std::string& path, std::span<const std::string_view> content, mode_t mode,
                bool keep_mode) {
  std::string temporary;
  Descriptor file(CreateBeside(path, mode, &temporary));
  if (!file.Valid()) return errno;
  const bool written = WriteAll(file.Get(), content) && (!keep_mode || ::fchmod(file.Get(), mode) == 0) &&
                       ::fsync(file.Get()) == 0 && file.Close() &&
                       ::rename(temporary.c_str(), path.c_str()) == 0;
  if (!written) {
    const int error = errno;
    ::unlink(temporary.c_str());
    return error;
  }
  FlushFolder(FolderOf(path));
  return 0;
}

// Devices and pipes hold nothing that could be lost, and cannot be renamed over.
int WriteThrough(const std::string& path, std::span<const std::string_view> content) {
  Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
  return file.Valid() && WriteAll(file.Get(), content) && file.Close() ? 0 : errno;
}

int Replace(const std::string& given, std::span<const std::string_view> content, mode_t mode_of_new) {
  const std::string path = Resolved(given);
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    return errno == ENOENT ? WriteBeside(path, content, mode_of_new, false) : errno;
  }
  if (S_ISDIR(status.st_mode)) return EISDIR;
  if (!S_ISREG(status.st_mode)) return WriteThrough(path, content);
  if (::access(path.c_str(), R_OK | W_OK) != 0) return errno;
  return WriteBeside(path, content, status.st_mode & 07777, true);
}

}  // namespace

PosixPlatform::~PosixPlatform() { ReapPrograms(); }

bool PosixPlatform::Fail(int error) {
  last_error_ = std::strerror(error);
  return false;
}

bool PosixPlatform::FileExists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

bool PosixPlatform::FolderExists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::optional<std::string> PosixPlatform::ReadFile(const std::string& path) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (!file.Valid() || ::fstat(file.Get(), &status) != 0) return Fail(errno), std::nullopt;
  if (S_ISDIR(status.st_mode)) return Fail(EISDIR), std::nullopt;
  try {
    std::string content;
    if (!ReadAll(file.Get(), static_cast<std::size_t>(std::max<off_t>(status.st_size, 0)), &content)) {
      return Fail(errno), std::nullopt;
    }
    return content;
  } catch (const std::exception&) {  // larger than a string, or than memory
    return Fail(EFBIG), std::nullopt;
  }
}

bool PosixPlatform::ReplaceFileByPieces(const std::string& path, std::span<const std::string_view> pieces) {
  const int error = Replace(path, pieces, 0666);
  return error == 0 || Fail(error);
}

bool PosixPlatform::AppendFile(const std::string& path, std::string_view content) {
  Descriptor file(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
  return (file.Valid() && WriteAll(file.Get(), content) && file.Close()) || Fail(errno);
}

bool PosixPlatform::CopyFile(const std::string& from, const std::string& to) {
  struct stat status {};
  if (::stat(from.c_str(), &status) != 0) return Fail(errno);
  const std::optional<std::string> content = ReadFile(from);
  if (!content) return false;
  const std::string_view whole = *content;
  const int error = Replace(to, std::span(&whole, 1), (status.st_mode & 0777) | S_IWUSR);
  return error == 0 || Fail(error);
}

bool PosixPlatform::MoveFile(const std::string& from, const std::string& to) {
  if (::access(from.c_str(), W_OK) != 0) return Fail(errno);
  if (::access(to.c_str(), W_OK) != 0 && errno != ENOENT) return Fail(errno);
  if (::rename(from.c_str(), to.c_str()) == 0) return true;
  if (errno != EXDEV) return Fail(errno);
  return CopyFile(from, to) && RemoveFile(from);
}

bool PosixPlatform::RemoveFile(const std::string& path) { return ::unlink(path.c_str()) == 0 || Fail(errno); }

bool PosixPlatform::MakeFolder(const std::string& path) {
  for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    const std::string part = path.substr(0, end);
    if (!part.empty() && ::mkdir(part.c_str(), 0777) != 0 && errno != EEXIST) return Fail(errno);
    if (end == std::string::npos) break;
  }
  return FolderExists(path) || Fail(ENOTDIR);
}

bool PosixPlatform::RemoveFolder(const std::string& path) {
  return ::rmdir(path.c_str()) == 0 || Fail(errno);
}

std::optional<std::uint64_t> PosixPlatform::FileSize(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return Fail(errno), std::nullopt;
  if (S_ISDIR(status.st_mode)) return Fail(EISDIR), std::nullopt;
  return static_cast<std::uint64_t>(status.st_size);
}

std::optional<std::uint64_t> PosixPlatform::FreeSpace(const std::string& folder) {
  std::filesystem::path place = ResolvedPath(folder);
  while (!FolderExists(place.string()) && place.has_relative_path()) place = place.parent_path();
  struct statvfs status {};
  if (::statvfs(place.c_str(), &status) != 0) return Fail(errno), std::nullopt;
  return static_cast<std::uint64_t>(status.f_bavail) * status.f_frsize;
}

std::string PosixPlatform::ResolvedPath(const std::string& path) {
  std::error_code error;
  std::filesystem::path resolved = std::filesystem::absolute(path, error);
  if (error) return path;
  if (std::filesystem::path canonical = std::filesystem::weakly_canonical(resolved, error); !error) {
    resolved = std::move(canonical);
  }
  // With a separator at its end a path has an empty name.
  if (!resolved.has_filename() && resolved.has_relative_path()) resolved = resolved.parent_path();
  return resolved.string();
}

// Where both exist the file system is asked, which also knows whether it tells letter case apart.
bool PosixPlatform::SameFile(const std::string& left, const std::string& right) {
  struct stat one {};
  struct stat other {};
  const std::string resolved_left = ResolvedPath(left);
  const std::string resolved_right = ResolvedPath(right);
  if (::stat(resolved_left.c_str(), &one) == 0 && ::stat(resolved_right.c_str(), &other) == 0) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
  }
  return resolved_left == resolved_right;
}

std::vector<std::string> PosixPlatform::FolderNames(const std::string& path) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(path.c_str()), &::closedir);
  if (!folder) return Fail(errno), names;
  while (const dirent* entry = ::readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string PosixPlatform::Environment(std::string_view name) {
  if (const auto found = environment_.find(name); found != environment_.end()) return found->second;
  if (const char* value = std::getenv(std::string(name).c_str())) return value;
  return {};
}

void PosixPlatform::SetEnvironment(std::string_view name, std::string_view value) {
  environment_.insert_or_assign(std::string(name), std::string(value));
}

// SOURCE_DATE_EPOCH, in UTC, is the time where it is set, so that the same input gives the same output.
host::LocalTime PosixPlatform::Now() {
  const std::string fixed = Environment("SOURCE_DATE_EPOCH");
  std::time_t now = 0;
  std::tm parts{};
  const auto read = std::from_chars(fixed.data(), fixed.data() + fixed.size(), now);
  if (!fixed.empty() && read.ec == std::errc() && read.ptr == fixed.data() + fixed.size()) {
    ::gmtime_r(&now, &parts);
  } else {
    now = std::time(nullptr);
    ::localtime_r(&now, &parts);
  }
  return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec};
}

std::int64_t PosixPlatform::CalendarSeconds() { return std::time(nullptr); }

std::int64_t PosixPlatform::Milliseconds() {
  const auto since_start = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(since_start).count();
}

bool PosixPlatform::Start(const std::string& program, const std::vector<std::string>& arguments) {
  ReapPrograms();
  // Arguments go over as a list: no shell reads them, whatever a document put into a name.
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  pid_t process = 0;
  const int error = ::posix_spawnp(&process, program.c_str(), nullptr, nullptr, pointers.data(), environ);
  if (error != 0) return Fail(error);
  programs_.push_back(process);
  return true;
}

// Takes note of programs that have ended, so that they do not stay behind as zombies in a long session.
void PosixPlatform::ReapPrograms() {
  std::erase_if(programs_, [](pid_t process) { return ::waitpid(process, nullptr, WNOHANG) != 0; });
}

}  // namespace qelm::embedded::adapter
