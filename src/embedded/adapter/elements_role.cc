#include <algorithm>
#include <charconv>

#include "embedded/adapter/roles.h"
#include "embedded/mif/reader.h"
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
    const model::Element* found = workspace_.Element(document, element);
    return found == nullptr ? host::kNone : model::FlowOf(*workspace_.Tree(document), found->first_item);
  }

  std::int64_t UniqueId(Id document, Id element) override {
    const model::Element* found = workspace_.Element(document, element);
    return found == nullptr ? 0 : RecordedUniqueId(*workspace_.Tree(document), *found);
  }
  Id FindUniqueId(Id document, std::int64_t unique_id) override {
    OpenFile* file = workspace_.File(document);
    if (file == nullptr) return host::kNone;
    auto& index = file->derived.unique_ids;
    if (!index) index = IndexUniqueIds(file->Tree());
    const auto found = index->find(unique_id);
    return found != index->end() && IsElement(document, found->second) ? found->second : host::kNone;
  }

  std::uint64_t Revision(Id document) override {
    const OpenFile* file = workspace_.DocumentFile(document);
    return file == nullptr ? 0 : file->revision;
  }
  bool ReadTree(Id document, Id root, host::ElementColumns* columns) override;
  bool ReadTexts(Id document, std::span<const Id> elements, host::TextColumn* column) override;

 private:
  const model::Flow* Flow(Id document, Id flow) {
    const model::Document* tree = workspace_.Tree(document);
    return tree != nullptr && flow != host::kNone && flow < tree->flows.size() ? &tree->flows[flow] : nullptr;
  }

  Workspace& workspace_;
};

// The elements of a document that was not edited are in document order, so that this goes through the array
// once from begin to end; after edits it jumps, and the answer is the same.
bool ElementsRole::ReadTree(Id document, Id root, host::ElementColumns* columns) {
  if (workspace_.Element(document, root) == nullptr) return true;
  const std::vector<model::Element>& elements = workspace_.Tree(document)->elements;
  const std::size_t before = columns->elements.size();
  const std::size_t limit = before + elements.size();
  const bool is_all = root == 1 && before == 0;
  for (auto* column : {&columns->elements, &columns->definitions, &columns->parents, &columns->ends}) {
    if (is_all) column->reserve(elements.size() - 1);
  }
  std::uint32_t parent = host::ElementColumns::kNoPlace;
  for (Id id = root; id != host::kNone;) {
    const model::Element& element = elements[id];
    const auto place = static_cast<std::uint32_t>(columns->elements.size());
    if (place >= limit) {
      for (auto* column : {&columns->elements, &columns->definitions, &columns->parents, &columns->ends}) {
        column->resize(before);
      }
      return false;
    }
    columns->elements.push_back(id);
    columns->definitions.push_back(element.definition);
    columns->parents.push_back(parent);
    columns->ends.push_back(place + 1);
    if (element.first_child != host::kNone) {
      parent = place;
      id = element.first_child;
      continue;
    }
    id = id == root ? host::kNone : element.next;
    while (id == host::kNone && parent != host::ElementColumns::kNoPlace) {
      columns->ends[parent] = static_cast<std::uint32_t>(columns->elements.size());
      const Id above = columns->elements[parent];
      if (above != root) id = elements[above].next;
      parent = columns->parents[parent];
    }
  }
  return true;
}

// Every element is a range of items, so the text of all items is written once, with the place in it where
// each item begins.
bool ElementsRole::ReadTexts(Id document, std::span<const Id> elements, host::TextColumn* column) {
  column->text.clear();
  column->begins.clear();
  column->ends.clear();
  const model::Document* tree = workspace_.Tree(document);
  if (tree == nullptr) return false;
  std::uint32_t first = static_cast<std::uint32_t>(tree->items.size());
  std::uint32_t end = 0;
  for (const Id id : elements) {
    if (workspace_.Element(document, id) == nullptr) return false;
    first = std::min(first, tree->elements[id].first_item);
    end = std::max(end, tree->elements[id].end_item);
  }
  std::vector<std::uint32_t> offsets;
  offsets.reserve(end > first ? end - first + 1 : 1);
  for (std::uint32_t item = first; item < end; ++item) {
    offsets.push_back(static_cast<std::uint32_t>(column->text.size()));
    if (model::CountsAsText(tree->items[item])) {
      model::AppendItemText(*tree, tree->items[item], &column->text);
    }
    if (column->text.size() > model::kNoIndex) return false;
  }
  offsets.push_back(static_cast<std::uint32_t>(column->text.size()));
  column->begins.reserve(elements.size());
  column->ends.reserve(elements.size());
  for (const Id id : elements) {
    const model::Element& element = tree->elements[id];
    const bool is_empty = element.first_item >= element.end_item;
    column->begins.push_back(is_empty ? 0 : offsets[element.first_item - first]);
    column->ends.push_back(is_empty ? 0 : offsets[element.end_item - first]);
  }
  return true;
}

}  // namespace

std::unique_ptr<host::Elements> MakeElements(Workspace& workspace) {
  return std::make_unique<ElementsRole>(workspace);
}

}  // namespace qelm::embedded::adapter
