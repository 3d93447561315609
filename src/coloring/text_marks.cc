#include "coloring/text_marks.h"

#include <array>
#include <vector>

#include "schemes/flows.h"

namespace qelm::coloring {
namespace {

using host::ElementKind;
using host::Id;
using host::kNone;
using host::TextProperties;
using host::TextRange;

// What one of the three settings on a footnote reaches.
struct FootnoteReach {
  bool mark;  // the reference mark in the text
  bool text;  // the footnote's own paragraphs
  bool ends;  // the last of their ends as well
};
constexpr std::array<FootnoteReach, 3> kFootnoteReaches = {{
    {true, false, false},
    {false, true, false},
    {true, true, true},
}};

// Visits the elements of one flow and sets the properties where no range that was set before reaches.
class FlowMarks {
 public:
  FlowMarks(host::Host& host, Id document, TextScope scope, const TextProperties& properties)
      : host_(host), document_(document), scope_(scope), properties_(properties) {}

  bool Set(Id root);

 private:
  // Sets the properties on the element where they are to be. Returns whether all text in it has them then.
  bool Visit(Id element, bool reached);
  bool Wanted(Id element, ElementKind kind);

  host::Host& host_;
  Id document_;
  TextScope scope_;
  const TextProperties& properties_;
  bool done_ = true;
};

bool FlowMarks::Wanted(Id element, ElementKind kind) {
  if (kind == ElementKind::kText) return false;
  return scope_ == TextScope::kAllText || StandsInOthersText(kind) ||
         host_.text.HasOwnText(document_, element);
}

bool FlowMarks::Visit(Id element, bool reached) {
  const ElementKind kind = host_.elements.Kind(document_, element);
  if (kind == ElementKind::kFootnote) {
    done_ = SetOnFootnote(host_.text, document_, element, properties_) && done_;
    return true;
  }
  if (BeginsTextOfItsOwn(kind)) reached = false;
  if (reached || !Wanted(element, kind)) return reached;
  const TextRange range = host_.text.ElementRange(document_, element);
  done_ = (range.Empty() || host_.text.WriteProperties(document_, range, properties_)) && done_;
  return true;
}

bool FlowMarks::Set(Id root) {
  host::Elements& elements = host_.elements;
  std::vector<bool> reached;  // by depth: whether the text of an element there has the properties already
  reached.push_back(false);
  for (Id element = root; element != kNone;) {
    const bool inside = Visit(element, reached.back());
    if (const Id child = elements.FirstChild(document_, element); child != kNone) {
      reached.push_back(inside);
      element = child;
      continue;
    }
    Id next = kNone;
    while (element != root && (next = elements.NextSibling(document_, element)) == kNone) {
      element = elements.Parent(document_, element);
      reached.pop_back();
    }
    element = next;
  }
  return done_;
}

}  // namespace

bool SetOnFootnote(host::Text& text, Id document, Id footnote, const TextProperties& properties) {
  const TextRange whole = text.ElementRange(document, footnote);
  const TextRange inside = text.AnchoredRange(document, footnote);
  if (whole.Empty()) return false;
  if (inside.Empty()) return text.WriteProperties(document, whole, properties);
  bool done = true;
  for (const FootnoteReach& reach : kFootnoteReaches) {
    const TextRange mark{whole.begin, inside.begin};
    const TextRange own{inside.begin, reach.ends ? whole.end : inside.end};
    if (reach.mark) done = text.WriteProperties(document, mark, properties) && done;
    if (reach.text) done = text.WriteProperties(document, own, properties) && done;
  }
  return done;
}

bool SetAllTextProperties(host::Host& host, Id document, TextScope scope, const TextProperties& properties) {
  bool done = true;
  for (const schemes::FlowRoot& flow : schemes::AllFlows(host, document)) {
    if (flow.root == kNone) continue;
    done = FlowMarks(host, document, scope, properties).Set(flow.root) && done;
  }
  return done;
}

}  // namespace qelm::coloring
