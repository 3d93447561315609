// What the roles of the embedded host share: the open documents and books by their ids, the last error, and
// the notices. An id is an index, so finding the model behind one takes constant time.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/nested_ranges.h"
#include "embedded/adapter/shared_documents.h"
#include "embedded/model/format_rules.h"
#include "embedded/render/design/page_maker.h"
#include "host/interface/entry_points.h"

namespace qelm::embedded::adapter {

using host::Id;

// What the host's error code says. The numbers are this host's own.
enum class Error : std::int32_t {
  kInvalidId = 1,    // no such document, book or object
  kInvalidArgument,  // a range or value that cannot be
  kCannotOpen,
  kCannotSave,
  kRefused,        // the document does not allow it
  kNotSupported,   // this version of the host cannot do it
  kNotAllUpdated,  // of a book; its error log tells what was not
  kNoTargets,      // likewise, and all of it are references whose targets are not there
};

// Answers that are derived from a document when first asked for, and kept.
struct DerivedData {
  // Attribute definitions as the interface has them, by definition. Spans of them are handed out, so that
  // what is made once never moves.
  std::vector<std::unique_ptr<std::vector<host::AttributeDefinition>>> attribute_definitions;

  std::optional<std::unordered_map<std::int64_t, Id>> unique_ids;

  // Whether a set of conditions contains `condition`, by set.
  Id condition = host::kNone;
  std::vector<bool> sets_with_condition;

  // Items [content_from, content_at) hold no content, as the last look-up found. Elements that begin at the
  // same place, one in the other, are then looked up without walking the same way again.
  std::uint32_t content_from = 0;
  std::uint32_t content_at = 0;

  // The text insets, and the parts (tables, what they consist of, footnotes), where they lie. Edits only mark
  // items, so that both stay right.
  std::optional<NestedRanges> insets;
  std::optional<NestedRanges> parts;

  // The paragraph of each item, 0 for none: a mark at the paragraph's end says it, and looking for that mark
  // from each item anew would take as long as the paragraph is.
  std::vector<std::uint32_t> paragraphs;

  // Where the text enters a text frame, with the frame's page as an index into Document::pages.
  struct PageStart {
    std::uint32_t item;
    std::int32_t page;
  };
  std::optional<std::vector<PageStart>> page_starts;

  // The pages as the document is laid out at a state of OpenFile::layout (0: it was not), and from what page
  // number on in which style.
  render::FoundPages laid_pages;
  std::uint64_t laid_at = 0;
  std::pair<std::int64_t, std::string> laid_with;

  // What the element definitions say of formats.
  std::unique_ptr<model::FormatRules> format_rules;

  // What links may name in the document, as it was at a revision (0: not read), the kind before the name.
  std::unordered_set<std::string> targets;
  std::uint64_t targets_revision = 0;

  bool backgrounds_noted = false;  // that the document cannot hold them was said
};

// OpenFile::layout of a document whose text is where its own record of pages says.
inline constexpr std::uint64_t kLayoutAsRead = 1;

// One open document or book.
struct OpenFile {
  std::unique_ptr<model::Document> document;  // exactly one of these two
  std::unique_ptr<model::Book> book;
  std::string path;                      // empty while it has no name
  std::string identity;                  // the same with links resolved: what tells two files apart
  std::optional<FileStamp> stamp;        // of the file when it was read
  std::string state;                     // of the file, as it was read or written last (Platform::FileState)
  bool edited = false;                   // since it was opened; saving does not clear it
  std::uint64_t revision = 1;            // of elements, attributes and text
  std::uint64_t layout = kLayoutAsRead;  // of what decides on which page something stands
  bool on_screen = true;
  bool iconified = false;
  host::ViewMode view = host::ViewMode::kWysiwyg;
  host::TextRange selection;
  Id selected_element = host::kNone;
  std::vector<std::string> component_paths;  // of a book, where one was found already
  DerivedData derived;

  model::Document& Tree() { return document ? *document : book->tree; }
};

// Brings what was done to the document into its bytes and its model (model/settle.h).
bool SettleDocument(OpenFile* file);

class Workspace {
 public:
  Workspace(const EmbeddedHost::Options& options, host::Platform& platform)
      : options_(options), platform_(platform) {}

  Id Add(std::unique_ptr<OpenFile> file);
  void Remove(Id id);

  // Null for an id that is not open.
  OpenFile* File(Id id) { return id < files_.size() ? files_[id].get() : nullptr; }
  bool IsDocument(Id id) {
    const OpenFile* file = File(id);
    return file != nullptr && file->document != nullptr;
  }
  // The file with a document in it, and the document, with what was added to it brought in: for all who look
  // at its text.
  OpenFile* DocumentFile(Id id) {
    if (!IsDocument(id)) return nullptr;
    if (files_[id]->document->additions.Pending()) SettleDocument(files_[id].get());
    return files_[id].get();
  }
  model::Document* Document(Id id) {
    OpenFile* file = DocumentFile(id);
    return file == nullptr ? nullptr : file->document.get();
  }
  model::Book* Book(Id id) {
    OpenFile* file = File(id);
    return file == nullptr ? nullptr : file->book.get();
  }
  // What has elements: a document, or the tree that a book keeps of its components. Elements that were added
  // are in the tree and have no items yet.
  model::Document* Tree(Id id) { return id < trees_.size() ? trees_[id] : nullptr; }
  // The element, null when the document or the element is not there (any longer).
  const model::Element* Element(Id document, Id element) {
    const model::Document* tree = Tree(document);
    if (tree == nullptr || element == host::kNone || element >= tree->elements.size()) return nullptr;
    const model::Element& found = tree->elements[element];
    return found.deleted ? nullptr : &found;
  }

  // All ids that were ever given are below this.
  Id IdLimit() const { return static_cast<Id>(files_.size()); }
  // The open file at a path, 0 when there is none.
  Id FindPath(const std::string& path);
  static std::string Identity(const std::string& path);

  // What is in front: ids in the order in which they became active, the active one last.
  Id Active() const { return front_.empty() ? host::kNone : front_.back(); }
  void Activate(Id id);

  // What an open document was read from these bytes and not edited since, for a copy; null when there is
  // none.
  std::shared_ptr<const model::Document> SameBytes(std::string_view bytes);
  // The same for what was read, here or elsewhere, when the file had the stamp that it has now.
  std::shared_ptr<const model::Document> SameFile(const std::string& path, const FileStamp& stamp);
  // Adds the document, if it is one that was not edited.
  void Share(Id id, SharedDocuments* shared);

  // Records an error; returns false.
  bool Fail(Error error, std::string text);
  bool FailId(Id document);
  std::int32_t error_code() const { return error_code_; }
  std::string_view last_error() const { return last_error_; }

  void Notice(std::string text);
  const std::vector<std::string>& notices() const { return notices_; }

  const EmbeddedHost::Options& options() const { return options_; }
  host::Platform& platform() { return platform_; }
  // ": Permission denied", or nothing where no reason is known.
  std::string FileErrorSuffix() const;

  // Tells the plug-in of something, if it has asked for that.
  void Tell(std::int32_t notification, Id document, std::string_view text, std::int32_t value) {
    if (plugin == nullptr || !requested_notifications.contains(notification)) return;
    plugin->Notify(notification, document, text, value);
  }

  bool screen_updates = true;
  // The components that the last PDF of a book had to do without.
  std::vector<std::string> left_out;
  // The files, by identity, that were written with text which is not where their record of pages says; of
  // each whether its pages go on from those of another.
  std::unordered_map<std::string, bool> moved_files;
  std::set<std::int32_t> requested_notifications;
  host::EntryPoints* plugin = nullptr;

 private:
  static std::shared_ptr<const model::Document> OriginOf(model::Document* document);

  EmbeddedHost::Options options_;
  host::Platform& platform_;
  std::vector<std::unique_ptr<OpenFile>> files_{1};
  std::vector<model::Document*> trees_{nullptr};
  std::vector<Id> front_;
  std::vector<std::string> notices_;
  std::int32_t error_code_ = 0;
  std::string last_error_;
};

// Marks a document as changed. Looks are properties and catalogs, visibility is conditions: what such an edit
// leaves as it was are the elements, their attributes and their text, and of looks also where text stands.
enum class EditOf { kContent, kLooks, kVisibility };
void MarkEdited(OpenFile* file, EditOf what = EditOf::kContent);

// Puts conditions that text names but no catalog has into the catalog, as whoever applies or switches one
// expects.
void DeclareConditions(model::Document* document, const std::vector<Id>& conditions);

// Whether an item lies inside a text inset that is locked. The mark with which an inset begins stands for the
// inset as a whole, which its own lock does not forbid to change.
bool InLockedInset(OpenFile* file, std::uint32_t item);

}  // namespace qelm::embedded::adapter
