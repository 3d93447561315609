#include "xpath/set_predicates.h"

#include <algorithm>

#include "xpath/profile.h"
#include "xpath/set_search.h"

namespace qelm::xpath {
namespace {

// For so many times fewer candidates than elements, what is not inside one of them is left out beforehand.
constexpr std::size_t kFewOf = 64;

bool LeadsDown(const PathPlan& path) {
  return std::all_of(path.steps.begin(), path.steps.end(), [](const StepPlan& step) {
    return step.axis == Axis::kSelf || step.axis == Axis::kChild || step.axis == Axis::kDescendant ||
           step.axis == Axis::kDescendantOrSelf || step.axis == Axis::kAttribute;
  });
}

// Whether the path selects one node at most.
bool IsSingle(const PathPlan& path) {
  return std::all_of(path.steps.begin(), path.steps.end(), [](const StepPlan& step) {
    return step.axis == Axis::kSelf || step.axis == Axis::kParent || step.is_attribute;
  });
}

}  // namespace

SetPredicates::SetPredicates(Evaluation& evaluation, const Plan& plan, SetSearch& search, Profile* profile)
    : evaluation_(evaluation),
      environment_(evaluation.GetEnvironment()),
      plan_(plan),
      search_(search),
      profile_(profile) {}

host::Id SetPredicates::DefinitionOf(const StepPlan& step) {
  Node node;
  node.tree = search_.Scope().tree;
  return environment_.TreeOf(node).DefinitionOf(step);
}

// Where all must hold, each one is asked only of those that the ones before have left.
RankList SetPredicates::Filter(const StepPlan& step, Ranks candidates, bool rising) {
  Truths truths;
  RankList kept;
  if (step.any_holds) {
    Truths any(candidates.size());
    for (std::size_t place = 0; place < step.predicates.size(); ++place) {
      OfPredicate(step, place, {candidates, rising}, &truths);
      for (std::size_t at = 0; at < any.size(); ++at) any[at] |= truths[at];
    }
    for (std::size_t at = 0; at < any.size(); ++at) {
      if (any[at] != 0) kept.push_back(candidates[at]);
    }
    return kept;
  }
  RankList left;
  for (std::size_t place = 0; place < step.predicates.size(); ++place) {
    OfPredicate(step, place, {candidates, rising}, &truths);
    kept.resize(candidates.size());
    std::size_t count = 0;
    for (std::size_t at = 0; at < truths.size(); ++at) {
      kept[count] = candidates[at];
      count += truths[at];
    }
    kept.resize(count);
    left.swap(kept);
    candidates = left;
  }
  return left;
}

void SetPredicates::OfPredicate(const StepPlan& step, std::size_t place, const Candidates& candidates,
                                Truths* truths) {
  const Stopwatch watch;
  const PredicatePlan& predicate = step.predicates[place];
  truths->assign(candidates.ranks.size(), 0);
  if (candidates.ranks.empty() || environment_.Failed()) return;
  predicate.is_existence ? OfExistence(predicate.number, candidates, truths)
                         : OfComparison(predicate.number, candidates, truths);
  if (profile_ == nullptr) return;
  const auto kept = std::count(truths->begin(), truths->end(), 1);
  profile_->AddPredicate(step.number, place, truths->size(), static_cast<std::size_t>(kept),
                         watch.Milliseconds());
}

template <typename Ask>
void SetPredicates::OfEach(const Candidates& candidates, Truths* truths, Ask&& ask) {
  const SetScope& scope = search_.Scope();
  for (std::size_t at = 0; at < candidates.ranks.size(); ++at) {
    const Node node{scope.index->ElementAt(candidates.ranks[at]), Node::kElement, scope.tree};
    (*truths)[at] = ask(node) ? 1 : 0;
  }
}

void SetPredicates::OfOperand(const Operand& operand, const Candidates& candidates, Truths* truths) {
  switch (operand.kind) {
    case OperandKind::kPath:
      return OfExistence(operand.number, candidates, truths);
    case OperandKind::kComparison:
      return OfComparison(operand.number, candidates, truths);
    case OperandKind::kNot:
      OfOperand(plan_.negated[operand.number], candidates, truths);
      for (std::uint8_t& truth : *truths) truth ^= 1U;
      return;
    case OperandKind::kConstant:
      std::fill(truths->begin(), truths->end(), operand.constant.empty() ? 0 : 1);
      return;
    default:
      std::fill(truths->begin(), truths->end(), operand.kind == OperandKind::kNothing ? 0 : 1);
      return;
  }
}

// Whether the path can be followed backwards: along axes of elements, up to an attribute where it ends in
// one.
bool SetPredicates::IsSetPath(std::size_t path) const {
  const std::vector<StepPlan>& steps = plan_.paths[path].steps;
  return std::all_of(steps.begin(), steps.end(), [&](const StepPlan& step) {
    return (IsElementAxis(step.axis) && !step.positional) || (step.is_attribute && &step == &steps.back());
  });
}

void SetPredicates::OfExistence(std::size_t number, const Candidates& candidates, Truths* truths) {
  const PathPlan& path = plan_.paths[number];
  if (path.absolute && path.steps.front().axis == Axis::kRoot) {
    const bool exists = search_.SelectFromRoot(number).Size() > 0;
    std::fill(truths->begin(), truths->end(), exists ? 1 : 0);
  } else if (IsSetPath(number) &&
             (!path.steps.back().is_attribute || AttributesOf(path.steps.back()) != nullptr)) {
    const RankList targets = Targets(path, candidates);
    LeadsTo(path, targets, candidates)
        .ForEach(search_.Scope(), candidates.ranks,
                 [&](std::size_t at, bool is) { (*truths)[at] = is ? 1 : 0; });
  } else {
    OfEach(candidates, truths, [&](const Node& node) { return evaluation_.Exists(number, node); });
  }
}

void SetPredicates::OfComparison(std::size_t number, const Candidates& candidates, Truths* truths) {
  const ComparisonPlan& plan = plan_.comparisons[number];
  if (plan.is_truth) return OfOperand(plan.left, candidates, truths);
  const bool left_is_fixed = IsFixed(plan.left);
  const bool right_is_fixed = IsFixed(plan.right);
  const auto is_path = [&](const Operand& operand) {
    return operand.kind == OperandKind::kPath && IsSetPath(operand.number);
  };
  if (left_is_fixed != right_is_fixed && is_path(left_is_fixed ? plan.right : plan.left)) {
    return OfPathComparison(number, right_is_fixed, candidates, truths);
  }
  if (left_is_fixed && right_is_fixed) {
    const Node node{search_.Scope().index->ElementAt(candidates.ranks.front()), Node::kElement,
                    search_.Scope().tree};
    std::fill(truths->begin(), truths->end(), evaluation_.Compare(number, node) ? 1 : 0);
    return;
  }
  OfEach(candidates, truths, [&](const Node& node) { return evaluation_.Compare(number, node); });
}

// Whether the operand is the same for all candidates.
bool SetPredicates::IsFixed(const Operand& operand) const {
  if (operand.kind == OperandKind::kPath) {
    return plan_.paths[operand.number].steps.front().axis == Axis::kRoot;
  }
  return operand.kind == OperandKind::kConstant || operand.kind == OperandKind::kNothing;
}

// The values of a fixed operand. Of those that come twice, the second adds nothing to any test.
ValueSet& SetPredicates::FixedValues(const Operand& operand, ValueSet* own) {
  if (operand.kind == OperandKind::kConstant) own->Add(operand.constant);
  if (operand.kind != OperandKind::kPath) return *own;
  const std::vector<StepPlan>& steps = plan_.paths[operand.number].steps;
  const AttributeIndex* attributes = steps.back().is_attribute ? AttributesOf(steps.back()) : nullptr;
  if (attributes != nullptr) {
    const Selection owners = search_.SelectFromRoot(operand.number, steps.size() - 1);
    // The point above the root, the only other case, has no attributes.
    if (owners.IsByRank()) GatherAttributes(*attributes, owners.Ranks(), own);
    return *own;
  }
  const Selection selected = search_.SelectFromRoot(operand.number, steps.size());
  if (selected.IsByRank()) {
    GatherTexts(environment_, search_.Scope(), selected.Ranks(), selected.IsRising(), own);
    return *own;
  }
  for (const Node& node : selected.Nodes()) {
    environment_.AnyValue(node, [own](std::string_view value) {
      own->Add(value);
      return false;
    });
  }
  return *own;
}

const AttributeIndex* SetPredicates::AttributesOf(const StepPlan& step) {
  return search_.Scope().index->Attributes(environment_.Host(), step.name, environment_.WithDefaults());
}

// The outcome depends on whether the path selects anything and whether its first value is empty; if neither
// settles it, on whether any value matches. Which value is the first one is only asked where some are empty.
void SetPredicates::OfPathComparison(std::size_t number, bool path_is_left, const Candidates& candidates,
                                     Truths* truths) {
  const ComparisonPlan& plan = plan_.comparisons[number];
  const PathPlan& path = plan_.paths[(path_is_left ? plan.left : plan.right).number];
  const auto ask = [&](const Node& node) { return evaluation_.Compare(number, node); };
  const bool of_attribute = path.steps.back().is_attribute;
  const AttributeIndex* attributes = of_attribute ? AttributesOf(path.steps.back()) : nullptr;
  if (of_attribute && attributes == nullptr) return OfEach(candidates, truths, ask);

  const SetScope& scope = search_.Scope();
  ValueSet own;
  const OtherOperand other{plan.test, &FixedValues(path_is_left ? plan.right : plan.left, &own),
                           !path_is_left};
  const ValuedElements elements = of_attribute
                                      ? CompareAttributes(scope, *attributes, other)
                                      : CompareTexts(environment_, scope, Targets(path, candidates), other);
  const bool of_nothing = other.OutcomeOfEmpty(true);
  const bool no_match = other.values->IsEmpty() ? other.OutcomeOfEmpty(false) : plan.test == Test::kNotEqual;
  std::fill(truths->begin(), truths->end(), of_nothing ? 1 : 0);
  const auto set_where = [&](const RankList& targets, bool outcome) {
    LeadsTo(path, targets, candidates).ForEach(scope, candidates.ranks, [&](std::size_t at, bool leads) {
      if (leads) (*truths)[at] = outcome ? 1 : 0;
    });
  };
  if (no_match != of_nothing) set_where(elements.all, no_match);
  if (!elements.matching.empty()) set_where(elements.matching, plan.test != Test::kNotEqual);
  if (elements.empty.empty()) return;
  if (IsSingle(path)) return set_where(elements.empty, of_nothing);
  LeadsTo(path, elements.empty, candidates).ForEach(scope, candidates.ranks, [&](std::size_t at, bool leads) {
    if (!leads) return;
    (*truths)[at] = ask({scope.index->ElementAt(candidates.ranks[at]), Node::kElement, scope.tree}) ? 1 : 0;
  });
}

RankList SetPredicates::Where(const Condition& condition, Ranks ranks) {
  RankList kept(ranks.size());
  std::size_t count = 0;
  condition.ForEach(search_.Scope(), ranks, [&](std::size_t at, bool holds) {
    kept[count] = ranks[at];
    count += holds ? 1 : 0;
  });
  kept.resize(count);
  return kept;
}

// Where nodes of the step can be, rising: among the candidates, inside them, or anywhere.
RankList SetPredicates::Domain(const PathPlan& path, std::size_t number, const Candidates& candidates) {
  const SetScope& scope = search_.Scope();
  const StepPlan& step = path.steps[number];
  const ElementTest passes(scope, step.test, DefinitionOf(step));
  RankList found;
  if (candidates.rising && number == 0 && step.axis == Axis::kSelf) {
    FollowAxis(scope, Axis::kSelf, passes, candidates.ranks, true, &found);
  } else if (candidates.rising && candidates.ranks.size() < scope.index->Size() / kFewOf && LeadsDown(path)) {
    FollowAxis(scope, Axis::kDescendantOrSelf, passes, candidates.ranks, true, &found);
  } else {
    const Ranks all = passes.All();
    found.assign(all.begin(), all.end());
  }
  return found;
}

// What the path may end on: elements that pass the last step, or that have the attribute.
RankList SetPredicates::Targets(const PathPlan& path, const Candidates& candidates) {
  const StepPlan& last = path.steps.back();
  if (last.is_attribute) {
    const Ranks owners = search_.Scope().Within(AttributesOf(last)->Ranks());
    return {owners.begin(), owners.end()};
  }
  RankList targets = Domain(path, path.steps.size() - 1, candidates);
  return last.predicates.empty() ? targets : Filter(last, targets, true);
}

// From which elements the path ends on one of the targets, which pass its last step.
Condition SetPredicates::LeadsTo(const PathPlan& path, Ranks targets, const Candidates& candidates) {
  const SetScope& scope = search_.Scope();
  const StepPlan& last = path.steps.back();
  Condition condition = Condition::LeadsTo(scope, last.is_attribute ? Axis::kSelf : last.axis, targets);
  for (std::size_t number = path.steps.size() - 1; number > 0 && !condition.IsNever(); --number) {
    const StepPlan& step = path.steps[number - 1];
    RankList passing = Where(condition, Domain(path, number - 1, candidates));
    if (!step.predicates.empty()) passing = Filter(step, passing, true);
    condition = Condition::LeadsTo(scope, step.axis, passing);
  }
  return condition;
}

}  // namespace qelm::xpath
