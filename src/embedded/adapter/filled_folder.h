// A folder that a run fills, and what it has written there that is not flushed to the device yet.
//
// What lies in such a folder counts for nothing until all of it is there. So a file that this run put there
// and replaces is not flushed each time, but in the end, before the run says that all of it is complete.
// Everything else is as anywhere: a file is on the device before it takes the place of one that was there
// when the run began, or is moved.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "embedded/adapter/descriptor.h"

namespace qelm::embedded::adapter {

class FilledFolder {
 public:
  // `mark` is what keeps other runs out, as long as this lives.
  explicit FilledFolder(std::unique_ptr<Descriptor> mark) : mark_(std::move(mark)) {}

  // Whether this run wrote the file. Such a one may be replaced by one that is flushed later.
  bool Wrote(const std::string& path) const { return files_.contains(path); }

  // What was done, when it is done. A file that `waits` is not flushed; with an error it is lost already.
  // What is added to a file that this run did not write is left alone.
  void Written(const std::string& path, bool waits, int error);
  void Appended(const std::string& path);
  void Moved(const std::string& from, const std::string& to);
  void Removed(const std::string& path) { files_.erase(path); }

  // Flushes a file if it waits, or all that do and the folders with names that wait. Returns an empty text,
  // or which file could not be and why. The same from then on, until it is replaced or gone: a device may say
  // only once that it has lost something.
  std::string Flush(const std::string& path);
  std::string FlushAll();

 private:
  struct File {
    bool waits = false;
    int error = 0;
  };

  std::unique_ptr<Descriptor> mark_;
  std::map<std::string, File> files_;
  std::set<std::string> folders_;  // into which names came that are not flushed
};

}  // namespace qelm::embedded::adapter
