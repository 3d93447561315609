// The platform role over POSIX: files, environment, clock and external programs.
//
// Files are replaced as file_replacing.h describes. Symbolic links are followed, so that the link stays and
// its target is replaced. A file that this user may not read or write is not replaced, although the rename
// would succeed: its owner protected it on purpose.
#pragma once

#include <sys/types.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/interface/platform.h"

namespace qelm::embedded::adapter {

class Descriptor;
class FileHold;
class FilledFolder;
struct FileContent;

class PosixPlatform : public host::Platform {
 public:
  PosixPlatform();
  ~PosixPlatform() override;
  PosixPlatform(const PosixPlatform&) = delete;
  PosixPlatform& operator=(const PosixPlatform&) = delete;

  bool FileExists(const std::string& path) override;
  bool MayExist(const std::string& path) override;
  bool FolderExists(const std::string& path) override;
  std::optional<std::string> ReadFile(const std::string& path) override;
  bool ReplaceFileByPieces(const std::string& path, std::span<const std::string_view> pieces) override;
  std::string FileState(const std::string& path) override;
  bool ReplaceUnchanged(const std::string& path, std::span<const std::string_view> pieces,
                        std::string* state) override;
  bool AppendFile(const std::string& path, std::string_view content) override;
  bool CopyFile(const std::string& from, const std::string& to) override;
  bool MoveFile(const std::string& from, const std::string& to) override;
  bool RemoveFile(const std::string& path) override;
  bool MakeFolder(const std::string& path) override;
  bool RemoveFolder(const std::string& path) override;
  bool BeginFilling(const std::string& folder, bool* was_marked) override;
  bool EndFilling(const std::string& folder, bool complete) override;
  bool IsUnfinished(const std::string& folder) override;
  bool HoldFile(const std::string& path) override;
  void ReleaseFile(const std::string& path) override;
  std::int64_t KeepInside(const std::string& folder) override;
  void LetGo(std::int64_t kept) override;
  void Listen(host::WriteListener* listener) override { listeners_.push_back(listener); }
  void StopListening(host::WriteListener* listener) override { std::erase(listeners_, listener); }
  std::vector<std::string> FolderNames(const std::string& path) override;
  std::optional<std::vector<std::string>> ReadFolder(const std::string& path) override;
  std::optional<std::uint64_t> FileSize(const std::string& path) override;
  std::optional<std::uint64_t> FreeSpace(const std::string& folder) override;
  std::string ResolvedPath(const std::string& path) override;
  bool SameFile(const std::string& left, const std::string& right) override;

  std::string Environment(std::string_view name) override;
  host::LocalTime Now() override;
  std::int64_t CalendarSeconds() override;
  std::int64_t Milliseconds() override;
  bool Start(const std::string& program, const std::vector<std::string>& arguments) override;

  // Replaces files although FrameMaker's lock files say that they are open.
  void SetIgnoreLocks(bool ignore) { ignore_locks_ = ignore; }

  // Gives a variable a value for this platform only; the process keeps its own.
  void SetEnvironment(std::string_view name, std::string_view value);

  std::string LastError() override { return last_error_; }

 private:
  // Whether an operation works on what a link at the end of a path leads to, or on the link.
  enum class LastPart : std::uint8_t { kFollowed, kItself };

  bool Fail(int error);
  bool Fail(std::string why);
  bool Replace(const std::string& path, FileContent content);
  bool StaysInside(const std::string& path, LastPart last);
  // A file that is neither a folder nor a device, with the permissions of a copy of it.
  bool ReadRegular(const std::string& from, std::string* bytes, mode_t* mode);
  std::optional<std::string> ReadOpen(const Descriptor& file, off_t size);
  // The folder that is being filled in which the path lies; null for others.
  FilledFolder* FilledAround(const std::string& path);
  void ReapPrograms();

  bool ignore_locks_ = false;
  std::set<std::string> cleared_;  // folders from which abandoned files were removed
  std::map<std::string, std::unique_ptr<FilledFolder>> filled_;  // by their paths, resolved
  std::map<std::string, std::unique_ptr<FileHold>> held_;        // files, by the paths as they were given

  struct Kept {
    std::string spelled;   // absolute, without a separator at its end
    std::string resolved;  // the same without links
  };
  std::map<std::int64_t, Kept> kept_inside_;
  std::int64_t last_kept_ = 0;
  std::vector<host::WriteListener*> listeners_;

  std::map<std::string, std::string, std::less<>> environment_;
  std::vector<pid_t> programs_;
  std::string last_error_;
};

}  // namespace qelm::embedded::adapter
