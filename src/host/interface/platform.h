// The platform: files, environment, clock and external programs. Paths are the platform's own, texts UTF-8.
#pragma once

#include <optional>
#include <span>

#include "host/interface/types.h"

namespace qelm::host {

// A moment in the calendar of the local time zone.
struct LocalTime {
  std::int32_t year = 0;
  std::int32_t month = 1;  // 1 to 12
  std::int32_t day = 1;    // 1 to 31
  std::int32_t hour = 0;
  std::int32_t minute = 0;
  std::int32_t second = 0;
};

// The file that says of a folder that what lies in it is not complete.
inline constexpr std::string_view kUnfinishedName = "QELM-unfinished.txt";

// Is told of each file that a platform replaces, with what it is to hold.
class WriteListener {
 public:
  virtual ~WriteListener() = default;
  // Before it is replaced. False, with the reason, keeps it as it is.
  virtual bool BeforeWriting(const std::string& path, std::span<const std::string_view> content,
                             std::string* why) = 0;
  // Whether it was.
  virtual void AfterWriting(const std::string& path, bool done) = 0;
};

class Platform {
 public:
  virtual ~Platform() = default;

  virtual bool FileExists(const std::string& path) = 0;
  // True also where it cannot be found out. Who would go on without a file, or put another one in its place,
  // asks this: opening it tells what is wrong.
  virtual bool MayExist(const std::string& path) { return FileExists(path); }
  // FileExists, asked once more where it could not be found out: a file may be out of reach for a moment.
  bool IsThere(const std::string& path) { return FileExists(path) || (MayExist(path) && FileExists(path)); }
  virtual bool FolderExists(const std::string& path) = 0;
  // The whole content of a file; nothing when it cannot be read.
  virtual std::optional<std::string> ReadFile(const std::string& path) = 0;
  // Replaces the file by one with this content, which may come in pieces: it is written beside and renamed,
  // so that whatever happens there is either the old file or the new one. False, with the old file as it was,
  // on failure.
  virtual bool ReplaceFileByPieces(const std::string& path, std::span<const std::string_view> pieces) = 0;
  bool ReplaceFile(const std::string& path, std::string_view content) {
    return ReplaceFileByPieces(path, std::span(&content, 1));
  }
  // What tells whether a file was changed: a text that is another one then; empty where that is not known.
  virtual std::string FileState(const std::string& /*path*/) { return {}; }
  // As ReplaceFileByPieces, but the file must be in this state (empty: in any); LastError() says so where it
  // is not. `state` becomes that in which the file was left, whatever others do to it since.
  virtual bool ReplaceUnchanged(const std::string& path, std::span<const std::string_view> pieces,
                                std::string* state) {
    if (!ReplaceFileByPieces(path, pieces)) return false;
    *state = FileState(path);
    return true;
  }
  // Adds to the end of a file, which is made when it is missing.
  virtual bool AppendFile(const std::string& path, std::string_view content) = 0;
  // Copies one file; a target that exists is replaced as by ReplaceFile. The user may write the copy, also
  // where the original is read-only.
  virtual bool CopyFile(const std::string& from, const std::string& to) = 0;
  // Gives a file another name or folder. What is at the target is replaced; a file that the user may not
  // write is neither moved nor replaced.
  virtual bool MoveFile(const std::string& from, const std::string& to) = 0;
  virtual bool RemoveFile(const std::string& path) = 0;
  // Makes a folder and those above it that are missing. True when it is there afterwards.
  virtual bool MakeFolder(const std::string& path) = 0;
  // Removes a folder that is empty.
  virtual bool RemoveFolder(const std::string& path) = 0;
  // Marks a folder that is there as one that this process fills, by a file of the name above, and keeps
  // others from filling it at the same time: false when one does. A process that ends early leaves the mark;
  // `was_marked` says whether one had done so before. EndFilling takes it away when the files are complete;
  // it stays when they are not. False when it is to go and cannot be removed. Files that are written in
  // between may reach the device as late as EndFilling, which is false when one cannot.
  virtual bool BeginFilling(const std::string& /*folder*/, bool* was_marked) {
    *was_marked = false;
    return true;
  }
  virtual bool EndFilling(const std::string& /*folder*/, bool /*complete*/) { return true; }
  // Whether the folder has such a mark, and not from this process.
  virtual bool IsUnfinished(const std::string& /*folder*/) { return false; }
  // Keeps other runs from making a file, and what is made along with it, until ReleaseFile or the end of the
  // process: false when one does, or its folder is not there. The file itself is not touched.
  virtual bool HoldFile(const std::string& /*path*/) { return true; }
  virtual void ReleaseFile(const std::string& /*path*/) {}
  // Until LetGo() of the number that is returned, nothing below this folder is written, made, moved or
  // removed where a symbolic link leads out of it: outputs are to stay where the user wanted them, whatever
  // lay there before. The folder itself may be a link.
  virtual std::int64_t KeepInside(const std::string& /*folder*/) { return 0; }
  virtual void LetGo(std::int64_t /*kept*/) {}
  // Until StopListening, the listener is told of each file that is replaced or copied, by a save of the
  // host's documents too.
  virtual void Listen(WriteListener* /*listener*/) {}
  virtual void StopListening(WriteListener* /*listener*/) {}
  // The names in a folder, in byte order; empty when it cannot be read.
  virtual std::vector<std::string> FolderNames(const std::string& path) = 0;
  // The same, empty where there is no such folder; nothing, with LastError(), when there may be one that
  // cannot be read.
  virtual std::optional<std::vector<std::string>> ReadFolder(const std::string& path) {
    return FolderNames(path);
  }

  // The size of a file in bytes; nothing when there is none.
  virtual std::optional<std::uint64_t> FileSize(const std::string& path) = 0;
  // How many bytes can still be written in the folder, or where it would be made. Nothing where that is not
  // known.
  virtual std::optional<std::uint64_t> FreeSpace(const std::string& folder) = 0;
  // The path with links resolved, without detours and without a separator at its end; what does not exist yet
  // is taken as it is written. So two spellings of one place mostly become the same; SameFile knows for sure.
  virtual std::string ResolvedPath(const std::string& path) = 0;
  virtual bool SameFile(const std::string& left, const std::string& right) = 0;

  // The value of an environment variable, empty when it is not set.
  virtual std::string Environment(std::string_view name) = 0;
  virtual LocalTime Now() = 0;
  // The calendar time in seconds since the beginning of 1970, in UTC.
  virtual std::int64_t CalendarSeconds() = 0;
  // Milliseconds of a clock that never goes back.
  virtual std::int64_t Milliseconds() = 0;
  // Why the last operation on a file failed, in words without the path ("Permission denied"); empty where
  // that is not known.
  virtual std::string LastError() { return {}; }
  // Starts an external program and does not wait for it. False when it cannot be started.
  virtual bool Start(const std::string& program, const std::vector<std::string>& arguments) = 0;
};

// Keeps writes inside of a folder as long as it lives.
class KeptFolder {
 public:
  KeptFolder(Platform& platform, const std::string& folder)
      : platform_(platform), kept_(platform.KeepInside(folder)) {}
  ~KeptFolder() { platform_.LetGo(kept_); }
  KeptFolder(const KeptFolder&) = delete;
  KeptFolder& operator=(const KeptFolder&) = delete;

 private:
  Platform& platform_;
  std::int64_t kept_;
};

// Keeps a file from other runs as long as it lives, where that is Valid.
class HeldFile {
 public:
  HeldFile(Platform& platform, const std::string& path)
      : platform_(platform), path_(path), valid_(platform.HoldFile(path)) {}
  ~HeldFile() {
    if (valid_) platform_.ReleaseFile(path_);
  }
  HeldFile(const HeldFile&) = delete;
  HeldFile& operator=(const HeldFile&) = delete;

  bool Valid() const { return valid_; }

 private:
  Platform& platform_;
  std::string path_;
  bool valid_;
};

}  // namespace qelm::host
