// What a run copied into a folder and from where, kept in that folder, so that the next run knows what it may
// replace there and leaves alone what is somebody else's.
//
// For each book or document of which a copy was made there is a file ".qelm-made-NAME.txt":
//
//   source ../pump.book.mif
//   file pump.book.mif
//   file img/pump.png
//
// Paths are seen from the folder, so that a folder that is moved or copied together with its source keeps its
// meaning, and the same run writes the same record on every machine. "%" and line ends in a name are written
// %25 and %0A.
//
// A copy is of this source when its record names it. A source that was moved meanwhile is known by the names
// of its files: where the one that is named is not there any more, half of the files must be the same.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/interface/platform.h"

namespace qelm::filtering {

class CopyRecord {
 public:
  // The record in the folder of the copy whose main file, the book or document, is called `name`. Nothing is
  // read yet.
  CopyRecord(host::Platform& platform, const std::string& folder, std::string_view name);

  const std::string& path() const { return path_; }
  // The main file, with links in the folder's path resolved, as files are named to the functions below.
  const std::string& target() const { return target_; }

  // Reads what is recorded. Whether it is a copy of `source`, whose files are to be these.
  bool IsCopyOf(const std::string& source, const std::vector<std::string>& files);
  // After IsCopyOf, when it was one: whether the copy put a file there.
  bool Has(const std::string& file) const;
  // After IsCopyOf: where the recorded source lies; empty where there is no record.
  const std::string& source() const { return source_; }

  // What is to be recorded of a copy of `source` that consists of these files. After IsCopyOf, files of the
  // earlier copy that are there still stay in it: a component that cannot be opened this time may be there
  // the next time.
  std::string TextFor(const std::string& source, const std::vector<std::string>& files) const;

 private:
  void Read();
  std::string Shortened(const std::string& file) const;
  std::string Full(std::string_view shortened) const;

  host::Platform& platform_;
  std::string folder_;
  std::string target_;
  std::string path_;
  std::string source_;
  std::set<std::string> files_;
};

}  // namespace qelm::filtering
