#include "xpath/set_search.h"

#include <algorithm>

#include "xpath/positions.h"
#include "xpath/profile.h"

namespace qelm::xpath {
namespace {

using Ranks = std::span<const std::uint32_t>;

bool IsNarrow(Axis axis) {
  return axis == Axis::kRoot || axis == Axis::kSelf || axis == Axis::kChild || axis == Axis::kParent ||
         axis == Axis::kAncestor || axis == Axis::kAncestorOrSelf || axis >= Axis::kAttribute;
}

}  // namespace

SetSearch::SetSearch(Evaluation& evaluation, const Plan& plan, Profile* profile)
    : evaluation_(evaluation),
      environment_(evaluation.GetEnvironment()),
      plan_(plan),
      profile_(profile),
      predicates_(evaluation, plan, *this, profile) {
  evaluation_.Measure(profile);
}

bool SetSearch::Pays(const Plan& plan) {
  return std::any_of(plan.paths.begin(), plan.paths.end(), [](const PathPlan& path) {
    return std::any_of(path.steps.begin(), path.steps.end(),
                       [](const StepPlan& step) { return !IsNarrow(step.axis); });
  });
}

Selection SetSearch::Select(const Node& start) {
  Enter(start);
  Selection selected(std::vector<Node>{start});
  if (start.IsElement()) selected = AsSelection({start});
  for (const StepPlan& step : plan_.paths.front().steps) {
    const Stopwatch watch;
    selected = Follow(step, selected);
    if (profile_ != nullptr) profile_->AddStep(step.number, selected.Size(), watch.Milliseconds());
  }
  return selected;
}

Selection SetSearch::SelectFromRoot(std::size_t path, std::size_t steps) {
  const Node root{scope_.index->ElementAt(scope_.begin), Node::kAboveRoot, scope_.tree};
  Selection selected(std::vector<Node>{root});
  for (std::size_t step = 1; step < steps; ++step) {
    selected = Follow(plan_.paths[path].steps[step], selected);
  }
  return selected;
}

// Makes the flow of a node the one that is searched. False when the node is in none.
bool SetSearch::Enter(const Node& node) {
  DocumentIndex* index = node.element == host::kNone ? nullptr : environment_.Index(node.tree);
  const std::uint32_t rank = index == nullptr ? DocumentIndex::kNoRank : index->RankOf(node.element);
  if (rank == DocumentIndex::kNoRank) return false;
  const std::uint32_t root = index->RootOf(rank);
  scope_ = {index, node.tree, root, index->EndOf(root)};
  return true;
}

// The point above the root of the flow being searched.
bool SetSearch::IsTop(const Selection& contexts) const {
  if (contexts.IsByRank() || contexts.Size() != 1 || scope_.index == nullptr) return false;
  const Node& node = contexts.Nodes().front();
  return node.IsAboveRoot() && node.tree == scope_.tree && scope_.index->RankOf(node.element) == scope_.begin;
}

Selection SetSearch::Follow(const StepPlan& step, const Selection& contexts) {
  if (environment_.Failed() || contexts.Size() == 0) return Selection();
  const bool by_bounds = !step.positional || HasOnlyBounds(step);
  if (by_bounds && IsElementAxis(step.axis)) {
    if (contexts.IsByRank()) return FollowSet(step, contexts);
    const bool leads_down =
        step.axis == Axis::kChild || step.axis == Axis::kDescendant || step.axis == Axis::kDescendantOrSelf;
    if (leads_down && IsTop(contexts)) return FollowFromTop(step);
  }
  if (step.is_attribute && contexts.IsByRank()) return FollowAttribute(step, contexts);
  return FollowEach(step, contexts);
}

Selection SetSearch::FollowSet(const StepPlan& step, const Selection& contexts) {
  const ElementTest passes(scope_, step.test, predicates_.DefinitionOf(step));
  RankList found;
  if (step.positional) {
    FollowToPositions(scope_, step, passes, contexts.Ranks(), &found);
  } else {
    FollowAxis(scope_, step.axis, passes, contexts.Ranks(), contexts.IsRising(), &found);
  }
  return Filtered(step, std::move(found));
}

Selection SetSearch::Filtered(const StepPlan& step, RankList found) {
  const bool rising = std::is_sorted(found.begin(), found.end());
  if (!step.predicates.empty()) found = predicates_.Filter(step, found, rising);
  return {std::move(found), rising};
}

Selection SetSearch::FollowFromTop(const StepPlan& step) {
  const ElementTest passes(scope_, step.test, predicates_.DefinitionOf(step));
  if (!step.positional && step.axis != Axis::kChild) {
    const Ranks all = passes.All();
    return step.predicates.empty() ? Selection(all) : Selection(predicates_.Filter(step, all, true), true);
  }
  RankList found;
  if (step.positional) {
    FollowToPositionsFromTop(scope_, step, passes, &found);
  } else if (passes(scope_.begin)) {
    found.push_back(scope_.begin);
  }
  return Filtered(step, std::move(found));
}

Selection SetSearch::FollowAttribute(const StepPlan& step, const Selection& contexts) {
  const AttributeIndex* attributes =
      scope_.index->Attributes(environment_.Host(), step.name, environment_.WithDefaults());
  if (attributes == nullptr) return FollowEach(step, contexts);
  std::vector<Node> found;
  const RankList& ranks = attributes->Ranks();
  auto from = ranks.begin();
  for (const std::uint32_t context : contexts.Ranks()) {
    if (!contexts.IsRising()) from = ranks.begin();
    from = std::lower_bound(from, ranks.end(), context);
    if (from == ranks.end() || *from != context) continue;
    const auto place = static_cast<std::size_t>(from - ranks.begin());
    found.push_back({scope_.index->ElementAt(context), static_cast<std::int32_t>(attributes->IndexAt(place)),
                     scope_.tree});
  }
  return Selection(std::move(found));
}

// Node by node, as a search for the first match does it.
Selection SetSearch::FollowEach(const StepPlan& step, const Selection& contexts) {
  StepRun run(evaluation_, step, true);
  std::vector<Node> found;
  Node node;
  const auto follow = [&](const Node& context) {
    run.Start(context);
    while (run.Next(&node)) found.push_back(node);
  };
  if (contexts.IsByRank()) {
    for (const std::uint32_t rank : contexts.Ranks()) {
      follow({scope_.index->ElementAt(rank), Node::kElement, scope_.tree});
    }
  } else {
    std::for_each(contexts.Nodes().begin(), contexts.Nodes().end(), follow);
  }
  return AsSelection(std::move(found));
}

// By rank where all are elements of one flow, which is the one being searched from then on.
Selection SetSearch::AsSelection(std::vector<Node> nodes) {
  const SetScope before = scope_;
  RankList ranks;
  if (nodes.empty() || !Enter(nodes.front())) return Selection(std::move(nodes));
  for (const Node& node : nodes) {
    const bool is_there = node.IsElement() && node.tree == scope_.tree;
    const std::uint32_t rank = is_there ? scope_.index->RankOf(node.element) : DocumentIndex::kNoRank;
    if (rank < scope_.begin || rank >= scope_.end) {
      scope_ = before;
      return Selection(std::move(nodes));
    }
    ranks.push_back(rank);
  }
  const bool rising = std::is_sorted(ranks.begin(), ranks.end());
  return {std::move(ranks), rising};
}

}  // namespace qelm::xpath
