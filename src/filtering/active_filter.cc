// The filter of the active document: the questions, the copy and the undoing around the driver.
#include <filesystem>

#include "filtering/document_driver.h"
#include "filtering/notify.h"
#include "filtering/run_guards.h"
#include "messages/document_name.h"
#include "messages/status_shown.h"

namespace qelm::filtering {
namespace {

using host::DocumentSwitch;
using host::Id;
using host::kNone;

constexpr std::int64_t kMillisecondsASecond = 1000;
constexpr std::int64_t kSecondsAMinute = 60;

class ActiveFilter {
 public:
  explicit ActiveFilter(FilterContext& context)
      : context_(context), host_(context.host), run_(context.run), messenger_(context.messenger) {}

  // Each sets the run's ending when it does not return true.
  bool FindDocument();
  void Run();
  void Conclude();

  Id document() const { return document_; }

 private:
  bool RootMayGo(const std::vector<FlowRoot>& flows, Verdicts& verdicts);
  bool SaveFirst();
  bool Duplicate();
  bool SaveBeforeCopy(const std::string& source);
  bool CopyTo(const std::string& source, const std::string& target);
  bool IsOpen(const std::string& path);

  bool NotSaved(Ending ending, std::string_view id);
  bool Save(Id document) { return host_.documents.Save(document, {}) || HostSays(); }
  // Keeps what the host says about its last failure. Returns false.
  bool HostSays() {
    why_ = host_.documents.LastError();
    return false;
  }

  FilterContext& context_;
  host::Host& host_;
  FilterRun& run_;
  messages::Messenger& messenger_;
  Id document_ = kNone;
  std::int64_t started_ = 0;
  std::string why_;  // what the host says about a failure; empty when it was not the host's
};

bool ActiveFilter::FindDocument() {
  document_ = host_.documents.ActiveDocument();
  const bool active_scheme = context_.scheme.Active();
  if (document_ != kNone && active_scheme) return true;
  run_.ending = document_ == kNone ? Ending::kMissingDocument : Ending::kMissingScheme;
  run_.cancel_flag = 1;
  if (run_.prompts) messenger_.Alert(document_ == kNone ? "QELM_MSG_FILTER_30" : "QELM_MSG_FILTER_44");
  return false;
}

void ActiveFilter::Run() {
  started_ = host_.platform.Milliseconds();
  const bool copies = run_.mode == LaunchMode::kDuplicate && !run_.is_copy && !run_.dry_run;
  std::vector<FlowRoot> flows = FlowsOf(host_, context_.scheme, document_);
  Verdicts verdicts(context_, document_);
  if (!verdicts.Prepare(flows) || !RootMayGo(flows, verdicts)) return;
  if (run_.dry_run) {
    DriveFilter(context_, document_, flows, verdicts);
    return;
  }
  ScreenUpdatesOff screen(host_.session, document_, run_.disable_screen_updates);
  const messages::StatusShown status(host_.user);
  if (run_.save_first && !SaveFirst()) return;
  if (copies && !Duplicate()) return;
  messenger_.ShowStatus({"QELM - Filtering", "Filtering Document", "Please wait...", "Press Esc to cancel"});
  if (copies) {
    // The copy is a document with ids of its own.
    flows = FlowsOf(host_, context_.scheme, document_);
    Verdicts of_copy(context_, document_);
    if (of_copy.Prepare(flows)) DriveFilter(context_, document_, flows, of_copy);
  } else {
    DriveFilter(context_, document_, flows, verdicts);
  }
  if (run_.cancel_flag != 0 && run_.mode != LaunchMode::kDuplicate && run_.touched)
    UndoFilter(context_, document_);
}

bool ActiveFilter::RootMayGo(const std::vector<FlowRoot>& flows, Verdicts& verdicts) {
  const FlowRoot main = MainFlow(host_, document_);
  if (main.root == kNone || flows.empty()) return true;
  run_.root_filtered = verdicts.Fails(main.root);
  if (!run_.root_filtered || !run_.prompts || run_.dry_run) return true;
  if (messenger_.Ask("QELM_MSG_FILTER_15")) return true;
  run_.ending = Ending::kDeclined;
  return false;
}

bool ActiveFilter::NotSaved(Ending ending, std::string_view id) {
  run_.ending = ending;
  run_.cancel_flag = 1;
  if (run_.prompts) {
    const std::string name = messages::DocumentName(host_.documents, document_);
    messenger_.AlertFormatted(id, messenger_.Format(id, name, why_));
  }
  return false;
}

bool ActiveFilter::SaveFirst() {
  return Save(document_) || NotSaved(Ending::kNotSaved, "QELM_MSG_FILTER_42");
}

bool ActiveFilter::SaveBeforeCopy(const std::string& source) {
  if (source.empty()) return false;  // never saved: there is no file to copy
  if (!host_.documents.Switch(document_, DocumentSwitch::kModified)) return true;
  if (run_.prompts && run_.unsaved_file_prompt && !messenger_.Ask("QELM_MSG_FILTER_16")) return true;
  return Save(document_);
}

bool ActiveFilter::Duplicate() {
  const std::string source(host_.documents.Path(document_));
  const std::string target =
      run_.duplicate_path.empty()
          ? messages::Messenger::FormatText("%s%s", source, messenger_.Get("QELM_MSG_FILTER_17"))
          : run_.duplicate_path;
  if (!SaveBeforeCopy(source) || !CopyTo(source, target)) {
    return NotSaved(Ending::kNotCopied, "QELM_MSG_FILTER_18");
  }
  return true;
}

// A document that is open would be replaced behind the user's back, and the source must stay untouched, so a
// copy never goes where an open document lies.
bool ActiveFilter::IsOpen(const std::string& path) {
  for (Id open = host_.documents.FirstOpenDocument(); open != kNone;
       open = host_.documents.NextOpenDocument(open)) {
    if (host_.platform.SameFile(std::string(host_.documents.Path(open)), path)) return true;
  }
  return false;
}

bool ActiveFilter::CopyTo(const std::string& source, const std::string& target) {
  if (IsOpen(target)) return false;
  messenger_.ShowStatus({"QELM - Filtering", "Copying Document", "Please wait...", ""});
  if (!host_.platform.CopyFile(source, target)) return false;
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  const Id copy = host_.documents.Open(target, {}, &status);
  if (copy == kNone) return HostSays();
  if (status == host::OpenStatus::kAlreadyOpen) return false;
  document_ = copy;
  return true;
}

void ActiveFilter::Conclude() {
  if (!run_.prompts || run_.dry_run) return;
  if (run_.ending == Ending::kByUser) messenger_.Alert("QELM_MSG_FILTER_29");
  if (run_.ending != Ending::kCompleted || !run_.completion_prompt) return;
  const std::int64_t seconds = (host_.platform.Milliseconds() - started_) / kMillisecondsASecond;
  messenger_.AlertFormatted(
      "QELM_MSG_FILTER_13",
      messenger_.Format("QELM_MSG_FILTER_13", seconds / kSecondsAMinute, seconds % kSecondsAMinute));
}

}  // namespace

void PrepareRun(const config::LocalSettings& settings, FilterRun* run) {
  FilterRun fresh;
  fresh.mode = static_cast<LaunchMode>(settings.filter_type);
  fresh.condition_name = settings.source_file_filter_condition_tag;
  fresh.save_first = settings.filt_default_save_files;
  fresh.remove_coloring = settings.filt_default_remove_coloring;
  fresh.disable_screen_updates = settings.filt_disable_screen_updates;
  fresh.consider_text_nodes = settings.filt_xpath_consider_text_nodes;
  fresh.filter_text_insets = settings.filt_filter_text_insets;
  fresh.hide_after_no_restore = static_cast<HideAfter>(settings.filt_hide_content_after_no_restore_filter);
  fresh.show_before_no_restore = settings.filt_show_all_before_restore_filter;
  fresh.unsaved_file_prompt = settings.prompt_filter_unsaved_file_warning;
  fresh.completion_prompt = settings.prompt_post_document_filter_messaging;
  fresh.redirect_cross_references = settings.filt_redirect_all_xrefs_during_book_filter;
  fresh.delete_empties = settings.filt_delete_book_empties_default;
  fresh.book_completion_prompt = settings.prompt_post_book_filter_messaging;
  fresh.suppress_opening_alerts = settings.suppress_file_opening_alerts;
  fresh.notification_client = std::move(run->notification_client);
  fresh.notify = run->notify;
  fresh.overwrite = run->overwrite;
  *run = std::move(fresh);
}

std::int32_t FilterActiveDocument(FilterContext& context) {
  ClearOutcome(&context.run);
  ActiveFilter filter(context);
  if (!filter.FindDocument()) return ResultOf(context.run.ending);
  const bool notify = !context.run.dry_run;
  if (notify) Notify(context.host.clients, context.run, "QELM_Filter_Start");
  filter.Run();
  context.run.result_document = filter.document();
  filter.Conclude();
  const bool done = context.run.ending == Ending::kCompleted;
  if (done) {
    DanglingReferences references(context.host, /*single=*/true, context.run.places_dangling);
    references.Add(filter.document(), context.run.would_go);
    context.run.dangling = references.Find();
  }
  if (notify) {
    Notify(context.host.clients, context.run, done ? "QELM_Filter_Complete" : "QELM_Filter_Cancelled");
  }
  return ResultOf(context.run.ending);
}

}  // namespace qelm::filtering
