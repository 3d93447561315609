#include <charconv>

#include "embedded/adapter/roles.h"
#include "embedded/mif/reader.h"
#include "embedded/model/insert.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::adapter {
namespace {

static_assert(static_cast<int>(model::ElementKind::kContainer) ==
              static_cast<int>(host::ElementKind::kContainer));
static_assert(static_cast<int>(model::ElementKind::kTableCell) ==
              static_cast<int>(host::ElementKind::kTableCell));
static_assert(static_cast<int>(model::ElementKind::kFootnote) ==
              static_cast<int>(host::ElementKind::kFootnote));
static_assert(static_cast<int>(model::ElementKind::kMarker) == static_cast<int>(host::ElementKind::kMarker));
static_assert(static_cast<int>(model::ElementKind::kText) == static_cast<int>(host::ElementKind::kText));
static_assert(static_cast<int>(model::FlowKind::kBody) == static_cast<int>(host::FlowKind::kBody));
static_assert(static_cast<int>(model::FlowKind::kFrame) == static_cast<int>(host::FlowKind::kFrame));

// The number that the element's statement records as its own; 0 when it has none.
std::int64_t RecordedUniqueId(const model::Document& document, const model::Element& element) {
  if (document.format != model::Format::kMif || element.source == 0) return 0;
  mif::Reader reader(std::string_view(document.source).substr(element.source));
  if (!reader.Next() || reader.kind() != mif::Piece::kGroup) return 0;
  while (reader.Next() && reader.kind() != mif::Piece::kGroupEnd) {
    if (reader.kind() == mif::Piece::kGroup) {
      if (!reader.Skip()) return 0;
    } else if (reader.token() == mif::Token::kUnique) {
      std::int64_t number = 0;
      const std::string_view data = reader.data();
      std::from_chars(data.data(), data.data() + data.size(), number);
      return number;
    }
  }
  return 0;
}

std::unordered_map<std::int64_t, Id> IndexUniqueIds(const model::Document& document) {
  std::unordered_map<std::int64_t, Id> index;
  index.reserve(document.elements.size());
  for (Id id = 1; id < document.elements.size(); ++id) {
    const std::int64_t number = RecordedUniqueId(document, document.elements[id]);
    if (number != 0) index.try_emplace(number, id);
  }
  return index;
}

class ElementsRole : public host::Elements {
 public:
  explicit ElementsRole(Workspace& workspace) : workspace_(workspace) {}

  Id FirstFlow(Id document) override {
    const model::Document* tree = workspace_.Tree(document);
    return tree != nullptr && tree->flows.size() > 1 ? 1 : host::kNone;
  }
  Id NextFlow(Id document, Id flow) override {
    const model::Document* tree = workspace_.Tree(document);
    return Flow(document, flow) != nullptr && flow + 1 < tree->flows.size() ? flow + 1 : host::kNone;
  }
  Id MainFlow(Id document) override {
    const model::Document* tree = workspace_.Tree(document);
    return tree == nullptr ? host::kNone : tree->main_flow;
  }
  std::string_view FlowName(Id document, Id flow) override {
    const model::Flow* found = Flow(document, flow);
    return found == nullptr ? std::string_view() : found->name;
  }
  host::FlowKind KindOfFlow(Id document, Id flow) override {
    const model::Flow* found = Flow(document, flow);
    return found == nullptr ? host::FlowKind::kBody : static_cast<host::FlowKind>(found->kind);
  }
  Id Root(Id document, Id flow) override {
    const model::Flow* found = Flow(document, flow);
    return found == nullptr || workspace_.Element(document, found->root) == nullptr ? host::kNone
                                                                                    : found->root;
  }

  Id Parent(Id document, Id element) override {
    const model::Element* found = workspace_.Element(document, element);
    return found == nullptr ? host::kNone : found->parent;
  }
  Id FirstChild(Id document, Id element) override {
    const model::Element* found = workspace_.Element(document, element);
    return found == nullptr ? host::kNone : found->first_child;
  }
  Id LastChild(Id document, Id element) override {
    const model::Element* found = workspace_.Element(document, element);
    return found == nullptr ? host::kNone : found->last_child;
  }
  Id NextSibling(Id document, Id element) override {
    const model::Element* found = workspace_.Element(document, element);
    return found == nullptr ? host::kNone : found->next;
  }
  Id PreviousSibling(Id document, Id element) override {
    const model::Element* found = workspace_.Element(document, element);
    return found == nullptr ? host::kNone : found->previous;
  }

  bool IsElement(Id document, Id element) override {
    return workspace_.Element(document, element) != nullptr;
  }
  Id IdLimit(Id document) override {
    const model::Document* tree = workspace_.Tree(document);
    return tree == nullptr ? 0 : static_cast<Id>(tree->elements.size());
  }
  host::ElementKind Kind(Id document, Id element) override {
    const model::Element* found = workspace_.Element(document, element);
    return found == nullptr ? host::ElementKind::kContainer : static_cast<host::ElementKind>(found->kind);
  }
  Id Definition(Id document, Id element) override {
    const model::Element* found = workspace_.Element(document, element);
    return found == nullptr ? host::kNone : found->definition;
  }
  Id FlowOf(Id document, Id element) override {
    if (workspace_.Element(document, element) == nullptr) return host::kNone;
    const model::Document& tree = *workspace_.Tree(document);
    return model::FlowOf(tree, tree.elements[model::AnchoredIn(tree, element)].first_item);
  }

  std::int64_t UniqueId(Id document, Id element) override {
    const model::Element* found = workspace_.Element(document, element);
    if (found == nullptr) return 0;
    const model::Document& tree = *workspace_.Tree(document);
    return tree.additions.IsNew(element) ? tree.additions.Of(element).unique : RecordedUniqueId(tree, *found);
  }
  Id FindUniqueId(Id document, std::int64_t unique_id) override {
    OpenFile* file =
        workspace_.IsDocument(document) ? workspace_.DocumentFile(document) : workspace_.File(document);
    if (file == nullptr) return host::kNone;
    auto& index = file->derived.unique_ids;
    if (!index) index = IndexUniqueIds(file->Tree());
    const auto found = index->find(unique_id);
    return found != index->end() && IsElement(document, found->second) ? found->second : host::kNone;
  }

 private:
  const model::Flow* Flow(Id document, Id flow) {
    const model::Document* tree = workspace_.Tree(document);
    return tree != nullptr && flow != host::kNone && flow < tree->flows.size() ? &tree->flows[flow] : nullptr;
  }

  Workspace& workspace_;
};

}  // namespace

std::unique_ptr<host::Elements> MakeElements(Workspace& workspace) {
  return std::make_unique<ElementsRole>(workspace);
}

}  // namespace qelm::embedded::adapter
