// The state of one filter run: what was asked for, and what came of it. It is set from the settings, a dialog
// or a call before the run; one run is under way at a time.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "common/result_codes.h"
#include "filtering/dangling.h"
#include "host/interface/types.h"

namespace qelm::filtering {

enum class LaunchMode : std::uint8_t {
  kSourceRestoreFirst = 1,
  kSourceNoRestore = 2,
  kDuplicate = 3,
};

enum class TargetKind : std::uint8_t { kDocument = 4, kBook = 5 };

// Result codes of operations, which calls and the command line pass on.
using common::kCancelled;
using common::kCopyFailed;
using common::kDone;
using common::kNoActiveScheme;
using common::kNoDocument;
using common::kNoFlowOrRoot;
using common::kOutputIsSource;

// When to hide the content after a filter that does not restore first.
enum class HideAfter : std::uint8_t { kNever = 0, kAlways = 1, kAsk = 2 };

// How a run ended, for callers that turn it into words or an exit status. From kSchemeRefused on it failed.
enum class Ending : std::uint8_t {
  kNone,  // not run, or still under way
  kCompleted,
  kDeclined,       // the highest-level element would go, and the user did not want that
  kByUser,         // cancelled
  kTitleStays,     // a table title cannot be hidden, and the user did not want to go on
  kSchemeRefused,  // an expression is not valid, or there is none
  kNodeSetCut,     // more nodes were selected than the engine may collect
  kMissingDocument,
  kMissingScheme,
  kMissingElement,  // a walk was begun without an element
  kNotSaved,        // the save before the run failed
  kNotCopied,
  kNotHidden,   // the host did not hide what it should have
  kNotDeleted,  // an element could not be deleted
  kNotRestored,
  kSameFolder,  // the output folder is that of the book
};

// Elements, each counted once. What was visited is kept, hidden, deleted or left; the descendants of hidden
// and deleted elements are not visited.
struct FilterCounts {
  std::uint64_t elements = 0;
  std::uint64_t kept = 0;
  std::uint64_t hidden = 0;
  std::uint64_t deleted = 0;
  std::uint64_t left = 0;  // failed the scheme, but could not be hidden
};

// What a run did with a component of a book.
struct FilteredComponent : FilterCounts {
  host::Id component = host::kNone;
  std::string path;  // of the file that was worked on: of a book that was copied, the copy
  bool generated = false;
  bool opened = false;         // it could be; else it was passed over, and
  std::string why;             // this is why, in the host's words
  bool root_filtered = false;  // the highest-level element of its main flow failed the scheme
  Ending ending = Ending::kNone;
  bool emptied = false;  // nothing was left in it
  bool removed = false;  // from the new book, as it was emptied
};

// A file that came into an output folder with the copy of a book.
struct CopiedFile {
  enum class Role : std::uint8_t { kBook, kComponent, kInset, kGraphic };
  Role role = Role::kComponent;
  std::string source;
  std::string target;
  std::vector<std::size_t> refers_to;  // copied files that its source shows: graphics and insets
};

struct FilterRun : FilterCounts {
  // What was asked for.
  LaunchMode mode = LaunchMode::kDuplicate;
  TargetKind target = TargetKind::kDocument;
  std::string condition_name = "Hidden";
  bool prompts = true;
  bool save_first = false;
  bool remove_coloring = false;
  bool disable_screen_updates = false;
  bool consider_text_nodes = false;
  bool filter_text_insets = true;
  HideAfter hide_after_no_restore = HideAfter::kAlways;
  bool show_before_no_restore = true;
  bool unsaved_file_prompt = true;
  bool completion_prompt = true;
  std::string notification_client;
  bool notify = false;
  std::string
      duplicate_path;      // where mode 3 puts the copy; empty: beside the document, by QELM_MSG_FILTER_17
  bool is_copy = false;    // the document is a copy, or the caller saves it as one: mode 3 makes none
  bool overwrite = false;  // a copy may replace files of its names that are of no earlier copy of its source
  bool dry_run = false;    // only count verdicts; nothing is hidden, deleted, created, copied or saved
  bool places_dangling = true;  // dangling references with the elements in which they stand

  // For books.
  std::string output_folder;  // where mode 3 puts the new book
  bool redirect_cross_references = false;
  bool delete_empties = true;
  bool book_completion_prompt = true;
  bool suppress_opening_alerts = false;

  // What came of it. The cancel flag is 0 while all is well, 1 when the run was cancelled or failed, and else
  // the id of an element that the user is to be shown after the run is undone.
  host::Id cancel_flag = 0;
  bool cancelled = false;  // by the user
  bool restore_cancelled = false;
  bool restore_failed = false;  // something could not be restored; the user was told
  bool touched = false;         // the document was changed, or may have been
  bool root_filtered = false;   // the highest-level element of the main flow failed the scheme
  Ending ending = Ending::kNone;
  std::string why;                         // what the user is told, or would be, of a run that failed
  host::Id result_document = host::kNone;  // the document that was filtered: in mode 3 the copy

  std::vector<host::Id> would_go;           // of a dry run: the elements that failed the scheme
  std::vector<DanglingReference> dangling;  // references in what is left to what went

  // What came of a book; the counts above are then sums.
  host::Id result_book = host::kNone;                          // in mode 3 the new one
  std::vector<FilteredComponent> components;                   // in the order of the book
  std::unordered_map<host::Id, std::size_t> component_places;  // of each component in that list
  std::vector<CopiedFile> copied;                              // what mode 3 put into the output folder
  std::vector<std::string> made_folders;     // of the output folder, outer ones first, that it made
  std::vector<std::string> unchanged_links;  // in the copy, that could not be made to lead where they should
  std::vector<std::string> removed_files;    // of them, those that went as nothing refers to them any more
  std::vector<std::string> missing;          // shown by the book, but not there
  std::vector<std::string> left_over;  // of an earlier copy, in the output folder; this one has none of them
  std::string not_updated;             // why the book could not be updated; empty: it was
  std::int32_t not_updated_code = 0;   // the host's error code for that; 0: it was not the host
};

}  // namespace qelm::filtering
