#include "host/filter_dialog.h"

#include "common/paths.h"
#include "filtering/book_filter.h"
#include "host/dialog_events.h"
#include "host/interface/entry_points.h"
#include "messages/dialog.h"

namespace qelm {
namespace {

using filtering::FilterRun;
using filtering::HideAfter;
using filtering::LaunchMode;
using filtering::TargetKind;

// The items of the dialog.
enum Item : std::int32_t {
  kScheme,
  kDuplicate,
  kSource,
  kSourceNoRestore,
  kSaveFirst,
  kRemoveColoring,
  kShowBefore,
  kHideAfter,
  kOutputFolder,
  kDeleteEmpties,
  kFilter,
  kCancel,
  kItemCount,
};

// When to hide, in the order of HideAfter.
constexpr std::string_view kHideAfterLines[] = {"Never", "Always", "Ask"};

class FilterDialog {
 public:
  FilterDialog(Plugin& plugin, TargetKind target)
      : plugin_(plugin),
        messenger_(plugin.messenger),
        is_book_(target == TargetKind::kBook),
        dialog_(plugin.messenger, "tsp_Dialog_Filter", kItemCount) {
    run_.notification_client = plugin.filter_run.notification_client;
    run_.notify = plugin.filter_run.notify;
    filtering::PrepareRun(plugin.settings, &run_);
    run_.target = target;
    run_.output_folder = common::PlatformPath(plugin.calls.filter_path);
  }

  bool Run();

 private:
  void Preset();
  void ShowWhatApplies();
  std::int32_t Used(std::int32_t item);
  LaunchMode Mode() const;
  bool Take();
  bool TakeOutputFolder();

  Plugin& plugin_;
  messages::Messenger& messenger_;
  bool is_book_;
  FilterRun run_;
  messages::Dialog dialog_;
};

bool FilterDialog::Run() {
  if (!dialog_.Opened()) {
    dialog_.ReportMissing();
    return false;
  }
  Preset();
  if (dialog_.Run(kFilterDialogNumber, [this](std::int32_t item) { return Used(item); }) != kFilter)
    return false;
  plugin_.filter_run = std::move(run_);
  return true;
}

void FilterDialog::Preset() {
  const schemes::Scheme& scheme = plugin_.schemes.filter;
  dialog_.SetTitle(
      messenger_.Translated(messages::kDialogStrings, is_book_ ? "Filter Book" : "Filter Document"));
  const std::string label = messenger_.Translated(messages::kDialogStrings, "Active filter scheme:");
  dialog_.SetLabel(kScheme,
                   label + " " + (scheme.Active() ? scheme.category + "/" + scheme.name : scheme.name));
  dialog_.SetValue(run_.mode == LaunchMode::kDuplicate            ? kDuplicate
                   : run_.mode == LaunchMode::kSourceRestoreFirst ? kSource
                                                                  : kSourceNoRestore,
                   1);
  dialog_.SetValue(kSaveFirst, run_.save_first ? 1 : 0);
  dialog_.SetValue(kRemoveColoring, run_.remove_coloring ? 1 : 0);
  dialog_.SetValue(kShowBefore, run_.show_before_no_restore ? 1 : 0);
  std::vector<std::string> lines;
  for (const std::string_view line : kHideAfterLines) {
    lines.push_back(messenger_.Translated(messages::kDialogStrings, line));
  }
  dialog_.SetList(kHideAfter, lines);
  dialog_.SetValue(kHideAfter, static_cast<std::int32_t>(run_.hide_after_no_restore));
  dialog_.SetText(kOutputFolder, run_.output_folder);
  dialog_.SetValue(kDeleteEmpties, run_.delete_empties ? 1 : 0);
  ShowWhatApplies();
}

void FilterDialog::ShowWhatApplies() {
  const LaunchMode mode = Mode();
  dialog_.Show(kShowBefore, mode == LaunchMode::kSourceNoRestore);
  dialog_.Show(kHideAfter, mode == LaunchMode::kSourceNoRestore);
  dialog_.Show(kOutputFolder, is_book_ && mode == LaunchMode::kDuplicate);
  dialog_.Show(kDeleteEmpties, is_book_ && mode == LaunchMode::kDuplicate);
}

LaunchMode FilterDialog::Mode() const {
  if (dialog_.Value(kDuplicate) != 0) return LaunchMode::kDuplicate;
  return dialog_.Value(kSource) != 0 ? LaunchMode::kSourceRestoreFirst : LaunchMode::kSourceNoRestore;
}

std::int32_t FilterDialog::Used(std::int32_t item) {
  if (item == kCancel) return 0;
  if (item == kFilter) return Take() ? 0 : host::kDialogStaysOpen;
  ShowWhatApplies();
  return host::kDialogStaysOpen;
}

bool FilterDialog::Take() {
  run_.mode = Mode();
  run_.save_first = dialog_.Value(kSaveFirst) != 0;
  run_.remove_coloring = dialog_.Value(kRemoveColoring) != 0;
  run_.show_before_no_restore = dialog_.Value(kShowBefore) != 0;
  run_.delete_empties = dialog_.Value(kDeleteEmpties) != 0;
  const std::int32_t hide = dialog_.Value(kHideAfter);
  if (hide >= 0 && hide < static_cast<std::int32_t>(std::size(kHideAfterLines))) {
    run_.hide_after_no_restore = static_cast<HideAfter>(hide);
  }
  return !is_book_ || run_.mode != LaunchMode::kDuplicate || TakeOutputFolder();
}

// That the new book would come where the book lies is told here already, as the run would refuse it after a
// long preparation.
bool FilterDialog::TakeOutputFolder() {
  const std::string book(plugin_.host.documents.Path(plugin_.host.documents.ActiveBook()));
  run_.output_folder = filtering::OutputFolder(book, dialog_.Text(kOutputFolder));
  if (run_.output_folder.empty()) {
    messenger_.Alert("QELM_MSG_DIALOG_5");
    return false;
  }
  if (run_.output_folder == filtering::OutputFolder(book, ".")) {
    messenger_.Alert("QELM_MSG_FILTER_22");
    return false;
  }
  if (!plugin_.host.platform.FileExists(run_.output_folder)) return true;
  constexpr std::string_view kId = "QELM_MSG_DIALOG_6";
  messenger_.AlertFormatted(kId, messenger_.Format(kId, run_.output_folder));
  return false;
}

}  // namespace

bool AskFilter(Plugin& plugin, filtering::TargetKind target) { return FilterDialog(plugin, target).Run(); }

}  // namespace qelm
