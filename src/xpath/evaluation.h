// Predicates: existence tests, comparisons and functions, evaluated for one candidate node after another.
// What does not depend on the candidate is computed once: the values of absolute paths and literals, and what
// is remembered of elements that were asked about before.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "xpath/first_match.h"
#include "xpath/plan.h"
#include "xpath/steps.h"

namespace qelm::xpath {

class Profile;

class Evaluation {
 public:
  Evaluation(Environment& environment, const Plan& plan);

  // Whether the predicates of a step hold for a node. `position` and `last` are looked at only where they
  // count.
  bool Holds(const StepPlan& step, const Node& node, std::int64_t position, std::int64_t last);

  // Parts of that, for a predicate that does not depend on the position: whether the path selects a node, and
  // whether the comparison holds.
  bool Exists(std::size_t path, const Node& node);
  bool Compare(std::size_t comparison, const Node& node) { return CompareAt(comparison, {node, 0, 0}); }

  // Where to count what Holds is asked (null: nowhere).
  void Measure(Profile* profile) { profile_ = profile; }

  Environment& GetEnvironment() { return environment_; }

 private:
  // A candidate and where it stands.
  struct Candidate {
    Node node;
    std::int64_t position = 0;
    std::int64_t last = 0;
  };

  struct PathState {
    std::unique_ptr<PathRun> run;
    std::unique_ptr<FirstMatch> first;
    // Absolute paths: for which root they were evaluated, and what they gave.
    Node root;
    bool exists = false;
    bool exists_known = false;
    ValueSet values;
    bool values_known = false;
  };

  struct ComparisonState {
    ValueSet left;
    ValueSet right;
    bool left_known = false;
    bool right_known = false;
    std::unique_ptr<FirstMatch> matching;
  };

  // The values of an operand that do not come from a path that begins at the candidate.
  struct Fixed {
    ValueSet* values = nullptr;
    bool constant = false;  // the same for all candidates of one flow
  };

  bool HoldsOne(const StepPlan& step, std::size_t place, const Candidate& candidate);
  bool IsTrue(const Operand& operand, const Candidate& candidate);
  bool CompareAt(std::size_t comparison, const Candidate& candidate);
  bool CompareSets(Test test, ValueSet& left, ValueSet& right);
  bool ComparePath(std::size_t comparison, const Candidate& candidate, const Fixed& other,
                   bool other_is_left);
  bool ComparePathByValue(Test test, std::size_t path, const Node& node, ValueSet& other, bool other_is_left);
  bool ComparePathByFirst(ComparisonState& state, Test test, std::size_t path, const Node& node,
                          ValueSet& other, bool other_is_left);
  Fixed FixedValues(const Operand& operand, const Candidate& candidate, ValueSet* own, bool* known);
  ValueSet& AbsoluteValues(std::size_t path, const Node& node);
  void EnterRoot(std::size_t path, const Node& node);
  void Gather(std::size_t path, const Node& node, ValueSet* values);
  PathRun& RunOf(std::size_t path);
  FirstMatch& FirstOf(std::size_t path);
  bool IsAttributeOf(std::size_t path, const Node& node) const;
  bool CanRemember(std::size_t path, const Node& node) const;

  Environment& environment_;
  const Plan& plan_;
  std::vector<PathState> paths_;
  std::vector<ComparisonState> comparisons_;
  Profile* profile_ = nullptr;
};

}  // namespace qelm::xpath
