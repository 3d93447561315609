#include "filtering/tree_filter.h"

#include <algorithm>

#include "filtering/delete_element.h"
#include "messages/document_name.h"

namespace qelm::filtering {
namespace {

using host::ElementKind;
using host::Id;
using host::kNone;

bool AnyInsetLocked(host::Tables& tables, Id document) {
  for (Id inset = tables.FirstInset(document); inset != kNone; inset = tables.NextInset(document, inset)) {
    if (tables.InsetLocked(document, inset)) return true;
  }
  return false;
}

}  // namespace

TreeFilter::TreeFilter(FilterContext& context, messages::DebugPrompts& prompts, Id document,
                       Verdicts& verdicts, Hiding& hiding)
    : context_(context),
      host_(context.host),
      run_(context.run),
      prompts_(prompts),
      document_(document),
      verdicts_(verdicts),
      hiding_(hiding),
      hides_(context.run.mode != LaunchMode::kDuplicate),
      text_nodes_(context.scheme.is_xpath && context.run.consider_text_nodes),
      passes_(!text_nodes_ && !context.log.sink),
      locked_text_(!context.run.filter_text_insets && AnyInsetLocked(context.host.tables, document)) {
  const Id limit = host_.elements.IdLimit(document);
  kept_.Reset(limit);
  walked_.Reset(limit);
}

void TreeFilter::Run(Id top) {
  run_.cancel_flag = 0;
  ForgetAround();
  direction_ = Direction::kDown;
  advance_ = true;
  esc_poll_ = {};
  if (document_ == kNone || top == kNone) {
    if (run_.prompts) context_.messenger.Alert("QELM_MSG_FILTER_30");
    run_.ending = Ending::kMissingElement;
    run_.cancel_flag = 1;
    return;
  }
  if (hides_ && !hiding_.Ready() && !run_.dry_run) {
    prompts_.Ask("Failed to retrieve the Hidden condition!\n\nContinue debug prompts?");
  }
  top_ = top;
  ahead_.emplace(host_.elements, document_, top);
  stop_ = host_.elements.NextSibling(document_, top);
  if (stop_ == kNone) stop_ = host_.elements.Parent(document_, top);
  for (Id element = top; element != kNone && element != stop_; element = Next(element)) {
    if (Cancelled()) return;
    // A parent that the walk comes back to was kept, or it would not be there.
    const bool is_new = !kept_.Holds(element);
    if (!Fails(element, is_new)) {
      if (passes_ && is_new && !PassKept(&element)) return;
      continue;
    }
    if (prompts_.On()) {
      host_.text.SelectElement(document_, element);
      prompts_.Ask("Deleting: %s element.\n\nContinue debugging?", Tag(element));
    }
    if (!(hides_ ? Hide(element) : Delete(&element))) return;
  }
}

bool TreeFilter::WantsToStop() {
  if (!host_.user.EscPressed() || !context_.messenger.Ask("QELM_MSG_FILTER_20")) return false;
  run_.cancelled = true;
  run_.ending = Ending::kByUser;
  run_.cancel_flag = 1;
  if (!run_.dry_run) host_.documents.SetSwitch(document_, host::DocumentSwitch::kOnScreen, true);
  return true;
}

bool TreeFilter::Fails(Id element, bool is_new) {
  context_.log(document_, element, "Preparing for filter check");
  const bool fails =
      is_new && verdicts_.Fails(element, Around(element).definition, Around(element).may_have_attributes);
  if (is_new && !fails) {
    kept_.Add(element);
    Count(element, &run_.kept);
  }
  context_.log(document_, element,
               fails ? "Filter check complete. Verdict - DELETE" : "Filter check complete. Verdict - KEEP");
  return fails;
}

// The parents that the walk would come back to count where the Esc key is looked at.
bool TreeFilter::PassKept(Id* element) {
  std::uint32_t depth = ahead_->GoOnBehind(*element);
  while (const host::WalkedNode* const node = ahead_->Next()) {
    const bool is_element = HasName(node->definition);
    if (is_element && verdicts_.Fails(node->element, node->definition, node->may_have_attributes)) {
      ahead_->Back();
      return true;
    }
    for (; depth > node->depth; --depth) {
      if (Cancelled()) return false;
    }
    depth = node->depth;
    *element = node->element;
    direction_ = Direction::kDown;
    if (!is_element) continue;
    if (Cancelled()) return false;
    kept_.Add(node->element);
    ++run_.elements;
    ++run_.kept;
  }
  return true;
}

bool TreeFilter::Hide(Id element) {
  direction_ = Direction::kUp;
  context_.log(document_, element, "Preparing to apply the hidden condition");
  if (host_.elements.Kind(document_, element) == ElementKind::kTableTitle) return LeaveTitle(element);
  if (!run_.dry_run && !(hiding_.Ready() && hiding_.HideElement(element))) {
    // Without the tag the run goes on, and the driver says at its end that nothing was hidden. Locked text
    // insets stay as they are when the run is not to filter them.
    Count(element, &run_.left);
    if (!hiding_.Ready() || locked_text_) return true;
    Fail(Ending::kNotHidden, "QELM_MSG_FILTER_41", element, std::string(host_.documents.LastError()));
    return false;
  }
  ForgetAround();
  Count(element, &run_.hidden);
  if (run_.dry_run) run_.would_go.push_back(element);
  context_.log(document_, element, "Hidden condition applied");
  return true;
}

bool TreeFilter::LeaveTitle(Id title) {
  Count(title, &run_.left);
  if (!run_.prompts || run_.dry_run) return true;
  const std::string text = context_.messenger.Format("QELM_MSG_FILTER_32", Tag(title));
  if (context_.messenger.AskFormatted("QELM_MSG_FILTER_32", text)) return true;
  host_.documents.Activate(document_);
  host_.documents.SetSwitch(document_, host::DocumentSwitch::kOnScreen, true);
  run_.ending = Ending::kTitleStays;
  run_.cancel_flag = std::max<Id>(host_.elements.Parent(document_, title), 1);
  return false;
}

bool TreeFilter::Delete(Id* element) {
  const Surroundings around = LookAround(*element);
  // A deletion that is only counted leaves the first child where it is: going on at the parent would meet it
  // again.
  const bool at_parent =
      text_nodes_ && !run_.dry_run && *element != top_ && around.before == kNone && around.parent != kNone;
  Id next = at_parent ? around.parent : Behind(*element);
  const bool takes_table = run_.dry_run && TakesTableAlong(*element, around.table);

  if (!DeleteNow(*element)) return false;
  if (takes_table) {
    run_.would_go.push_back(around.table);
    next = GoOnBehindTable(around);
  } else if (!run_.dry_run && next != kNone && !host_.elements.IsElement(document_, next)) {
    next = GoOnElsewhere(around);
  } else if (at_parent && host_.elements.IsElement(document_, *element)) {
    next = Behind(*element);  // the host emptied it, and kept it
  }
  direction_ = Direction::kDown;
  advance_ = false;
  *element = next;
  return true;
}

TreeFilter::Surroundings TreeFilter::LookAround(Id element) {
  host::Elements& elements = host_.elements;
  Surroundings around;
  around.parent = elements.Parent(document_, element);
  around.before = elements.PreviousSibling(document_, element);
  around.table = TableOfPart(host_, document_, element);
  if (around.table == kNone) return around;
  if (around.parent != around.table) around.behind_part = elements.NextSibling(document_, around.parent);
  around.behind_table = elements.NextSibling(document_, around.table);
  around.above_table = elements.Parent(document_, around.table);
  return around;
}

Id TreeFilter::GoOnElsewhere(const Surroundings& around) {
  if (around.table == kNone) {
    // Text nodes on both sides of what was deleted may have become one.
    if (around.before != kNone && host_.elements.IsElement(document_, around.before)) {
      return Behind(around.before);
    }
    return host_.elements.IsElement(document_, around.parent) ? around.parent : kNone;
  }
  if (!host_.elements.IsElement(document_, around.table)) return GoOnBehindTable(around);
  // A heading or footing went with its last row.
  if (around.behind_part != kNone) return around.behind_part;
  walked_.Add(around.table);
  return around.table;
}

Id TreeFilter::GoOnBehindTable(const Surroundings& around) {
  if (around.behind_table != kNone) return around.behind_table;
  walked_.Add(around.above_table);
  return around.above_table;
}

bool TreeFilter::DeleteNow(Id element) {
  if (run_.dry_run) {
    const bool cell = IsNamed(element) && host_.elements.Kind(document_, element) == ElementKind::kTableCell;
    if (cell) return CannotDelete(element, {});
    run_.would_go.push_back(element);
    Count(element, &run_.deleted);
    return true;
  }
  const bool counts = IsNamed(element);  // asked while it is still there
  context_.log(document_, element, "Preparing to delete");
  DeleteOutcome outcome;
  if (bw_DeleteElement(host_, document_, element, &outcome, context_.log) == 0) {
    // The kind is refused before the host is asked; only the host has more to say.
    return CannotDelete(element, outcome.refused_kind() ? std::string_view() : host_.documents.LastError());
  }
  ForgetAround();
  context_.log(document_, kNone, "Deleted element");
  run_.elements += counts ? 1 : 0;
  run_.deleted += counts ? 1 : 0;
  return true;
}

bool TreeFilter::CannotDelete(Id element, std::string_view why) {
  const std::string reason(why);  // what the host says may change with the next call
  if (!run_.dry_run) host_.text.SelectElement(document_, element);
  Fail(Ending::kNotDeleted, "QELM_MSG_FILTER_31", element, reason);
  return false;
}

Id TreeFilter::Next(Id element) {
  if (element == kNone || element == stop_) return element;
  if (!advance_) {
    advance_ = true;
    if (Visits(element)) return element;
  }
  do {
    element = Step(element);
  } while (element != kNone && element != stop_ && !Visits(element));
  return element;
}

Id TreeFilter::Step(Id element) {
  const host::ElementAround& around = Around(element);
  // What has been walked is not entered again when a deletion sets the direction back: all in it is kept.
  if (direction_ != Direction::kUp && around.first_child != kNone && !walked_.Holds(element)) {
    direction_ = Direction::kDown;
    return around.first_child;
  }
  if (around.next_sibling != kNone) {
    direction_ = Direction::kAcross;
    return around.next_sibling;
  }
  direction_ = Direction::kUp;
  walked_.Add(around.parent);
  return around.parent;
}

Id TreeFilter::Behind(Id element) {
  direction_ = Direction::kUp;
  return Next(element);
}

bool TreeFilter::TakesTableAlong(Id element, Id table) {
  host::Elements& elements = host_.elements;
  if (table == kNone) return false;
  const ElementKind kind = elements.Kind(document_, element);
  if (kind != ElementKind::kTableRow) return kind == ElementKind::kTableBody;
  const Id part = elements.Parent(document_, element);
  if (part == table || elements.Kind(document_, part) != ElementKind::kTableBody) return false;
  if (elements.NextSibling(document_, element) != kNone) return false;
  // In a real run the rows before it that failed are gone by now.
  for (Id row = elements.PreviousSibling(document_, element); row != kNone;
       row = elements.PreviousSibling(document_, row)) {
    if (kept_.Holds(row)) return false;
  }
  return true;
}

bool TreeFilter::Visits(Id element) { return text_nodes_ || HasName(Around(element).definition); }

bool TreeFilter::FindName(Id definition) {
  if (host_.definitions.DefinitionName(document_, definition).empty()) return false;
  named_.Add(definition);
  return true;
}

bool TreeFilter::IsNamed(Id element) {
  // Where text nodes are not visited, everything behind the first element was found to have a name.
  return (!text_nodes_ && element != top_) || !schemes::IsTextNode(host_, document_, element);
}

void TreeFilter::Count(Id element, std::uint64_t* counter) {
  if (!IsNamed(element)) return;
  ++run_.elements;
  ++*counter;
}

void TreeFilter::Fail(Ending ending, std::string_view id, Id element, const std::string& why) {
  run_.ending = ending;
  run_.cancel_flag = 1;
  const std::string document = messages::DocumentName(host_.documents, document_);
  run_.why = context_.messenger.Format(id, document, Tag(element), why);
  if (run_.prompts) context_.messenger.AlertFormatted(id, run_.why);
}

std::string TreeFilter::Tag(Id element) { return schemes::ElementTag(host_, document_, element); }

}  // namespace qelm::filtering
