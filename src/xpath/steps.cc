#include "xpath/steps.h"

#include <algorithm>

#include "xpath/evaluation.h"

namespace qelm::xpath {

StepRun::StepRun(Evaluation& evaluation, const StepPlan& step, bool merge)
    : evaluation_(evaluation),
      environment_(evaluation.GetEnvironment()),
      step_(step),
      merge_(merge && !step.unique),
      walk_(environment_, step) {}

Seen& StepRun::SeenIn(std::uint32_t tree) {
  if (tree >= seen_.size()) seen_.resize(tree + 1);
  return seen_[tree];
}

void StepRun::Clear() {
  for (Seen& seen : seen_) seen.Clear();
  if (candidates_ != nullptr) candidates_->Restore();
}

void StepRun::Start(const Node& context) {
  if (environment_.Failed()) return;
  if (step_.positional) {
    StartPositional(context);
  } else {
    walk_.Start(context, merge_ ? &SeenIn(context.tree) : nullptr);
  }
}

bool StepRun::Next(Node* node) {
  if (step_.positional) return NextAtPosition(node);
  // A walk leaves out what was seen by itself, but not where it only goes through a list of other trees'
  // roots.
  const bool is_elsewhere = step_.axis > Axis::kFmProperty;
  while (walk_.Next(node)) {
    if (merge_ && is_elsewhere && IsRepeated(*node)) continue;
    if (evaluation_.Holds(step_, *node, 0, 0)) return true;
  }
  return false;
}

bool StepRun::IsRepeated(const Node& node) {
  return node.IsElement() && !SeenIn(node.tree).visited.Insert(node.element);
}

void StepRun::StartPositional(const Node& context) {
  position_ = count_ = 0;
  moves_ += walk_.Moves();
  collected_.clear();
  if (SelectCandidates(context)) {
    source_ = Source::kCandidates;
    count_ = candidates_->Count();
    range_ = PositionsOf(step_, count_);
    candidates_->Seek(range_.first, range_.last);
    position_ = range_.first - 1;
    return;
  }
  walk_.Start(context, nullptr);
  source_ = step_.uses_last ? Source::kCollected : Source::kWalk;
  if (step_.uses_last) {
    Node node;
    while (walk_.Next(&node)) collected_.push_back(node);
    environment_.Explain(Failure::kLast);
    count_ = static_cast<std::int64_t>(collected_.size());
  }
  range_ = PositionsOf(step_, count_);
}

// Lists pay once the walks together have gone over as many elements as there are.
bool StepRun::SelectCandidates(const Node& context) {
  Tree& tree = environment_.TreeOf(context);
  if (!context.IsElement() || !Candidates::Serves(step_.axis) || moves_ <= tree.IdLimit()) return false;
  DocumentIndex* index = environment_.Index(context.tree);
  if (index == nullptr) {
    environment_.Fail(Failure::kEndless);
    return false;
  }
  if (candidates_ == nullptr || candidates_tree_ != context.tree) {
    const SetScope scope{index, context.tree, 0, index->Size()};
    const ElementTest passes(scope, step_.test, tree.DefinitionOf(step_));
    candidates_ = std::make_unique<Candidates>(*index, passes.All(), step_.axis);
    candidates_tree_ = context.tree;
  }
  const std::uint32_t rank = index->RankOf(context.element);
  if (rank != DocumentIndex::kNoRank) candidates_->Select(rank);
  return rank != DocumentIndex::kNoRank;
}

bool StepRun::NextAtPosition(Node* node) {
  // What does not depend on the position needs to be asked once for each node.
  const bool once = merge_ && !step_.rest_positional;
  while (!environment_.Failed() && Fetch(node)) {
    if (position_ < range_.first) continue;
    if (once && source_ == Source::kCandidates) candidates_->Drop();
    if (once && IsRepeated(*node)) continue;
    if (!once && merge_ && node->IsElement() && SeenIn(node->tree).visited.Contains(node->element)) continue;
    if (!evaluation_.Holds(step_, *node, position_, count_)) continue;
    if (!once && merge_) IsRepeated(*node);
    return true;
  }
  return false;
}

// The candidate at the next position, up to the last one to look at.
bool StepRun::Fetch(Node* node) {
  if (position_ >= range_.last) return false;
  ++position_;
  switch (source_) {
    case Source::kWalk:
      if (walk_.Next(node)) return true;
      environment_.Explain(Failure::kPosition);
      return false;
    case Source::kCollected:
      position_ = std::max(position_, range_.first);
      if (position_ > range_.last || position_ > count_) return false;
      *node = collected_[static_cast<std::size_t>(position_ - 1)];
      return true;
    case Source::kCandidates: {
      const std::uint32_t rank = candidates_->Next();
      if (rank == DocumentIndex::kNoRank) return false;
      *node = {environment_.Index(candidates_tree_)->ElementAt(rank), Node::kElement, candidates_tree_};
      return true;
    }
  }
  return false;
}

PathRun::PathRun(Evaluation& evaluation, const PathPlan& path) {
  steps_.reserve(path.steps.size());
  for (const StepPlan& step : path.steps) steps_.emplace_back(evaluation, step, true);
}

void PathRun::Start(const Node& context) {
  active_ = true;
  level_ = 0;
  steps_.front().Start(context);
}

bool PathRun::Next(Node* node) {
  while (active_) {
    if (!steps_[level_].Next(node)) {
      active_ = level_ > 0;
      if (active_) --level_;
    } else if (level_ + 1 == steps_.size()) {
      return true;
    } else {
      steps_[++level_].Start(*node);
    }
  }
  return false;
}

void PathRun::Clear() {
  for (StepRun& step : steps_) step.Clear();
}

}  // namespace qelm::xpath
