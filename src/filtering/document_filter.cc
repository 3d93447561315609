#include <algorithm>

#include "common/utf8.h"
#include "filtering/document_driver.h"
#include "filtering/hiding.h"
#include "filtering/notify.h"
#include "filtering/restore.h"
#include "filtering/run_guards.h"
#include "filtering/tree_filter.h"
#include "messages/debug_prompts.h"
#include "messages/document_name.h"

namespace qelm::filtering {
namespace {

using host::DocumentSwitch;
using host::Id;
using host::kNone;

constexpr std::size_t kStatusNameLimit = 50;

std::string_view Banner(LaunchMode mode) {
  switch (mode) {
    case LaunchMode::kSourceRestoreFirst:
      return "\r\n**************************\r\n**LAUNCHING SOURCE FILE FILTER - Restore first**"
             "\r\n**************************";
    case LaunchMode::kSourceNoRestore:
      return "\r\n**************************\r\n**LAUNCHING SOURCE FILE FILTER - No restore**"
             "\r\n**************************";
    case LaunchMode::kDuplicate:
      break;
  }
  return "\r\n**************************\r\n**LAUNCHING DUPLICATE FILE "
         "FILTER**\r\n**************************";
}

// One document's run, step by step.
class Driver {
 public:
  Driver(FilterContext& context, Id document, Verdicts& verdicts)
      : context_(context),
        host_(context.host),
        run_(context.run),
        document_(document),
        prompts_(context.messenger),
        hiding_(context.host, document),
        verdicts_(verdicts),
        hides_(context.run.mode != LaunchMode::kDuplicate) {}

  void Run(const std::vector<FlowRoot>& flows);
  // Only counts.
  void DryRun(const std::vector<FlowRoot>& flows);

 private:
  void ShowProgress();
  bool PrepareTag();
  bool RestoreFirst();
  void UnlockInsets(UnlockedInsets* insets);
  bool FilterFlows(const std::vector<FlowRoot>& flows);
  void CloseTag();
  bool HidesNow();
  void RemoveColoring();
  void RelockInsets(UnlockedInsets* insets);
  void NotHidden();
  void Log(std::string_view event) { context_.log(document_, kNone, event); }
  std::string Name() { return messages::DocumentName(host_.documents, document_); }

  FilterContext& context_;
  host::Host& host_;
  FilterRun& run_;
  Id document_;
  messages::DebugPrompts prompts_;
  Hiding hiding_;
  Verdicts& verdicts_;
  bool hides_;
};

void Driver::DryRun(const std::vector<FlowRoot>& flows) {
  if (FilterFlows(flows)) run_.ending = Ending::kCompleted;
}

void Driver::Run(const std::vector<FlowRoot>& flows) {
  ShowProgress();
  ScreenUpdatesOff screen(host_.session, document_, run_.disable_screen_updates);
  if (!run_.disable_screen_updates) {
    host_.documents.Activate(document_);
    host_.documents.SetSwitch(document_, DocumentSwitch::kOnScreen, true);
  }
  Log(Banner(run_.mode));
  const bool structured =
      std::any_of(flows.begin(), flows.end(), [](const FlowRoot& flow) { return flow.root != kNone; });
  if (structured) {
    run_.touched = true;
    if (hides_ && !PrepareTag()) return;
    const host::TextRange selection = hides_ ? host_.text.Selection(document_) : host::TextRange{};
    const bool on_screen = host_.documents.Switch(document_, DocumentSwitch::kOnScreen);
    UnlockedInsets insets(host_.tables, document_);
    if (run_.filter_text_insets) UnlockInsets(&insets);
    if (!FilterFlows(flows)) {
      host_.documents.SetSwitch(document_, DocumentSwitch::kOnScreen, on_screen);
      return;
    }
    if (hides_) CloseTag();
    if (run_.remove_coloring) RemoveColoring();
    if (!selection.Empty()) {
      host_.text.SetSelection(document_, selection);
      host_.text.ScrollTo(document_, selection);
    }
    screen.PutBack();
    if (insets.Any()) RelockInsets(&insets);
  }
  Log("\r\n**************************\r\n**FILTER COMPLETE**\r\n**************************");
  if (run_.ending == Ending::kNone) {
    run_.ending = run_.restore_failed ? Ending::kNotRestored : Ending::kCompleted;
  }
}

void Driver::ShowProgress() {
  const std::string name = Name();
  context_.messenger.ShowStatus(
      {"Please wait. Currently processing:", std::string(common::FirstCharacters(name, kStatusNameLimit)),
       ". . .", "Press Esc to cancel"});
}

// The tag to hide with, and what earlier runs hid. False when the user cancelled.
bool Driver::PrepareTag() {
  if (!hiding_.Find(run_.condition_name)) {
    prompts_.Ask("Creating '%s' condition.\n\nKeep debugging?", run_.condition_name);
    hiding_.Create(run_.condition_name);
  }
  if (run_.mode == LaunchMode::kSourceRestoreFirst) return RestoreFirst();
  if (run_.show_before_no_restore && !hiding_.ShowTagged()) NotHidden();
  return true;
}

bool Driver::RestoreFirst() {
  Notify(host_.clients, run_, "QELM_Filter_RestoreDoc_Start");
  Log("Preparing to restore document from previous filter");
  const bool finished = RestoreCore(host_, context_.messenger, run_, document_);
  if (finished) Log("Document restoration complete");
  Notify(host_.clients, run_, "QELM_Filter_RestoreDoc_Complete");
  if (!finished) {
    run_.ending = Ending::kByUser;
    run_.cancel_flag = 1;
  }
  return finished;
}

void Driver::UnlockInsets(UnlockedInsets* insets) {
  Log("Preparing to unlock text insets");
  insets->Unlock();
  Log("Text insets unlocked");
}

void Driver::RelockInsets(UnlockedInsets* insets) {
  Log("Preparing to re-lock text insets");
  insets->Relock();
  Log("Text insets relocked");
}

bool Driver::FilterFlows(const std::vector<FlowRoot>& flows) {
  TreeFilter tree(context_, prompts_, document_, verdicts_, hiding_);
  for (const FlowRoot& flow : flows) {
    if (prompts_.On()) {
      prompts_.Ask("Flow name: %s.\n\nKeep debugging?",
                   std::string(host_.elements.FlowName(document_, flow.flow)));
    }
    if (flow.root == kNone) continue;
    if (prompts_.On()) {
      const Id definition = host_.elements.Definition(document_, flow.root);
      prompts_.Ask("HLE tag: %s\n\nKeep debugging?",
                   std::string(host_.definitions.DefinitionName(document_, definition)));
    }
    tree.Run(flow.root);
    if (run_.cancel_flag != 0) return false;
  }
  return true;
}

bool Driver::HidesNow() {
  if (run_.mode == LaunchMode::kSourceRestoreFirst) return true;
  if (run_.hide_after_no_restore != HideAfter::kAsk || !run_.prompts) {
    return run_.hide_after_no_restore != HideAfter::kNever;
  }
  return context_.messenger.AskFormatted("QELM_MSG_FILTER_37",
                                         context_.messenger.Format("QELM_MSG_FILTER_37", Name()));
}

void Driver::CloseTag() {
  if (!hiding_.Ready()) {
    if (run_.left > 0) NotHidden();
    return;
  }
  if (!HidesNow()) return;
  Log("Preparing to hide the Hidden condition");
  if (!hiding_.HideTagged(run_.mode == LaunchMode::kSourceNoRestore)) NotHidden();
  Log("Done hiding the Hidden condition");
}

void Driver::NotHidden() {
  run_.ending = Ending::kNotHidden;
  if (!run_.prompts) return;
  const std::string why(host_.documents.LastError());
  context_.messenger.AlertFormatted(
      "QELM_MSG_FILTER_45",
      context_.messenger.Format("QELM_MSG_FILTER_45", run_.condition_name, Name(), why));
}

void Driver::RemoveColoring() {
  if (context_.remove_coloring && context_.remove_coloring(document_)) return;
  if (!run_.prompts) return;
  context_.messenger.AlertFormatted("QELM_MSG_FILTER_43",
                                    context_.messenger.Format("QELM_MSG_FILTER_43", Name()));
}

}  // namespace

void ClearOutcome(FilterRun* run) {
  run->cancel_flag = 0;
  run->cancelled = run->restore_cancelled = run->restore_failed = run->touched = run->root_filtered = false;
  run->ending = Ending::kNone;
  run->why.clear();
  run->result_document = kNone;
  run->would_go.clear();
  run->dangling.clear();
  static_cast<FilterCounts&>(*run) = {};
}

void UndoFilter(FilterContext& context, Id document) {
  FilterRun& run = context.run;
  const Id shown = run.cancel_flag > 1 ? run.cancel_flag : kNone;
  const Ending ending = run.ending;
  RestoreDocument(context.host, context.messenger, run, document, false, false);
  run.ending = ending;
  if (shown == kNone) return;
  context.host.text.SelectElement(document, shown);
  context.host.text.ScrollTo(document, context.host.text.ElementRange(document, shown));
  run.cancel_flag = 0;
}

std::int32_t ResultOf(Ending ending) {
  switch (ending) {
    case Ending::kCompleted:
      return kDone;
    case Ending::kByUser:
    case Ending::kTitleStays:
      return kCancelled;
    case Ending::kMissingDocument:
      return kNoDocument;
    case Ending::kMissingScheme:
      return kNoActiveScheme;
    case Ending::kNotCopied:
      return kCopyFailed;
    case Ending::kSameFolder:
      return kOutputIsSource;
    default:
      return 0;
  }
}

void DriveFilter(FilterContext& context, Id document, const std::vector<FlowRoot>& flows,
                 Verdicts& verdicts) {
  context.run.cancel_flag = 0;
  context.run.result_document = document;
  Driver driver(context, document, verdicts);
  if (context.run.dry_run) {
    driver.DryRun(flows);
  } else {
    driver.Run(flows);
  }
}

void FilterDocument(FilterContext& context, Id document) {
  ClearOutcome(&context.run);
  if (document == kNone) {
    if (context.run.prompts) context.messenger.Alert("QELM_MSG_FILTER_30");
    context.run.ending = Ending::kMissingDocument;
    context.run.cancel_flag = 1;
    return;
  }
  const std::vector<FlowRoot> flows = FlowsOf(context.host, context.scheme, document);
  Verdicts verdicts(context, document);
  if (verdicts.Prepare(flows)) DriveFilter(context, document, flows, verdicts);
}

}  // namespace qelm::filtering
