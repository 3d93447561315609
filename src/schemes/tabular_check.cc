#include "schemes/tabular_check.h"

#include <algorithm>
#include <array>

#include "common/strings.h"
#include "common/text.h"
#include "common/utf8.h"
#include "messages/debug_prompts.h"
#include "schemes/color_names.h"
#include "schemes/expressions.h"
#include "schemes/scheme_loading.h"
#include "schemes/styles.h"
#include "xpath/error_report.h"

namespace qelm::schemes {
namespace {

using host::Id;
using host::kNone;

struct KindName {
  std::string_view name;
  SchemeKind kind;
};
// The words with which a title begins.
constexpr std::array<KindName, 12> kKindNames = {{
    {"QELM Color Scheme", SchemeKind::kColoring},
    {"QELM Coloring Scheme", SchemeKind::kColoring},
    {"Color Scheme", SchemeKind::kColoring},
    {"Coloring Scheme", SchemeKind::kColoring},
    {"QELM Filter Scheme", SchemeKind::kFilter},
    {"QELM Filtering Scheme", SchemeKind::kFilter},
    {"Filter Scheme", SchemeKind::kFilter},
    {"Filtering Scheme", SchemeKind::kFilter},
    {"QELM Validate Scheme", SchemeKind::kValidation},
    {"QELM Validation Scheme", SchemeKind::kValidation},
    {"Validate Scheme", SchemeKind::kValidation},
    {"Validation Scheme", SchemeKind::kValidation},
}};

enum class RowKind { kAttribute, kExpressions, kRule };
struct RowName {
  std::string_view name;
  RowKind kind;
};
constexpr std::array<RowName, 4> kRowNames = {{
    {"Attribute", RowKind::kAttribute},
    {"Expressions", RowKind::kExpressions},
    {"XPath Expressions", RowKind::kExpressions},
    {"Rule", RowKind::kRule},
}};

constexpr std::array<std::string_view, 3> kSchemeKinds = {"filter", "coloring", "validation"};

constexpr std::array<std::string_view, 19> kMessages = {
    "QELM_MSG_STGS_CHECK_1",  "QELM_MSG_STGS_CHECK_2",  "QELM_MSG_STGS_CHECK_3",  "QELM_MSG_STGS_CHECK_4",
    "QELM_MSG_STGS_CHECK_5",  "QELM_MSG_STGS_CHECK_6",  "QELM_MSG_STGS_CHECK_7",  "QELM_MSG_STGS_CHECK_8",
    "QELM_MSG_STGS_CHECK_9",  "QELM_MSG_STGS_CHECK_10", "QELM_MSG_STGS_CHECK_11", "QELM_MSG_STGS_CHECK_12",
    "QELM_MSG_STGS_CHECK_13", "QELM_MSG_STGS_CHECK_14", "QELM_MSG_STGS_CHECK_15", "QELM_MSG_STGS_CHECK_16",
    "QELM_MSG_STGS_CHECK_17", "QELM_MSG_STGS_CHECK_18", "QELM_MSG_STGS_CHECK_19",
};

// The kind that a title begins with; `name` takes what follows its colon. False when it begins with none, or
// with one that goes on as another word.
bool ReadTitle(std::string_view title, SchemeKind* kind, std::string_view* name) {
  for (const KindName& known : kKindNames) {
    if (!common::StartsWith(title, known.name, false)) continue;
    const std::string_view rest = common::Trim(title.substr(known.name.size()));
    if (!rest.empty() && rest.front() != ':') continue;
    *kind = known.kind;
    *name = rest.empty() ? rest : common::Trim(rest.substr(1));
    return true;
  }
  return false;
}

// The lines of a text without white space around them; empty ones do not count.
void AppendLines(std::string_view text, std::vector<std::string>* lines) {
  for (const std::string_view line : common::SplitLines(text)) {
    if (const std::string_view content = common::Trim(line); !content.empty()) lines->emplace_back(content);
  }
}

// The expression in lines, with a mark under the place.
std::string Marked(std::string_view expression, std::int32_t position) {
  std::string text;
  for (const xpath::MarkedLine& line : xpath::MarkPosition(expression, position)) {
    text += (text.empty() ? "" : "\n") + line.text + "\n" + line.marker;
  }
  return text;
}

// A row that is read: its cells without white space around them.
struct Row {
  Id id = kNone;
  std::int32_t number = 0;
  std::vector<std::string> cells;

  std::string_view Cell(std::size_t index) const {
    return index < cells.size() ? std::string_view(cells[index]) : std::string_view();
  }
  std::vector<std::string> LinesFrom(std::size_t first) const {
    std::vector<std::string> lines;
    for (std::size_t i = first; i < cells.size(); ++i) AppendLines(cells[i], &lines);
    return lines;
  }
};

class Checker {
 public:
  Checker(TabularContext& context, Id document)
      : context_(context), host_(context.host), document_(document), prompts_(context.messenger) {}

  TabularCheck Run();

 private:
  void Add(TabularFault fault, const Row* row, std::string message) {
    check_.problems.push_back(
        {fault, row == nullptr ? 0 : row->number, row == nullptr ? kNone : row->id, std::move(message)});
  }

  void FindTable();
  void ReadName(std::string_view name);
  void ReadRows();
  void ReadRow(const Row& row);
  std::string KindWord() const;
  bool Allowed(const Row& row, RowKind kind);
  void ReadRule(const Row& row);
  void ReadOptions(const Row& row, Rule* rule);
  void ReadAttribute(const Row& row);
  void ReadExpressions(const Row& row);
  void CheckColor(const Row& row, std::string_view color);
  void CheckRules();
  void CheckExpressions();
  std::vector<Condition>& Conditions();
  void Report();
  void Activate();

  bool Found(TabularFault fault) const {
    return std::any_of(check_.problems.begin(), check_.problems.end(),
                       [&](const TabularProblem& problem) { return problem.fault == fault; });
  }

  TabularContext& context_;
  host::Host& host_;
  Id document_;
  messages::DebugPrompts prompts_;
  TabularCheck check_;
  bool conditions_known_ = false;  // whether the scheme is an XPath scheme is decided
  std::vector<Row> rules_;         // the rows of the rules
  struct Expression {
    Row row;
    std::string text;
  };
  std::vector<Expression> expressions_;
};

TabularCheck Checker::Run() {
  prompts_.Ask("Getting scheme name.\n\nContinue debugging?");
  FindTable();
  if (check_.table != kNone) {
    ReadRows();
    prompts_.Ask("Done reading rows, ready to check data.\n\nContinue debugging?");
    CheckRules();
    prompts_.Ask("Preparing to parse XPath expressions.\n\nContinue debugging?");
    CheckExpressions();
  }
  prompts_.Ask("Done checking data, preparing to report.\n\nContinue debugging?");
  Report();
  prompts_.Ask("Setting the active scheme.\n\nContinue debugging?");
  Activate();
  if (prompts_.On()) context_.messenger.Alert("Done. Deallocation and cleanup.");
  return std::move(check_);
}

void Checker::FindTable() {
  std::string_view name;
  std::int32_t tables = 0;
  std::string first_title;
  for (Id table = host_.tables.FirstTable(document_); table != kNone;
       table = host_.tables.NextTable(document_, table)) {
    std::string title = common::ReplaceAll(host_.tables.TitleText(document_, table), "\n", " ");
    SchemeKind kind = SchemeKind::kFilter;
    std::string_view found;
    if (!ReadTitle(common::Trim(title), &kind, &found) || ++tables > 1) continue;
    check_.table = table;
    check_.scheme.kind = kind;
    check_.title = common::Trim(title);
  }
  if (tables == 0) {
    const std::string path(host_.documents.Path(document_));
    Add(TabularFault::kNoTable, nullptr, context_.messenger.Format("QELM_MSG_STGS_CHECK_1", path));
    return;
  }
  ReadTitle(check_.title, &check_.scheme.kind, &name);
  ReadName(name);
  if (tables > 1) {
    Add(TabularFault::kSeveralTables, nullptr,
        context_.messenger.Format("QELM_MSG_STGS_CHECK_3", tables, check_.title));
  }
}

void Checker::ReadName(std::string_view name) {
  Scheme& scheme = check_.scheme;
  const std::size_t slash = name.find('/');
  scheme.category = slash == std::string_view::npos ? context_.default_category
                                                    : std::string(common::Trim(name.substr(0, slash)));
  scheme.name = slash == std::string_view::npos ? name : common::Trim(name.substr(slash + 1));
  const auto usable = [](const std::string& text) {
    return IsSchemeName(text) && common::CountCharacters(text) <= common::kNameLimit;
  };
  if (usable(scheme.name) && usable(scheme.category)) return;
  scheme.name = kNoName;
  Add(TabularFault::kNoSchemeName, nullptr, context_.messenger.Format("QELM_MSG_STGS_CHECK_2", check_.title));
}

void Checker::ReadRows() {
  std::int32_t number = 0;
  bool any = false;
  for (Id id = host_.tables.FirstRow(document_, check_.table); id != kNone;
       id = host_.tables.NextRow(document_, id)) {
    ++number;
    if (host_.tables.PartOfRow(document_, id) != host::ElementKind::kTableBody) continue;
    Row row{id, number, host_.tables.CellTexts(document_, id)};
    for (std::string& cell : row.cells) cell = common::Trim(cell);
    const auto is_empty = [](const std::string& cell) { return cell.empty(); };
    if (std::all_of(row.cells.begin(), row.cells.end(), is_empty)) continue;
    any = true;
    ReadRow(row);
  }
  if (!any) {
    Add(TabularFault::kNoRows, nullptr, context_.messenger.Format("QELM_MSG_STGS_CHECK_4", check_.title));
  }
}

void Checker::ReadRow(const Row& row) {
  const std::string_view first = row.Cell(0);
  if (first.empty()) {
    Add(TabularFault::kNoRowKind, &row, context_.messenger.Format("QELM_MSG_STGS_CHECK_5", row.number));
    return;
  }
  const auto known = std::find_if(kRowNames.begin(), kRowNames.end(), [&](const RowName& name) {
    return common::EqualsIgnoreCase(name.name, first);
  });
  if (known == kRowNames.end()) {
    Add(TabularFault::kUnknownRowKind, &row,
        context_.messenger.Format("QELM_MSG_STGS_CHECK_6", row.number, std::string(first)));
    return;
  }
  switch (known->kind) {
    case RowKind::kAttribute:
      prompts_.Ask("Reading Attribute row.\n\nContinue debugging?");
      if (Allowed(row, known->kind)) ReadAttribute(row);
      break;
    case RowKind::kExpressions:
      prompts_.Ask("Reading Expressions row.\n\nContinue debugging?");
      if (Allowed(row, known->kind)) ReadExpressions(row);
      break;
    case RowKind::kRule:
      prompts_.Ask("Reading Rule row.\n\nContinue debugging?");
      if (Allowed(row, known->kind)) ReadRule(row);
      break;
  }
}

// The kind of the scheme in the language of the messages.
std::string Checker::KindWord() const {
  return context_.messenger.Translated(messages::kWords,
                                       kSchemeKinds[static_cast<std::size_t>(check_.scheme.kind)]);
}

// Whether a row of this kind may stand here.
bool Checker::Allowed(const Row& row, RowKind kind) {
  Scheme& scheme = check_.scheme;
  const bool coloring = scheme.kind == SchemeKind::kColoring;
  if ((kind == RowKind::kRule && !coloring) ||
      (kind == RowKind::kExpressions && scheme.kind == SchemeKind::kValidation)) {
    const std::string scheme_kind = KindWord();
    Add(TabularFault::kRowNotAllowed, &row,
        context_.messenger.Format("QELM_MSG_STGS_CHECK_7", row.number, row.cells[0], scheme_kind));
    return false;
  }
  if (kind == RowKind::kRule) return true;
  if (coloring && scheme.rules.empty()) {
    Add(TabularFault::kBeforeFirstRule, &row, context_.messenger.Format("QELM_MSG_STGS_CHECK_8", row.number));
    return false;
  }
  const bool xpath = kind == RowKind::kExpressions;
  if (!conditions_known_) scheme.is_xpath = xpath;
  conditions_known_ = true;
  if (scheme.is_xpath == xpath) return true;
  Add(TabularFault::kMixed, &row,
      context_.messenger.Format("QELM_MSG_STGS_CHECK_19", row.number, row.cells[0]));
  return false;
}

void Checker::ReadRule(const Row& row) {
  Rule& rule = check_.scheme.rules.emplace_back();
  rules_.push_back(row);
  rule.color = common::Bounded(row.Cell(1), common::kNameLimit);
  if (const std::string_view background = row.Cell(3); !background.empty()) {
    rule.background = common::Bounded(background, common::kNameLimit);
  }
  const std::string_view style = row.Cell(2);
  rule.style = StyleByName(style);
  if (rule.style < 0) rule.style = ReadStyle(style);
  const bool is_number = style.size() == 1 && style[0] >= '0' && style[0] <= '8';
  if (!style.empty() && !is_number && StyleByName(style) < 0) {
    Add(TabularFault::kUnknownStyle, &row,
        context_.messenger.Format("QELM_MSG_STGS_CHECK_17", row.number, std::string(style)));
  }
  ReadOptions(row, &rule);
}

void Checker::ReadOptions(const Row& row, Rule* rule) {
  constexpr std::size_t kFirstOptionCell = 4;
  for (const std::string& option : row.LinesFrom(kFirstOptionCell)) {
    if (common::EqualsIgnoreCase(option, "Match all")) {
      rule->match_all = true;
    } else if (common::EqualsIgnoreCase(option, "Override")) {
      rule->override_others = true;
    } else {
      Add(TabularFault::kUnknownOption, &row,
          context_.messenger.Format("QELM_MSG_STGS_CHECK_18", row.number, option));
    }
  }
}

// Where conditions of the row at hand belong.
std::vector<Condition>& Checker::Conditions() {
  Scheme& scheme = check_.scheme;
  return scheme.kind == SchemeKind::kColoring ? scheme.rules.back().conditions : scheme.attributes;
}

void Checker::ReadAttribute(const Row& row) {
  Condition condition{common::Bounded(row.Cell(1), common::kNameLimit), row.LinesFrom(2)};
  if (condition.attribute.empty()) {
    Add(TabularFault::kNoAttribute, &row, context_.messenger.Format("QELM_MSG_STGS_CHECK_9", row.number));
    return;
  }
  const std::string& name = condition.attribute;
  if (condition.values.empty()) {
    Add(TabularFault::kNoValues, &row, context_.messenger.Format("QELM_MSG_STGS_CHECK_10", row.number, name));
  }
  std::vector<Condition>& conditions = Conditions();
  const bool again = std::any_of(conditions.begin(), conditions.end(),
                                 [&](const Condition& other) { return other.attribute == name; });
  if (again) {
    Add(TabularFault::kAttributeAgain, &row,
        context_.messenger.Format("QELM_MSG_STGS_CHECK_11", row.number, name));
  }
  std::vector<std::string> sorted = condition.values;
  std::sort(sorted.begin(), sorted.end());
  if (const auto twin = std::adjacent_find(sorted.begin(), sorted.end()); twin != sorted.end()) {
    Add(TabularFault::kValueAgain, &row,
        context_.messenger.Format("QELM_MSG_STGS_CHECK_12", row.number, *twin, name));
  }
  for (std::string& value : condition.values) common::Bound(value, common::kNameLimit);
  conditions.push_back(std::move(condition));
}

void Checker::ReadExpressions(const Row& row) {
  const std::vector<std::string> lines = row.LinesFrom(1);
  if (lines.empty()) {
    Add(TabularFault::kNoExpression, &row, context_.messenger.Format("QELM_MSG_STGS_CHECK_13", row.number));
    return;
  }
  for (const std::string& line : lines) expressions_.push_back({row, line});
  Scheme& scheme = check_.scheme;
  if (scheme.kind != SchemeKind::kColoring) {
    scheme.expressions.insert(scheme.expressions.end(), lines.begin(), lines.end());
    return;
  }
  std::vector<Condition>& conditions = scheme.rules.back().conditions;
  if (conditions.empty()) conditions.push_back({"XPathExpressions", {}});
  conditions.front().values.insert(conditions.front().values.end(), lines.begin(), lines.end());
}

void Checker::CheckColor(const Row& row, std::string_view color) {
  if (host_.catalogs.FindColor(document_, color) != kNone) return;
  Add(TabularFault::kNoSuchColor, &row,
      context_.messenger.Format("QELM_MSG_STGS_CHECK_15", row.number, std::string(color)));
}

void Checker::CheckRules() {
  for (std::size_t i = 0; i < rules_.size(); ++i) {
    const Rule& rule = check_.scheme.rules[i];
    if (!IsNoColor(rule.color)) CheckColor(rules_[i], rule.color);
    if (!IsNoBackground(rule.background)) CheckColor(rules_[i], rule.background);
    if (rule.conditions.empty()) {
      Add(TabularFault::kNoConditions, &rules_[i],
          context_.messenger.Format("QELM_MSG_STGS_CHECK_16", rules_[i].number));
    }
  }
}

void Checker::CheckExpressions() {
  for (const Expression& expression : expressions_) {
    if (IsValidExpression(context_.engine, expression.text)) continue;
    const xpath::ParseError& error = xpath::LastParseError(context_.engine);
    const std::string reason = context_.messenger.Get(error.id);
    Add(TabularFault::kExpressionRefused, &expression.row,
        context_.messenger.Format("QELM_MSG_STGS_CHECK_14", expression.row.number,
                                  Marked(expression.text, error.position), reason));
  }
}

void Checker::Report() {
  std::stable_sort(
      check_.problems.begin(), check_.problems.end(),
      [](const TabularProblem& one, const TabularProblem& other) { return one.row < other.row; });
  if (!context_.report) return;
  for (const TabularProblem& problem : check_.problems) {
    context_.messenger.AlertFormatted(MessageOf(problem.fault), problem.message);
  }
  if (!check_.problems.empty()) return;
  context_.messenger.AlertFormatted(
      "QELM_MSG_GEN_30", context_.messenger.Format("QELM_MSG_GEN_30", KindWord(), FullName(check_.scheme)));
}

void Checker::Activate() {
  if (!check_.scheme.Active() || Found(TabularFault::kExpressionRefused)) return;
  check_.scheme.from_table = true;
  context_.active.Of(check_.scheme.kind) = check_.scheme;
  check_.active = true;
}

}  // namespace

TabularCheck CheckTabularScheme(TabularContext& context, Id document) {
  return Checker(context, document).Run();
}

std::string_view MessageOf(TabularFault fault) { return kMessages[static_cast<std::size_t>(fault) - 1]; }

}  // namespace qelm::schemes
