#include "xpath/tree.h"

namespace qelm::xpath {

host::Id Tree::RootOf(host::Id element) {
  const host::Id flow = elements_.FlowOf(document_, element);
  if (const host::Id root = flow == host::kNone ? host::kNone : elements_.Root(document_, flow)) return root;
  WalkGuard guard(*this);
  for (host::Id above = Parent(element); above != host::kNone && guard.Step(); above = Parent(element)) {
    element = above;
  }
  return element;
}

host::Id Tree::Resolve(const StepPlan& step) {
  if (step.number >= resolved_.size()) resolved_.resize(step.number + 1);
  Resolved& resolved = resolved_[step.number];
  resolved.known = true;
  // No element has an empty name; what a host answers for one does not count.
  if (!step.name.empty()) resolved.definition = definitions_.FindDefinition(document_, step.name);
  return resolved.definition;
}

}  // namespace qelm::xpath
