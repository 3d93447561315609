#include "reference.h"

namespace qelm::xpath {
namespace {

using Kind = ReferenceOperand::Kind;
using Words = std::vector<std::string>;

int Below(std::mt19937& random, int limit) {
  return static_cast<int>(random() % static_cast<unsigned>(limit));
}

const std::string& OneOf(const Words& words, std::mt19937& random) {
  return words[static_cast<std::size_t>(Below(random, static_cast<int>(words.size())))];
}

const Words kNames = {"a", "a", "b", "b", "c", "absent"};
const Words kValues = {"1", "2", "10", "007", "7", "-1", "a", "A", "b", "ab", ""};
const Words kComparisons = {"=", "=", "!=", "<", ">", "<=", ">="};
const Words kFunctions = {"contains", "contains-ci", "starts-with", "starts-with-ci"};
const Words kAxes = {"child",
                     "child",
                     "child",
                     "descendant",
                     "descendant-or-self",
                     "self",
                     "parent",
                     "ancestor",
                     "ancestor-or-self",
                     "descendant-or-self",
                     "preceding",
                     "preceding-sibling",
                     "following",
                     "following-sibling",
                     "attribute"};

ReferencePath PathOfDepth(std::mt19937& random, int depth);

ReferenceOperand Operand(std::mt19937& random, int depth) {
  ReferenceOperand operand;
  const int choice = Below(random, 12);
  if (choice < 3) {
    operand.kind = Kind::kText;
    operand.text = OneOf(kValues, random);
  } else if (choice == 3) {
    operand.kind = Kind::kInteger;
    operand.text = std::to_string(Below(random, 4));
  } else if (choice == 4) {
    operand.kind = Below(random, 2) == 0 ? Kind::kPosition : Kind::kLast;
  } else if (choice == 5 && depth > 0) {
    operand.kind = Kind::kFunction;
    operand.text = Below(random, 3) == 0 ? "not" : OneOf(kFunctions, random);
    operand.arguments.push_back(Operand(random, depth - 1));
    if (operand.text != "not") operand.arguments.push_back(Operand(random, depth - 1));
  } else if (choice < 8) {
    operand.path = std::make_shared<ReferencePath>();
    operand.path->steps.push_back({"attribute", OneOf({"x", "y", "z"}, random), {}, false});
  } else {
    operand.path = std::make_shared<ReferencePath>(PathOfDepth(random, depth - 1));
  }
  return operand;
}

ReferenceOperand PathOperand(std::vector<ReferenceStep> steps, bool absolute) {
  ReferenceOperand operand;
  operand.path = std::make_shared<ReferencePath>();
  operand.path->absolute = absolute;
  operand.path->steps = std::move(steps);
  return operand;
}

ReferenceOperand Text(std::mt19937& random) {
  ReferenceOperand operand;
  operand.kind = Kind::kText;
  operand.text = OneOf(kValues, random);
  return operand;
}

// What people ask: of the values or the text of an element, of what is inside it, around it, before or behind
// it; whether it is there, what it compares to, or what it has in common with others.
ReferencePredicate CommonPredicate(std::mt19937& random) {
  const ReferenceStep attribute{"attribute", OneOf({"x", "y", "z"}, random), {}, false};
  std::vector<ReferenceStep> steps = {{OneOf(kAxes, random), OneOf(kNames, random), {}, false}};
  if (Below(random, 3) == 0) steps = {{"self", "node()", {}, false}};
  if (steps.front().axis == "attribute") steps.clear();
  if (steps.empty() || Below(random, 3) == 0) steps.push_back(attribute);
  ReferencePredicate predicate;
  predicate.left = PathOperand(steps, false);
  const int choice = Below(random, 5);
  if (choice == 0) return predicate;
  ReferenceOperand other = Text(random);
  if (Below(random, 3) == 0) {
    other = PathOperand({{"descendant-or-self", OneOf(kNames, random), {}, false}, attribute}, true);
  }
  if (choice < 3) {
    predicate.comparison = OneOf(kComparisons, random);
    predicate.right = other;
    if (Below(random, 3) == 0) std::swap(predicate.left, predicate.right);
    return predicate;
  }
  ReferenceOperand function;
  function.kind = Kind::kFunction;
  function.text = choice == 3 ? OneOf(kFunctions, random) : "not";
  function.arguments.push_back(predicate.left);
  if (choice == 3) function.arguments.push_back(other);
  predicate.left = function;
  return predicate;
}

ReferencePredicate Predicate(std::mt19937& random, int depth) {
  ReferencePredicate predicate;
  if (Below(random, 3) == 0) return CommonPredicate(random);
  const int choice = Below(random, 10);
  if (choice < 2) {
    predicate.left.kind = choice == 0 ? Kind::kInteger : Kind::kLast;
    if (choice == 0) predicate.left.text = std::to_string(Below(random, 4));
  } else if (choice < 4) {
    // Positions are worth more than chance gives them.
    predicate.left.kind = Below(random, 3) > 0 ? Kind::kPosition : Kind::kLast;
    predicate.comparison = OneOf(kComparisons, random);
    predicate.right.kind = Below(random, 3) > 0 ? Kind::kInteger : Kind::kLast;
    if (predicate.right.kind == Kind::kInteger) predicate.right.text = std::to_string(Below(random, 4));
    if (Below(random, 4) == 0) std::swap(predicate.left, predicate.right);
  } else {
    predicate.left = Operand(random, depth);
    if (choice < 8) {
      predicate.comparison = OneOf(kComparisons, random);
      predicate.right = Operand(random, depth);
    }
  }
  return predicate;
}

ReferenceStep Step(std::mt19937& random, int depth, bool is_last) {
  ReferenceStep step;
  do step.axis = OneOf(kAxes, random);
  while (step.axis == "attribute" && !is_last);
  const int choice = Below(random, 10);
  step.test = choice == 0 ? "text()" : choice < 3 ? "node()" : choice < 5 ? "*" : OneOf(kNames, random);
  if (step.axis == "attribute" && choice >= 3) step.test = OneOf({"x", "y", "z"}, random);
  const int predicates = depth <= 0 ? 0 : Below(random, 4) - 1;
  for (int count = 0; count < predicates; ++count) step.predicates.push_back(Predicate(random, depth - 1));
  step.any = predicates > 1 && Below(random, 3) == 0;
  return step;
}

ReferencePath PathOfDepth(std::mt19937& random, int depth) {
  ReferencePath path;
  path.absolute = Below(random, depth > 1 ? 2 : 5) == 0;
  const int steps = 1 + Below(random, 3);
  for (int index = 0; index < steps; ++index) path.steps.push_back(Step(random, depth, index + 1 == steps));
  return path;
}

std::string WriteOperand(const ReferenceOperand& operand, std::mt19937& variant) {
  switch (operand.kind) {
    case Kind::kPath:
      return Write(*operand.path, variant);
    case Kind::kText:
      return "'" + operand.text + "'";
    case Kind::kInteger:
      return operand.text;
    case Kind::kPosition:
      return "position()";
    case Kind::kLast:
      return "last()";
    case Kind::kFunction:
      break;
  }
  std::string text = operand.text + "(" + WriteOperand(operand.arguments[0], variant);
  if (operand.arguments.size() > 1) text += "," + WriteOperand(operand.arguments[1], variant);
  return text + ")";
}

std::string WritePredicate(const ReferencePredicate& predicate, std::mt19937& variant) {
  const std::string left = WriteOperand(predicate.left, variant);
  if (predicate.comparison.empty()) return left;
  const std::string blank = Below(variant, 2) == 0 ? " " : "";
  return left + blank + predicate.comparison + blank + WriteOperand(predicate.right, variant);
}

std::string WriteStep(const ReferenceStep& step, bool after_double_slash, std::mt19937& variant) {
  std::string text = step.axis + "::" + step.test;
  if (after_double_slash || (step.axis == "child" && Below(variant, 3) > 0)) text = step.test;
  if (step.axis == "attribute" && Below(variant, 3) > 0) text = "@" + step.test;
  if (step.test == "node()" && step.axis == "parent" && Below(variant, 3) > 0) text = "..";
  if (step.test == "node()" && step.axis == "self" && Below(variant, 3) > 0) text = ".";
  const bool one_bracket = step.any || Below(variant, 2) == 0;
  for (std::size_t index = 0; index < step.predicates.size(); ++index) {
    const bool opens = index == 0 || !one_bracket;
    const bool closes = index + 1 == step.predicates.size() || !one_bracket;
    if (!opens) text += step.any ? " or " : " and ";
    text += (opens ? "[" : "") + WritePredicate(step.predicates[index], variant) + (closes ? "]" : "");
  }
  return text;
}

}  // namespace

ReferencePath RandomPath(std::mt19937& random) { return PathOfDepth(random, 1 + Below(random, 3)); }

std::string Write(const ReferencePath& path, std::mt19937& variant) {
  std::string text;
  for (std::size_t index = 0; index < path.steps.size(); ++index) {
    const ReferenceStep& step = path.steps[index];
    const bool has_slash = index > 0 || path.absolute;
    const bool is_double = has_slash && step.axis == "descendant-or-self" && Below(variant, 3) > 0;
    if (has_slash) text += is_double ? "//" : "/";
    text += WriteStep(step, is_double, variant);
  }
  return text;
}

void RandomTree(std::mt19937& random, testing::TreeDocument* document) {
  document->AddFlow("Main", host::FlowKind::kBody, "a");
  document->Declare("b", "y", {"1", "b"});
  document->Declare("c", "z", {"a"});
  const int size = 1 + (Below(random, 12) == 0 ? Below(random, 120) : Below(random, 30));
  const int shape = Below(random, 3);  // any, deep, wide
  for (int count = 0; count < size; ++count) {
    const auto last = static_cast<host::Id>(document->elements.size() - 1);
    host::Id parent = shape == 1 && Below(random, 4) > 0 ? last : 1 + static_cast<host::Id>(random() % last);
    if (shape == 2 && Below(random, 4) > 0) parent = 1;
    if (document->elements[parent].definition == 0) parent = document->elements[parent].parent;
    if (Below(random, 4) == 0) {
      document->AddElement(parent, {}, OneOf(kValues, random));
      continue;
    }
    const host::Id id = document->AddElement(parent, OneOf({"a", "b", "c"}, random));
    for (const char* name : {"x", "y"}) {
      if (Below(random, 2) == 0) continue;
      testing::TreeDocument::Attribute attribute{name, {}};
      for (int values = Below(random, 3); values > 0; --values)
        attribute.values.push_back(OneOf(kValues, random));
      document->elements[id].attributes.push_back(attribute);
    }
  }
}

}  // namespace qelm::xpath
