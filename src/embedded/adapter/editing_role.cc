#include "embedded/adapter/element_properties.h"
#include "embedded/adapter/roles.h"
#include "embedded/model/edit.h"

namespace qelm::embedded::adapter {
namespace {

using model::ElementKind;
using model::ItemKind;

bool IsTablePart(ElementKind kind) {
  switch (kind) {
    case ElementKind::kTableTitle:
    case ElementKind::kTableHeading:
    case ElementKind::kTableBody:
    case ElementKind::kTableFooting:
    case ElementKind::kTableRow:
    case ElementKind::kTableCell:
      return true;
    default:
      return false;
  }
}

class EditingRole : public host::Editing {
 public:
  explicit EditingRole(Workspace& workspace) : workspace_(workspace) {}

  bool SetAttributes(Id document, Id element, const std::vector<host::AttributeValue>& attributes) override;
  Id InsertElement(Id document, Id, Id, Id) override {
    NotSupported(document, "an element cannot be inserted");
    return host::kNone;
  }
  bool SetText(Id document, Id, std::string_view) override {
    return NotSupported(document, "the text of an element cannot be replaced");
  }
  Id DefineElement(Id document, std::string_view name, std::string_view, std::string_view) override {
    NotSupported(document, "the element definition \"" + std::string(name) + "\" cannot be made or changed");
    return host::kNone;
  }
  bool SetDefinition(Id document, Id element, Id definition) override {
    const model::Element* found = workspace_.Element(document, element);
    if (found != nullptr && definition != host::kNone && found->definition == definition) {
      return Reformat(document, element);
    }
    return NotSupported(document, "an element cannot be given another definition");
  }

  bool DeleteElement(Id document, Id element) override;
  bool DeleteRows(Id document, Id table, Id first_row, std::int32_t count) override;
  bool RemoveTitle(Id document, Id table) override;
  bool ClearText(Id document, const host::TextRange& range) override;

 private:
  bool NotSupported(Id document, const std::string& what) {
    const OpenFile* file = workspace_.DocumentFile(document);
    if (file == nullptr) return workspace_.FailId(document);
    return workspace_.Fail(Error::kNotSupported, file->path + ": " + what + " in this version.");
  }
  bool Refuse(const OpenFile* file, const std::string& why) {
    return workspace_.Fail(Error::kRefused, file->path + ": " + why);
  }
  // Gives an element the formatting that its definition and formats define.
  bool Reformat(Id document, Id element) {
    OpenFile* file = workspace_.DocumentFile(document);
    if (Changeable(document, element) == nullptr) return false;
    ApplyDefinedFormats(file, element);
    return true;
  }
  // A document's element that may be changed; null with the error set otherwise.
  const model::Element* Changeable(Id document, Id element);
  bool Done(OpenFile* file, bool done, const char* otherwise) {
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
  OpenFile* file = workspace_.DocumentFile(document);
  const model::Element* found = workspace_.Element(document, element);
  if (file == nullptr || found == nullptr) {
    workspace_.FailId(document);
    return nullptr;
  }
  if (InLockedInset(file, found->first_item)) {
    Refuse(file, "the element belongs to a text inset that is locked.");
    return nullptr;
  }
  return found;
}

bool EditingRole::SetAttributes(Id document, Id element,
                                const std::vector<host::AttributeValue>& attributes) {
  const model::Element* found = Changeable(document, element);
  if (found == nullptr) return false;
  OpenFile* file = workspace_.DocumentFile(document);
  if (found->kind == ElementKind::kText) return Refuse(file, "a text node has no attributes.");
  std::vector<model::NewAttribute> wanted;
  wanted.reserve(attributes.size());
  for (const host::AttributeValue& attribute : attributes)
    wanted.push_back({attribute.name, attribute.values});
  return Done(file, model::SetAttributes(file->document.get(), element, wanted),
              "the attributes of the element cannot be changed.");
}

bool EditingRole::DeleteElement(Id document, Id element) {
  const model::Element* found = Changeable(document, element);
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
  const std::vector<model::Element>& elements = workspace_.Document(document)->elements;
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
  const model::Element* row = Changeable(document, first_row);
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
  const model::Element* found = Changeable(document, table);
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
