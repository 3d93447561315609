#include "embedded/adapter/file_places.h"
#include "embedded/adapter/roles.h"
#include "embedded/model/locate.h"

namespace qelm::embedded::adapter {
namespace {

// A component's id is its number in the book, counted from 1.
class BooksRole : public host::Books {
 public:
  explicit BooksRole(Workspace& workspace) : workspace_(workspace) {}

  bool IsBook(Id id) override { return workspace_.Book(id) != nullptr; }

  Id FirstComponent(Id book) override { return Component(book, 1) != nullptr ? 1 : host::kNone; }
  Id NextComponent(Id book, Id component) override {
    const bool another = Component(book, component) != nullptr && Component(book, component + 1) != nullptr;
    return another ? component + 1 : host::kNone;
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

  bool SetEntryText(Id book, Id component, std::string_view) override {
    if (Component(book, component) == nullptr) return workspace_.FailId(book);
    return NotSupported(book, "the text shown for a component cannot be changed");
  }
  bool RemoveComponent(Id book, Id component) override {
    if (Component(book, component) == nullptr) return workspace_.FailId(book);
    return NotSupported(book, "a component cannot be taken out of a book");
  }
  bool Update(Id book, std::uint32_t) override {
    if (!IsBook(book)) return workspace_.FailId(book);
    return NotSupported(book, "a book cannot be updated");
  }
  void ShowErrorLog(Id) override {}  // updates are what would write to it

 private:
  const model::Component* Component(Id book, Id id) {
    const model::Book* model = workspace_.Book(book);
    return model != nullptr && id != host::kNone && id <= model->components.size()
               ? &model->components[id - 1]
               : nullptr;
  }
  bool NotSupported(Id book, const std::string& what) {
    return workspace_.Fail(Error::kNotSupported,
                           workspace_.File(book)->path + ": " + what + " in this version.");
  }

  Workspace& workspace_;
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
  path_ = located.path;
  if (!located.exists) return path_;
  if (located.elsewhere) {
    workspace_.Notice(file->path + ": the book names " + component->path + ", which is not there; " + path_ +
                      " was found in its place.");
  }
  known = path_;
  return known;
}

}  // namespace

std::unique_ptr<host::Books> MakeBooks(Workspace& workspace) {
  return std::make_unique<BooksRole>(workspace);
}

}  // namespace qelm::embedded::adapter
