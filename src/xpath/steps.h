// One step of a path while it is being evaluated: from each context to the nodes of its axis that pass its
// node test and its predicates. A path is a row of steps, each fed by the one before it, so that nothing is
// computed before it is asked for.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "xpath/axes.h"
#include "xpath/candidates.h"
#include "xpath/plan.h"
#include "xpath/positions.h"

namespace qelm::xpath {

class Evaluation;

class StepRun {
 public:
  // With `merge` a node that several contexts lead to is given once, else once for each context.
  StepRun(Evaluation& evaluation, const StepPlan& step, bool merge);

  void Start(const Node& context);
  bool Next(Node* node);
  // Forgets the nodes given so far.
  void Clear();

 private:
  enum class Source : std::uint8_t { kWalk, kCollected, kCandidates };

  void StartPositional(const Node& context);
  bool SelectCandidates(const Node& context);
  bool NextAtPosition(Node* node);
  bool Fetch(Node* node);
  bool IsRepeated(const Node& node);
  Seen& SeenIn(std::uint32_t tree);

  Evaluation& evaluation_;
  Environment& environment_;
  const StepPlan& step_;
  bool merge_;  // and nodes can repeat
  AxisWalk walk_;
  std::vector<Seen> seen_;  // by tree

  // Steps that ask for positions.
  Source source_ = Source::kWalk;
  std::vector<Node> collected_;
  std::unique_ptr<Candidates> candidates_;
  std::uint32_t candidates_tree_ = 0;
  std::uint64_t moves_ = 0;    // of the walks so far
  std::int64_t position_ = 0;  // of the candidate fetched last
  PositionRange range_;        // the positions to look at
  std::int64_t count_ = 0;     // what last() is, where a predicate asks for it
};

// A path: gives the nodes that it selects from a context, in the order in which its steps find them.
class PathRun {
 public:
  PathRun(Evaluation& evaluation, const PathPlan& path);

  // Begins at a context. Nodes that were given since Clear are not given again.
  void Start(const Node& context);
  bool Next(Node* node);
  void Clear();

 private:
  std::vector<StepRun> steps_;
  std::size_t level_ = 0;
  bool active_ = false;
};

}  // namespace qelm::xpath
