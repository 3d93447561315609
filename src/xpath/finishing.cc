#include "xpath/finishing.h"

namespace qelm::xpath {
namespace {

void FinishPredicate(Index index, ComponentTable* table) {
  const Index operand = (*table)[index].first_child;
  if (operand == 0 || (*table)[operand].next_sibling != 0) return;
  const Kind kind = (*table)[operand].kind;
  if (kind == Kind::kPosition || kind == Kind::kLast || kind == Kind::kLiteralInteger) {
    table->AddFirst(Kind::kPosition, index);
  } else if (IsFunctionWithTerms(kind)) {
    (*table)[table->Add(Kind::kLiteralString, index)].value = "true";
  } else {
    return;
  }
  (*table)[index].comparison = Operator::kEqual;
}

}  // namespace

void FinishComponents(Index first, ComponentTable* table) {
  // Predicates add components, which need no finishing themselves.
  const Index end = table->NextFree();
  for (Index index = first; index < end; ++index) {
    Component& component = (*table)[index];
    const bool is_literal = component.kind == Kind::kLiteralInteger || component.kind == Kind::kLiteralString;
    if (component.kind == Kind::kPredicate) {
      FinishPredicate(index, table);
    } else if (component.kind == Kind::kNodeHandler) {
      if (component.node_test.starts_with('$')) component.parameter = component.node_test;
      if (component.axis == Axis::kFmProperty) {
        (*table)[component.parent].property = FmPropertyCode(component.node_test);
      }
    } else if (is_literal && component.value.starts_with('$')) {
      component.parameter = component.value;
    }
  }
}

}  // namespace qelm::xpath
