#include "coloring/node_positions.h"

#include "coloring/classic_matcher.h"
#include "schemes/expressions.h"

namespace qelm::coloring {

bool NodePositions::Evaluate(xpath::Engine& engine, const schemes::Scheme& scheme, host::Elements& elements,
                             host::Id document, host::Id root) {
  places_.assign(elements.IdLimit(document), {});
  const schemes::AttributeMode mode(engine, scheme.include_edd_defaults);
  bool complete = true;
  xpath::MatchList matches;
  for (std::uint32_t rule = 0; rule < scheme.rules.size(); ++rule) {
    std::uint32_t position = 0;
    for (const schemes::Condition& condition : scheme.rules[rule].conditions) {
      for (const std::string& expression : condition.values) {
        matches.clear();
        complete = schemes::Select(engine, document, root, expression, &matches) && complete;
        Take(rule, matches, document, &position);
      }
    }
  }
  return complete;
}

void NodePositions::Take(std::uint32_t rule, const xpath::MatchList& matches, host::Id document,
                         std::uint32_t* position) {
  for (const xpath::Match& match : matches) {
    // An attribute that was selected does not select the element that carries it.
    if (match.document != document || match.attribute >= 0 || match.element >= places_.size()) continue;
    Place& place = places_[match.element];
    if (place.last_set == rule + 1) continue;
    place.last_set = rule + 1;
    ++*position;
    if (place.position != 0 && place.position <= *position) continue;
    place.position = *position;
    place.rule = rule;
  }
}

std::int32_t NodePositions::RuleOf(host::Id element) const {
  if (element >= places_.size() || places_[element].position == 0) return kNoRule;
  return static_cast<std::int32_t>(places_[element].rule);
}

}  // namespace qelm::coloring
