#include "host/document_commands.h"

#include "coloring/coloring.h"
#include "coloring/validation.h"
#include "coloring/validation_report.h"
#include "filtering/batch_filter.h"
#include "filtering/book_filter.h"
#include "filtering/restore.h"
#include "host/active_scheme_dialog.h"
#include "host/batch_dialog.h"
#include "host/contexts.h"
#include "host/filter_dialog.h"
#include "host/plugin.h"
#include "schemes/scheme_listing.h"
#include "schemes/tabular_check.h"

namespace qelm {
namespace {

using filtering::TargetKind;

bool MayUncolor(Plugin& plugin) {
  if (!plugin.settings.prompt_pre_uncolor_file) return true;
  if (!plugin.messenger.Ask("QELM_MSG_GEN_22")) return false;
  SwitchOffForSession(plugin, "PROMPT_PRE_UNCOLOR_FILE", &plugin.settings.prompt_pre_uncolor_file);
  return true;
}

// The plug-in report as a place for violations: begun anew when the first document is, so that a run that has
// nothing to check leaves the report of the last one alone.
class PluginReport : public coloring::ViolationSink {
 public:
  explicit PluginReport(Plugin& plugin)
      : plugin_(plugin),
        roles_(filtering::RolesForReports(plugin.host)),
        lines_(plugin.messenger, plugin.host, plugin.schemes.validation, &plugin.report) {}

  void BeginDocument(host::Id document, bool by_command) override {
    if (!begun_) Begin();
    if (open_) lines_.BeginDocument(document, by_command);
  }
  void Add(const coloring::Violation& violation) override {
    if (open_) lines_.Add(violation);
  }
  void EndDocument(host::Id document, std::uint64_t violations, bool finished) override {
    if (open_) lines_.EndDocument(document, violations, finished);
  }

  void Save() {
    if (open_) filtering::SaveReport(plugin_.messenger, roles_, plugin_.report);
  }

 private:
  void Begin() {
    begun_ = true;
    filtering::CloseReport(roles_, &plugin_.report);
    open_ = filtering::OpenReport(plugin_.messenger, roles_, plugin_.settings.paths.report, &plugin_.report);
  }

  Plugin& plugin_;
  filtering::ReportRoles roles_;
  coloring::ValidationReport lines_;
  bool begun_ = false;
  bool open_ = false;
};

std::int32_t RunValidation(coloring::ValidationContext& context, ValidationScope scope) {
  switch (scope) {
    case ValidationScope::kSelection:
      return coloring::ValidateSelection(context);
    case ValidationScope::kDocument:
      return coloring::ValidateActiveDocument(context);
    case ValidationScope::kBook:
      break;
  }
  return coloring::ValidateActiveBook(context);
}

// Texts that the host did not let be marked: the rest of the run is as it should be.
void TellRefused(Plugin& plugin, std::uint64_t texts) {
  if (texts == 0) return;
  plugin.messenger.AlertFormatted("QELM_MSG_GEN_41", plugin.messenger.Format("QELM_MSG_GEN_41", texts));
}

}  // namespace

void SwitchOffForSession(Plugin& plugin, const char* key, bool* setting) {
  *setting = false;
  plugin.settings.overrides.emplace_back(key, "0");
}

std::int32_t ColorOnCommand(Plugin& plugin, coloring::Command command) {
  if (coloring::IsUncoloring(command) && !MayUncolor(plugin)) return 0;
  coloring::PrepareRun(plugin.settings, &plugin.coloring_run);
  coloring::ColoringContext context{plugin.host, plugin.messenger, plugin.engine, plugin.schemes.coloring,
                                    plugin.coloring_run};
  const std::int32_t result = coloring::RunColoring(context, command, /*report=*/true);
  TellRefused(plugin, plugin.coloring_run.refused);
  return result;
}

std::int32_t ValidateOnCommand(Plugin& plugin, ValidationScope scope) {
  host::Documents& documents = plugin.host.documents;
  const host::Id target =
      scope == ValidationScope::kBook ? documents.ActiveBook() : documents.ActiveDocument();
  // The report of the run before is closed for the next one, and is nothing to be validated itself.
  if (target != host::kNone && target == plugin.report.document) {
    plugin.messenger.Alert("QELM_MSG_GEN_10");
    return common::kNoDocument;
  }
  coloring::PrepareValidation(plugin.settings, &plugin.validation_run);
  PluginReport report(plugin);
  coloring::ValidationContext context{plugin.host,           plugin.messenger, plugin.schemes.validation,
                                      plugin.validation_run, {&report},        {}};
  const std::int32_t result = RunValidation(context, scope);
  report.Save();
  if (target != host::kNone) documents.Activate(target);
  TellRefused(plugin, plugin.validation_run.unmarked);
  return result;
}

std::int32_t FilterOnCommand(Plugin& plugin, TargetKind target) {
  host::Documents& documents = plugin.host.documents;
  const bool for_book = target == TargetKind::kBook;
  filtering::PrepareRun(plugin.settings, &plugin.filter_run);
  plugin.filter_run.target = target;
  // Without a target or a scheme there is nothing to ask about; the run says what is missing.
  const host::Id active = for_book ? documents.ActiveBook() : documents.ActiveDocument();
  const bool possible = active != host::kNone && plugin.schemes.filter.Active();
  if (possible && !AskFilter(plugin, target)) return 0;
  filtering::FilterContext context = FilterContextOf(plugin);
  if (!for_book) return filtering::FilterActiveDocument(context);
  // The files of a new book are there before they are filtered, and would stay so if nobody saved them.
  return filtering::FilterAndSaveActiveBook(context);
}

std::int32_t BatchOnCommand(Plugin& plugin) {
  host::Documents& documents = plugin.host.documents;
  const host::Id document = documents.ActiveDocument();
  filtering::BatchRequest request = filtering::BatchDefaults(plugin.settings);
  request.source = documents.Path(document != host::kNone ? document : documents.ActiveBook());
  if (!AskBatch(plugin, &request)) return 0;
  filtering::BatchContext context = BatchContextOf(plugin);
  return filtering::RunBatchFilter(context, request).result;
}

std::int32_t RestoreOnCommand(Plugin& plugin, TargetKind target) {
  filtering::PrepareRun(plugin.settings, &plugin.filter_run);
  const bool ask = plugin.settings.prompt_pre_restore_file;
  if (target == TargetKind::kBook) {
    return filtering::RestoreBook(plugin.host, plugin.messenger, plugin.filter_run, host::kNone, ask);
  }
  return filtering::RestoreDocument(plugin.host, plugin.messenger, plugin.filter_run, host::kNone, ask,
                                    /*notify=*/true);
}

std::int32_t RestoreWithoutAsking(Plugin& plugin, host::Id document) {
  filtering::PrepareRun(plugin.settings, &plugin.filter_run);
  return filtering::RestoreDocument(plugin.host, plugin.messenger, plugin.filter_run, document, /*ask=*/false,
                                    /*notify=*/true);
}

std::int32_t CheckTable(Plugin& plugin) {
  const host::Id document = plugin.host.documents.ActiveDocument();
  if (document == host::kNone) {
    plugin.messenger.Alert("QELM_MSG_GEN_10");
    return common::kNoDocument;
  }
  schemes::TabularContext context{plugin.host,
                                  plugin.messenger,
                                  plugin.engine,
                                  plugin.schemes,
                                  plugin.settings.default_scheme_category,
                                  /*report=*/true};
  return schemes::CheckTabularScheme(context, document).problems.empty() ? common::kDone : 0;
}

std::int32_t SetActiveScheme(Plugin& plugin, schemes::SchemeKind kind) {
  switch (kind) {
    case schemes::SchemeKind::kColoring:
      ChooseActiveScheme(plugin, kSetColoringScheme);
      break;
    case schemes::SchemeKind::kValidation:
      ChooseActiveScheme(plugin, kSetValidationScheme);
      break;
    case schemes::SchemeKind::kFilter:
      ChooseActiveScheme(plugin, kSetFilterScheme);
      break;
  }
  return common::kDone;
}

std::int32_t PrintActiveScheme(Plugin& plugin, schemes::SchemeKind kind) {
  const schemes::Scheme& scheme = plugin.schemes.Of(kind);
  if (scheme.Active()) {
    schemes::PrintSchemeParameters(plugin.host.user, scheme);
    return common::kDone;
  }
  plugin.messenger.Alert("QELM_MSG_GEN_29");
  return common::kNoActiveScheme;
}

}  // namespace qelm
