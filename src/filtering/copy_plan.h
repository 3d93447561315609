// What the copy of a book consists of, where each file goes, and which references have to change.
//
// A document is looked at while it is open; what is kept of it are its references to other files, each as two
// numbers, so that the plan of a book of hundreds of documents is small.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "filtering/filter_run.h"
#include "host/interface/host.h"

namespace qelm::filtering {

class CopyPlan {
 public:
  struct Reference {
    std::uint32_t link = 0;   // its place among the links of the document,
    std::uint64_t looks = 0;  // and by what it is known there (LooksOf)
    std::uint32_t path = 0;   // of the file that it leads to, in the plan's list of paths
    bool absolute = false;    // as it is written; known when the file's spelling is
    bool shown = false;       // what it leads to is shown in the document: a graphic, an inset
    bool inset = false;       // of these, an inset
  };
  struct File {
    CopiedFile::Role role = CopiedFile::Role::kComponent;
    host::Id component = host::kNone;
    std::string source;
    std::string state;   // of the source, when its references were read; empty: not known
    std::string target;  // after ChooseTargets
    std::vector<Reference> references;
    bool spelling_known = false;
  };
  struct Rewrite {
    std::uint32_t link = 0;
    std::uint64_t looks = 0;
    std::string path;
  };
  static constexpr std::size_t kNoFile = static_cast<std::size_t>(-1);

  CopyPlan(host::Host& host, host::Id book);

  // Takes note of a component whose document is open. False when the host does not tell what it refers to.
  bool AddComponent(host::Id component, host::Id document);

  // Takes note of the graphics and insets that are shown, and of those that the insets show in turn. Asks
  // `stopped` at each inset; false when it says so.
  bool AddShownFiles(const std::function<bool()>& stopped);

  void ChooseTargets(const std::string& folder);

  // The book is the first.
  const std::vector<File>& Files() const { return files_; }
  // The file that a path means, kNoFile for one that is not copied. A name that does not exist stands for
  // that of the file which is found in its place.
  std::size_t FindFile(const std::string& path) const;

  // The references of a file that would not lead where they should. With `redirect` also absolute paths to
  // copied files change. The file is read once more where it matters how its references are written.
  std::vector<Rewrite> RewritesFor(std::size_t file, bool redirect);

  // The link that is to be rewritten, among those of another reading of the document; null where they are not
  // the same: one that was edited may have them in another order than its file has.
  static const host::Link* Find(const std::vector<host::Link>& links, const Rewrite& rewrite);

  std::vector<CopiedFile> CopiedFiles() const;

  // The files that are shown and are not there.
  const std::set<std::string>& MissingFiles() const { return missing_; }

 private:
  std::size_t AddFile(CopiedFile::Role role, const std::string& source);
  bool ReadReferences(std::size_t file, host::Id document);
  bool ReadReferencesOfFile(std::size_t file);
  bool ReadAsWritten(std::size_t file, std::vector<host::Link>* links);
  void AddReference(std::size_t file, std::uint32_t number, const host::Link& link, const std::string& path);
  std::uint32_t Intern(const std::string& path);
  void ReadInset(std::size_t file);
  void LearnSpelling(std::size_t file);
  bool SpellingMatters(const File& file, bool redirect) const;
  bool IsBelowBook(const std::string& path) const;
  std::string TargetFor(const std::string& source, const std::string& folder);
  std::string NewPath(const File& file, const Reference& reference, bool redirect) const;

  host::Host& host_;
  std::string book_folder_;
  std::vector<File> files_;
  std::unordered_map<std::string, std::size_t> by_source_;  // by the path with links resolved
  std::unordered_map<std::string, std::size_t> by_target_;
  std::vector<std::string> paths_;
  std::unordered_map<std::string, std::uint32_t> path_numbers_;
  std::set<std::string> missing_;
};

}  // namespace qelm::filtering
