// The walk over one flow's element tree, which tests each element and carries its verdict out.
//
// The walk is a loop with a direction, not a recursion: it goes to the first child, else to the next sibling,
// else up to the parent, which it then meets a second time and does not enter again. A hidden element is left
// without entering it. Before an element is deleted, the element to go on with is chosen; when the whole
// table went with it, the walk goes on behind the table.
//
// What is kept is passed over, many nodes at a time: the steps from one element to the next are taken only
// where one fails. All of them are taken where a log is told of each, and where text nodes are visited, as
// the walk then goes back to the parent of what it deletes.
#pragma once

#include <optional>

#include "filtering/document_filter.h"
#include "filtering/hiding.h"
#include "filtering/id_set.h"
#include "filtering/verdicts.h"
#include "messages/debug_prompts.h"
#include "messages/esc_poll.h"
#include "schemes/tree_walk.h"

namespace qelm::filtering {

class TreeFilter {
 public:
  // One for all flows of a document. `hiding` is what modes 1 and 2 hide with; mode 3 does not use it.
  TreeFilter(FilterContext& context, messages::DebugPrompts& prompts, host::Id document, Verdicts& verdicts,
             Hiding& hiding);

  // Filters the tree under `top`, itself included. The outcome is in the run's cancel flag and counts.
  void Run(host::Id top);

 private:
  enum class Direction : std::uint8_t { kDown = 1, kAcross = 2, kUp = 3 };

  // What stands around an element before it is deleted. The table is the one that it is a part of.
  struct Surroundings {
    host::Id parent = host::kNone;
    host::Id before = host::kNone;
    host::Id table = host::kNone;
    host::Id behind_part = host::kNone;  // of a row: what stands behind the part that the row is in
    host::Id behind_table = host::kNone;
    host::Id above_table = host::kNone;
  };

  bool Cancelled() { return esc_poll_.Due() && WantsToStop(); }
  bool WantsToStop();
  bool Fails(host::Id element, bool is_new);
  // Keeps what follows an element as far as to the next one that fails, and goes on at the last node before
  // that. False when the run was cancelled.
  bool PassKept(host::Id* element);
  // Carry a verdict out and set the element to go on with. False when the walk ends here.
  bool Hide(host::Id element);
  bool LeaveTitle(host::Id title);
  bool Delete(host::Id* element);
  bool DeleteNow(host::Id element);
  bool CannotDelete(host::Id element, std::string_view why);

  // What is around an element, which is asked once as long as nothing changes.
  const host::ElementAround& Around(host::Id element) {
    if (element != around_of_) {
      around_ = host_.elements.Around(document_, element);
      around_of_ = element;
    }
    return around_;
  }
  void ForgetAround() { around_of_ = host::kNone; }
  host::Id Next(host::Id element);
  host::Id Step(host::Id element);
  // The next element that is not in this one.
  host::Id Behind(host::Id element);
  Surroundings LookAround(host::Id element);
  // Where to go on when what stood behind a deleted element went with it.
  host::Id GoOnElsewhere(const Surroundings& around);
  host::Id GoOnBehindTable(const Surroundings& around);
  bool TakesTableAlong(host::Id element, host::Id table);

  bool Visits(host::Id element);
  // Whether a definition has a name is asked once.
  bool HasName(host::Id definition) {
    return definition != host::kNone && (named_.Holds(definition) || FindName(definition));
  }
  bool FindName(host::Id definition);
  bool IsNamed(host::Id element);
  void Count(host::Id element, std::uint64_t* counter);
  void Fail(Ending ending, std::string_view id, host::Id element, const std::string& why);
  std::string Tag(host::Id element);

  FilterContext& context_;
  host::Host& host_;
  FilterRun& run_;
  messages::DebugPrompts& prompts_;
  host::Id document_;
  Verdicts& verdicts_;
  Hiding& hiding_;
  bool hides_;        // modes 1 and 2
  bool text_nodes_;   // text nodes are visited as well
  bool passes_;       // what is kept is passed over
  bool locked_text_;  // there is text that the run is not to touch, and the host refuses to
  IdSet kept_;        // had the verdict KEEP
  IdSet walked_;      // parents that the walk stepped up to: all their children had their verdict
  IdSet named_;       // definitions that have a name
  std::optional<schemes::TreeWalk> ahead_;  // what follows in the tree, for passing over it
  host::Id top_ = host::kNone;
  host::Id stop_ = host::kNone;
  host::Id around_of_ = host::kNone;
  host::ElementAround around_;
  Direction direction_ = Direction::kDown;
  bool advance_ = true;
  messages::EscPoll esc_poll_;
};

}  // namespace qelm::filtering
