#include "embedded/model/xml_saver_plan.h"

#include <algorithm>

#include "embedded/model/xml_marks.h"

namespace qelm::embedded::model {
namespace {

class Prolog {
 public:
  Prolog(const Document& document, xml::Encoding encoding)
      : document_(document), source_(document.source), encoding_(encoding) {}
  std::vector<XmlEdit> Run();

 private:
  bool AtLineStart(std::uint32_t offset) const;
  std::uint32_t LineEndAt(std::uint32_t offset) const;
  std::uint32_t MarksPlace() const;
  // By condition.
  struct Use {
    std::vector<bool> now;
    std::vector<bool> in_source;
  };
  Use Used() const;
  Mark MarkAt(Span span) const;
  bool State(const Condition& condition, bool is_used, bool was_used);
  void Change(Span mark, std::string text);
  void Add(const std::string& mark) { added_.append(mark).append(line_end_); }

  const Document& document_;
  std::string_view source_;
  xml::Encoding encoding_;
  std::vector<XmlEdit> edits_;
  std::string added_;
  std::string_view line_end_;
};

bool Prolog::AtLineStart(std::uint32_t offset) const {
  const std::uint32_t unit = xml::UnitSize(encoding_);
  return offset >= unit && xml::AsciiAt(source_, offset - unit, encoding_) == '\n';
}

// Behind the line end that begins at the offset; the offset itself when none does.
std::uint32_t Prolog::LineEndAt(std::uint32_t offset) const {
  const std::uint32_t unit = xml::UnitSize(encoding_);
  const bool is_pair = xml::AsciiAt(source_, offset, encoding_) == '\r';
  const std::uint32_t end = offset + (is_pair ? unit : 0);
  return xml::AsciiAt(source_, end, encoding_) == '\n' ? end + unit : offset;
}

// Where new marks go: before the root, and before the marks that begin there.
std::uint32_t Prolog::MarksPlace() const {
  for (const Item& item : document_.items) {
    if (item.kind != ItemKind::kOther) return item.begin;
  }
  return static_cast<std::uint32_t>(source_.size());
}

void Prolog::Change(Span mark, std::string text) {
  const bool takes_line = text.empty() && AtLineStart(mark.begin);
  edits_.push_back({mark.begin, takes_line ? LineEndAt(mark.end) : mark.end, std::move(text)});
}

// Which conditions something in the document has: now, and as it was read; what is deleted does not count.
// It is looked for where something is said of a condition that depends on it.
Prolog::Use Prolog::Used() const {
  const std::size_t count = document_.conditions.size();
  Use use{std::vector<bool>(count), std::vector<bool>(count)};
  const auto matters = [](const Condition& condition) {
    return !condition.shown || !condition.state.Empty();
  };
  if (std::none_of(document_.conditions.begin(), document_.conditions.end(), matters)) return use;
  std::vector<char> now(document_.condition_sets.size());
  std::vector<char> in_source(document_.condition_sets.size());
  const auto& before = document_.source_conditions;
  for (std::size_t i = 0; i < document_.items.size(); ++i) {
    const Item& item = document_.items[i];
    const bool counts = !item.Is(kDeleted) && (IsContent(item.kind) || item.kind == ItemKind::kElementBegin);
    if (!counts) continue;
    now[item.conditions] = 1;
    if (!before.empty()) in_source[before[i]] = 1;
  }
  if (before.empty()) in_source = now;
  for (const Part& part : document_.parts) {
    if (!part.deleted) now[part.conditions] = in_source[part.source_conditions] = 1;
  }
  for (std::size_t set = 0; set < now.size(); ++set) {
    for (const Id id : document_.condition_sets[set]) {
      if (now[set] != 0) use.now[id] = true;
      if (in_source[set] != 0) use.in_source[id] = true;
    }
  }
  return use;
}

// What a mark of the source says.
Mark Prolog::MarkAt(Span span) const {
  std::string text = xml::ToUtf8(document_.At(span), encoding_);
  const std::size_t blank = text.find(' ');
  if (blank == std::string::npos) return {};
  return ReadMark(std::string_view(text).substr(2, blank - 2),
                  std::string_view(text).substr(blank + 1, text.size() - blank - 3));
}

// True when the condition is hidden in what is written.
bool Prolog::State(const Condition& condition, bool is_used, bool was_used) {
  const bool changed = condition.shown != condition.source_shown;
  if (condition.state.Empty()) {
    const bool is_new = !condition.shown && (is_used || (changed && !condition.created));
    if (is_new) Add(ConditionStateMark(condition.name, false, true));
    return is_new;
  }
  const bool while_used = MarkAt(condition.state).while_used;
  if (while_used && (condition.shown || (was_used && !is_used))) {
    Change(condition.state, "");
    return false;
  }
  if (changed) Change(condition.state, ConditionStateMark(condition.name, condition.shown, while_used));
  return !condition.shown;
}

std::vector<XmlEdit> Prolog::Run() {
  const std::uint32_t place = MarksPlace();
  if (AtLineStart(place)) line_end_ = document_.crlf ? "\r\n" : "\n";
  for (const Color& color : document_.colors) {
    if (color.created && !color.name.empty()) Add(ColorMark(color));
  }
  const Use used = Used();
  bool has_hidden = false;
  bool had_hidden = false;
  for (Id id = 1; id < document_.conditions.size(); ++id) {
    const bool is_hidden = State(document_.conditions[id], used.now[id], used.in_source[id]);
    has_hidden = has_hidden || is_hidden;
    had_hidden = had_hidden || !document_.conditions[id].source_shown;
  }
  const Span said = document_.show_all_statement;
  const bool says_yes = !said.Empty() && document_.source_show_all;
  if (document_.show_all && has_hidden && !says_yes) {
    if (said.Empty()) {
      Add(std::string(kShowAllMark));
    } else {
      Change(said, std::string(kShowAllMark));
    }
  } else if (says_yes && (!document_.show_all || (had_hidden && !has_hidden))) {
    Change(said, "");
  }
  for (const auto& [statement, edit] : document_.replacements) {
    if (edit.place.Empty()) {
      Add(edit.text);
    } else {
      Change(edit.place, edit.text);
    }
  }
  if (!added_.empty()) edits_.push_back({place, place, added_});
  std::stable_sort(edits_.begin(), edits_.end(),
                   [](const XmlEdit& a, const XmlEdit& b) { return a.begin < b.begin; });
  return std::move(edits_);
}

std::uint32_t TableOf(const Document& document, std::uint32_t part) {
  while (document.parts[part].kind != ElementKind::kTable) part = document.parts[part].parent;
  return part;
}

bool HasMarksAroundRows(const Document& document, const Part& table) {
  bool in_row = false;
  for (std::uint32_t i = table.first_item + 1; i + 1 < table.end_item; ++i) {
    const Item& item = document.items[i];
    if (item.kind == ItemKind::kPartBegin || item.kind == ItemKind::kPartEnd) {
      const Part& part = document.parts[item.ref];
      if (part.kind == ElementKind::kTableRow) in_row = item.kind == ItemKind::kPartBegin;
      // Marks in a cell are those of its text.
      if (HoldsStory(part.kind)) i = part.end_item - 1;
    } else if (item.kind == ItemKind::kConditional && !in_row) {
      return true;
    }
  }
  return false;
}

}  // namespace

std::vector<XmlEdit> PrologEdits(const Document& document, xml::Encoding encoding) {
  return Prolog(document, encoding).Run();
}

std::unordered_set<std::uint32_t> DirtyRows(const Document& document) {
  const std::vector<Part>& parts = document.parts;
  std::unordered_set<std::uint32_t> dirty;
  std::unordered_set<std::uint32_t> tables;
  for (std::uint32_t i = 1; i < parts.size(); ++i) {
    if (parts[i].kind != ElementKind::kTableRow || parts[i].conditions == parts[i].source_conditions)
      continue;
    dirty.insert(i);
    const std::uint32_t table = TableOf(document, i);
    if (tables.insert(table).second && HasMarksAroundRows(document, parts[table])) dirty.insert(table);
  }
  for (const std::uint32_t table : tables) {
    if (!dirty.contains(table)) continue;
    for (std::uint32_t i = table + 1; i < parts.size() && parts[i].first_item < parts[table].end_item; ++i) {
      if (parts[i].kind == ElementKind::kTableRow && TableOf(document, i) == table) dirty.insert(i);
    }
  }
  return dirty;
}

}  // namespace qelm::embedded::model
