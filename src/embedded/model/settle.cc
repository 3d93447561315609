#include "embedded/model/settle.h"

#include <utility>

#include "embedded/model/files.h"
#include "embedded/model/text_access.h"
#include "embedded/model/xml_marks.h"

namespace qelm::embedded::model {
namespace {

// Gives what was read anew the ids of what was there before. Both trees are walked side by side, parents
// before children: a new element's children are those of the old one, with text nodes where they have text.
class IdKeeper {
 public:
  IdKeeper(const Document& before, Document* after) : before_(before), after_(*after) {}

  void Run();

 private:
  void MatchFlows();
  void MatchRoots(Id before, Id after);
  void MatchChildren(Id before, Id after);
  void MoveElements();
  void KeepCatalogs();
  Id KeptId(Id after) const { return after == 0 ? 0 : ids_[after]; }
  bool IsGone(Id flow) const;

  const Document& before_;
  Document& after_;
  std::vector<Id> ids_;  // by the id in what was read anew: the id that it takes
  Id limit_ = 0;
};

void IdKeeper::Run() {
  ids_.assign(after_.elements.size(), 0);
  limit_ = static_cast<Id>(before_.elements.size());
  MatchFlows();
  for (Id after = 1; after < after_.elements.size(); ++after) {
    const bool matched = ids_[after] != 0;
    if (matched) MatchChildren(ids_[after], after);
    // What was not there before, such as text where an element had none, takes a new number.
    if (!matched) ids_[after] = limit_++;
  }
  MoveElements();
  KeepCatalogs();
  if (after_.insets.size() == before_.insets.size()) {
    for (std::size_t i = 1; i < after_.insets.size(); ++i) after_.insets[i].locked = before_.insets[i].locked;
  }
}

// A flow goes with the anchored frame that it is in.
bool IdKeeper::IsGone(Id flow) const {
  for (const auto& [frame, in_frame] : before_.frame_flows) {
    if (in_frame != flow) continue;
    return IsDeletedAt(before_, before_.frames[frame].anchor);
  }
  return false;
}

// The only child that is no text; 0 where there are none or several.
Id OnlyChild(const Document& document, Id parent) {
  Id only = 0;
  for (Id child = document.elements[parent].first_child; child != 0; child = document.elements[child].next) {
    if (document.elements[child].kind == ElementKind::kText) continue;
    if (only != 0) return 0;
    only = child;
  }
  return only;
}

// A flow with several elements outermost has a root that is no element of its text; with one left, that is
// the root.
void IdKeeper::MatchRoots(Id before, Id after) {
  if (before == 0 || after == 0) return;
  const bool was_virtual = before_.elements[before].is_virtual;
  const bool is_virtual = after_.elements[after].is_virtual;
  const Id inner_before = was_virtual && !is_virtual ? OnlyChild(before_, before) : 0;
  const Id inner_after = is_virtual && !was_virtual ? OnlyChild(after_, after) : 0;
  ids_[inner_after != 0 ? inner_after : after] = inner_before != 0 ? inner_before : before;
}

void IdKeeper::MatchFlows() {
  std::vector<Flow> flows(1);
  std::vector<Id> moved{0};
  Id after = 1;
  for (Id before = 1; before < before_.flows.size(); ++before) {
    const bool gone = before_.flows.size() > after_.flows.size() && IsGone(before);
    if (gone || after >= after_.flows.size()) {
      // An empty flow holds the number.
      Flow empty;
      empty.name = before_.flows[before].name;
      empty.first_item = empty.end_item = after < after_.flows.size()
                                              ? after_.flows[after].first_item
                                              : static_cast<std::uint32_t>(after_.items.size());
      flows.push_back(empty);
      continue;
    }
    MatchRoots(before_.flows[before].root, after_.flows[after].root);
    flows.push_back(after_.flows[after]);
    moved.push_back(before);
    ++after;
  }
  for (; after < after_.flows.size(); ++after) {
    moved.push_back(static_cast<Id>(flows.size()));
    flows.push_back(after_.flows[after]);
  }
  after_.flows = std::move(flows);
  after_.main_flow = moved[after_.main_flow];
  for (auto& [frame, flow] : after_.frame_flows) flow = moved[flow];
}

void IdKeeper::MatchChildren(Id before, Id after) {
  Id old = before_.elements[before].first_child;
  for (Id child = after_.elements[after].first_child; child != 0; child = after_.elements[child].next) {
    const bool is_text = after_.elements[child].kind == ElementKind::kText;
    if (is_text) {
      if (old != 0 && before_.elements[old].kind == ElementKind::kText) {
        ids_[child] = old;
        old = before_.elements[old].next;
      }
      continue;
    }
    while (old != 0 && before_.elements[old].kind == ElementKind::kText) old = before_.elements[old].next;
    if (old == 0) return;
    ids_[child] = old;
    old = before_.elements[old].next;
  }
}

void IdKeeper::MoveElements() {
  SharedArray<Element> elements(limit_);
  for (Element& element : elements.All()) element.deleted = true;
  bool in_order = true;
  std::vector<Id> order;
  order.reserve(after_.elements.size());
  for (Id after = 1; after < after_.elements.size(); ++after) {
    Element element = after_.elements[after];
    element.parent = KeptId(element.parent);
    element.first_child = KeptId(element.first_child);
    element.last_child = KeptId(element.last_child);
    element.previous = KeptId(element.previous);
    element.next = KeptId(element.next);
    in_order = in_order && (order.empty() || order.back() < ids_[after]);
    order.push_back(ids_[after]);
    elements[ids_[after]] = element;
  }
  after_.elements = std::move(elements);
  // Without an order of its own every id counts, also those that are gone.
  if (!in_order || order.size() + 1 != after_.elements.size()) after_.order = std::move(order);
  for (Item& item : after_.items.All()) {
    switch (item.kind) {
      case ItemKind::kElementBegin:
      case ItemKind::kElementEnd:
      case ItemKind::kMarker:
      case ItemKind::kVariable:
      case ItemKind::kReferenceBegin:
      case ItemKind::kReferenceEnd:
        item.ref = KeptId(item.ref);
        break;
      default:
        break;
    }
  }
  for (Part& part : after_.parts) part.element = KeptId(part.element);
  for (AnchoredFrame& frame : after_.frames) frame.element = KeptId(frame.element);
  for (Flow& flow : after_.flows) flow.root = KeptId(flow.root);
}

// XML has no place for definitions that were made, and names a condition only while something has it.
void IdKeeper::KeepCatalogs() {
  if (after_.format != Format::kXml) return;
  for (Id id = 1; id < before_.conditions.size(); ++id) {
    Condition& condition = after_.conditions[id];
    if (condition.declared || !before_.conditions[id].declared) continue;
    condition.shown = before_.conditions[id].shown;
    condition.created = condition.declared = true;
  }
  for (Id id = 1; id < before_.colors.size(); ++id) {
    const Color& color = before_.colors[id];
    after_.colors[id].declared = after_.colors[id].declared || color.declared || color.created;
  }
  for (Id id = 1; id < before_.definitions.size(); ++id) {
    Definition& definition = after_.definitions[id];
    if (definition.declared || !before_.definitions[id].declared) continue;
    definition.declared = true;
    definition.content_rule = after_.KeepName(before_.definitions[id].content_rule);
  }
}

}  // namespace

bool NeedsSettling(const Document& document) {
  return document.marked || document.additions.Pending() || !document.replacements.empty();
}

bool Settle(Document* document) {
  const bool is_xml = document->format == Format::kXml;
  // Whether it counts as modified does not matter: one that was saved has its edits still to be brought in.
  return ReadAnew(document, (is_xml ? XmlPieces(*document) : MifPieces(*document)).Joined());
}

bool ReadAnew(Document* document, std::string bytes) {
  const bool is_xml = document->format == Format::kXml;
  Document after;
  if (is_xml) AddReservedColors(&after);
  after.TakeNamesFrom(document);
  std::string error;
  const bool read =
      is_xml ? ReadXml(std::move(bytes), &after, &error) : ReadMif(std::move(bytes), &after, &error);
  if (!read) {
    document->TakeNamesFrom(&after);
    return false;
  }
  IdKeeper(*document, &after).Run();
  after.source.MadeOf(document->source);
  after.path = document->path;
  after.warnings = document->warnings;
  after.modified = document->modified;
  *document = std::move(after);
  return true;
}

}  // namespace qelm::embedded::model
