#include "embedded/model/edit.h"

#include <algorithm>

#include "embedded/model/text_access.h"
#include "embedded/xml/encoding.h"
#include "embedded/xml/names.h"

namespace qelm::embedded::model {
namespace {

bool IsStateStatement(ItemKind kind) { return kind == ItemKind::kFont || kind == ItemKind::kConditional; }

// The states of the source are kept from the first edit on, so that saving can tell what changed.
void KeepSourceConditions(Document* document) {
  if (!document->source_conditions.empty()) return;
  document->source_conditions.reserve(document->items.size());
  for (const Item& item : document->items) document->source_conditions.push_back(item.conditions);
}

void Unlink(Document* document, Id id) {
  Element& element = document->elements[id];
  if (element.previous != 0) document->elements[element.previous].next = element.next;
  if (element.next != 0) document->elements[element.next].previous = element.previous;
  if (element.parent != 0) {
    Element& parent = document->elements[element.parent];
    if (parent.first_child == id) parent.first_child = element.next;
    if (parent.last_child == id) parent.last_child = element.previous;
  }
  element.parent = element.previous = element.next = 0;
}

// The elements in the order of their first items.
class InOrder {
 public:
  explicit InOrder(const Document& document) : document_(document) {}
  std::size_t Count() const {
    return document_.order.empty() ? document_.elements.size() - 1 : document_.order.size();
  }
  Id At(std::size_t place) const {
    return document_.order.empty() ? static_cast<Id>(place) + 1 : document_.order[place];
  }
  // The place of the first one that begins there or later. `guess` is an element that may be it.
  std::size_t FirstFrom(std::uint32_t item, Id guess) const {
    const std::size_t guessed = document_.order.empty() && guess != 0 ? guess - 1 : Count();
    if (guessed < Count() && IsFirstFrom(guessed, item)) return guessed;
    std::size_t first = 0;
    for (std::size_t after = Count(); first < after;) {
      const std::size_t middle = first + (after - first) / 2;
      if (Begin(middle) < item) {
        first = middle + 1;
      } else {
        after = middle;
      }
    }
    return first;
  }

 private:
  std::uint32_t Begin(std::size_t place) const { return document_.elements[At(place)].first_item; }
  bool IsFirstFrom(std::size_t place, std::uint32_t item) const {
    return Begin(place) >= item && (place == 0 || Begin(place - 1) < item);
  }

  const Document& document_;
};

// Marks the elements that lie wholly in the items as deleted; the outermost ones leave the tree. `guess` may
// be the first of them.
void DeleteElementsIn(Document* document, std::uint32_t begin, std::uint32_t end, Id guess) {
  auto& elements = document->elements;
  const InOrder in_order(*document);
  for (std::size_t place = in_order.FirstFrom(begin, guess); place < in_order.Count(); ++place) {
    const Id id = in_order.At(place);
    Element& element = elements[id];
    if (element.first_item >= end) break;
    if (element.end_item > end || element.deleted || element.is_virtual) continue;
    if (element.parent == 0 || !elements[element.parent].deleted) {
      const Id flow = FlowOf(*document, element.first_item);
      if (flow != 0 && document->flows[flow].root == id) document->flows[flow].root = 0;
      Unlink(document, id);
    }
    element.deleted = true;
    if (HasPart(element.kind)) document->parts[document->PartOf(element)].deleted = true;
  }
}

// How many rows of a heading, body or footing are left.
std::uint32_t& RowsLeft(Document* document, std::uint32_t rows_part) {
  Part& rows = document->parts[rows_part];
  if (rows.rows_left != kNoIndex) return rows.rows_left;
  rows.rows_left = 0;
  for (std::uint32_t i = rows_part + 1; i < document->parts.size(); ++i) {
    const Part& part = document->parts[i];
    if (part.first_item >= rows.end_item) break;
    if (part.parent == rows_part && !part.deleted) ++rows.rows_left;
  }
  return rows.rows_left;
}

// Marks items as deleted, and adds the flows in deleted frames to `flows`.
void DeleteItems(Document* document, std::uint32_t begin, std::uint32_t end, std::vector<Id>* flows) {
  for (std::uint32_t i = begin; i < end; ++i) {
    Item& item = document->items[i];
    if (item.kind == ItemKind::kPartBegin) document->parts[item.ref].deleted = true;
    if (item.kind == ItemKind::kFrameAnchor && item.ref != 0) {
      const auto [first, last] = document->frame_flows.equal_range(item.ref);
      for (auto flow = first; flow != last; ++flow) flows->push_back(flow->second);
    }
    if (!IsStateStatement(item.kind) && item.kind != ItemKind::kTextFrame && item.kind != ItemKind::kLine) {
      item.flags |= kDeleted;
    }
  }
  document->modified = document->marked = true;
}

// Whether an attribute may have the name: in XML any that the document has, and others that can be read back.
bool IsWritable(const Document& document, const std::string& name) {
  if (document.format != Format::kXml || document.name_index.contains(name)) return true;
  return xml::IsName(name) && xml::Holds(xml::DetectEncoding(document.source), name);
}

}  // namespace

void KeepSourceFonts(Document* document) {
  if (!document->source_fonts.empty()) return;
  document->source_fonts.reserve(document->items.size());
  for (const Item& item : document->items) document->source_fonts.push_back(item.font);
}

void SetConditions(Document* document, std::uint32_t begin, std::uint32_t end, std::uint16_t set) {
  KeepSourceConditions(document);
  for (std::uint32_t i = begin; i < end;) {
    Item& item = document->items[i];
    if (item.kind == ItemKind::kPartBegin && document->parts[item.ref].kind == ElementKind::kTableRow) {
      SetRowConditions(document, item.ref, set);
      i = document->parts[item.ref].end_item;
      continue;
    }
    if (HasConditions(item.kind)) item.conditions = set;
    i = EndOfItem(*document, i);
  }
  document->modified = document->marked = true;
}

void SetRowConditions(Document* document, std::uint32_t row_part, std::uint16_t set) {
  Part& row = document->parts[row_part];
  if (row.conditions == set) return;
  row.conditions = set;
  document->modified = document->marked = true;
}

Id CreateCondition(Document* document, std::string_view name) {
  const auto known = document->condition_index.find(name);
  if (known != document->condition_index.end() && document->conditions[known->second].declared) {
    return known->second;
  }
  const Id id = known != document->condition_index.end()
                    ? known->second
                    : document->InternCondition(document->Keep(std::string(name)));
  Condition& condition = document->conditions[id];
  condition.created = true;
  condition.declared = true;
  document->modified = true;
  return id;
}

void SetConditionShown(Document* document, Id condition, bool shown) {
  if (document->conditions[condition].shown == shown) return;
  document->conditions[condition].shown = shown;
  document->modified = true;
}

namespace {

// `guess` may be the first element in the range.
bool Delete(Document* document, std::uint32_t begin, std::uint32_t end, Id guess) {
  if (begin >= end || end > document->items.size()) return false;
  // What an anchor stands for goes with it, also where the anchor is the last thing in the range.
  std::uint32_t behind = begin;
  while (behind < end) behind = EndOfItem(*document, behind);
  end = behind;
  std::vector<Id> flows;
  DeleteElementsIn(document, begin, end, guess);
  DeleteItems(document, begin, end, &flows);
  // The text in a frame goes with the frame, and may have frames of its own.
  while (!flows.empty()) {
    const Flow flow = document->flows[flows.back()];
    flows.pop_back();
    DeleteElementsIn(document, flow.first_item, flow.end_item, flow.root);
    DeleteItems(document, flow.first_item, flow.end_item, &flows);
  }
  return true;
}

}  // namespace

bool DeleteRange(Document* document, std::uint32_t begin, std::uint32_t end) {
  return Delete(document, begin, end, 0);
}

bool DeleteElement(Document* document, Id id) {
  const Element& element = document->elements[id];
  if (element.deleted || element.is_virtual || IsTablePart(element.kind)) return false;
  return Delete(document, element.first_item, element.end_item, id);
}

bool DeleteRow(Document* document, std::uint32_t row_part) {
  const Part& row = document->parts[row_part];
  if (row.kind != ElementKind::kTableRow || row.deleted) return false;
  const std::uint32_t rows_part = row.parent;
  std::uint32_t& left = RowsLeft(document, rows_part);
  const bool is_last = left <= 1;
  if (is_last && document->parts[rows_part].kind == ElementKind::kTableBody) return false;
  --left;
  // A heading or footing does not exist without a row.
  Part& gone = document->parts[is_last ? rows_part : row_part];
  gone.deleted = true;
  return DeleteRange(document, gone.first_item, gone.end_item);
}

bool DeleteTitle(Document* document, std::uint32_t table_part) {
  const Part& table = document->parts[table_part];
  for (std::uint32_t i = table_part + 1; i < document->parts.size(); ++i) {
    Part& part = document->parts[i];
    if (part.first_item >= table.end_item) break;
    if (part.parent != table_part || part.kind != ElementKind::kTableTitle || part.deleted) continue;
    part.deleted = true;
    return DeleteRange(document, part.first_item, part.end_item);
  }
  return false;
}

bool SetAttributes(Document* document, Id id, const std::vector<NewAttribute>& attributes) {
  Element& element = document->elements[id];
  if (element.definition == 0 || element.deleted || element.is_virtual || attributes.size() > 0xFFFF) {
    return false;
  }
  for (const NewAttribute& attribute : attributes) {
    if (!IsWritable(*document, attribute.name)) return false;
  }
  element.first_attribute = static_cast<std::uint32_t>(document->attributes.size());
  element.attribute_count = static_cast<std::uint16_t>(attributes.size());
  for (const NewAttribute& from : attributes) {
    const auto known = document->name_index.find(from.name);
    Attribute attribute{};
    attribute.name =
        known != document->name_index.end() ? known->second : document->InternName(document->Keep(from.name));
    attribute.first_value = static_cast<std::uint32_t>(document->values.size());
    attribute.value_count = static_cast<std::uint32_t>(from.values.size());
    for (const std::string& value : from.values) document->values.push_back(document->Keep(value));
    document->attributes.push_back(attribute);
  }
  element.attributes_changed = true;
  document->modified = document->attributes_changed = true;
  return true;
}

}  // namespace qelm::embedded::model
