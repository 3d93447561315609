#include "coloring/mark_stack.h"

namespace qelm::coloring {
namespace {

using host::ElementKind;
using host::TextProperties;

// The properties of an outer mark with those of an inner one on top.
TextProperties Over(TextProperties outer, const TextProperties& inner) {
  const auto sets = [&](host::TextPropertyMask bit) { return (inner.mask & bit) != 0; };
  if (sets(host::kColorProperty)) outer.color = inner.color;
  if (sets(host::kUnderliningProperty)) outer.underlining = inner.underlining;
  if (sets(host::kOverlineProperty)) outer.overline = inner.overline;
  if (sets(host::kStrikethroughProperty)) outer.strikethrough = inner.strikethrough;
  if (sets(host::kChangeBarProperty)) outer.change_bar = inner.change_bar;
  if (sets(host::kBackgroundProperty)) outer.background = inner.background;
  outer.mask |= inner.mask;
  return outer;
}

}  // namespace

const MarkStack::Open* MarkStack::Around(std::size_t barriers) const {
  return !open_.empty() && open_.back().barriers == barriers ? &open_.back() : nullptr;
}

void MarkStack::Begin(std::size_t depth, host::Id element, ElementKind kind, const RuleMark& mark,
                      std::int32_t rule) {
  // A footnote's mark stands in the text around it, what is in the footnote does not.
  const bool footnote = kind == ElementKind::kFootnote;
  const std::size_t barriers = barriers_.size() - (footnote ? 1 : 0);
  const Open* around = Around(barriers);
  TextProperties outer = around == nullptr ? TextProperties{} : around->properties;
  if (mark.from_definition) {
    const host::Id definition = host_.elements.Definition(document_, element);
    if (definition != host::kNone && !host_.editing.SetDefinition(document_, element, definition)) {
      done_(rule, false);
      return;
    }
    ++edits_;
    outer.mask &= host::kChangeBarProperty;  // the definition takes back everything else
  }
  Open open;
  open.depth = depth;
  open.barriers = barriers;
  open.rule = rule;
  open.element = element;
  open.properties = Over(outer, mark.properties);
  open.whole = host_.text.ElementRange(document_, element);
  open.unwritten = open.whole.begin;
  open.located = edits_;
  if (footnote) {
    open.last_inside = element;
    open.written = SetOnFootnote(host_.text, document_, element, mark.properties);
    open.unwritten = open.whole.end;
    const host::TextRange inside = host_.text.AnchoredRange(document_, element);
    if (!inside.Empty()) Write(open.whole.begin, inside.begin, open.properties);
  }
  open_.push_back(std::move(open));
}

void MarkStack::Locate(Open* open) {
  if (open->located == edits_) return;
  open->located = edits_;
  open->whole = host_.text.ElementRange(document_, open->element);
  open->unwritten = open->last_inside == host::kNone
                        ? open->whole.begin
                        : host_.text.ElementRange(document_, open->last_inside).end;
}

bool MarkStack::Write(const host::TextLocation& begin, const host::TextLocation& end,
                      const TextProperties& properties) {
  return properties.mask == 0 || begin == end ||
         host_.text.WriteProperties(document_, {begin, end}, properties);
}

void MarkStack::Close() {
  Open closed = std::move(open_.back());
  open_.pop_back();
  Locate(&closed);
  if (!closed.whole.Empty()) {
    closed.written = Write(closed.unwritten, closed.whole.end, closed.properties) && closed.written;
  }
  done_(closed.rule, closed.written);
  const bool nested = !open_.empty() && open_.back().barriers == closed.barriers;
  if (!nested || !closed.written || closed.whole.Empty()) return;
  Open& outer = open_.back();
  Locate(&outer);
  outer.written = Write(outer.unwritten, closed.whole.begin, outer.properties) && outer.written;
  outer.unwritten = closed.whole.end;
  outer.last_inside = closed.element;
}

}  // namespace qelm::coloring
