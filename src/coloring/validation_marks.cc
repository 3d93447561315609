#include "coloring/validation_marks.h"

#include "schemes/flows.h"
#include "schemes/tree_walk.h"

namespace qelm::coloring {
namespace {

using host::ElementKind;
using host::Id;
using host::kNone;

// Calls write(node, element) for every stretch of text below `top`: text nodes with the element that holds
// them, and elements whose text is the host's own.
template <typename Write>
void ForEachText(host::Host& host, Id document, Id top, const Write& write) {
  schemes::TextNodes text_nodes(host.definitions, document);
  schemes::TreeWalk walk(host.elements, document, top);
  while (const host::WalkedNode* node = walk.Next()) {
    if (text_nodes.Has(node->definition)) {
      write(node->element, host.elements.Parent(document, node->element));
    } else if (node->kind == ElementKind::kCrossReference || node->kind == ElementKind::kSystemVariable) {
      write(node->element, node->element);
    }
  }
}

void WriteStrikethrough(host::Text& text, Id document, Id node, bool on, ValidationRun* run) {
  host::TextProperties properties;
  properties.mask = host::kStrikethroughProperty;
  properties.strikethrough = on;
  const host::TextRange range = text.ElementRange(document, node);
  if (!range.Empty() && !text.WriteProperties(document, range, properties)) ++run->unmarked;
}

}  // namespace

VerdictMarks::VerdictMarks(host::Host& host, Id document)
    : host_(host),
      document_(document),
      has_verdict_(host.elements.IdLimit(document)),
      violates_(has_verdict_.size()) {}

void VerdictMarks::Set(Id element, bool violates) {
  has_verdict_[element] = true;
  violates_[element] = violates;
}

void VerdictMarks::Write(Id start, StrikethroughUse use, ValidationRun* run) {
  if (use == StrikethroughUse::kLeave) return;
  ForEachText(host_, document_, start, [&](Id node, Id element) {
    if (!has_verdict_[element]) return;
    const bool on = use == StrikethroughUse::kMark && violates_[element];
    WriteStrikethrough(host_.text, document_, node, on, run);
  });
}

void VerdictMarks::WriteWhole(host::Host& host, Id document, Id element, bool violates, ValidationRun* run) {
  if (run->strikethrough == StrikethroughUse::kLeave) return;
  const bool on = run->strikethrough == StrikethroughUse::kMark && violates;
  ForEachText(host, document, element,
              [&](Id node, Id) { WriteStrikethrough(host.text, document, node, on, run); });
}

}  // namespace qelm::coloring
