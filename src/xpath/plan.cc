#include "xpath/plan.h"

#include <utility>

#include "common/numbers.h"

namespace qelm::xpath {
namespace {

constexpr std::string_view kTrue = "true";

Test TestOf(Operator comparison) {
  switch (comparison) {
    case Operator::kNotEqual:
      return Test::kNotEqual;
    case Operator::kGreater:
      return Test::kGreater;
    case Operator::kLess:
      return Test::kLess;
    case Operator::kGreaterOrEqual:
      return Test::kGreaterOrEqual;
    case Operator::kLessOrEqual:
      return Test::kLessOrEqual;
    default:
      return Test::kEqual;
  }
}

Test TestOf(Kind function) {
  switch (function) {
    case Kind::kContains:
      return Test::kContains;
    case Kind::kContainsCi:
      return Test::kContainsCi;
    case Kind::kStartsWith:
      return Test::kStartsWith;
    default:
      return Test::kStartsWithCi;
  }
}

bool IsDirectAxis(Axis axis) {
  return axis == Axis::kSelf || axis == Axis::kChild || axis == Axis::kAttribute || axis == Axis::kFmProperty;
}

bool IsLocalAxis(Axis axis) { return axis >= Axis::kSelf && axis <= Axis::kFmProperty; }

class PlanMaker {
 public:
  PlanMaker(const ComponentTable& table, const ParameterMap& parameters, Plan* plan)
      : table_(table), parameters_(parameters), plan_(*plan) {}

  PlanProblem Make(Index sequence) {
    Operand operand;
    MakeOperand(table_[sequence].first_child, &operand);
    if (problem_ == PlanProblem::kNone && operand.kind != OperandKind::kPath)
      problem_ = PlanProblem::kPredicate;
    return problem_;
  }

 private:
  std::size_t MakePath(Index handlers);
  StepPlan MakeStep(Index handler);
  PredicatePlan MakePredicate(Index predicate);
  void MakeOperand(Index index, Operand* operand);
  void MakeFunction(Index index, Operand* operand);
  std::string TextOf(Index index, const std::string& written) const;

  const ComponentTable& table_;
  const ParameterMap& parameters_;
  Plan& plan_;
  PlanProblem problem_ = PlanProblem::kNone;
  int open_predicates_ = 0;
  bool reads_position_ = false;
  bool reads_last_ = false;
};

// What stands for a node test or literal: the value of a parameter, empty when it has none. A "$" alone is
// only that.
std::string PlanMaker::TextOf(Index index, const std::string& written) const {
  const std::string& parameter = table_[index].parameter;
  if (parameter.size() < 2) return written;
  const auto found = parameters_.find(std::string_view(parameter).substr(1));
  return found == parameters_.end() ? std::string() : found->second;
}

// Which nodes are unique, beginning from one context: a step repeats a node only where its contexts can lie
// inside or beside each other.
void FindUniqueSteps(PathPlan* path) {
  bool single = true;
  bool level = true;
  for (StepPlan& step : path->steps) {
    const Axis axis = step.axis;
    const bool is_descent = axis == Axis::kDescendant || axis == Axis::kDescendantOrSelf;
    step.unique = single || IsDirectAxis(axis) || (is_descent && level);
    level = axis == Axis::kSelf || axis == Axis::kChild || axis == Axis::kParent || axis == Axis::kRoot ||
                    axis == Axis::kFollowingSibling || axis == Axis::kPrecedingSibling
                ? level
                : false;
    single = single && (axis == Axis::kSelf || axis == Axis::kParent || axis == Axis::kRoot);
  }
}

std::size_t PlanMaker::MakePath(Index handlers) {
  const std::size_t number = plan_.paths.size();
  plan_.paths.emplace_back();
  PathPlan path;
  path.local = path.direct = true;
  for (Index handler = table_[handlers].first_child; handler != 0; handler = table_[handler].next_sibling) {
    path.steps.push_back(MakeStep(handler));
    path.local = path.local && IsLocalAxis(path.steps.back().axis);
    path.direct = path.direct && IsDirectAxis(path.steps.back().axis);
  }
  if (path.steps.empty()) {
    problem_ = PlanProblem::kPredicate;
    return number;
  }
  path.absolute = !IsLocalAxis(path.steps.front().axis);
  path.is_attribute = path.steps.size() == 1 && path.steps.front().is_attribute;
  FindUniqueSteps(&path);
  plan_.paths[number] = std::move(path);
  return number;
}

// Turns the predicate into bounds where it is one of their kind. Returns whether it is.
bool TakeBound(const ComparisonPlan& comparison, std::vector<PositionBound>* bounds) {
  const auto is_own = [](const Operand& operand) {
    return operand.kind == OperandKind::kPosition || operand.kind == OperandKind::kLast;
  };
  Operand left = comparison.left;
  Operand right = comparison.right;
  PositionBound bound;
  bound.test = comparison.test;
  if (!is_own(left) || (left.kind == OperandKind::kLast && right.kind == OperandKind::kPosition)) {
    std::swap(left, right);
    bound.test = Mirrored(bound.test);
  }
  if (!is_own(left)) return false;
  if (left.kind == right.kind) {
    // The two are the same: the bound is either none at all or one that nothing passes.
    if (!CompareIntegers(bound.test, 0, 0))
      bounds->push_back({PositionBound::Side::kPosition, Test::kLess, false, 1});
    return true;
  }
  const bool is_position = left.kind == OperandKind::kPosition;
  if (is_position && bound.test == Test::kNotEqual) return false;
  bound.side = is_position ? PositionBound::Side::kPosition : PositionBound::Side::kLast;
  bound.against_last = right.kind == OperandKind::kLast;
  if (!bound.against_last &&
      (right.kind != OperandKind::kConstant || !common::IsInteger(right.constant, &bound.number))) {
    return false;
  }
  bounds->push_back(bound);
  return true;
}

void FindBounds(const Plan& plan, StepPlan* step) {
  std::vector<PredicatePlan> rest;
  for (const PredicatePlan& predicate : step->predicates) {
    const bool taken = !step->any_holds && predicate.positional && !predicate.is_existence &&
                       TakeBound(plan.comparisons[predicate.number], &step->bounds);
    if (!taken) rest.push_back(predicate);
  }
  step->predicates = std::move(rest);
  for (const PredicatePlan& predicate : step->predicates) {
    step->rest_positional = step->rest_positional || predicate.positional;
    step->uses_last = step->uses_last || predicate.uses_last;
  }
  for (const PositionBound& bound : step->bounds) {
    step->uses_last = step->uses_last || bound.against_last || bound.side == PositionBound::Side::kLast;
  }
  step->positional = step->rest_positional || !step->bounds.empty();
}

StepPlan PlanMaker::MakeStep(Index handler) {
  const Component& component = table_[handler];
  StepPlan step;
  step.number = plan_.step_count++;
  step.component = handler;
  step.axis = component.axis;
  step.name = TextOf(handler, component.node_test);
  const bool is_file = component.axis == Axis::kFmFile;
  step.test = is_file                 ? NodeTest::kAny
              : step.name == "node()" ? NodeTest::kAny
              : step.name == "*"      ? NodeTest::kNamed
              : step.name == "text()" ? NodeTest::kText
                                      : NodeTest::kName;
  if (step.axis == Axis::kFmProperty) step.property = FmPropertyCode(component.node_test);
  step.any_holds = component.logic == Logic::kOr;
  for (Index predicate = component.first_child; predicate != 0; predicate = table_[predicate].next_sibling) {
    step.predicates.push_back(MakePredicate(predicate));
  }
  FindBounds(plan_, &step);
  step.is_attribute = step.axis == Axis::kAttribute && step.test == NodeTest::kName && !step.positional &&
                      step.predicates.empty();
  return step;
}

PredicatePlan PlanMaker::MakePredicate(Index index) {
  PredicatePlan predicate;
  const bool outer_position = std::exchange(reads_position_, false);
  const bool outer_last = std::exchange(reads_last_, false);
  ++open_predicates_;
  ComparisonPlan comparison;
  comparison.test = TestOf(table_[index].comparison);
  const Index left = table_[index].first_child;
  const Index right = left == 0 ? 0 : table_[left].next_sibling;
  if (left == 0) problem_ = PlanProblem::kPredicate;
  if (left != 0) MakeOperand(left, &comparison.left);
  if (right != 0) MakeOperand(right, &comparison.right);
  predicate.positional = reads_position_ || reads_last_;
  predicate.uses_last = reads_last_;
  predicate.component = index;
  if (right == 0 && comparison.left.kind == OperandKind::kPath) {
    predicate.is_existence = true;
    predicate.number = comparison.left.number;
  } else {
    const bool is_function =
        comparison.left.kind == OperandKind::kComparison || comparison.left.kind == OperandKind::kNot;
    comparison.is_truth = is_function && comparison.test == Test::kEqual &&
                          comparison.right.kind == OperandKind::kConstant &&
                          comparison.right.constant == kTrue;
    predicate.number = plan_.comparisons.size();
    plan_.comparisons.push_back(std::move(comparison));
  }
  --open_predicates_;
  reads_position_ = outer_position;
  reads_last_ = outer_last;
  return predicate;
}

void PlanMaker::MakeOperand(Index index, Operand* operand) {
  if (index == 0) {
    problem_ = PlanProblem::kPredicate;
    return;
  }
  const Component& component = table_[index];
  switch (component.kind) {
    case Kind::kTerm:
      return MakeOperand(component.first_child, operand);
    case Kind::kNodeHandlers:
      operand->kind = OperandKind::kPath;
      operand->number = MakePath(index);
      return;
    case Kind::kLiteralInteger:
    case Kind::kLiteralString:
      operand->kind = OperandKind::kConstant;
      operand->constant = TextOf(index, component.value);
      return;
    case Kind::kPosition:
      operand->kind = OperandKind::kPosition;
      reads_position_ = true;
      if (open_predicates_ == 0) problem_ = PlanProblem::kPosition;
      return;
    case Kind::kLast:
      operand->kind = OperandKind::kLast;
      reads_last_ = true;
      if (open_predicates_ == 0) problem_ = PlanProblem::kLast;
      return;
    default:
      return MakeFunction(index, operand);
  }
}

void PlanMaker::MakeFunction(Index index, Operand* operand) {
  const Kind kind = table_[index].kind;
  const Index left = table_[index].first_child;
  if (!IsFunctionWithTerms(kind) || left == 0) {
    problem_ = PlanProblem::kPredicate;
    return;
  }
  if (kind == Kind::kNot) {
    Operand negated;
    MakeOperand(left, &negated);
    operand->kind = OperandKind::kNot;
    operand->number = plan_.negated.size();
    plan_.negated.push_back(std::move(negated));
    return;
  }
  ComparisonPlan comparison;
  comparison.test = TestOf(kind);
  MakeOperand(left, &comparison.left);
  MakeOperand(table_[left].next_sibling, &comparison.right);
  operand->kind = OperandKind::kComparison;
  operand->number = plan_.comparisons.size();
  plan_.comparisons.push_back(std::move(comparison));
}

}  // namespace

bool IsFlowAxis(Axis axis) { return axis >= Axis::kAnyFlow && axis <= Axis::kReferenceFlow; }

PlanProblem MakePlan(const ComponentTable& table, Index sequence, const ParameterMap& parameters,
                     Plan* plan) {
  return PlanMaker(table, parameters, plan).Make(sequence);
}

}  // namespace qelm::xpath
