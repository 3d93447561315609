#include "xpath/describe.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace qelm::xpath {
namespace {

constexpr std::array<std::string_view, 7> kOperators = {"", "=", "!=", ">", "<", ">=", "<="};

struct FunctionName {
  Kind kind;
  std::string_view name;
};
constexpr std::array<FunctionName, 7> kFunctions = {{{Kind::kContains, "contains"},
                                                     {Kind::kContainsCi, "contains-ci"},
                                                     {Kind::kStartsWith, "starts-with"},
                                                     {Kind::kStartsWithCi, "starts-with-ci"},
                                                     {Kind::kPosition, "position"},
                                                     {Kind::kLast, "last"},
                                                     {Kind::kNot, "not"}}};

std::string DescribeOperand(const ComponentTable& table, Index index);

std::string Quoted(const std::string& text) {
  const char quote = text.find('\'') == text.npos ? '\'' : '"';
  return quote + text + quote;
}

std::string DescribePath(const ComponentTable& table, Index handlers) {
  std::string text;
  for (Index step = table[handlers].first_child; step != 0; step = table[step].next_sibling) {
    if (!text.empty() && text != "/") text += "/";
    text += DescribeStep(table, step);
  }
  return text;
}

std::string DescribeFunction(const ComponentTable& table, Index index, std::string_view name) {
  std::string text(name);
  text += "(";
  for (Index term = table[index].first_child; term != 0; term = table[term].next_sibling) {
    if (text.back() != '(') text += ",";
    text += DescribeOperand(table, term);
  }
  return text + ")";
}

std::string DescribeOperand(const ComponentTable& table, Index index) {
  const Component& component = table[index];
  switch (component.kind) {
    case Kind::kTerm:
      return component.first_child == 0 ? std::string() : DescribeOperand(table, component.first_child);
    case Kind::kNodeHandlers:
      return DescribePath(table, index);
    case Kind::kLiteralString:
      return component.parameter.empty() ? Quoted(component.value) : component.value;
    case Kind::kLiteralInteger:
      return component.value;
    default:
      break;
  }
  const auto function = std::find_if(kFunctions.begin(), kFunctions.end(),
                                     [&](const FunctionName& named) { return named.kind == component.kind; });
  return function == kFunctions.end() ? std::string() : DescribeFunction(table, index, function->name);
}

}  // namespace

std::string DescribePredicate(const ComponentTable& table, Index predicate) {
  const Index left = table[predicate].first_child;
  if (left == 0) return {};
  const Index right = table[left].next_sibling;
  std::string text = DescribeOperand(table, left);
  // The parser completes a function that stands alone.
  const bool is_alone = right == 0 || (IsFunctionWithTerms(table[left].kind) && table[right].value == "true");
  if (is_alone) return text;
  text += kOperators[static_cast<std::size_t>(table[predicate].comparison)];
  return text + DescribeOperand(table, right);
}

std::string DescribeStep(const ComponentTable& table, Index step) {
  const Component& component = table[step];
  if (component.axis == Axis::kRoot) return "/";
  const auto axis = std::find_if(kAxes.begin(), kAxes.end(),
                                 [&](const AxisEntry& entry) { return entry.axis == component.axis; });
  std::string text(axis == kAxes.end() ? std::string_view() : axis->written);
  text += component.node_test;
  std::string_view between = component.logic == Logic::kOr ? " or " : "][";
  for (Index predicate = component.first_child; predicate != 0; predicate = table[predicate].next_sibling) {
    text += predicate == component.first_child ? "[" : between;
    text += DescribePredicate(table, predicate);
  }
  return component.first_child == 0 ? text : text + "]";
}

}  // namespace qelm::xpath
