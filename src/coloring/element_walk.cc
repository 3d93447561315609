#include "coloring/element_walk.h"

#include "coloring/text_marks.h"
#include "schemes/flows.h"
#include "schemes/styles.h"
#include "schemes/tree_walk.h"

namespace qelm::coloring {

using host::Id;
using host::kNone;

ElementWalk::ElementWalk(ColoringContext& context, Id document, const RuleMarks& marks, WalkMode mode)
    : context_(context),
      host_(context.host),
      document_(document),
      marks_(marks),
      mode_(mode),
      prompts_(context.messenger),
      reader_(context.host.definitions, context.host.elements, document, context.scheme),
      open_marks_(context.host, document, [this](std::int32_t rule, bool written) { Count(rule, written); }) {
}

std::int32_t ElementWalk::Run(Id start) {
  Prepare(start);
  std::int32_t result = common::kDone;
  schemes::TreeWalk walk(host_.elements, document_, start);
  while (const host::WalkedNode* node = walk.Next()) {
    if (Cancelled()) {
      result = common::kCancelled;
      break;
    }
    Visit(*node);
    if (context_.run.only_element) break;
  }
  open_marks_.End();
  return result;
}

void ElementWalk::Prepare(Id start) {
  start_ = start;
  start_depth_ = 0;
  overridden_below_.reset();
  if (context_.scheme.is_xpath) {
    const Id root = host_.elements.Root(document_, host_.elements.FlowOf(document_, start));
    if (!positions_.Evaluate(context_.engine, context_.scheme, host_.elements, document_, root)) {
      context_.run.node_set_cut = true;
    }
    return;
  }
  matcher_.emplace(context_.scheme);
  if (mode_ == WalkMode::kDocument) return;
  std::vector<Id> ancestors;
  for (Id above = host_.elements.Parent(document_, start); above != kNone;
       above = host_.elements.Parent(document_, above)) {
    ancestors.push_back(above);
  }
  for (auto above = ancestors.rbegin(); above != ancestors.rend(); ++above) {
    matcher_->Enter(start_depth_++, reader_.Read(*above));
  }
}

bool ElementWalk::Cancelled() {
  if (!esc_poll_.Due() || !host_.user.EscPressed() || !context_.messenger.Ask("QELM_MSG_GEN_14")) {
    return false;
  }
  context_.run.cancelled = true;
  context_.run.ending = Ending::kByUser;
  return true;
}

void ElementWalk::Visit(const host::WalkedNode& node) {
  ++context_.run.visited;
  const std::size_t depth = start_depth_ + node.depth;
  if (overridden_below_) {
    if (depth > *overridden_below_) return;
    overridden_below_.reset();
  }
  open_marks_.Visit(depth, node.kind);
  const std::int32_t rule = FindRule(node);
  if (rule == kNoRule) return;
  Prompt(node.element, rule);
  open_marks_.Begin(depth, node.element, node.kind, marks_.rules[static_cast<std::size_t>(rule)], rule);
  if (context_.scheme.rules[static_cast<std::size_t>(rule)].override_others) overridden_below_ = depth;
}

std::int32_t ElementWalk::FindRule(const host::WalkedNode& node) {
  if (context_.scheme.is_xpath) return positions_.RuleOf(node.element);
  // A text node has no attributes; with those of its element it would only get the element's rule again.
  if (node.element != start_ && node.kind == host::ElementKind::kText) return kNoRule;
  matcher_->Enter(start_depth_ + node.depth, reader_.Read(node));
  return matcher_->FindRule(mode_ == WalkMode::kSelection || StandsInOthersText(node.kind));
}

void ElementWalk::Prompt(Id element, std::int32_t rule) {
  if (!prompts_.On()) return;
  const schemes::Rule& applied = context_.scheme.rules[static_cast<std::size_t>(rule)];
  host_.text.SelectElement(document_, element);
  prompts_.Ask("Applying rule to element: %s.\n\nRule index: %d\nColor: %s\nStyle: %s\n\nKeep debugging?",
               schemes::ElementTag(host_, document_, element), rule, applied.color,
               std::string(schemes::StyleName(applied.style)));
}

void ElementWalk::Count(std::int32_t rule, bool written) {
  ColoringRun& run = context_.run;
  if (!written) {
    ++run.refused;
    return;
  }
  ++run.colored;
  ++run.rule_elements[static_cast<std::size_t>(rule)];
}

}  // namespace qelm::coloring
