// Predicates for many candidates at once. An existence test is answered backwards: from the elements that the
// path may end on, by each axis the other way round, to the elements from which it gets there; one look then
// tells for each candidate. Comparisons are the same question about the elements whose value satisfies them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "xpath/conditions.h"
#include "xpath/evaluation.h"
#include "xpath/plan.h"
#include "xpath/set_values.h"

namespace qelm::xpath {

class Profile;
class SetSearch;

class SetPredicates {
 public:
  SetPredicates(Evaluation& evaluation, const Plan& plan, SetSearch& search, Profile* profile);

  // Those of the candidates for which the step's predicates hold, in their order. None of the predicates
  // depends on positions.
  RankList Filter(const StepPlan& step, std::span<const std::uint32_t> candidates, bool rising);

  host::Id DefinitionOf(const StepPlan& step);

 private:
  using Ranks = std::span<const std::uint32_t>;
  using Truths = std::vector<std::uint8_t>;  // by place in a list of candidates

  struct Candidates {
    Ranks ranks;
    bool rising = true;
  };

  void OfPredicate(const StepPlan& step, std::size_t place, const Candidates& candidates, Truths* truths);
  void OfOperand(const Operand& operand, const Candidates& candidates, Truths* truths);
  void OfExistence(std::size_t path, const Candidates& candidates, Truths* truths);
  void OfComparison(std::size_t comparison, const Candidates& candidates, Truths* truths);
  void OfPathComparison(std::size_t comparison, bool path_is_left, const Candidates& candidates,
                        Truths* truths);
  template <typename Ask>
  void OfEach(const Candidates& candidates, Truths* truths, Ask&& ask);

  bool IsSetPath(std::size_t path) const;
  bool IsFixed(const Operand& operand) const;
  ValueSet& FixedValues(const Operand& operand, ValueSet* own);
  const AttributeIndex* AttributesOf(const StepPlan& step);

  RankList Where(const Condition& condition, Ranks ranks);
  RankList Domain(const PathPlan& path, std::size_t step, const Candidates& candidates);
  RankList Targets(const PathPlan& path, const Candidates& candidates);
  Condition LeadsTo(const PathPlan& path, Ranks targets, const Candidates& candidates);

  Evaluation& evaluation_;
  Environment& environment_;
  const Plan& plan_;
  SetSearch& search_;
  Profile* profile_;
};

}  // namespace qelm::xpath
