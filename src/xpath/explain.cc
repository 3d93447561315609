#include "xpath/explain.h"

#include <fmt/format.h>

#include "xpath/describe.h"
#include "xpath/engine_messages.h"
#include "xpath/engine_state.h"
#include "xpath/profile.h"

namespace qelm::xpath {
namespace {

void Fill(const ComponentTable& table, const Plan& plan, const Profile& profile, Explanation* explanation) {
  for (const StepPlan& step : plan.paths.front().steps) {
    const ProfileEntry measured = profile.Step(step.number);
    ExplainedStep& explained = explanation->steps.emplace_back();
    explained.text = DescribeStep(table, step.component);
    explained.kept = measured.kept;
    explained.elapsed_ms = measured.elapsed_ms;
    for (std::size_t place = 0; place < step.predicates.size(); ++place) {
      const ProfileEntry entry = profile.Predicate(step.number, place);
      explained.predicates.push_back({DescribePredicate(table, step.predicates[place].component), entry.asked,
                                      entry.kept, entry.elapsed_ms});
    }
  }
}

}  // namespace

bool Explain(Engine& engine, host::Id document, host::Id context, std::int32_t sequence,
             Explanation* explanation) {
  Engine::State& state = engine.state();
  *explanation = Explanation();
  if (!state.table.IsExpression(sequence)) {
    state.messenger.Alert(kUnknownSequence);
    return false;
  }
  const SearchStart start{document, context, host::kNone, state.attribute_values_mode != 0};
  Search search(state.host, state.indexes, start);
  search.LimitWork(state.most_steps);
  search.Begin(state.table, sequence, state.parameters, start);
  Profile profile;
  const bool measured = search.All(&profile, &explanation->matches);
  explanation->index_ms = profile.IndexMilliseconds();
  if (search.Why() != Failure::kNone) {
    ShowFailure(state.messenger, search.Why(), search.Expression());
    return false;
  }
  Fill(state.table, search.GetPlan(), profile, explanation);
  return measured;
}

std::string ExplanationText(const Explanation& explanation) {
  std::string text = fmt::format("{:>10}  {:>10}  step\n", "nodes", "ms");
  for (const ExplainedStep& step : explanation.steps) {
    text += fmt::format("{:>10}  {:>10.3f}  {}\n", step.kept, step.elapsed_ms, step.text);
    for (const ExplainedPredicate& predicate : step.predicates) {
      text += fmt::format("{:>10}  {:>10.3f}    [{}] of {}\n", predicate.kept, predicate.elapsed_ms,
                          predicate.text, predicate.asked);
    }
  }
  if (explanation.index_ms > 0) {
    text += fmt::format("{:>10}  {:>10.3f}  the document's index, kept until the document is edited\n", "",
                        explanation.index_ms);
  }
  return text;
}

}  // namespace qelm::xpath
