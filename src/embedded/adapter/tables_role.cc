#include <algorithm>

#include "embedded/adapter/roles.h"
#include "embedded/model/edit.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::adapter {
namespace {

using model::ElementKind;
using model::ItemKind;

// The text of a part of a table, with a line end between paragraphs: in MIF where one ends, in XML where an
// element does. What was deleted, and what the element definitions generate, is left out.
std::string LinesOf(const model::Document& document, const model::Part& part) {
  const bool xml = document.format == model::Format::kXml;
  std::string text;
  bool line_ended = false;
  for (std::uint32_t i = part.first_item + 1; i + 1 < part.end_item; ++i) {
    const model::Item& item = document.items[i];
    if (item.Is(model::kDeleted) || item.Is(model::kGenerated)) continue;
    if (item.kind == (xml ? ItemKind::kElementEnd : ItemKind::kParagraphEnd)) line_ended = !text.empty();
    const std::size_t before = text.size();
    model::AppendItemText(document, item, &text);
    if (text.size() == before) continue;
    if (line_ended) text.insert(before, 1, '\n');
    line_ended = false;
  }
  return text;
}

class TablesRole : public host::Tables {
 public:
  explicit TablesRole(Workspace& workspace) : workspace_(workspace) {}

  Id FirstTable(Id document) override { return TableFrom(document, 1); }
  Id NextTable(Id document, Id table) override {
    return table == host::kNone ? host::kNone : TableFrom(document, table + 1);
  }

  Id FirstRow(Id document, Id table) override {
    const model::Part* part = Part(document, table, ElementKind::kTable);
    return part == nullptr ? host::kNone : RowFrom(document, part->first_item + 1);
  }
  Id NextRow(Id document, Id row) override {
    const model::Part* part = Part(document, row, ElementKind::kTableRow);
    return part == nullptr ? host::kNone : RowFrom(document, part->end_item);
  }
  Id RowOfElement(Id document, Id element) override {
    const model::Document* model = workspace_.Document(document);
    const model::Element* found = workspace_.Element(document, element);
    if (model == nullptr || found == nullptr || found->kind != ElementKind::kTableRow) return host::kNone;
    if (found->first_item >= model->items.size()) return host::kNone;
    const model::Item& item = model->items[found->first_item];
    return item.kind == ItemKind::kPartBegin ? item.ref : host::kNone;
  }

  host::ElementKind PartOfRow(Id document, Id row) override {
    const model::Part* part = Part(document, row, ElementKind::kTableRow);
    const model::Document* model = workspace_.Document(document);
    return static_cast<host::ElementKind>(
        part == nullptr || part->parent == 0 ? ElementKind::kTable : model->parts[part->parent].kind);
  }
  std::string TitleText(Id document, Id table) override {
    const std::vector<std::string> texts =
        TextsIn(document, Part(document, table, ElementKind::kTable), ElementKind::kTableTitle);
    return texts.empty() ? std::string() : texts.front();
  }
  std::vector<std::string> CellTexts(Id document, Id row) override {
    return TextsIn(document, Part(document, row, ElementKind::kTableRow), ElementKind::kTableCell);
  }

  std::vector<Id> RowConditions(Id document, Id row) override {
    const model::Part* part = Part(document, row, ElementKind::kTableRow);
    if (part == nullptr) return {};
    return workspace_.Document(document)->condition_sets[part->conditions];
  }
  bool SetRowConditions(Id document, Id row, const std::vector<Id>& conditions) override;

  Id FirstInset(Id document) override { return InsetFrom(document, 1); }
  Id NextInset(Id document, Id inset) override {
    return inset == host::kNone ? host::kNone : InsetFrom(document, inset + 1);
  }
  bool InsetLocked(Id document, Id inset) override {
    const model::Inset* found = Inset(document, inset);
    return found != nullptr && found->locked;
  }
  bool SetInsetLocked(Id document, Id inset, bool locked) override {
    model::Inset* found = Inset(document, inset);
    if (found == nullptr) return workspace_.FailId(document);
    found->locked = locked;
    return true;
  }

 private:
  const model::Part* Part(Id document, Id id, ElementKind kind) {
    const model::Document* model = workspace_.Document(document);
    if (model == nullptr || id == host::kNone || id >= model->parts.size()) return nullptr;
    const model::Part& part = model->parts[id];
    return part.kind == kind && !part.deleted ? &part : nullptr;
  }
  model::Inset* Inset(Id document, Id id) {
    model::Document* model = workspace_.Document(document);
    if (model == nullptr || id == host::kNone || id >= model->insets.size()) return nullptr;
    model::Inset& inset = model->insets[id];
    const bool there =
        inset.first_item < inset.end_item && !model->items[inset.first_item].Is(model::kDeleted);
    return there ? &inset : nullptr;
  }

  Id TableFrom(Id document, Id first) {
    const model::Document* model = workspace_.Document(document);
    if (model == nullptr) return host::kNone;
    for (Id id = first; id < model->parts.size(); ++id) {
      if (Part(document, id, ElementKind::kTable) != nullptr) return id;
    }
    return host::kNone;
  }
  Id InsetFrom(Id document, Id first) {
    const model::Document* model = workspace_.Document(document);
    if (model == nullptr) return host::kNone;
    for (Id id = first; id < model->insets.size(); ++id) {
      if (Inset(document, id) != nullptr) return id;
    }
    return host::kNone;
  }
  Id RowFrom(Id document, std::uint32_t item);
  std::vector<std::string> TextsIn(Id document, const model::Part* around, ElementKind kind);

  Workspace& workspace_;
};

// The first row at or after an item that stands between the parts of a table, up to the table's end.
Id TablesRole::RowFrom(Id document, std::uint32_t item) {
  const model::Document& model = *workspace_.Document(document);
  while (item < model.items.size()) {
    const model::Item& at = model.items[item];
    const bool begins = at.kind == ItemKind::kPartBegin;
    if (!begins && at.kind != ItemKind::kPartEnd) break;
    const model::Part& part = model.parts[at.ref];
    if (part.kind == ElementKind::kTable) break;
    if (begins && part.kind == ElementKind::kTableRow && !part.deleted) return at.ref;
    const bool pass_over = begins && (part.kind == ElementKind::kTableTitle || part.deleted);
    item = pass_over ? part.end_item : item + 1;
  }
  return host::kNone;
}

// The texts of those parts of one kind that are right in another part. Parts stand in the order of the items.
std::vector<std::string> TablesRole::TextsIn(Id document, const model::Part* around, ElementKind kind) {
  std::vector<std::string> texts;
  if (around == nullptr) return texts;
  const model::Document& model = *workspace_.Document(document);
  const auto outer = static_cast<Id>(around - model.parts.data());
  for (Id id = outer + 1; id < model.parts.size(); ++id) {
    const model::Part& part = model.parts[id];
    if (part.first_item >= around->end_item) break;
    if (part.parent == outer && part.kind == kind && !part.deleted) texts.push_back(LinesOf(model, part));
  }
  return texts;
}

bool TablesRole::SetRowConditions(Id document, Id row, const std::vector<Id>& conditions) {
  const model::Part* part = Part(document, row, ElementKind::kTableRow);
  if (part == nullptr) return workspace_.FailId(document);
  OpenFile* file = workspace_.DocumentFile(document);
  model::Document* model = file->document.get();
  const bool exist = std::all_of(conditions.begin(), conditions.end(),
                                 [&](Id id) { return id != host::kNone && id < model->conditions.size(); });
  if (!exist) return workspace_.FailId(document);
  if (InLockedInset(file, part->first_item)) {
    return workspace_.Fail(Error::kRefused, file->path + ": the row belongs to a text inset that is locked.");
  }
  const std::uint16_t set = model->InternConditions(conditions);
  if (set == part->conditions) return true;
  DeclareConditions(model, conditions);
  model::SetRowConditions(model, row, set);
  MarkEdited(file, EditOf::kVisibility);
  return true;
}

}  // namespace

std::unique_ptr<host::Tables> MakeTables(Workspace& workspace) {
  return std::make_unique<TablesRole>(workspace);
}

}  // namespace qelm::embedded::adapter
