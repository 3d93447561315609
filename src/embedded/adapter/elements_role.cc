#include <algorithm>
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
  host::ElementAround Around(Id document, Id element) override {
    const model::Element* found = workspace_.Element(document, element);
    if (found == nullptr) return {};
    return {found->parent, found->first_child, found->next, found->definition, found->attribute_count != 0};
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

  std::uint64_t Revision(Id document) override {
    const OpenFile* file = workspace_.DocumentFile(document);
    return file == nullptr ? 0 : file->revision;
  }
  bool ReadTree(Id document, Id root, host::ElementColumns* columns) override;
  std::size_t ReadNodes(Id document, Id root, const host::WalkedNode& last,
                        std::span<host::WalkedNode> nodes) override;
  bool ReadTexts(Id document, std::span<const Id> elements, host::TextColumn* column) override;

 private:
  const model::Flow* Flow(Id document, Id flow) {
    const model::Document* tree = workspace_.Tree(document);
    return tree != nullptr && flow != host::kNone && flow < tree->flows.size() ? &tree->flows[flow] : nullptr;
  }

  Workspace& workspace_;
};

// A document's elements are numbered in document order when it is opened, so that the columns are a loop over
// the array. False, with what was appended taken back, for a tree that edits have changed.
bool AppendInOrder(const model::SharedArray<model::Element>& elements, Id root,
                   host::ElementColumns* columns) {
  Id last = root;
  while (elements[last].last_child > last) last = elements[last].last_child;
  const std::size_t before = columns->elements.size();
  const std::size_t size = before + (last - root) + 1;
  columns->Resize(size);
  const auto first = static_cast<std::uint32_t>(before);
  for (Id id = root; id <= last; ++id) {
    const model::Element& element = elements[id];
    const std::uint32_t place = first + (id - root);
    const bool is_root = id == root;
    const bool in_order = (element.first_child == host::kNone || element.first_child == id + 1) &&
                          (is_root || (element.parent >= root && element.parent < id)) &&
                          (element.next == host::kNone || (element.next > id && element.next <= last));
    if (!in_order || element.deleted) {
      columns->Resize(before);
      return false;
    }
    const std::uint32_t parent = is_root ? host::ElementColumns::kNoPlace : first + (element.parent - root);
    columns->elements[place] = id;
    columns->definitions[place] = element.definition;
    columns->parents[place] = parent;
    columns->ends[place] = is_root                       ? static_cast<std::uint32_t>(size)
                           : element.next != host::kNone ? first + (element.next - root)
                                                         : columns->ends[parent];
  }
  return true;
}

bool ElementsRole::ReadTree(Id document, Id root, host::ElementColumns* columns) {
  if (workspace_.Element(document, root) == nullptr) return true;
  const OpenFile* file = workspace_.File(document);
  const bool is_new = file != nullptr && !file->edited;
  return (is_new && AppendInOrder(workspace_.Tree(document)->elements, root, columns)) ||
         Elements::ReadTree(document, root, columns);
}

std::size_t ElementsRole::ReadNodes(Id document, Id root, const host::WalkedNode& last,
                                    std::span<host::WalkedNode> nodes) {
  const auto is_there = [&](Id id) { return workspace_.Element(document, id) != nullptr; };
  if (!is_there(root) || (last.element != host::kNone && !is_there(last.element))) return 0;
  const model::SharedArray<model::Element>& elements = workspace_.Tree(document)->elements;
  Id id = last.element;
  std::uint32_t depth = last.depth;
  for (std::size_t count = 0; count < nodes.size(); ++count) {
    if (id == host::kNone) {
      id = root;
    } else if (elements[id].first_child != host::kNone) {
      id = elements[id].first_child;
      ++depth;
    } else {
      for (; id != root && id != host::kNone && elements[id].next == host::kNone; --depth) {
        id = elements[id].parent;
      }
      if (id == root || id == host::kNone) return count;
      id = elements[id].next;
    }
    const model::Element& element = elements[id];
    nodes[count] = {.element = id,
                    .definition = element.definition,
                    .depth = depth,
                    .kind = static_cast<host::ElementKind>(element.kind),
                    .may_have_attributes = element.attribute_count != 0};
  }
  return nodes.size();
}

// Every element is a range of items, so that the text of all items is written once, and where it stands is
// noted for the elements that begin and end there. The elements around an item are a stack, the innermost one
// last.
bool ElementsRole::ReadTexts(Id document, std::span<const Id> elements, host::TextColumn* column) {
  *column = {};
  if (workspace_.IsDocument(document)) workspace_.Document(document);  // brings in what was added
  const model::Document* tree = workspace_.Tree(document);
  if (tree == nullptr || tree->source.size() > model::kNoIndex / 2) return false;
  struct Open {
    std::uint32_t end_item;
    std::uint32_t place;
  };
  std::vector<Open> open;
  column->text.reserve(tree->source.size());
  column->begins.resize(elements.size());
  column->ends.resize(elements.size());
  const auto here = [&] { return static_cast<std::uint32_t>(column->text.size()); };
  std::uint32_t item = 0;
  // Writes the items before `end` that are inside an element, and closes the elements that end there.
  const auto write_to = [&](std::uint32_t end) {
    while (item < end || (!open.empty() && open.back().end_item <= item)) {
      while (!open.empty() && open.back().end_item <= item) {
        column->ends[open.back().place] = here();
        open.pop_back();
      }
      if (open.empty()) item = std::max(item, end);
      if (item >= end) continue;
      if (model::CountsAsText(tree->items[item])) {
        model::AppendItemText(*tree, tree->items[item], &column->text);
      }
      ++item;
    }
  };
  for (std::uint32_t place = 0; place < elements.size(); ++place) {
    const model::Element* element = workspace_.Element(document, elements[place]);
    if (element == nullptr || element->first_item < item) return false;
    write_to(element->first_item);
    column->begins[place] = here();
    if (!open.empty() && element->end_item > open.back().end_item) return false;
    open.push_back({std::max(element->end_item, element->first_item), place});
  }
  if (!open.empty()) write_to(open.front().end_item);
  return true;
}

}  // namespace

std::unique_ptr<host::Elements> MakeElements(Workspace& workspace) {
  return std::make_unique<ElementsRole>(workspace);
}

}  // namespace qelm::embedded::adapter
