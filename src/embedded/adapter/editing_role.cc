#include <optional>

#include "embedded/adapter/element_properties.h"
#include "embedded/adapter/roles.h"
#include "embedded/model/edit.h"
#include "embedded/model/insert.h"

namespace qelm::embedded::adapter {
namespace {

using model::ElementKind;
using model::ItemKind;

constexpr const char* kCannotBeWritten = "what was changed in the document cannot be written.";

// Whether an item keeps its place among its like when a document is brought up to date.
bool IsSolid(const model::Item& item) {
  const bool boundary = item.kind == ItemKind::kElementBegin || item.kind == ItemKind::kElementEnd;
  return !item.Is(model::kDeleted) && (boundary || model::IsContent(item.kind));
}

// Brings in what marks items, and returns where the place before an item is afterwards; nothing when it
// cannot be brought in. At the end of a paragraph that is behind what is last in it, elsewhere before what
// comes next.
std::optional<std::uint32_t> SettledPlace(OpenFile* file, std::uint32_t place) {
  const model::Document& before = *file->document;
  std::uint32_t solid = 0;
  for (std::uint32_t i = 0; i < place; ++i) solid += IsSolid(before.items[i]) ? 1U : 0U;
  const bool at_end = before.items[place].kind == ItemKind::kParagraphEnd && solid > 0;
  if (!SettleDocument(file)) return std::nullopt;
  const model::Document& after = *file->document;
  const std::uint32_t wanted = at_end ? solid : solid + 1;
  std::uint32_t seen = 0;
  for (std::uint32_t i = 0; i < after.items.size(); ++i) {
    if (IsSolid(after.items[i]) && ++seen == wanted) return at_end ? i + 1 : i;
  }
  return static_cast<std::uint32_t>(after.items.size());
}

class EditingRole : public host::Editing {
 public:
  explicit EditingRole(Workspace& workspace) : workspace_(workspace) {}

  bool SetAttributes(Id document, Id element, const std::vector<host::AttributeValue>& attributes) override;
  Id InsertElement(Id document, Id parent, Id before, Id definition) override;
  bool SetText(Id document, Id element, std::string_view text) override;
  Id DefineElement(Id document, std::string_view name, std::string_view content_rule,
                   std::string_view paragraph_format) override;
  bool SetDefinition(Id document, Id element, Id definition) override;
  bool AppendParagraph(Id document, Id element, const host::NewParagraph& paragraph) override;
  bool InsertText(Id document, const host::TextLocation& at, std::string_view text) override;
  bool InsertMarker(Id document, const host::TextRange& range, std::string_view type,
                    std::string_view text) override;
  host::TextRange FindParagraph(Id document, Id flow, std::string_view format) override;

  bool DeleteElement(Id document, Id element) override;
  bool DeleteRows(Id document, Id table, Id first_row, std::int32_t count) override;
  bool RemoveTitle(Id document, Id table) override;
  bool ClearText(Id document, const host::TextRange& range) override;

 private:
  bool Refuse(const OpenFile* file, const std::string& why) {
    return workspace_.Fail(Error::kRefused, file->path + ": " + why);
  }
  // Whether what was added has its items; the error is set where it could not be written.
  bool BroughtIn(const OpenFile* file) {
    return !file->document->additions.Pending() || Refuse(file, kCannotBeWritten);
  }
  // Gives an element the formatting that its definition and formats define.
  bool Reformat(Id document, Id element) {
    OpenFile* file = workspace_.DocumentFile(document);
    if (ToBeMarked(document, element) == nullptr) return false;
    ApplyDefinedFormats(file, element);
    return true;
  }
  // A document's element that may be changed; null with the error set otherwise. What was added stays as it
  // is.
  const model::Element* Changeable(Id document, Id element);
  // The same for a change that marks items: what was added is brought in before.
  const model::Element* ToBeMarked(Id document, Id element) {
    OpenFile* file = workspace_.DocumentFile(document);
    if (file != nullptr && !BroughtIn(file)) return nullptr;
    return Changeable(document, element);
  }
  // The same for something that is to be added: what marks items is brought in before.
  OpenFile* ToBeAddedTo(Id document, Id element);
  bool Insert(Id document, const host::TextLocation& at, model::Insertion insertion);
  // A reference, so that it is read after what is done has said it.
  bool Done(OpenFile* file, bool done, const std::string& otherwise) {
    if (!done) return Refuse(file, otherwise);
    MarkEdited(file);
    return true;
  }
  const model::Element* RowAfter(Id document, const model::Element& row);
  std::vector<Id> Rows(Id document, Id first_row, std::int32_t count);
  bool CoversBody(const model::Document& document, const std::vector<Id>& rows);

  Workspace& workspace_;
};

const model::Element* EditingRole::Changeable(Id document, Id element) {
  const model::Element* found = workspace_.Element(document, element);
  if (!workspace_.IsDocument(document) || found == nullptr) {
    workspace_.FailId(document);
    return nullptr;
  }
  OpenFile* file = workspace_.File(document);
  const model::Document& tree = *file->document;
  if (InLockedInset(file, tree.elements[model::AnchoredIn(tree, element)].first_item)) {
    Refuse(file, "the element belongs to a text inset that is locked.");
    return nullptr;
  }
  return found;
}

bool EditingRole::SetAttributes(Id document, Id element,
                                const std::vector<host::AttributeValue>& attributes) {
  const bool of_book = workspace_.Book(document) != nullptr;
  const model::Element* found =
      of_book ? workspace_.Element(document, element) : Changeable(document, element);
  if (found == nullptr) return of_book && workspace_.FailId(document);
  OpenFile* file = workspace_.File(document);
  if (found->kind == ElementKind::kText) return Refuse(file, "a text node has no attributes.");
  std::vector<model::NewAttribute> wanted;
  wanted.reserve(attributes.size());
  for (const host::AttributeValue& attribute : attributes)
    wanted.push_back({attribute.name, attribute.values});
  return Done(file, model::SetAttributes(&file->Tree(), element, wanted),
              "the attributes of the element cannot be changed.");
}

OpenFile* EditingRole::ToBeAddedTo(Id document, Id element) {
  if (workspace_.IsDocument(document)) {
    OpenFile* file = workspace_.File(document);
    // Text that was put at a place would not know whether it comes before or behind what is added there.
    const bool waits = file->document->marked || !file->document->additions.insertions.empty();
    if (waits && !SettleDocument(file)) {
      Refuse(file, kCannotBeWritten);
      return nullptr;
    }
  }
  return Changeable(document, element) == nullptr ? nullptr : workspace_.File(document);
}

Id EditingRole::InsertElement(Id document, Id parent, Id before, Id definition) {
  OpenFile* file = ToBeAddedTo(document, parent);
  if (file == nullptr) return host::kNone;
  const bool ids_exist = definition != host::kNone && definition < file->document->definitions.size() &&
                         (before == host::kNone || workspace_.Element(document, before) != nullptr);
  if (!ids_exist) return workspace_.FailId(document), host::kNone;
  std::string why;
  const Id id = model::InsertElement(file->document.get(), parent, before, definition, &why);
  Done(file, id != host::kNone, why);
  return id;
}

bool EditingRole::SetText(Id document, Id element, std::string_view text) {
  OpenFile* file = ToBeAddedTo(document, element);
  if (file == nullptr) return false;
  std::string why;
  return Done(file, model::SetElementText(file->document.get(), element, text, &why), why);
}

Id EditingRole::DefineElement(Id document, std::string_view name, std::string_view content_rule,
                              std::string_view paragraph_format) {
  if (!workspace_.IsDocument(document)) return workspace_.FailId(document), host::kNone;
  OpenFile* file = workspace_.File(document);
  if (file->document->marked && !SettleDocument(file)) return Refuse(file, kCannotBeWritten), host::kNone;
  std::string why;
  const Id id = model::DefineElement(file->document.get(), name, content_rule, paragraph_format, &why);
  Done(file, id != host::kNone, why);
  return id;
}

bool EditingRole::SetDefinition(Id document, Id element, Id definition) {
  const model::Element* found = workspace_.Element(document, element);
  const bool same = found != nullptr && definition != host::kNone && found->definition == definition;
  if (same && workspace_.IsDocument(document)) return Reformat(document, element);
  OpenFile* file = ToBeAddedTo(document, element);
  if (file == nullptr) return false;
  if (definition == host::kNone || definition >= file->document->definitions.size()) {
    return workspace_.FailId(document);
  }
  std::string why;
  return Done(file, model::SetDefinition(file->document.get(), element, definition, &why), why);
}

bool EditingRole::AppendParagraph(Id document, Id element, const host::NewParagraph& paragraph) {
  OpenFile* file = ToBeAddedTo(document, element);
  if (file == nullptr) return false;
  model::NewContent content;
  content.text = paragraph.text;
  content.format = paragraph.format;
  content.variable = paragraph.variable;
  content.marker_type = paragraph.marker_type;
  content.marker_text = paragraph.marker_text;
  std::string why;
  return Done(file, model::AppendParagraph(file->document.get(), element, std::move(content), &why), why);
}

// Positions are those of the text as it reads now, so that what was added before is brought in first.
bool EditingRole::Insert(Id document, const host::TextLocation& at, model::Insertion insertion) {
  OpenFile* file = workspace_.DocumentFile(document);
  if (file == nullptr) return workspace_.FailId(document);
  const model::Document& tree = *file->document;
  if (!BroughtIn(file)) return false;
  const bool is_place = at.object != host::kNone && at.object < tree.flows.size() &&
                        tree.flows[at.object].first_item <= at.offset &&
                        at.offset < tree.flows[at.object].end_item;
  if (!is_place) {
    return workspace_.Fail(Error::kInvalidArgument,
                           file->path + ": the document has no such place in its text.");
  }
  if (InLockedInset(file, at.offset)) {
    return Refuse(file, "the text belongs to a text inset that is locked.");
  }
  const std::optional<std::uint32_t> place = tree.marked ? SettledPlace(file, at.offset) : at.offset;
  if (!place) return Refuse(file, kCannotBeWritten);
  insertion.item = *place;
  std::string why;
  return Done(file, model::InsertAt(file->document.get(), std::move(insertion), &why), why);
}

bool EditingRole::InsertText(Id document, const host::TextLocation& at, std::string_view text) {
  model::Insertion insertion;
  insertion.text = text;
  return Insert(document, at, std::move(insertion));
}

bool EditingRole::InsertMarker(Id document, const host::TextRange& range, std::string_view type,
                               std::string_view text) {
  if (type.empty()) return workspace_.Fail(Error::kInvalidArgument, "A marker needs a type.");
  model::Insertion insertion;
  insertion.marker_type = type;
  insertion.text = text;
  return Insert(document, range.begin, std::move(insertion));
}

host::TextRange EditingRole::FindParagraph(Id document, Id flow, std::string_view format) {
  const model::Document* tree = workspace_.Document(document);
  if (tree == nullptr || flow == host::kNone || flow >= tree->flows.size()) return {};
  host::TextRange range;
  if (!model::FindParagraph(*tree, flow, format, &range.begin.offset, &range.end.offset)) return {};
  range.begin.object = range.end.object = flow;
  return range;
}

bool EditingRole::DeleteElement(Id document, Id element) {
  const model::Element* found = ToBeMarked(document, element);
  if (found == nullptr) return false;
  OpenFile* file = workspace_.DocumentFile(document);
  if (IsTablePart(found->kind)) return Refuse(file, "a part of a table cannot be deleted as an element.");
  if (found->kind == ElementKind::kText) return Refuse(file, "a text node cannot be deleted as an element.");
  return Done(file, model::DeleteElement(file->document.get(), element), "the element cannot be deleted.");
}

// The next row of the same table in the order headings, body, footings. Every row of a structured table is an
// element.
const model::Element* EditingRole::RowAfter(Id document, const model::Element& row) {
  if (row.next != host::kNone) return workspace_.Element(document, row.next);
  const model::Element* part = workspace_.Element(document, row.parent);
  for (part = part == nullptr ? nullptr : workspace_.Element(document, part->next); part != nullptr;
       part = workspace_.Element(document, part->next)) {
    const model::Element* first = workspace_.Element(document, part->first_child);
    if (first != nullptr && first->kind == ElementKind::kTableRow) return first;
  }
  return nullptr;
}

// `count` rows from the first one on; fewer when the table has no more.
std::vector<Id> EditingRole::Rows(Id document, Id first_row, std::int32_t count) {
  std::vector<Id> rows;
  const model::SharedArray<model::Element>& elements = workspace_.Document(document)->elements;
  const model::Element* row = workspace_.Element(document, first_row);
  for (std::int32_t i = 0; i < count && row != nullptr; ++i) {
    rows.push_back(static_cast<Id>(row - elements.data()));
    row = RowAfter(document, *row);
  }
  return rows;
}

// The rows follow one another, so all of a body is among them when its first and its last are.
bool EditingRole::CoversBody(const model::Document& document, const std::vector<Id>& rows) {
  bool first = false;
  for (const Id row : rows) {
    const model::Element& part = document.elements[document.elements[row].parent];
    if (part.kind != ElementKind::kTableBody) continue;
    first = first || part.first_child == row;
    if (first && part.last_child == row) return true;
  }
  return false;
}

bool EditingRole::DeleteRows(Id document, Id table, Id first_row, std::int32_t count) {
  const model::Element* row = ToBeMarked(document, first_row);
  if (row == nullptr) return false;
  OpenFile* file = workspace_.DocumentFile(document);
  model::Document* model = file->document.get();
  const model::Element& part = model->elements[row->parent];
  if (row->kind != ElementKind::kTableRow || table == host::kNone || part.parent != table || count < 1) {
    return workspace_.Fail(Error::kInvalidArgument, file->path + ": the table has no such row.");
  }
  const std::vector<Id> rows = Rows(document, first_row, count);
  if (rows.size() != static_cast<std::size_t>(count)) {
    return workspace_.Fail(Error::kInvalidArgument,
                           file->path + ": the table has fewer rows than are to go.");
  }
  if (CoversBody(*model, rows)) return Refuse(file, "a table cannot lose every row of its body.");
  std::vector<std::uint32_t> parts;
  for (const Id id : rows) {
    const model::Item& item = model->items[model->elements[id].first_item];
    if (item.kind != ItemKind::kPartBegin) return Refuse(file, "the row cannot be deleted.");
    parts.push_back(item.ref);
  }
  for (const std::uint32_t id : parts) {
    if (!model::DeleteRow(model, id)) return Refuse(file, "the row cannot be deleted.");
    MarkEdited(file);
  }
  return true;
}

bool EditingRole::RemoveTitle(Id document, Id table) {
  const model::Element* found = ToBeMarked(document, table);
  if (found == nullptr) return false;
  OpenFile* file = workspace_.DocumentFile(document);
  const model::Item& item = file->document->items[found->first_item];
  const bool is_table = item.kind == ItemKind::kTableAnchor || item.kind == ItemKind::kPartBegin;
  if (found->kind != ElementKind::kTable || !is_table) {
    return workspace_.Fail(Error::kInvalidArgument, file->path + ": the element is no table.");
  }
  return Done(file, model::DeleteTitle(file->document.get(), item.ref), "the table has no title.");
}

bool EditingRole::ClearText(Id document, const host::TextRange& range) {
  OpenFile* file = workspace_.DocumentFile(document);
  if (file == nullptr) return workspace_.FailId(document);
  if (!BroughtIn(file)) return false;
  const model::Document& model = *file->document;
  const Id flow = range.begin.object;
  const bool is_range = flow != host::kNone && flow < model.flows.size() && range.end.object == flow &&
                        model.flows[flow].first_item <= range.begin.offset &&
                        range.begin.offset <= range.end.offset &&
                        range.end.offset <= model.flows[flow].end_item;
  if (!is_range) {
    return workspace_.Fail(Error::kInvalidArgument, file->path + ": the document has no such range of text.");
  }
  if (InLockedInset(file, range.begin.offset))
    return Refuse(file, "the text belongs to a text inset that is locked.");
  return Done(file, model::DeleteRange(file->document.get(), range.begin.offset, range.end.offset),
              "the text cannot be deleted.");
}

}  // namespace

std::unique_ptr<host::Editing> MakeEditing(Workspace& workspace) {
  return std::make_unique<EditingRole>(workspace);
}

}  // namespace qelm::embedded::adapter
