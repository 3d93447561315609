// A folder that a run fills, and what it has written there that is not flushed to the device yet.
//
// What lies in such a folder counts for nothing until all of it is there. So its files do not reach the
// device one by one, each before the next, but together: before the run says that they are complete, and
// before anything goes that was there when the run began. A file that is made, replaced and replaced again
// meanwhile is flushed once.
#pragma once

#include <memory>
#include <set>
#include <string>

#include "embedded/adapter/descriptor.h"

namespace qelm::embedded::adapter {

class FilledFolder {
 public:
  // `mark` is what keeps other runs out, as long as this lives.
  explicit FilledFolder(std::unique_ptr<Descriptor> mark) : mark_(std::move(mark)) {}

  // Whether a file may be written now and flushed later: what it replaces, if anything, is of this run.
  bool MayWait(const std::string& path) const;
  // What was done, when it is done.
  void Written(const std::string& path);
  void Moved(const std::string& from, const std::string& to);
  void Removed(const std::string& path);

  // Whether something that was written waits to be flushed.
  bool Waits() const { return !waiting_.empty(); }
  // Flushes what waits, and the folders in which names have changed. Returns an empty text, or which file
  // could not be and why; the same from then on, as a device may say only once that it has lost something.
  std::string Flush();

 private:
  std::unique_ptr<Descriptor> mark_;
  std::set<std::string> written_;  // by this run, and still there
  std::set<std::string> waiting_;  // of these
  std::set<std::string> folders_;
  std::string why_lost_;
};

}  // namespace qelm::embedded::adapter
