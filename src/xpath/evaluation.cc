#include "xpath/evaluation.h"

#include <fmt/format.h>

#include "xpath/profile.h"

namespace qelm::xpath {

Evaluation::Evaluation(Environment& environment, const Plan& plan)
    : environment_(environment),
      plan_(plan),
      paths_(plan.paths.size()),
      comparisons_(plan.comparisons.size()) {}

bool Evaluation::Holds(const StepPlan& step, const Node& node, std::int64_t position, std::int64_t last) {
  const Candidate candidate{node, position, last};
  for (std::size_t place = 0; place < step.predicates.size(); ++place) {
    const bool holds = HoldsOne(step, place, candidate);
    if (holds == step.any_holds) return holds && !environment_.Failed();
  }
  return (step.predicates.empty() || !step.any_holds) && !environment_.Failed();
}

bool Evaluation::HoldsOne(const StepPlan& step, std::size_t place, const Candidate& candidate) {
  const PredicatePlan& predicate = step.predicates[place];
  const auto ask = [&] {
    return predicate.is_existence ? Exists(predicate.number, candidate.node)
                                  : CompareAt(predicate.number, candidate);
  };
  if (profile_ == nullptr) return ask();
  const Stopwatch watch;
  const bool holds = ask();
  profile_->AddPredicate(step.number, place, 1, holds ? 1 : 0, watch.Milliseconds());
  return holds;
}

PathRun& Evaluation::RunOf(std::size_t path) {
  std::unique_ptr<PathRun>& run = paths_[path].run;
  if (run == nullptr) {
    run = std::make_unique<PathRun>(*this, plan_.paths[path]);
  } else {
    run->Clear();
  }
  return *run;
}

FirstMatch& Evaluation::FirstOf(std::size_t path) {
  std::unique_ptr<FirstMatch>& first = paths_[path].first;
  if (first == nullptr) first = std::make_unique<FirstMatch>(*this, plan_.paths[path], ValueFilter());
  return *first;
}

// Direct paths are followed faster than remembered. Others are asked from many elements that share what they
// find.
bool Evaluation::CanRemember(std::size_t path, const Node& node) const {
  return plan_.paths[path].local && !plan_.paths[path].direct && node.IsElement();
}

bool Evaluation::Exists(std::size_t path, const Node& node) {
  Node found = node;
  if (IsAttributeOf(path, node))
    return environment_.FindAttribute(plan_.paths[path].steps.front().name, &found);
  if (CanRemember(path, node)) return FirstOf(path).Find(node).element != host::kNone;
  PathState& state = paths_[path];
  if (plan_.paths[path].absolute) {
    EnterRoot(path, node);
    if (state.exists_known) return state.exists;
  }
  PathRun& run = RunOf(path);
  run.Start(node);
  state.exists = run.Next(&found);
  state.exists_known = true;
  return state.exists;
}

// What an absolute path gives holds as long as it is asked from the same flow.
void Evaluation::EnterRoot(std::size_t path, const Node& node) {
  PathState& state = paths_[path];
  Node root{1, Node::kAboveRoot, node.tree};
  if (plan_.paths[path].steps.front().axis == Axis::kRoot) {
    root.element = environment_.TreeOf(node).RootOf(node.element);
  }
  if (state.root.element == root.element && state.root.tree == root.tree) return;
  state.root = root;
  state.exists_known = state.values_known = false;
}

bool Evaluation::IsTrue(const Operand& operand, const Candidate& candidate) {
  switch (operand.kind) {
    case OperandKind::kPath:
      return Exists(operand.number, candidate.node);
    case OperandKind::kComparison:
      return CompareAt(operand.number, candidate);
    case OperandKind::kNot:
      return !IsTrue(plan_.negated[operand.number], candidate);
    case OperandKind::kConstant:
      return !operand.constant.empty();
    case OperandKind::kPosition:
    case OperandKind::kLast:
      return true;
    case OperandKind::kNothing:
      break;
  }
  return false;
}

bool Evaluation::CompareAt(std::size_t comparison, const Candidate& candidate) {
  const ComparisonPlan& plan = plan_.comparisons[comparison];
  if (plan.is_truth) return IsTrue(plan.left, candidate);
  ComparisonState& state = comparisons_[comparison];
  const Fixed left = FixedValues(plan.left, candidate, &state.left, &state.left_known);
  const Fixed right = FixedValues(plan.right, candidate, &state.right, &state.right_known);
  if (left.values != nullptr && right.values != nullptr) {
    return CompareSets(plan.test, *left.values, *right.values);
  }
  if (left.values != nullptr) return ComparePath(comparison, candidate, left, true);
  if (right.values != nullptr) return ComparePath(comparison, candidate, right, false);
  Gather(plan.left.number, candidate.node, &state.left);
  return ComparePathByValue(plan.test, plan.right.number, candidate.node, state.left, true);
}

// The values of an operand that is no path from the candidate. `own` keeps them, `known` whether they are
// there.
Evaluation::Fixed Evaluation::FixedValues(const Operand& operand, const Candidate& candidate, ValueSet* own,
                                          bool* known) {
  if (operand.kind == OperandKind::kPath) {
    if (!plan_.paths[operand.number].absolute) return {};
    return {&AbsoluteValues(operand.number, candidate.node), true};
  }
  if (operand.kind == OperandKind::kConstant || operand.kind == OperandKind::kNothing) {
    if (!*known && operand.kind == OperandKind::kConstant) own->Add(operand.constant);
    *known = true;
    return {own, true};
  }
  own->Clear();
  if (operand.kind == OperandKind::kPosition || operand.kind == OperandKind::kLast) {
    own->Add(fmt::format_int(operand.kind == OperandKind::kPosition ? candidate.position : candidate.last)
                 .c_str());
  } else {
    own->Add(IsTrue(operand, candidate) ? "true" : "false");
  }
  return {own, false};
}

ValueSet& Evaluation::AbsoluteValues(std::size_t path, const Node& node) {
  EnterRoot(path, node);
  PathState& state = paths_[path];
  if (!state.values_known) Gather(path, node, &state.values);
  state.values_known = true;
  return state.values;
}

void Evaluation::Gather(std::size_t path, const Node& node, ValueSet* values) {
  values->Clear();
  PathRun& run = RunOf(path);
  run.Start(node);
  Node found;
  while (run.Next(&found)) {
    environment_.AnyValue(found, [values](std::string_view value) {
      values->Add(value);
      return false;
    });
  }
}

bool Evaluation::CompareSets(Test test, ValueSet& left, ValueSet& right) {
  if (left.IsEmpty() || right.IsEmpty()) return CompareEmpty(test, left.IsEmpty(), right.IsEmpty());
  bool any = false;
  for (std::size_t index = 0; index < left.Size() && !any; ++index)
    any = right.AnyPair(test, left[index], true);
  return any != (test == Test::kNotEqual);
}

bool Evaluation::ComparePath(std::size_t comparison, const Candidate& candidate, const Fixed& other,
                             bool other_is_left) {
  const ComparisonPlan& plan = plan_.comparisons[comparison];
  const std::size_t path = other_is_left ? plan.right.number : plan.left.number;
  if (!other.constant || !CanRemember(path, candidate.node)) {
    return ComparePathByValue(plan.test, path, candidate.node, *other.values, other_is_left);
  }
  return ComparePathByFirst(comparisons_[comparison], plan.test, path, candidate.node, *other.values,
                            other_is_left);
}

bool Evaluation::ComparePathByValue(Test test, std::size_t path, const Node& node, ValueSet& other,
                                    bool other_is_left) {
  RunningComparison comparison(test, other, other_is_left);
  const auto take = [&comparison](std::string_view value) { return comparison.Take(value); };
  Node found = node;
  if (IsAttributeOf(path, node)) {
    if (environment_.FindAttribute(plan_.paths[path].steps.front().name, &found))
      environment_.AnyValue(found, take);
    return comparison.Outcome();
  }
  PathRun& run = RunOf(path);
  run.Start(node);
  while (run.Next(&found) && !environment_.AnyValue(found, take)) {
  }
  return comparison.Outcome();
}

// Whether the path is just an attribute's name, the commonest of all, which needs no walking.
bool Evaluation::IsAttributeOf(std::size_t path, const Node& node) const {
  return plan_.paths[path].is_attribute && node.IsElement();
}

// The first node tells whether the path counts as empty, and often the outcome too; whether any other
// satisfies the test is another question of the same kind.
bool Evaluation::ComparePathByFirst(ComparisonState& state, Test test, std::size_t path, const Node& node,
                                    ValueSet& other, bool other_is_left) {
  RunningComparison comparison(test, other, other_is_left);
  const Node first = FirstOf(path).Find(node);
  const bool is_decided =
      first.element == host::kNone ||
      environment_.AnyValue(first, [&](std::string_view value) { return comparison.Take(value); });
  if (is_decided) return comparison.Outcome();
  if (state.matching == nullptr) {
    state.matching =
        std::make_unique<FirstMatch>(*this, plan_.paths[path], ValueFilter{test, &other, other_is_left});
  }
  return (state.matching->Find(node).element != host::kNone) != (test == Test::kNotEqual);
}

}  // namespace qelm::xpath
