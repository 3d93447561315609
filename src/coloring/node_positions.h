// Which rule of an XPath coloring scheme an element gets: each rule's expressions give one set of nodes in
// the order in which they were found, and the rule in whose set the element comes first wins. Every
// expression is evaluated once, before anything is colored; what is kept is the best rule so far of each
// element, so that finding it later is a look-up.
#pragma once

#include <cstdint>
#include <vector>

#include "host/interface/elements.h"
#include "schemes/scheme.h"
#include "xpath/engine.h"

namespace qelm::coloring {

class NodePositions {
 public:
  // Evaluates all expressions of the scheme from `root`. False when nodes were left out because of the
  // engine's limit, which it has said.
  bool Evaluate(xpath::Engine& engine, const schemes::Scheme& scheme, host::Elements& elements,
                host::Id document, host::Id root);

  // The rule of the element, kNoRule (classic_matcher.h) when no expression selected it.
  std::int32_t RuleOf(host::Id element) const;

 private:
  struct Place {
    std::uint32_t position = 0;  // from 1; 0: in no set
    std::uint32_t rule = 0;
    std::uint32_t last_set = 0;  // the number of the rule, from 1, in whose set it was found last
  };

  void Take(std::uint32_t rule, const xpath::MatchList& matches, host::Id document, std::uint32_t* position);

  std::vector<Place> places_;  // by element
};

}  // namespace qelm::coloring
