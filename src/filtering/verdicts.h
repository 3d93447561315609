// Which elements of a document fail the scheme.
//
// A classic scheme is asked element by element. An XPath scheme is evaluated once a flow, before anything of
// the document is changed: what its expressions select is kept as one bit an element, so that a verdict is a
// look-up. One set serves all flows: an expression that stays in its flow selects nothing of another one, and
// one that goes over all flows selects the same from each.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "filtering/classic_rules.h"
#include "filtering/document_filter.h"
#include "filtering/id_set.h"
#include "schemes/attribute_values.h"
#include "schemes/flows.h"

namespace qelm::filtering {

using schemes::FlowRoot;
using schemes::FlowsOf;
using schemes::MainFlow;

class Verdicts {
 public:
  Verdicts(FilterContext& context, host::Id document);

  // Makes ready for elements of these flows. False, after an alert where the run has prompts, when the scheme
  // cannot be used: the run's ending then says why, its cancel flag is 1, and nothing of the document has
  // changed.
  bool Prepare(const std::vector<FlowRoot>& flows);

  // Whether the element fails the scheme and is to go. It must be in one of the flows.
  bool Fails(host::Id element) { return Fails(element, host::kNone, true); }
  // The same where it is known whether the element may carry attributes itself: one that does not passes as
  // others of its definition do.
  bool Fails(host::Id element, host::Id definition, bool may_have_attributes);

 private:
  bool ExpressionsAreValid();
  bool Evaluate(host::Id root);
  bool EvaluateOne(host::Id root, const std::string& expression, xpath::MatchList* matches);
  bool Refuse(Ending ending, std::string_view id, const std::string& text);

  FilterContext& context_;
  host::Id document_;
  IdSet selected_;
  std::optional<ClassicRules> rules_;
  // Definitions whose elements without attributes were found to pass, and those whose fail.
  IdSet passing_;
  IdSet failing_;
  schemes::AttributeReader reader_;
};

}  // namespace qelm::filtering
