// A path evaluated set by set, for those who want everything that it selects: each step is applied to all
// nodes of the step before at once, over the document's index. What one node costs is a few looks into
// arrays, where walking costs calls of the host.
//
// Steps and predicates for which there is no way to do that - other documents, properties, positions that
// depend on other predicates - are evaluated node by node, by the same means as a search for the first match.
// The nodes and their order are the same either way.
#pragma once

#include <vector>

#include "xpath/evaluation.h"
#include "xpath/selection.h"
#include "xpath/set_axes.h"
#include "xpath/set_predicates.h"

namespace qelm::xpath {

class Profile;

class SetSearch {
 public:
  // Measures into `profile` (null: not).
  SetSearch(Evaluation& evaluation, const Plan& plan, Profile* profile);

  // Whether it pays for this plan to make an index for it: it goes through more than the children of a few
  // elements.
  static bool Pays(const Plan& plan);

  // What the plan's path selects from one node.
  Selection Select(const Node& start);

  // What the first `steps` steps of an absolute path, or all, select in the flow being searched; only for
  // paths that begin at the root.
  Selection SelectFromRoot(std::size_t path, std::size_t steps);
  Selection SelectFromRoot(std::size_t path) { return SelectFromRoot(path, plan_.paths[path].steps.size()); }
  const SetScope& Scope() const { return scope_; }

 private:
  Selection Follow(const StepPlan& step, const Selection& contexts);
  Selection FollowSet(const StepPlan& step, const Selection& contexts);
  Selection FollowAttribute(const StepPlan& step, const Selection& contexts);
  Selection FollowFromTop(const StepPlan& step);
  Selection FollowEach(const StepPlan& step, const Selection& contexts);
  Selection AsSelection(std::vector<Node> nodes);
  bool Enter(const Node& node);
  bool IsTop(const Selection& contexts) const;
  Selection Filtered(const StepPlan& step, RankList found);

  Evaluation& evaluation_;
  Environment& environment_;
  const Plan& plan_;
  Profile* profile_;
  SetScope scope_;
  SetPredicates predicates_;
};

}  // namespace qelm::xpath
