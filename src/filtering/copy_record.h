// What runs put into a folder and from where, kept in that folder, so that the next run knows what it may
// replace there and leaves alone what is somebody else's.
//
// For each book or document of which a copy was made there is a file ".qelm-made-NAME.txt":
//
//   source ../v1/pump.book.mif
//   as ../current/pump.book.mif
//   made 4711-5d1c0f6a9e3b7284 img/pump.png
//   made 58051-c6a4a7935bd1e995 pump.book.mif
//   complete
//
// A "made" line tells a content that a run gave to a file, by its size and hash. It is written before the
// file gets that content, and the lines of what the file held before stay until the copy is complete. So
// whatever became of a run, a file with one of the contents that are recorded for it was made by one, and any
// other is somebody's work. What lies under a name is never taken for made because it lies there.
//
// "as" is how the source was named, where links are in it. A copy is of this source when one of both names
// it. "complete" ends the record of a copy that is; then each of its files has one line.
//
// Paths are seen from the folder, so that a folder that is moved or copied together with its source keeps its
// meaning, and files lie below it. "%" and line ends in a name are written %25 and %0A.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/interface/platform.h"

namespace qelm::filtering {

// Of what a run records of its files; in bytes, far more of them than a book has.
inline constexpr std::uintmax_t kLargestRecord = 16'000'000;

// What tells a content from others: its size and a hash, as "4711-5d1c0f6a9e3b7284".
std::string ContentMark(std::span<const std::string_view> pieces);

class CopyRecord : private host::WriteListener {
 public:
  // The record in the folder of the copy whose main file, the book or document, is called `name`. Nothing is
  // read yet.
  CopyRecord(host::Platform& platform, const std::string& folder, std::string_view name);
  ~CopyRecord() override;
  CopyRecord(const CopyRecord&) = delete;
  CopyRecord& operator=(const CopyRecord&) = delete;

  const std::string& path() const { return path_; }
  // The main file, with links in the folder's path resolved, as files are named to the functions below.
  const std::string& target() const { return target_; }
  // Whether the file lies below the folder, so that it can be recorded here.
  bool Covers(const std::string& file) const;

  // Reads what is recorded; nothing is where there is no record. False, with why(), when there is one that
  // cannot be read: nobody knows then what is whose.
  bool Read();
  const std::string& why() const { return why_; }

  // Whether what was read is a copy of `source`. When it is not, the files are forgotten: they are none of
  // this source's.
  bool IsCopyOf(const std::string& source);
  // Whether runs put the file there, and whether it is as one of them left it. The file is read for that.
  bool Names(const std::string& file) const;
  bool Has(const std::string& file);
  // The same of a copy that was completed.
  bool HasComplete(const std::string& file);
  // Takes note of the file as it is, there or not, as Has() does and each write that is listened to. From
  // then on it is changed when somebody else did something to it.
  void Look(const std::string& file) { seen_[Shortened(file)] = platform_.FileState(file); }
  bool IsUnchanged(const std::string& file) const;
  // Where the recorded source lies; empty where there is no record.
  std::string source() const { return source_.empty() ? std::string() : Full(source_); }

  // From here on what was read is the record of a copy of `source` that is being made. Nothing is written
  // yet.
  void Begin(const std::string& source);
  // The run is going to write this file: each content that it gets through the platform is recorded before.
  // A file that cannot be recorded, or is changed, is not written. One that is moved there was `staged` since
  // Begin().
  void Expect(const std::string& file, const std::string& staged = {});
  std::string Text() const;

  // The copy is as it should be: of each file that was written what it was given last is recorded, and files
  // that are not there are forgotten. Nothing is listened to any more. False, with why(), when the record
  // cannot be written.
  bool Seal();

  // After the last file was written into a folder that is being filled: when all of it could be saved, seals
  // and takes the folder's mark away (Platform::EndFilling), else the copy stays one that is not complete.
  // False, with why(), when it is to be complete and cannot be.
  bool Complete(bool saved);

  // Of a copy that is complete: the files of earlier ones that this one has not, as those left them. Each is
  // read for that. They stay, but whoever passes the folder on wants to know of them.
  std::vector<std::string> LeftOver();

 private:
  bool BeforeWriting(const std::string& path, std::span<const std::string_view> content,
                     std::string* why) override;
  void AfterWriting(const std::string& path, bool done) override;

  bool IsWritten() const;
  bool Write() const;
  bool Fail(std::string reason);
  std::string Shortened(const std::string& file) const;
  std::string Spelled(const std::string& file) const;
  std::string Full(std::string_view shortened) const;

  host::Platform& platform_;
  std::string folder_;
  std::string target_;
  std::string path_;
  // Files by their shortened names, as everything below.
  std::string source_;
  std::string as_;
  std::map<std::string, std::vector<std::string>> files_;  // what runs gave them
  bool complete_ = false;
  std::unordered_map<std::string, std::string> seen_;  // Platform::FileState of what was looked at
  std::string why_;

  bool begun_ = false;
  bool recorded_ = false;  // the file says what this says
  std::unordered_set<std::string> expected_;
  std::unordered_map<std::string, std::string> writing_;  // what is being written, and with what content
  std::unordered_map<std::string, std::string> written_;  // what was written since Begin, likewise
};

// Whether a copy was made into this very folder, and completed, to which the file belongs as it is now.
bool IsOfCompleteCopy(host::Platform& platform, const std::string& folder, const std::string& file);

}  // namespace qelm::filtering
