#include "embedded/adapter/platform.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <limits>
#include <memory>
#include <span>

#include "embedded/adapter/descriptor.h"
#include "embedded/adapter/file_places.h"
#include "embedded/adapter/file_replacing.h"
#include "embedded/adapter/filled_folder.h"

extern char** environ;

namespace qelm::embedded::adapter {
namespace {

// Nothing that is read as a whole is larger: positions in files are 32 bits wide.
constexpr std::size_t kLargestFile = std::numeric_limits<std::uint32_t>::max();
constexpr int kMarkTries = 25;

// What lies in a folder that is being filled, for people who find it.
constexpr std::string_view kUnfinishedText =
    "The files in this folder are not complete: the run of QELM that makes them has not come to its end.\n"
    "Run it again to complete them. This file goes when they are complete.\n\n";

bool IsBelow(const std::string& path, const std::string& folder) {
  return path.size() > folder.size() && path.starts_with(folder) &&
         (folder.back() == '/' || path[folder.size()] == '/');
}

// Absolute, without "." and "..", and without a separator at its end.
std::string Spelled(const std::string& path) {
  std::error_code error;
  const std::filesystem::path spelled = std::filesystem::absolute(path, error).lexically_normal();
  return (spelled.has_filename() ? spelled : spelled.parent_path()).string();
}

// Opens the mark of a folder and locks it; `made` says whether it was not there before. -1, with errno set,
// when that is not possible: EWOULDBLOCK when another run holds it.
int OpenMark(const std::string& path, bool* made) {
  constexpr int kFlags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  for (int tries = 0; tries < kMarkTries; ++tries) {
    int file = ::open(path.c_str(), kFlags | O_CREAT | O_EXCL, 0666);
    *made = file >= 0;
    if (file < 0 && errno != EEXIST) return -1;
    if (file < 0) file = ::open(path.c_str(), kFlags);
    if (file < 0 && errno == ENOENT) continue;
    if (file < 0) return -1;
    struct stat status {};
    if (!TakeLock(file, true)) {
      ::close(file);
      errno = EWOULDBLOCK;
      return -1;
    }
    // The run that held it may have come to its end, and have taken it away, before it was locked here.
    if (::fstat(file, &status) != 0 || status.st_nlink > 0) return file;
    ::close(file);
  }
  errno = EWOULDBLOCK;
  return -1;
}

}  // namespace

PosixPlatform::PosixPlatform() = default;

PosixPlatform::~PosixPlatform() { ReapPrograms(); }

bool PosixPlatform::Fail(int error) { return Fail(std::string(std::strerror(error))); }

bool PosixPlatform::Fail(std::string why) {
  last_error_ = std::move(why);
  return false;
}

bool PosixPlatform::FileExists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

bool PosixPlatform::MayExist(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0) return !S_ISDIR(status.st_mode);
  return errno != ENOENT && errno != ENOTDIR && errno != ENAMETOOLONG;
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
  return ReadOpen(file, status.st_size);
}

std::optional<std::string> PosixPlatform::ReadOpen(const Descriptor& file, off_t size) {
  try {
    std::string content;
    if (!ReadAll(file.Get(), static_cast<std::size_t>(std::max<off_t>(size, 0)), kLargestFile, &content)) {
      return Fail(errno), std::nullopt;
    }
    return content;
  } catch (const std::exception&) {  // larger than a string, or than memory
    return Fail(EFBIG), std::nullopt;
  }
}

bool PosixPlatform::ReplaceFileByPieces(const std::string& path, std::span<const std::string_view> pieces) {
  return Replace(path, {.pieces = pieces});
}

std::string PosixPlatform::FileState(const std::string& path) { return StateOf(path); }

bool PosixPlatform::ReplaceUnchanged(const std::string& path, std::span<const std::string_view> pieces,
                                     std::string* state) {
  std::string written;
  if (!Replace(path, {.pieces = pieces, .expected = *state, .written = &written})) return false;
  *state = std::move(written);
  return true;
}

// What a run that was killed left in the folder goes when something is written there.
bool PosixPlatform::Replace(const std::string& path, FileContent content) {
  if (!StaysInside(path, LastPart::kFollowed)) return false;
  FilledFolder* const filled = FilledAround(path);
  const bool waits = filled != nullptr && filled->Wrote(path);
  int lost = 0;
  if (waits) content.flushed_later = &lost;
  std::string why;
  for (host::WriteListener* listener : listeners_) {
    if (!listener->BeforeWriting(path, content.pieces, &why)) return Fail(std::move(why));
  }
  why = ReplaceBeside(path, content, ignore_locks_);
  for (host::WriteListener* listener : listeners_) listener->AfterWriting(path, why.empty());
  if (!why.empty()) return Fail(std::move(why));
  if (filled != nullptr) filled->Written(path, waits, lost);
  std::string folder = FolderOf(path);
  if (cleared_.insert(folder).second) RemoveAbandoned(folder);
  return true;
}

bool PosixPlatform::AppendFile(const std::string& path, std::string_view content) {
  if (!StaysInside(path, LastPart::kFollowed)) return false;
  if (std::string why = WhyTaken(path); !why.empty()) return Fail(std::move(why));
  FilledFolder* const filled = FilledAround(path);
  Descriptor file(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
  if (file.Valid() && filled != nullptr) filled->Appended(path);
  return (file.Valid() && WriteAll(file.Get(), content) && file.Close()) || Fail(errno);
}

// What is copied is mostly named by a document, which may name a pipe that nobody writes into, or a device.
bool PosixPlatform::ReadRegular(const std::string& from, std::string* bytes, mode_t* mode) {
  const Descriptor file(::open(from.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file.Valid() || ::fstat(file.Get(), &status) != 0) return Fail(errno);
  if (S_ISDIR(status.st_mode)) return Fail(EISDIR);
  if (!S_ISREG(status.st_mode)) return Fail("it is a device or a pipe, not a file");
  std::optional<std::string> content = ReadOpen(file, status.st_size);
  if (!content) return false;
  *bytes = std::move(*content);
  *mode = (status.st_mode & 0777) | S_IWUSR;
  return true;
}

bool PosixPlatform::CopyFile(const std::string& from, const std::string& to) {
  std::string bytes;
  mode_t mode = 0;
  if (!ReadRegular(from, &bytes, &mode)) return false;
  const std::string_view whole = bytes;
  return Replace(to, {.pieces = std::span(&whole, 1), .mode_of_new = mode});
}

bool PosixPlatform::MoveFile(const std::string& from, const std::string& to) {
  if (!StaysInside(from, LastPart::kItself) || !StaysInside(to, LastPart::kItself)) return false;
  if (::access(from.c_str(), W_OK) != 0) return Fail(errno);
  for (const std::string& file : {from, to}) {
    if (std::string why = WhyProtected(file, ignore_locks_); !why.empty()) return Fail(std::move(why));
  }
  if (std::string why = WhyTaken(to); !why.empty()) return Fail(std::move(why));
  FilledFolder* const filled = FilledAround(to);
  FilledFolder* const before = FilledAround(from);
  // Before it takes the place of another one, or leaves the folder.
  if (before != nullptr) {
    if (std::string why = before->Flush(from); !why.empty()) return Fail(std::move(why));
  }
  if (::rename(from.c_str(), to.c_str()) == 0) {
    if (before != nullptr && before != filled) before->Removed(from);
    if (filled != nullptr) filled->Moved(from, to);
    return true;
  }
  if (errno != EXDEV) return Fail(errno);
  std::string bytes;
  mode_t mode = 0;
  if (!ReadRegular(from, &bytes, &mode)) return false;
  // What is moved gets no new content, on another device neither, so that nobody who listens is told.
  const std::string_view whole = bytes;
  if (!StaysInside(to, LastPart::kFollowed)) return false;
  std::string why = ReplaceBeside(to, {.pieces = std::span(&whole, 1), .mode_of_new = mode}, ignore_locks_);
  if (!why.empty()) return Fail(std::move(why));
  if (filled != nullptr) filled->Written(to, false, 0);
  return RemoveFile(from);
}

bool PosixPlatform::RemoveFile(const std::string& path) {
  if (!StaysInside(path, LastPart::kItself)) return false;
  if (::unlink(path.c_str()) != 0) return Fail(errno);
  if (FilledFolder* const filled = FilledAround(path)) filled->Removed(path);
  return true;
}

FilledFolder* PosixPlatform::FilledAround(const std::string& path) {
  for (const auto& [folder, filled] : filled_) {
    if (IsBelow(path, folder)) return filled.get();
  }
  return nullptr;
}

std::int64_t PosixPlatform::KeepInside(const std::string& folder) {
  kept_inside_[++last_kept_] = {Spelled(folder), ResolvedPath(folder)};
  return last_kept_;
}

void PosixPlatform::LetGo(std::int64_t kept) { kept_inside_.erase(kept); }

// Looked at before each operation, so that what is found is what was there before the run, and what others
// put there up to now.
bool PosixPlatform::StaysInside(const std::string& path, LastPart last) {
  if (kept_inside_.empty()) return true;
  const std::string spelled = Spelled(path);
  // ".." behind a link goes up from where that leads, whatever the spelling says.
  std::error_code error;
  const std::filesystem::path given = std::filesystem::absolute(path, error);
  const bool itself = last == LastPart::kItself;
  for (const auto& [number, kept] : kept_inside_) {
    if (!IsBelow(spelled, kept.spelled) && !IsBelow(spelled, kept.resolved)) continue;
    const std::string leads = ResolvedPath((itself ? given.parent_path() : given).string());
    if (leads == kept.resolved || IsBelow(leads, kept.resolved)) continue;
    return Fail("a symbolic link leads out of the output folder " + kept.spelled + ", to " + leads +
                ". Remove the link, or take another output folder");
  }
  return true;
}

// The mark is locked while this process lives, so that one which nobody holds is that of a run that was cut.
bool PosixPlatform::BeginFilling(const std::string& folder, bool* was_marked) {
  const std::string path = folder + "/" + std::string(host::kUnfinishedName);
  bool made = false;
  auto mark = std::make_unique<Descriptor>(OpenMark(path, &made));
  if (!mark->Valid() && errno == EWOULDBLOCK) {
    return Fail("another run of QELM is writing there (" + OwnerAndTime(path) + ")");
  }
  if (!mark->Valid()) return Fail(errno);
  // Flushed, so that whatever is there after a crash, the mark is.
  if (::ftruncate(mark->Get(), 0) != 0 || !WriteAll(mark->Get(), kUnfinishedText) ||
      ::fsync(mark->Get()) != 0) {
    const int error = errno;
    // One that an earlier run left still says what it said.
    if (made) ::unlink(path.c_str());
    return Fail(error);
  }
  FlushFolder(folder);
  filled_[ResolvedPath(folder)] = std::make_unique<FilledFolder>(std::move(mark));
  *was_marked = !made;
  return true;
}

bool PosixPlatform::IsUnfinished(const std::string& folder) {
  return MayExist(folder + "/" + std::string(host::kUnfinishedName)) &&
         !filled_.contains(ResolvedPath(folder));
}

bool PosixPlatform::HoldFile(const std::string& path) {
  if (!StaysInside(path, LastPart::kItself)) return false;
  std::string why;
  auto hold = std::make_unique<FileHold>(path, ignore_locks_, &why);
  if (!hold->Valid()) return Fail(std::move(why));
  held_[path] = std::move(hold);
  return true;
}

void PosixPlatform::ReleaseFile(const std::string& path) { held_.erase(path); }

bool PosixPlatform::EndFilling(const std::string& folder, bool complete) {
  const auto held = filled_.find(ResolvedPath(folder));
  if (held == filled_.end()) return true;
  const std::unique_ptr<FilledFolder> filled = std::move(held->second);
  filled_.erase(held);
  if (std::string why = filled->FlushAll(); !why.empty()) return Fail(std::move(why));
  return !complete || RemoveFile(folder + "/" + std::string(host::kUnfinishedName));
}

bool PosixPlatform::MakeFolder(const std::string& path) {
  if (!StaysInside(path, LastPart::kFollowed)) return false;
  for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    const std::string part = path.substr(0, end);
    const bool made = !part.empty() && ::mkdir(part.c_str(), 0777) == 0;
    if (!part.empty() && !made && errno != EEXIST) return Fail(errno);
    // What is on the device in a folder counts for nothing as long as the folder's name is not.
    if (made) FlushFolder(FolderOf(part));
    if (end == std::string::npos) break;
  }
  return FolderExists(path) || Fail(ENOTDIR);
}

bool PosixPlatform::RemoveFolder(const std::string& path) {
  return StaysInside(path, LastPart::kItself) && (::rmdir(path.c_str()) == 0 || Fail(errno));
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
  if (const std::optional<std::string> real = adapter::ResolvedPath(resolved.string())) resolved = *real;
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
  return ReadFolder(path).value_or(std::vector<std::string>());
}

std::optional<std::vector<std::string>> PosixPlatform::ReadFolder(const std::string& path) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(path.c_str()), &::closedir);
  if (!folder) {
    const bool is_missing = errno == ENOENT || errno == ENOTDIR;
    Fail(errno);
    return is_missing ? std::optional(names) : std::nullopt;
  }
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
