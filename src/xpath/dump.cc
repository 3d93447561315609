#include "xpath/dump.h"

#include <fmt/printf.h>

#include <algorithm>
#include <array>

namespace qelm::xpath {
namespace {

constexpr std::array<std::string_view, 14> kKindNames = {
    "SEQUENCE",      "NODE HANDLERS", "NODE HANDLER",     "PREDICATE",     "contains()",
    "contains-ci()", "starts-with()", "starts-with-ci()", "position()",    "last()",
    "not()",         "TERM",          "LITERAL INTEGER",  "LITERAL STRING"};

constexpr std::array<std::string_view, 7> kOperatorNames = {"", "=", "!=", ">", "<", ">=", "<="};

void DumpStep(const Component& step, const std::string& indent, std::string* text) {
  const auto axis = std::find_if(kAxes.begin(), kAxes.end(),
                                 [&step](const AxisEntry& entry) { return entry.axis == step.axis; });
  if (axis == kAxes.end()) {
    text->append(fmt::sprintf("%sAxis: Unknown (%d)\n", indent, static_cast<std::int32_t>(step.axis)));
  } else {
    text->append(fmt::sprintf("%sAxis: %s\n", indent, axis->dumped));
  }
  text->append(fmt::sprintf("%sNode test: %s\n", indent, step.node_test));
  if (!step.parameter.empty()) text->append(fmt::sprintf("%s(*Parameter detected*)\n", indent));
  if (step.logic == Logic::kAnd) text->append(fmt::sprintf("%sPredicate logic:  AND\n", indent));
  if (step.logic == Logic::kOr) text->append(fmt::sprintf("%sPredicate logic:  OR\n", indent));
}

void DumpLiteral(const Component& literal, const std::string& indent, std::string* text) {
  if (literal.value.empty()) {
    text->append(fmt::sprintf("%sReturn value: {empty string}", indent));
  } else {
    text->append(fmt::sprintf("%sReturn value: %s\n", indent, literal.value));
  }
  if (!literal.parameter.empty()) text->append(fmt::sprintf("%s(*Parameter detected*)\n", indent));
}

void DumpComponent(const ComponentTable& table, Index index, std::size_t depth, std::string* text) {
  const Component& component = table[index];
  const std::string bars(depth, '|');
  const std::string indent = bars + "|";
  const auto kind = static_cast<std::size_t>(component.kind);
  if (kind < 1 || kind > kKindNames.size()) {
    text->append(fmt::sprintf("%sTYPE ERROR!\n", bars + "|---"));
    return;
  }
  text->append(fmt::sprintf("%sType: %s (%d)\n", bars + "|---", kKindNames[kind - 1], index));
  if (component.kind == Kind::kNodeHandler) DumpStep(component, indent, text);
  if (component.kind == Kind::kPredicate && component.comparison != Operator::kNone) {
    text->append(fmt::sprintf("%sTest operator:  %s\n", indent,
                              kOperatorNames[static_cast<std::size_t>(component.comparison)]));
  }
  if (component.kind == Kind::kLiteralInteger || component.kind == Kind::kLiteralString) {
    DumpLiteral(component, indent, text);
  }
}

}  // namespace

std::string DumpComponents(const ComponentTable& table, Index sequence) {
  std::string text = fmt::sprintf("\n\nParsed components for: %s,  Sequence number '%d'\n\n",
                                  table[sequence].expression, sequence);
  std::size_t depth = 0;
  for (Index index = sequence; index != 0;) {
    DumpComponent(table, index, depth, &text);
    if (table[index].first_child != 0) {
      index = table[index].first_child;
      ++depth;
      continue;
    }
    while (index != sequence && table[index].next_sibling == 0) {
      index = table[index].parent;
      --depth;
    }
    index = index == sequence ? 0 : table[index].next_sibling;
  }
  return text;
}

}  // namespace qelm::xpath
