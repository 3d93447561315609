// What an expression costs and where: its steps with the number of nodes that each one kept and the time that
// it took, the predicates of each step likewise. The expression is evaluated step by step as for all matches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "xpath/engine.h"

namespace qelm::xpath {

struct ExplainedPredicate {
  std::string text;
  std::size_t asked = 0;  // of so many nodes
  std::size_t kept = 0;
  double elapsed_ms = 0;
};

struct ExplainedStep {
  std::string text;  // in the long form, with its predicates
  std::size_t kept = 0;
  double elapsed_ms = 0;  // predicates included
  // Those that are asked of nodes one by one or together. Positions are part of finding the nodes.
  std::vector<ExplainedPredicate> predicates;
};

struct Explanation {
  double index_ms = 0;  // for making the document's index, which is kept; 0 when it was there
  std::vector<ExplainedStep> steps;
  MatchList matches;  // all, whatever the engine's maximum
};

// Evaluates a parsed expression from `context` (0: as xpath_MatchAll). Returns false when there is no such
// expression or the search failed, which it has then said by an alert, and for documents that can only be
// walked, node after node, where there are no steps to measure.
bool Explain(Engine& engine, host::Id document, host::Id context, std::int32_t sequence,
             Explanation* explanation);

// The explanation as a table for people, a line for each step and predicate.
std::string ExplanationText(const Explanation& explanation);

}  // namespace qelm::xpath
