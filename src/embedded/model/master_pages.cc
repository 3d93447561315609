#include "embedded/model/master_pages.h"

#include <algorithm>
#include <array>
#include <set>
#include <unordered_map>

#include "embedded/mif/reader.h"
#include "embedded/model/mif_layout.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

using mif::Piece;
using mif::Token;

constexpr std::string_view kDefaultPage = "Default";

// A column is known by a word of its heading; where there are no headings, by its place.
enum Column : std::size_t { kTag, kRight, kLeft, kAttribute, kValue, kContext, kReach, kColumns };
constexpr std::array<std::string_view, kColumns> kHeadings = {
    "tag name", "right", "left", "attribute name", "attribute value", "context", "range"};
constexpr std::size_t kNoColumn = static_cast<std::size_t>(-1);
using Columns = std::array<std::size_t, kColumns>;
constexpr Columns kOfElements = {0, 1, 2, 3, 4, 5, 6};
constexpr Columns kOfParagraphs = {0, 1, 2, kNoColumn, kNoColumn, kNoColumn, 3};

std::string Lowered(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

std::string Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t\n");
  if (begin == std::string_view::npos) return {};
  return std::string(text.substr(begin, text.find_last_not_of(" \t\n") + 1 - begin));
}

// The texts of the cells of a row.
std::vector<std::string> Cells(const Document& document, const Part& row) {
  std::vector<std::string> cells;
  for (std::uint32_t i = row.first_item; i < row.end_item; ++i) {
    const Item& item = document.items[i];
    if (item.kind == ItemKind::kPartBegin && document.parts[item.ref].kind == ElementKind::kTableCell) {
      cells.emplace_back();
    }
    if (!cells.empty()) AppendItemText(document, item, &cells.back());
  }
  for (std::string& cell : cells) cell = Trimmed(cell);
  return cells;
}

Columns ReadHeadings(const std::vector<std::string>& cells, Columns columns) {
  Columns found;
  found.fill(kNoColumn);
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string heading = Lowered(cells[i]);
    for (std::size_t column = 0; column < kColumns; ++column) {
      if (heading.find(kHeadings[column]) == std::string::npos) continue;
      if (found[column] == kNoColumn) found[column] = i;
      break;
    }
  }
  return found[kTag] != kNoColumn && found[kRight] != kNoColumn ? found : columns;
}

MasterPageReach ReachOf(const std::string& text) {
  const std::string lowered = Lowered(text);
  if (lowered.find("span") != std::string::npos) return MasterPageReach::kSpan;
  if (lowered.find("until") != std::string::npos) return MasterPageReach::kUntilChanged;
  return MasterPageReach::kPage;
}

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  while (!Trimmed(text).empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    parts.push_back(Trimmed(text.substr(0, end)));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

void ReadTable(const Document& document, std::uint32_t table, bool of_elements,
               std::vector<MasterPageRule>* rules) {
  Columns columns = of_elements ? kOfElements : kOfParagraphs;
  for (std::size_t i = table + 1; i < document.parts.size(); ++i) {
    const Part& row = document.parts[i];
    if (row.first_item >= document.parts[table].end_item) break;
    if (row.kind != ElementKind::kTableRow || row.deleted) continue;
    const std::vector<std::string> cells = Cells(document, row);
    if (document.parts[row.parent].kind == ElementKind::kTableHeading) {
      columns = ReadHeadings(cells, columns);
      continue;
    }
    const auto cell = [&](Column column) {
      return columns[column] < cells.size() ? cells[columns[column]] : std::string();
    };
    MasterPageRule rule{cell(kTag),   cell(kRight), cell(kLeft), cell(kAttribute),
                        cell(kValue), {},           {},          of_elements};
    rule.around = Split(cell(kContext), '<');
    rule.reach = ReachOf(cell(kReach));
    if (!rule.tag.empty() && !rule.right.empty()) rules->push_back(std::move(rule));
  }
}

class MasterPages {
 public:
  MasterPages(const Document& document, const std::vector<MasterPageRule>& rules);

  // By page: the rule that holds for it, null for none.
  std::vector<const MasterPageRule*> Find();

 private:
  void Walk(const Flow& flow);
  void Enter(std::int32_t page);
  void Paragraph(std::uint32_t paragraph);
  void Element(Id element);
  bool Matches(const MasterPageRule& rule, Id element) const;
  bool HasValue(const MasterPageRule& rule, const model::Element& element) const;
  void Note(const MasterPageRule& rule, bool of_element, std::uint32_t object);

  const Document& document_;
  std::unordered_map<std::string_view, std::vector<const MasterPageRule*>> by_tag_;
  std::vector<const MasterPageRule*> own_;
  std::vector<const MasterPageRule*> spanned_;
  // What spans pages and has not ended.
  struct Span {
    const MasterPageRule* rule;
    bool of_element;
    std::uint32_t object;
  };
  std::vector<Span> open_;
  std::int32_t page_ = -1;
};

MasterPages::MasterPages(const Document& document, const std::vector<MasterPageRule>& rules)
    : document_(document), own_(document.pages.size()), spanned_(document.pages.size()) {
  for (const MasterPageRule& rule : rules) by_tag_[rule.tag].push_back(&rule);
}

void MasterPages::Enter(std::int32_t page) {
  const bool is_body = page >= 0 && static_cast<std::size_t>(page) < document_.pages.size() &&
                       document_.pages[static_cast<std::size_t>(page)].kind == FlowKind::kBody;
  page_ = is_body ? page : -1;
  if (is_body && !open_.empty()) spanned_[static_cast<std::size_t>(page)] = open_.back().rule;
}

void MasterPages::Note(const MasterPageRule& rule, bool of_element, std::uint32_t object) {
  const MasterPageRule*& own = own_[static_cast<std::size_t>(page_)];
  if (own == nullptr) own = &rule;
  if (rule.reach == MasterPageReach::kSpan) open_.push_back({&rule, of_element, object});
}

void MasterPages::Paragraph(std::uint32_t paragraph) {
  const auto rules = by_tag_.find(document_.paragraph_states[document_.paragraphs[paragraph].state].tag);
  if (page_ < 0 || rules == by_tag_.end()) return;
  for (const MasterPageRule* rule : rules->second) {
    if (rule->attribute.empty() && rule->around.empty()) return Note(*rule, false, paragraph);
  }
}

bool MasterPages::HasValue(const MasterPageRule& rule, const model::Element& element) const {
  for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
    const Attribute& attribute = document_.attributes[element.first_attribute + i];
    if (document_.names[attribute.name] != rule.attribute) continue;
    const auto values = document_.values.Run(attribute.first_value, attribute.value_count);
    return std::find(values.begin(), values.end(), rule.value) != values.end();
  }
  return false;
}

bool MasterPages::Matches(const MasterPageRule& rule, Id id) const {
  const model::Element& element = document_.elements[id];
  if (!rule.of_elements || (!rule.attribute.empty() && !HasValue(rule, element))) return false;
  Id around = element.parent;
  bool any = false;
  for (const std::string& tag : rule.around) {
    if (tag == "*") {
      any = true;
      continue;
    }
    const auto is_it = [&] {
      return document_.definitions[document_.elements[around].definition].name == tag;
    };
    while (any && around != 0 && !is_it()) around = document_.elements[around].parent;
    if (around == 0 || !is_it()) return false;
    around = document_.elements[around].parent;
    any = false;
  }
  return true;
}

void MasterPages::Element(Id id) {
  const auto rules = by_tag_.find(document_.definitions[document_.elements[id].definition].name);
  if (page_ < 0 || rules == by_tag_.end()) return;
  for (const MasterPageRule* rule : rules->second) {
    if (Matches(*rule, id)) return Note(*rule, true, id);
  }
}

// A paragraph enters the frame of its first line behind its own beginning, so it waits for what is in it.
void MasterPages::Walk(const Flow& flow) {
  std::uint32_t waiting = 0;
  open_.clear();
  page_ = -1;
  for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) {
    const Item& item = document_.items[i];
    if (item.Is(kDeleted) || (HasConditions(item.kind) && !IsShown(document_, item.conditions))) continue;
    if (item.kind == ItemKind::kTextFrame) {
      const auto frame = document_.text_frame_index.find(item.ref);
      if (frame != document_.text_frame_index.end()) Enter(document_.text_frames[frame->second].page);
      continue;
    }
    if (item.kind == ItemKind::kParagraphBegin) {
      waiting = item.ref;
      continue;
    }
    if (item.kind != ItemKind::kLine && waiting != 0) {
      Paragraph(waiting);
      waiting = 0;
    }
    if (item.kind == ItemKind::kElementBegin) Element(item.ref);
    const bool ends = item.kind == ItemKind::kElementEnd || item.kind == ItemKind::kParagraphEnd;
    if (!ends || open_.empty()) continue;
    const bool of_element = item.kind == ItemKind::kElementEnd;
    std::erase_if(open_,
                  [&](const Span& span) { return span.of_element == of_element && span.object == item.ref; });
  }
}

std::vector<const MasterPageRule*> MasterPages::Find() {
  for (std::size_t i = 1; i < document_.flows.size(); ++i) {
    if (document_.flows[i].kind == FlowKind::kBody) Walk(document_.flows[i]);
  }
  const MasterPageRule* goes_on = nullptr;
  for (std::size_t page = 0; page < own_.size(); ++page) {
    if (document_.pages[page].kind != FlowKind::kBody) continue;
    if (own_[page] == nullptr) own_[page] = spanned_[page];
    if (own_[page] != nullptr) {
      goes_on = own_[page]->reach == MasterPageReach::kUntilChanged ? own_[page] : nullptr;
    } else {
      own_[page] = goes_on;
    }
  }
  return std::move(own_);
}

// Which pages are left ones.
struct Sides {
  bool two = false;
  bool first_is_left = false;
  bool IsLeft(std::int32_t ordinal) const { return two && (ordinal % 2 == 0) != first_is_left; }
};

Sides ReadSides(const Document& document) {
  Sides sides;
  mif::Reader reader(document.At(document.document_statement));
  while (reader.Next()) {
    if (reader.kind() != Piece::kLeaf || reader.depth() != 1) continue;
    if (reader.name() == "DTwoSides") sides.two = reader.data() == "Yes";
    if (reader.name() == "DParity") sides.first_is_left = reader.data() == "FirstLeft";
  }
  return sides;
}

// What a page says of its background: the statement, or the place behind which one would stand.
struct Background {
  Span statement;
  std::uint32_t behind = 0;
  std::string name;
};

Background ReadBackground(const Document& document, const Page& page) {
  Background background;
  mif::Reader reader(document.At(page.span));
  while (reader.Next()) {
    if (reader.kind() == Piece::kGroup && reader.depth() > 1 && !reader.Skip()) break;
    if (reader.kind() != Piece::kLeaf) continue;
    const Span span{page.span.begin + reader.begin(), page.span.begin + reader.end()};
    if (reader.token() == Token::kPageType || reader.token() == Token::kPageTag) background.behind = span.end;
    if (reader.token() != Token::kPageBackground) continue;
    background.statement = span;
    background.name = mif::DecodeString(reader.data(), document.encoding);
  }
  return background;
}

bool SetBackground(Document* document, const Background& old, const std::string& name) {
  if (old.name == name || (old.statement.Empty() && (name == kDefaultPage || old.behind == 0))) return false;
  const MifLayout layout(*document);
  const std::string statement = "<PageBackground " + layout.Quoted(name) + ">";
  Replacement edit{old.statement, statement};
  if (old.statement.Empty()) {
    edit = {{old.behind, old.behind}, std::string(layout.LineEnd()) + " " + statement};
  }
  const std::uint32_t key = old.statement.Empty() ? old.behind : old.statement.begin;
  document->replacements.insert_or_assign(key, std::move(edit));
  document->modified = true;
  return true;
}

}  // namespace

std::vector<MasterPageRule> ReadMasterPageRules(const Document& document) {
  constexpr std::string_view kElements = "StructMasterPageMaps";
  constexpr std::string_view kParagraphs = "UnstructMasterPageMaps";
  std::vector<MasterPageRule> rules;
  for (const bool of_elements : {true, false}) {
    for (std::uint32_t i = 1; i < document.parts.size(); ++i) {
      const Part& part = document.parts[i];
      const bool is_map = part.kind == ElementKind::kTable && part.anchor != kNoIndex &&
                          part.tag == (of_elements ? kElements : kParagraphs);
      if (!is_map) continue;
      const Id flow = FlowOf(document, part.anchor);
      if (document.flows[flow].kind == FlowKind::kReference) ReadTable(document, i, of_elements, &rules);
    }
  }
  return rules;
}

std::size_t ApplyMasterPages(Document* document, const std::vector<MasterPageRule>& rules,
                             std::vector<std::string>* problems) {
  std::set<std::string, std::less<>> known{std::string(kDefaultPage), "None"};
  for (const Page& page : document->pages) {
    if (page.kind == FlowKind::kMaster) known.emplace(page.number);
  }
  std::set<std::string, std::less<>> named;
  std::set<std::string, std::less<>> missing;
  for (const MasterPageRule& rule : rules) named.insert({rule.right, rule.left});
  const std::vector<const MasterPageRule*> found = MasterPages(*document, rules).Find();
  const Sides sides = ReadSides(*document);
  std::size_t changed = 0;
  for (std::size_t i = 0; i < document->pages.size(); ++i) {
    const Page& page = document->pages[i];
    if (page.kind != FlowKind::kBody) continue;
    const Background old = ReadBackground(*document, page);
    const MasterPageRule* rule = found[i];
    if (rule == nullptr && (old.name.empty() || !named.contains(old.name))) continue;
    std::string name(kDefaultPage);
    if (rule != nullptr) name = sides.IsLeft(page.ordinal) && !rule->left.empty() ? rule->left : rule->right;
    if (!known.contains(name)) {
      missing.insert(name);
    } else if (SetBackground(document, old, name)) {
      ++changed;
    }
  }
  for (const std::string& name : missing) {
    problems->push_back("there is no master page \"" + name + "\", which its table names");
  }
  return changed;
}

}  // namespace qelm::embedded::model
