#include <filesystem>

#include "embedded/adapter/book_update.h"
#include "embedded/adapter/file_places.h"
#include "embedded/adapter/roles.h"
#include "embedded/model/book_edit.h"
#include "embedded/model/locate.h"

namespace qelm::embedded::adapter {
namespace {

// A component's id is its number in the book, groups and what was taken out included, counted from 1.
class BooksRole : public host::Books {
 public:
  BooksRole(Workspace& workspace, host::Documents& documents)
      : workspace_(workspace), documents_(documents) {}

  bool IsBook(Id id) override { return workspace_.Book(id) != nullptr; }

  Id FirstComponent(Id book) override { return ComponentFrom(book, 1); }
  Id NextComponent(Id book, Id component) override {
    return component == host::kNone ? host::kNone : ComponentFrom(book, component + 1);
  }

  std::string_view ComponentPath(Id book, Id component) override;

  bool IsGenerated(Id book, Id component) override {
    const model::Component* found = Component(book, component);
    return found != nullptr && found->generated;
  }
  bool IsExcluded(Id book, Id component) override {
    const model::Component* found = Component(book, component);
    return found != nullptr && found->excluded;
  }
  Id ComponentDocument(Id book, Id component) override {
    if (Component(book, component) == nullptr) return host::kNone;
    const Id id = workspace_.FindPath(std::string(ComponentPath(book, component)));
    return workspace_.Document(id) != nullptr ? id : host::kNone;
  }

  std::string_view EntryText(Id book, Id component) override {
    const model::Component* found = Component(book, component);
    return found == nullptr ? std::string_view() : found->entry_text;
  }
  bool SetEntryText(Id book, Id component, std::string_view text) override {
    if (Component(book, component) == nullptr) return workspace_.FailId(book);
    model::SetEntryText(workspace_.Book(book), component - 1, text);
    return true;
  }
  bool SetComponentPath(Id book, Id component, const std::string& path) override;
  bool RemoveComponent(Id book, Id component) override {
    if (Component(book, component) == nullptr) return workspace_.FailId(book);
    if (model::RemoveComponent(workspace_.Book(book), component - 1)) return true;
    return workspace_.Fail(Error::kRefused, workspace_.File(book)->path +
                                                ": a component that holds others cannot be taken out.");
  }
  bool Update(Id book, std::uint32_t flags) override;
  void ShowErrorLog(Id book) override;

 private:
  const model::Component* Component(Id book, Id id) {
    const model::Book* model = workspace_.Book(book);
    if (model == nullptr || id == host::kNone || id > model->components.size()) return nullptr;
    const model::Component& found = model->components[id - 1];
    return found.is_group || found.removed ? nullptr : &found;
  }
  Id ComponentFrom(Id book, Id id) {
    const model::Book* model = workspace_.Book(book);
    for (; model != nullptr && id <= model->components.size(); ++id) {
      if (Component(book, id) != nullptr) return id;
    }
    return host::kNone;
  }

  Workspace& workspace_;
  host::Documents& documents_;
  std::unordered_map<Id, std::vector<std::string>> findings_;  // of the last update, by book
  std::string path_;
};

std::string_view BooksRole::ComponentPath(Id book, Id id) {
  const model::Component* component = Component(book, id);
  if (component == nullptr) return {};
  OpenFile* file = workspace_.File(book);
  // Only what was found is kept: a file that is missing now may be there the next time.
  file->component_paths.resize(file->book->components.size());
  std::string& known = file->component_paths[id - 1];
  if (!known.empty()) return known;
  const model::Located located = model::LocateComponent(file->path, component->path);
  path_ = PlainPath(located.path);
  if (!located.exists) return path_;
  if (located.elsewhere) {
    workspace_.Notice(file->path + ": the book names " + component->path + ", which is not there; " + path_ +
                      " was found in its place.");
  }
  known = path_;
  return known;
}

bool BooksRole::Update(Id book, std::uint32_t flags) {
  if (!IsBook(book)) return workspace_.FailId(book);
  UpdateOutcome outcome;
  try {
    outcome = UpdateBook(workspace_, documents_, *this, book, flags);
  } catch (const std::exception&) {
    return workspace_.Fail(Error::kRefused,
                           workspace_.File(book)->path + ": there is not enough memory to update the book.");
  }
  for (const std::string& finding : outcome.findings) workspace_.Notice(finding);
  const bool only_targets = outcome.findings.size() == outcome.no_targets;
  findings_[book] = std::move(outcome.findings);
  if (!outcome.file_error.empty()) return workspace_.Fail(Error::kCannotSave, std::move(outcome.file_error));
  return outcome.complete ||
         workspace_.Fail(only_targets ? Error::kNoTargets : Error::kNotAllUpdated,
                         workspace_.File(book)->path +
                             ": not everything in the book could be updated; its error log tells what.");
}

void BooksRole::ShowErrorLog(Id book) {
  if (!IsBook(book)) return;
  auto file = std::make_unique<OpenFile>();
  file->document = ErrorLog(workspace_.File(book)->path, findings_[book]);
  if (file->document) workspace_.Activate(workspace_.Add(std::move(file)));
}

bool BooksRole::SetComponentPath(Id book, Id id, const std::string& path) {
  if (Component(book, id) == nullptr) return workspace_.FailId(book);
  OpenFile* file = workspace_.File(book);
  const std::string folder = std::filesystem::path(PlainPath(file->path)).parent_path().string();
  model::SetComponentFile(file->book.get(), id - 1, RelativePath(folder, PlainPath(AbsolutePath(path))));
  if (id <= file->component_paths.size()) file->component_paths[id - 1].clear();
  return true;
}

}  // namespace

std::unique_ptr<host::Books> MakeBooks(Workspace& workspace, host::Documents& documents) {
  return std::make_unique<BooksRole>(workspace, documents);
}

}  // namespace qelm::embedded::adapter
