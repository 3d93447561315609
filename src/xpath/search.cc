#include "xpath/search.h"

#include "xpath/elsewhere.h"

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
  const PlanProblem problem = MakePlan(table, sequence, parameters, &plan_);
  if (problem != PlanProblem::kNone) return environment_.Fail(FailureOf(problem));
  evaluation_ = std::make_unique<Evaluation>(environment_, plan_);
  run_ = std::make_unique<PathRun>(*evaluation_, plan_.paths.front());
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

bool Search::Next(Match* match) {
  Node node;
  while (!spent_ && !environment_.Failed()) {
    if (started_ && run_->Next(&node)) {
      if (node.IsAboveRoot()) continue;
      match->element = node.element;
      match->document = environment_.TreeOf(node).Document();
      match->attribute = node.IsAttribute() ? node.part : -1;
      match->property = node.IsProperty() ? node.PropertyCode() : 0;
      last_ = *match;
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
