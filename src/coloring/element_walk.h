// The walk over one element tree that finds the rule of each element and marks its text.
//
// Elements come in document order, an element before what is in it, so that what an inner element's rule sets
// lies over what the outer one's set. Under an element whose rule overrides all others nothing is tested.
#pragma once

#include <optional>

#include "coloring/classic_matcher.h"
#include "coloring/coloring.h"
#include "coloring/mark_stack.h"
#include "coloring/node_positions.h"
#include "coloring/rule_colors.h"
#include "messages/debug_prompts.h"
#include "messages/esc_poll.h"
#include "schemes/attribute_values.h"

namespace qelm::coloring {

// Whether elements take attributes that they lack from their ancestors: all of them in a selection, else only
// those that stand for something in the text of another element.
enum class WalkMode : std::uint8_t { kSelection, kDocument };

class ElementWalk {
 public:
  ElementWalk(ColoringContext& context, host::Id document, const RuleMarks& marks, WalkMode mode);

  // Colors `start` and everything in it. Returns kDone or kCancelled.
  std::int32_t Run(host::Id start);

 private:
  void Prepare(host::Id start);
  bool Cancelled();
  void Visit(const host::WalkedNode& node);
  std::int32_t FindRule(const host::WalkedNode& node);
  void Prompt(host::Id element, std::int32_t rule);
  void Count(std::int32_t rule, bool written);

  ColoringContext& context_;
  host::Host& host_;
  host::Id document_;
  const RuleMarks& marks_;
  WalkMode mode_;
  messages::DebugPrompts prompts_;
  messages::EscPoll esc_poll_;
  schemes::AttributeReader reader_;
  std::optional<ClassicMatcher> matcher_;
  NodePositions positions_;
  MarkStack open_marks_;
  host::Id start_ = host::kNone;
  std::size_t start_depth_ = 0;                  // in a selection the ancestors count
  std::optional<std::size_t> overridden_below_;  // elements deeper than this are not tested
};

}  // namespace qelm::coloring
