#include "xpath/search.h"

#include <algorithm>

#include "xpath/elsewhere.h"
#include "xpath/profile.h"
#include "xpath/set_search.h"

namespace qelm::xpath {

using host::Id;
using host::kNone;

namespace {

constexpr std::string_view kMainFlow = "Main";

Failure FailureOf(PlanProblem problem) {
  switch (problem) {
    case PlanProblem::kPosition:
      return Failure::kPosition;
    case PlanProblem::kLast:
      return Failure::kLast;
    default:
      return Failure::kPredicate;
  }
}

}  // namespace

Id DefaultContext(host::Elements& elements, Id document) {
  for (Id flow = elements.FirstFlow(document); flow != kNone; flow = elements.NextFlow(document, flow)) {
    if (elements.FlowName(document, flow) == kMainFlow) return elements.Root(document, flow);
  }
  const Id main = elements.MainFlow(document);
  return main == kNone ? kNone : elements.Root(document, main);
}

void Search::Begin(const ComponentTable& table, Index sequence, const ParameterMap& parameters,
                   const SearchStart& start) {
  expression_ = table[sequence].expression;
  const PlanProblem problem = MakePlan(table, sequence, parameters, &plan_);
  if (problem != PlanProblem::kNone) return environment_.Fail(FailureOf(problem));
  Restart();
  FindStarts(start);
}

// A path that begins with a flow or file axis is evaluated in one flow after the other, from above its root.
void Search::FindStarts(const SearchStart& start) {
  host::Elements& elements = environment_.Host().elements;
  const StepPlan& first = plan_.paths.front().steps.front();
  if (!IsFlowAxis(first.axis) && first.axis != Axis::kFmFile) {
    const bool is_given = start.context != kNone;
    const Id context = is_given ? start.context : DefaultContext(elements, start.document);
    const bool is_there = context != kNone && elements.IsElement(start.document, context);
    // The way to a book does not begin at an element.
    if (is_there || first.axis > Axis::kFmProperty) starts_.push_back({context, Node::kElement, 0});
    return;
  }
  const Id document =
      first.axis == Axis::kFmFile ? FindFile(environment_, first.name) : environment_.Document();
  if (document == kNone) return;
  for (Id flow = elements.FirstFlow(document); flow != kNone; flow = elements.NextFlow(document, flow)) {
    const Id root = elements.Root(document, flow);
    if (root == kNone || (start.flow != kNone && start.flow != flow)) continue;
    starts_.push_back({root, Node::kAboveRoot, environment_.TreeOfDocument(document)});
  }
}

Match Search::MatchOf(const Node& node) {
  return {node.element, environment_.TreeOf(node).Document(), node.IsAttribute() ? node.part : -1,
          node.IsProperty() ? node.PropertyCode() : 0};
}

// From several starts nothing may be found twice, which is seen to only where each start has a flow of its
// own.
bool Search::CanGoSetBySet() const {
  if (starts_.empty() || environment_.Failed()) return false;
  const std::vector<StepPlan>& steps = plan_.paths.front().steps;
  return starts_.size() == 1 || std::all_of(steps.begin() + 1, steps.end(), [](const StepPlan& step) {
           return step.axis <= Axis::kFmProperty;
         });
}

bool Search::PaysSetBySet() {
  if (!CanGoSetBySet()) return false;
  const std::uint32_t tree = starts_.front().tree;
  return environment_.HasIndex(tree) || SetSearch::Pays(plan_) || environment_.StepsLeft(tree) == 0;
}

void Search::StopWhenLong() {
  if (CanGoSetBySet()) environment_.LimitSteps(environment_.StepsLeft(starts_.front().tree));
}

void Search::Restart() {
  environment_.LiftLimit();
  evaluation_ = std::make_unique<Evaluation>(environment_, plan_);
  run_ = std::make_unique<PathRun>(*evaluation_, plan_.paths.front());
  next_start_ = 0;
  started_ = spent_ = false;
}

bool Search::All(Profile* profile, MatchList* matches) {
  if (!CanGoSetBySet()) return false;
  // A document whose links run in circles has no index, and is walked for as far as that goes.
  for (const Node& start : starts_) {
    const Stopwatch watch;
    if (start.element != host::kNone && environment_.Index(start.tree) == nullptr) return false;
    if (profile != nullptr) profile->AddIndex(watch.Milliseconds());
  }
  SetSearch search(*evaluation_, plan_, profile);
  for (const Node& start : starts_) {
    const Selection selected = search.Select(start);
    matches->reserve(matches->size() + selected.Size());
    if (selected.IsByRank()) {
      const SetScope& scope = search.Scope();
      const host::Id document = environment_.TreeOf({host::kNone, Node::kElement, scope.tree}).Document();
      for (const std::uint32_t rank : selected.Ranks()) {
        matches->push_back({scope.index->ElementAt(rank), document});
      }
      continue;
    }
    for (const Node& node : selected.Nodes()) {
      if (!node.IsAboveRoot()) matches->push_back(MatchOf(node));
    }
  }
  return true;
}

bool Search::Next(Match* match) {
  Node node;
  while (!spent_ && !environment_.Failed()) {
    if (started_ && run_->Next(&node)) {
      if (node.IsAboveRoot()) continue;
      last_ = *match = MatchOf(node);
      return true;
    }
    spent_ = next_start_ == starts_.size() || environment_.Failed();
    if (!spent_) run_->Start(starts_[next_start_++]);
    started_ = true;
  }
  spent_ = true;
  return false;
}

}  // namespace qelm::xpath
