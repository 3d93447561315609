#include <algorithm>
#include <map>
#include <span>

#include "embedded/model/xml_builder.h"
#include "embedded/model/xml_marks.h"
#include "embedded/xml/encoding.h"

namespace qelm::embedded::model {
namespace {

// Text between anchors and what they hold has a running state of its own, as a table cell has in MIF.
struct Scope {
  std::size_t conditions;  // where its part of `conditions_` begins
  std::size_t fonts;
  std::uint16_t set = 0;  // the running set
};

class TreeMaker {
 public:
  TreeMaker(Document* document, const XmlDraft& draft)
      : document_(*document), draft_(draft), encoding_(xml::DetectEncoding(document->source)) {}
  void Run();

 private:
  struct Open {
    Id element;
    Id last_child;
    ElementKind kind;
    bool has_text;
  };

  void Visit(std::uint32_t index);
  void SetState(Item* item);
  void Begin(std::uint32_t index);
  void End(std::uint32_t index);
  void BeginPart(std::uint32_t index, Id id);
  void EndPart(std::uint32_t index);
  void BlankText(std::uint32_t index);
  void AddText(std::uint32_t index);
  void Condition(Item* item);
  void RowCondition(Item* item);
  void Font(Item* item);
  ElementKind KindOf(Id definition, bool has_body) const;
  ElementKind KindOfTable(Id definition, bool has_body, ElementKind parent) const;
  Element& NewElement(ElementKind kind, std::uint32_t first_item);
  void OpenScope();
  void CloseScope(std::uint32_t offset);
  void TakeState();
  void Warn(std::uint32_t offset, const char* text);
  ElementKind ParentKind() const { return open_.empty() ? ElementKind::kContainer : open_.back().kind; }

  Document& document_;
  std::span<Item> items_;  // of the document, which get no more
  const XmlDraft& draft_;
  xml::Encoding encoding_;
  std::vector<Open> open_;
  std::vector<Scope> scopes_;
  std::vector<Id> conditions_;  // running, of all open scopes
  std::vector<std::uint32_t> fonts_;
  std::uint16_t set_ = 0;  // what is in force of them
  std::uint32_t font_ = 0;
  // Of the open tables and of the open rows in them: what marks between the cells say.
  std::vector<std::vector<Id>> row_conditions_;
  std::map<std::pair<std::uint32_t, std::string_view>, std::uint32_t> font_index_;
  Id text_ = 0;                       // the text node that is being added to
  std::uint32_t next_attribute_ = 0;  // of the next start tag
};

bool IsRows(ElementKind kind) {
  return kind == ElementKind::kTableHeading || kind == ElementKind::kTableBody ||
         kind == ElementKind::kTableFooting;
}

// Elements whose text is generated from the object that they stand for.
bool HasNoTextNodes(ElementKind kind) {
  return kind == ElementKind::kSystemVariable || kind == ElementKind::kMarker;
}

void TreeMaker::Warn(std::uint32_t offset, const char* text) {
  constexpr std::size_t kMostWarnings = 100;
  if (document_.warnings.size() >= kMostWarnings) return;
  const std::string_view source = document_.source;
  const auto line = 1 + std::count(source.begin(), source.begin() + offset, '\n');
  document_.warnings.push_back({"line " + std::to_string(line) + ": " + text});
}

void TreeMaker::Run() {
  // Behind the first, which is none: one for each pair of tags, and at most one for any other item.
  document_.elements.reserve(1 + document_.items.size() - draft_.tags);
  OpenScope();
  items_ = document_.items.All();
  const auto count = static_cast<std::uint32_t>(items_.size());
  for (std::uint32_t i = 0; i < count; ++i) Visit(i);
  CloseScope(static_cast<std::uint32_t>(document_.source.size()));
  Flow flow;
  flow.name = "Main";
  flow.root = document_.elements.size() > 1 ? 1 : 0;
  flow.end_item = count;
  flow.page = -1;
  flow.auto_connect = true;
  flow.span = {0, static_cast<std::uint32_t>(document_.source.size())};
  document_.flows.push_back(flow);
  document_.main_flow = 1;
}

void TreeMaker::Visit(std::uint32_t index) {
  Item& item = items_[index];
  if (item.kind == ItemKind::kElementBegin) {
    Begin(index);
    return;
  }
  SetState(&item);
  switch (item.kind) {
    case ItemKind::kElementEnd:
      End(index);
      break;
    case ItemKind::kString:
      AddText(index);
      break;
    case ItemKind::kConditional:
      Condition(&item);
      break;
    case ItemKind::kFont:
      Font(&item);
      break;
    default:
      if (item.Is(kTouched)) BlankText(index);
      break;
  }
}

// The conditions and the font that are in force.
void TreeMaker::SetState(Item* item) {
  item->conditions = set_;
  if (item->kind != ItemKind::kFont) item->font = font_;
}

// To be called when they may have changed.
void TreeMaker::TakeState() {
  const Scope& scope = scopes_.back();
  set_ = scope.set;
  font_ = fonts_.size() > scope.fonts ? fonts_.back() : 0;
}

// What the element is in a table, by its name or an instruction, where its place is right for it.
ElementKind TreeMaker::KindOfTable(Id definition, bool has_body, ElementKind parent) const {
  switch (draft_.roles[definition]) {
    case XmlRole::kTable:
      return has_body || draft_.declared_kinds[definition] ? ElementKind::kTable : ElementKind::kContainer;
    case XmlRole::kHeading:
      return parent == ElementKind::kTable ? ElementKind::kTableHeading : ElementKind::kContainer;
    case XmlRole::kBody:
      return parent == ElementKind::kTable ? ElementKind::kTableBody : ElementKind::kContainer;
    case XmlRole::kFooting:
      return parent == ElementKind::kTable ? ElementKind::kTableFooting : ElementKind::kContainer;
    case XmlRole::kRow: {
      // In a table from MIF the body need not be an element.
      const bool is_in_table = parent == ElementKind::kTable && draft_.declared_kinds[definition];
      return IsRows(parent) || is_in_table ? ElementKind::kTableRow : ElementKind::kContainer;
    }
    case XmlRole::kCell:
      return parent == ElementKind::kTableRow ? ElementKind::kTableCell : ElementKind::kContainer;
    case XmlRole::kNone:
      break;
  }
  return ElementKind::kContainer;
}

ElementKind TreeMaker::KindOf(Id definition, bool has_body) const {
  const ElementKind parent = ParentKind();
  if (draft_.roles[definition] != XmlRole::kNone) return KindOfTable(definition, has_body, parent);
  const ElementKind declared = document_.definitions[definition].kind;
  if (declared == ElementKind::kTableTitle && parent != ElementKind::kTable) return ElementKind::kContainer;
  return declared;
}

// Adds one as the last child of the innermost open element. Good until the next one is added.
Element& TreeMaker::NewElement(ElementKind kind, std::uint32_t first_item) {
  const auto id = static_cast<Id>(document_.elements.size());
  Element& element = document_.elements.emplace_back();
  element.kind = kind;
  element.first_item = first_item;
  if (open_.empty()) return element;
  Open& parent = open_.back();
  element.parent = parent.element;
  element.previous = parent.last_child;
  Id& link = parent.last_child != 0 ? document_.elements[parent.last_child].next
                                    : document_.elements[parent.element].first_child;
  link = id;
  parent.last_child = id;
  return element;
}

void TreeMaker::Begin(std::uint32_t index) {
  text_ = 0;
  Item& item = items_[index];
  const Id definition_id = item.ref;
  const bool has_text = (item.flags & kHoldsText) != 0;
  const ElementKind kind = KindOf(definition_id, (item.flags & kHoldsBody) != 0);
  const auto id = static_cast<Id>(document_.elements.size());
  Element& element = NewElement(kind, index);
  element.definition = definition_id;
  element.first_attribute = next_attribute_;
  element.attribute_count = item.conditions;
  element.source = item.begin;
  next_attribute_ += item.conditions;
  item.ref = id;
  item.flags = 0;
  SetState(&item);
  Definition& definition = document_.definitions[definition_id];
  if (definition.kind != kind && definition.kind == ElementKind::kContainer &&
      !draft_.declared_kinds[definition_id]) {
    definition.kind = kind;
  }
  open_.push_back({id, 0, kind, has_text});
  if (HasPart(kind)) BeginPart(index, id);
}

void TreeMaker::BeginPart(std::uint32_t index, Id id) {
  Element& element = document_.elements[id];
  const auto number = static_cast<std::uint32_t>(document_.parts.size());
  Part part;
  part.kind = element.kind;
  part.element = id;
  part.first_item = index;
  part.span.begin = items_[index].begin;
  const bool is_anchored = part.kind == ElementKind::kTable || part.kind == ElementKind::kFootnote;
  if (is_anchored) {
    part.number = number;
    part.anchor = index - 1;
    element.first_item = index - 1;
    Item& anchor = items_[index - 1];
    anchor.kind = part.kind == ElementKind::kTable ? ItemKind::kTableAnchor : ItemKind::kNoteAnchor;
    anchor.ref = number;
  } else {
    part.parent = document_.PartOf(document_.elements[element.parent]);
  }
  if (part.kind == ElementKind::kTable) row_conditions_.emplace_back();
  if (part.kind == ElementKind::kTableRow) {
    row_conditions_.push_back(std::vector<Id>(row_conditions_.back()));
    part.conditions = document_.InternConditions(row_conditions_.back());
  }
  document_.parts.push_back(part);
  items_[index].kind = ItemKind::kPartBegin;
  items_[index].ref = number;
  if (is_anchored || HoldsStory(part.kind)) OpenScope();
}

void TreeMaker::EndPart(std::uint32_t index) {
  const Id id = open_.back().element;
  const std::uint32_t number = document_.PartOf(document_.elements[id]);
  Part& part = document_.parts[number];
  Item& item = items_[index];
  item.kind = ItemKind::kPartEnd;
  item.ref = number;
  part.end_item = index + 1;
  part.span.end = item.end;
  part.source_conditions = part.conditions;
  if (part.kind == ElementKind::kTable || part.kind == ElementKind::kTableRow) row_conditions_.pop_back();
  if (part.anchor != kNoIndex || HoldsStory(part.kind)) CloseScope(item.begin);
}

void TreeMaker::End(std::uint32_t index) {
  text_ = 0;
  const Open& open = open_.back();
  if (HasPart(open.kind)) {
    EndPart(index);
  } else {
    items_[index].ref = open.element;
  }
  Element& element = document_.elements[open.element];
  element.last_child = open.last_child;
  element.end_item = index + 1;
  open_.pop_back();
}

// White space alone: text where the element has text.
void TreeMaker::BlankText(std::uint32_t index) {
  Item& item = items_[index];
  item.flags &= static_cast<std::uint8_t>(~kTouched);
  if (!open_.back().has_text) return;
  item.kind = ItemKind::kString;
  const std::string_view bytes = document_.At(item);
  const bool reads_as_is = xml::UnitSize(encoding_) == 1 && bytes.find('\r') == std::string_view::npos;
  if (!item.Is(kEscaped) && !reads_as_is) {
    std::string text = xml::ToUtf8(bytes, encoding_);
    for (std::size_t at = 0; (at = text.find('\r', at)) != std::string::npos; ++at) {
      const bool is_pair = at + 1 < text.size() && text[at + 1] == '\n';
      text.replace(at, is_pair ? 2 : 1, "\n");
    }
    item.flags |= kEscaped;
    item.ref = static_cast<std::uint32_t>(document_.values.size());
    document_.values.push_back(document_.Keep(std::move(text)));
  }
  AddText(index);
}

void TreeMaker::AddText(std::uint32_t index) {
  if (HasNoTextNodes(ParentKind())) return;
  if (text_ != 0) {
    document_.elements[text_].end_item = index + 1;
  } else {
    text_ = static_cast<Id>(document_.elements.size());
    NewElement(ElementKind::kText, index).end_item = index + 1;
  }
}

void TreeMaker::OpenScope() {
  scopes_.push_back({conditions_.size(), fonts_.size()});
  TakeState();
}

void TreeMaker::CloseScope(std::uint32_t offset) {
  const Scope& scope = scopes_.back();
  if (conditions_.size() > scope.conditions || fonts_.size() > scope.fonts) {
    Warn(offset, "conditions or character properties are still open here; they end with the text");
  }
  conditions_.resize(scope.conditions);
  fonts_.resize(scope.fonts);
  scopes_.pop_back();
  if (!scopes_.empty()) TakeState();
}

void TreeMaker::Condition(Item* item) {
  const ElementKind around = ParentKind();
  if (around == ElementKind::kTableRow || around == ElementKind::kTable || IsRows(around)) {
    RowCondition(item);
    return;
  }
  Scope& scope = scopes_.back();
  const Id id = item->ref & kMarkCondition;
  const auto first = conditions_.begin() + static_cast<std::ptrdiff_t>(scope.conditions);
  const auto found = std::find(first, conditions_.end(), id);
  if ((item->ref & kMarkEnds) == 0) {
    if (found == conditions_.end()) conditions_.push_back(id);
  } else if (found != conditions_.end()) {
    conditions_.erase(found);
  } else {
    Warn(item->begin, "a condition ends here that is not applied");
  }
  const auto begin = conditions_.begin() + static_cast<std::ptrdiff_t>(scope.conditions);
  scope.set = document_.InternConditions(std::vector<Id>(begin, conditions_.end()));
  TakeState();
  item->conditions = set_;
}

// Between the parts of a table a condition can only be a row's: its own marks stand in it, before and after
// its cells; marks around rows count for each of them.
void TreeMaker::RowCondition(Item* item) {
  const bool in_row = ParentKind() == ElementKind::kTableRow;
  std::vector<Id>& running = row_conditions_.back();
  const Id id = item->ref & kMarkCondition;
  const auto found = std::find(running.begin(), running.end(), id);
  if ((item->ref & kMarkEnds) != 0) {
    if (found != running.end()) running.erase(found);
  } else if (found == running.end()) {
    running.push_back(id);
  }
  item->ref |= kMarkOfRows;
  if (!in_row) return;
  Part& row = document_.parts[document_.PartOf(document_.elements[open_.back().element])];
  if ((item->ref & kMarkEnds) == 0) row.conditions = document_.InternConditions(running);
}

void TreeMaker::Font(Item* item) {
  const Scope& scope = scopes_.back();
  const std::uint32_t under = fonts_.size() > scope.fonts ? fonts_.back() : 0;
  if (item->ref == 0) {
    if (fonts_.size() > scope.fonts) {
      fonts_.pop_back();
    } else {
      Warn(item->begin, "character properties end here that did not begin");
    }
  } else {
    const std::string_view data = document_.values[item->font];
    const auto [found, is_new] = font_index_.try_emplace({under, data}, 0);
    if (is_new) {
      FontState state = ReadTextMark(&document_, document_.fonts[under], data);
      found->second = static_cast<std::uint32_t>(document_.fonts.size());
      document_.fonts.push_back(std::move(state));
    }
    fonts_.push_back(found->second);
  }
  TakeState();
  item->font = font_;
}

}  // namespace

void BuildXmlTree(Document* document, const XmlDraft& draft) { TreeMaker(document, draft).Run(); }

}  // namespace qelm::embedded::model
