// Replacing a file so that there is either the old one or the new one, whatever happens, and nobody's but
// ours.
//
// The content goes into a file beside (".qelm-NAME.new") that only its owner may read, is flushed to the
// device (unless the caller does that), takes over owner and permissions of the old file, and is renamed over
// it. While it is written the file beside is also the lock: its writer holds a lock of the kernel on it,
// which goes when the process ends, however it ends. Whoever wants to write the same file and finds one that
// nobody holds removes it and goes on; one that is held he waits for a moment and then gives up, telling
// whose it is and since when.
// Where it cannot be told whether one is held, it is in the way as well, unless locks are ignored: then it
// stays, and another name is taken.
//
// A file that FrameMaker has open has its own lock file beside it, NAME.mif.lck or, for FrameMaker's own
// kinds of files, NAME.lck. Such a file is not replaced.
#pragma once

#include <sys/types.h>

#include <span>
#include <string>
#include <string_view>

#include "embedded/adapter/descriptor.h"

namespace qelm::embedded::adapter {

struct FileContent {
  std::span<const std::string_view> pieces = {};
  mode_t mode_of_new = 0666;       // of a file that is not there yet, less the process' mask
  std::string expected = {};       // the state that the file has to be in; empty: any
  std::string* written = nullptr;  // takes the state of the new file, when it is in place
  int* flushed_later = nullptr;    // by the caller, if not null: takes what closing the file tells of, or 0
};

// Replaces the file at `path`; symbolic links are followed, where they lead to something. Devices and pipes
// are written to as they are. Returns an empty text when it is done, else why not; the old file is as it was
// then.
std::string ReplaceBeside(const std::string& path, const FileContent& content, bool ignore_locks);

// Keeps other runs from making a file of this name, and what belongs to it, as long as it lives: by a file
// beside that is locked as that of a writer is, but has a name of its own (".qelm-NAME.held.new").
class FileHold {
 public:
  // Waits for another's as a writer does. Not Valid(), with `why`, when that stays.
  FileHold(const std::string& path, bool ignore_locks, std::string* why);
  ~FileHold();
  FileHold(const FileHold&) = delete;
  FileHold& operator=(const FileHold&) = delete;

  bool Valid() const { return file_.Valid(); }

 private:
  std::string name_;
  Descriptor file_;
};

// A text that is another one when the file was changed or replaced; empty when it is not there.
std::string StateOf(const std::string& path);

// Why a file that is there may not be replaced or removed by this user: it is protected against writing, or,
// unless that is ignored, FrameMaker has it open. Empty when it may be, or is not there.
std::string WhyProtected(const std::string& path, bool ignore_locks);

// Why a name is taken though there is no file: a symbolic link that leads nowhere is somebody's all the same.
// Empty when it is not.
std::string WhyTaken(const std::string& path);

// Flushes the names in a folder, one of which may disappear after a crash otherwise. A file system that
// cannot do that is no reason to fail: the content is safe already.
void FlushFolder(const std::string& folder);

// Removes from a folder the files beside that writers who have ended left there.
void RemoveAbandoned(const std::string& folder);

// The user and the time of a file's last change: "anna, since 2026-11-21 22:30:01".
std::string OwnerAndTime(const std::string& path);

// The lock of the kernel on an open file. False when somebody else has it, or there are no locks on that
// device and `where_there_are_none` is false.
bool TakeLock(int file, bool where_there_are_none);

}  // namespace qelm::embedded::adapter
