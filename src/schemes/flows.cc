#include "schemes/flows.h"

namespace qelm::schemes {

using host::Id;
using host::kNone;

FlowRoot MainFlow(host::Host& host, Id document) {
  const Id flow = host.elements.MainFlow(document);
  return {flow, flow == kNone ? kNone : host.elements.Root(document, flow)};
}

std::vector<FlowRoot> AllFlows(host::Host& host, Id document) {
  std::vector<FlowRoot> flows;
  for (Id flow = host.elements.FirstFlow(document); flow != kNone;
       flow = host.elements.NextFlow(document, flow)) {
    flows.push_back({flow, host.elements.Root(document, flow)});
  }
  return flows;
}

std::vector<FlowRoot> FlowsOf(host::Host& host, const Scheme& scheme, Id document) {
  if (scheme.process_all_flows) return AllFlows(host, document);
  const FlowRoot main = MainFlow(host, document);
  return main.flow == kNone ? std::vector<FlowRoot>() : std::vector<FlowRoot>{main};
}

bool IsTextNode(host::Host& host, Id document, Id element) {
  const Id definition = host.elements.Definition(document, element);
  return definition == kNone || host.definitions.DefinitionName(document, definition).empty();
}

bool TextNodes::Has(Id definition) {
  if (definition == kNone) return true;
  Known& known = known_[definition % known_.size()];
  if (known.definition != definition) {
    known = {definition, definitions_.DefinitionName(document_, definition).empty()};
  }
  return known.is_text;
}

std::string ElementTag(host::Host& host, Id document, Id element) {
  const Id definition = host.elements.Definition(document, element);
  return std::string(host.definitions.DefinitionName(document, definition));
}

}  // namespace qelm::schemes
