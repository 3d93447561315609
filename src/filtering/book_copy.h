// Copying a book with what it consists of into another folder.
//
// What is copied: the book's file, its components, and the graphics and text insets that these show by a
// relative path or that lie in the book's folder; insets bring what they show in turn. Other files that
// documents refer to stay where they are. Files in the book's folder keep their names and sub-folders; a file
// from elsewhere goes into a sub-folder with the name of its own folder.
//
// References follow: one that leads to a copied file leads to the copy, and a relative one that leads
// elsewhere is written anew from where the copy lies. One with an absolute path is changed only when
// references are to be redirected.
//
// The copy comes into the output folder as a whole or not at all (staged_files.h). Files that lie there under
// names of the copy are replaced when they are what an earlier copy of the same book put there
// (copy_record.h); else nothing is copied. Others stay. The sources are only read.
//
// What was copied is not what is wanted before it is filtered. Until the folder is said to be complete it is
// marked as one that is not (Platform::BeginFilling), also when the program ends meanwhile.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>

#include "filtering/components.h"
#include "filtering/copy_plan.h"
#include "filtering/copy_record.h"
#include "filtering/staged_files.h"
#include "messages/messenger.h"

namespace qelm::filtering {

// The code by which a copy tells that the user stopped it.
inline constexpr std::int32_t kCopyStopped = 210;

class BookCopy {
 public:
  // Copies as the run says: into its output folder, redirecting references or not, overwriting what is
  // somebody else's or not. The roles and the messenger must outlive this. Nothing is done yet.
  BookCopy(host::Host& host, messages::Messenger& messenger, host::Id book, const FilterRun& wanted);

  // Takes note of a component and what it refers to. Its document is open; what is copied is its file. False
  // when the host does not tell what it refers to.
  bool AddComponent(host::Id component, host::Id document) { return plan_.AddComponent(component, document); }

  // Takes note of a component that is not copied because it cannot be opened: the copy names it where it is.
  void LeaveOut(host::Id component) { left_out_.insert(component); }

  // Copies. Components that were not added are not copied; their entries stay. Returns kDone,
  // kOutputIsSource, kCopyStopped, or kCopyFailed with why() set. The new book is open then, its documents
  // are not.
  std::int32_t Copy();

  // After a copy that was made: its record, by which it is completed. While it lives, what is written of the
  // copy is recorded.
  std::unique_ptr<CopyRecord> TakeRecord() { return std::move(record_); }

  host::Id NewBook() const { return new_book_; }
  // The components of the book, each with that of the new one.
  const SameComponents& components() const { return components_; }
  const std::string& why() const { return why_; }
  std::vector<CopiedFile> CopiedFiles() const { return plan_.CopiedFiles(); }
  const std::set<std::string>& MissingFiles() const { return plan_.MissingFiles(); }
  // Folders that were made for the copy, outer ones first.
  const std::vector<std::string>& made_folders() const { return made_folders_; }
  // Links that could not be changed, each in words: they lead where they led, seen from the new place.
  const std::vector<std::string>& unchanged_links() const { return unchanged_links_; }

 private:
  std::int32_t CopyFiles(StagedFiles* staged);
  bool Check();
  bool CheckTargets();
  bool CheckTarget(const CopyPlan::File& file, bool copied_before);
  bool NobodyMakes(const std::string& target);
  bool CheckSpace();
  bool CopyOne(std::size_t number, StagedFiles* staged);
  bool Redirect(std::size_t number, const std::string& copy);
  bool SetLinks(host::Id document, const std::vector<CopyPlan::Rewrite>& rewrites,
                const CopyPlan::File& file);
  bool NameComponents(const std::string& copy);
  bool NameComponents(host::Id book, const SameComponents& components);
  bool NameLeftOut(host::Id book, host::Id component, const std::string& source);
  bool SaveCopy(host::Id document, const std::string& copy);
  bool Place(StagedFiles* staged);
  bool OpenNewBook();
  std::optional<SameComponents> ComponentsOf(host::Id book);

  bool Stopped();
  bool Fail(std::string_view id, const std::string& text);
  bool FailFile(const std::string& path);
  bool HostSays(const std::string& path);

  host::Host& host_;
  messages::Messenger& messenger_;
  host::Id book_;
  bool redirect_;
  bool overwrite_;
  std::string folder_;
  std::optional<host::KeptFolder> kept_;
  CopyPlan plan_;
  std::unique_ptr<CopyRecord> record_;
  std::unordered_set<host::Id> left_out_;
  std::vector<std::string> copies_;  // where the copy of each file is until it is placed
  std::string new_record_;           // likewise
  host::Id new_book_ = host::kNone;
  SameComponents components_;
  std::string why_;
  std::vector<std::string> made_folders_;
  std::vector<std::string> unchanged_links_;
  bool stopped_ = false;
  bool cut_before_ = false;  // the folder holds a copy that was not completed
};

}  // namespace qelm::filtering
