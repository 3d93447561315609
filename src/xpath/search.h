// One search: an expression evaluated in a document from a context, match after match. It keeps where it
// stands, so that the next match costs only the way to it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "xpath/engine.h"
#include "xpath/environment.h"
#include "xpath/evaluation.h"
#include "xpath/plan.h"

namespace qelm::xpath {

class Profile;

// Where a search begins.
struct SearchStart {
  host::Id document = host::kNone;
  host::Id context = host::kNone;  // 0: the root element of the flow "Main", or else of the main flow
  host::Id flow = host::kNone;     // for expressions that begin with a flow axis: this flow only
  bool with_defaults = true;       // attributes have the defaults of their definitions
};

class Search {
 public:
  Search(host::Host& host, DocumentIndexes& indexes, const SearchStart& start)
      : environment_(host, indexes, start.document, start.with_defaults) {}

  // Prepares the search for an expression of the table, which is not needed any longer then.
  void Begin(const ComponentTable& table, Index sequence, const ParameterMap& parameters,
             const SearchStart& start);
  void LimitWork(std::uint64_t most_steps) { environment_.LimitWork(most_steps); }

  // The next match; false when there is none left or the search has failed.
  bool Next(Match* match);
  // Whether All is faster than Next for all matches: there is an index, or the expression goes through much
  // of the document.
  bool PaysSetBySet();
  // Lets Next fail with Failure::kLong when it turns out to be slower after all.
  void StopWhenLong();
  // Remembers for later searches how long it was.
  void TellLength() {
    if (!starts_.empty()) environment_.TellSteps(starts_.front().tree);
  }
  // Back to the first match, without that limit.
  void Restart();
  // All matches at once, in the order of Next, instead of it. False, with nothing done, for a document that
  // can only be walked. Measures into `profile` (null: not).
  bool All(Profile* profile, MatchList* matches);
  const Plan& GetPlan() const { return plan_; }
  Failure Why() const { return environment_.Why(); }
  const std::string& Expression() const { return expression_; }

  // Whether Next has said that there is no match left; and the match that it gave last.
  bool IsSpent() const { return spent_; }
  const Match& Last() const { return last_; }

  // To be called when the document may have been edited since the last match.
  void Refresh() { environment_.ForgetAttributes(); }

 private:
  void FindStarts(const SearchStart& start);
  bool CanGoSetBySet() const;
  Match MatchOf(const Node& node);

  Environment environment_;
  std::string expression_;
  Plan plan_;
  std::unique_ptr<Evaluation> evaluation_;
  std::unique_ptr<PathRun> run_;
  std::vector<Node> starts_;
  std::size_t next_start_ = 0;
  bool started_ = false;
  bool spent_ = false;
  Match last_;
};

// The root element of the flow named "Main", or of the main flow where none is named so.
host::Id DefaultContext(host::Elements& elements, host::Id document);

}  // namespace qelm::xpath
