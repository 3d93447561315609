// What a run copied into a folder and from where, kept in that folder, so that the next run knows what it may
// replace there and leaves alone what is somebody else's.
//
// For each book or document of which a copy was made there is a file ".qelm-made-NAME.txt":
//
//   source ../v1/pump.book.mif
//   as ../current/pump.book.mif
//   made 4711-cbf29ce484222325 pump.book.mif
//   file img/pump.png
//
// "as" is how the source was named, where links are in it. A "made" file is what the run left there, told by
// its size and content, so that it is known wherever and however the folder is copied, and as long as nobody
// works on it. One of more than 4 MB is told by its size and time. While a run is under way its files are
// "file"s, of which only the names are known: what is there under one is what a run left that was cut. Files
// that are saved from the copy, PDF and XML, are listed too.
//
// Paths are seen from the folder, so that a folder that is moved or copied together with its source keeps its
// meaning, and the same run writes the same record on every machine. "%" and line ends in a name are written
// %25 and %0A.
//
// A copy is of this source when its record names it. A source that was moved meanwhile is known by its files:
// where the one that is named is not there any more, half of them must lie there as they were made.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/interface/host.h"

namespace qelm::filtering {

// Of what a run records of its files; in bytes, far more of them than a book has.
inline constexpr std::uintmax_t kLargestRecord = 16'000'000;

class CopyRecord {
 public:
  // The record in the folder of the copy whose main file, the book or document, is called `name`. Nothing is
  // read yet.
  CopyRecord(host::Platform& platform, const std::string& folder, std::string_view name);

  const std::string& path() const { return path_; }
  // The main file, with links in the folder's path resolved, as files are named to the functions below.
  const std::string& target() const { return target_; }

  // Reads what is recorded; nothing is where there is no record. False, with why(), when there is one that
  // cannot be read: nobody knows then what is whose.
  bool Read();
  const std::string& why() const { return why_; }

  // Whether what was read is a copy of `source`, whose files are to be these. When it is not, the files are
  // forgotten: they are none of this source's.
  bool IsCopyOf(const std::string& source, const std::vector<std::string>& files);
  // Whether a run put the file there, and whether it is as that left it. The file is read for that, once.
  bool Names(const std::string& file) const;
  bool Has(const std::string& file);
  // The same of a run that was completed, and so knows more of its files than their names.
  bool HasComplete(const std::string& file);
  // Where the recorded source lies; empty where there is no record.
  const std::string& source() const { return source_; }

  // What is to be recorded before a copy of `source` is made that consists of these files. Files of the
  // earlier copy that are there still stay in it: a component that cannot be opened this time may be there
  // the next time.
  std::string TextFor(const std::string& source, const std::vector<std::string>& files) const;

  // Records that at once. False when the record cannot be written.
  bool Begin(const std::string& source, const std::vector<std::string>& files) const;

  // Records one file more, before it is made. False when the record cannot be written.
  bool Add(const std::string& file);

  // Records of all files what they are now, and forgets those that are not there. One with unsaved changes
  // in the host has yet to become what it will be. False when a file cannot be read or the record be written.
  bool Seal(host::Documents& documents);

 private:
  struct Made {
    std::string state;  // size and hash; empty: whatever is there
    bool looked_at = false;
    bool same = false;
  };

  bool Write(const std::string& text) const;
  bool Unreadable(std::string reason);
  std::string Text(const std::string& source, const std::string& as) const;
  std::string StateOf(const std::string& file) const;
  std::string Shortened(const std::string& file) const;
  std::string Spelled(const std::string& file) const;
  std::string Full(std::string_view shortened) const;

  host::Platform& platform_;
  std::string folder_;
  std::string target_;
  std::string path_;
  std::string source_;
  std::string as_;
  std::unordered_map<std::string, Made> files_;  // by their shortened names
  std::string why_;
};

// Whether a copy was made into this very folder, and completed, to which the file belongs as it is now.
bool IsOfCompleteCopy(host::Platform& platform, const std::string& folder, const std::string& file);

// Ends a copy in whose folder the last file was written (Platform::EndFilling): when all of it could be
// saved, its record is sealed and the mark taken away, else it stays one that is not complete. `main` is its
// book or document. False, with the platform's last error, when it is to be complete and cannot be.
bool CompleteCopy(host::Host& host, const std::string& main, bool saved);

}  // namespace qelm::filtering
