#include "host/batch_dialog.h"

#include <algorithm>

#include "common/paths.h"
#include "common/text.h"
#include "filtering/batch_filter.h"
#include "host/dialog_events.h"
#include "host/interface/entry_points.h"
#include "messages/dialog.h"
#include "schemes/scheme_loading.h"

namespace qelm {
namespace {

using config::LocalSettings;
using filtering::BatchRequest;

constexpr char kTitle[] = "QELM - Batch Filtering";

// The items of the first page.
enum Source : std::int32_t {
  kSource,
  kBrowseSource,
  kUseCategory,
  kCategory,
  kUseConfiguration,
  kConfiguration,
  kBrowseConfiguration,
  kPatterns,
  kOutput,
  kBrowseOutput,
  kRemoveColoring,
  kCaseSensitive,
  kReport,
  kCloseReport,
  kNext,
  kCancelSource,
  kSourceItems,
};

// The items of the second page.
enum Steps : std::int32_t {
  kImportVariables,
  kVariablesFolder,
  kBrowseVariables,
  kImportMetadata,
  kTableIdentifier,
  kHideBoundaries,
  kUpdateBook,
  kUpdateGenerated,
  kUpdateNumbering,
  kUpdateReferences,
  kUpdateInsets,
  kUpdateMasterPages,
  kUpdateOle,
  kShowErrorLog,
  kSavePdf,
  kPdfFolder,
  kBrowsePdf,
  kPdfName,
  kSaveXml,
  kXmlFolder,
  kBrowseXml,
  kXmlName,
  kStructureApplication,
  kFilter,
  kBack,
  kCancelSteps,
  kStepItems,
};

// Items that show a setting as it is.
struct CheckItem {
  std::int32_t item;
  bool LocalSettings::*setting;
};
struct TextItem {
  std::int32_t item;
  std::string LocalSettings::*setting;
};

constexpr CheckItem kSourceChecks[] = {
    {kCaseSensitive, &LocalSettings::bf_remove_coloring_string_is_case_sensitive},
    {kCloseReport, &LocalSettings::bf_default_close_report_after_batch_filter},
};
constexpr TextItem kSourceTexts[] = {
    {kRemoveColoring, &LocalSettings::bf_default_remove_coloring_string},
    {kReport, &LocalSettings::bf_report_filename_pattern},
};
constexpr CheckItem kStepChecks[] = {
    {kImportVariables, &LocalSettings::bf_post_process_default_enable_var_import},
    {kImportMetadata, &LocalSettings::bf_post_process_default_enable_import_metadata},
    {kHideBoundaries, &LocalSettings::bf_post_process_default_enable_hide_boundaries},
    {kUpdateBook, &LocalSettings::bf_post_process_default_enable_book_update},
    {kUpdateGenerated, &LocalSettings::bf_bu_update_generatable_files},
    {kUpdateNumbering, &LocalSettings::bf_bu_update_numbering},
    {kUpdateReferences, &LocalSettings::bf_bu_update_xrefs},
    {kUpdateInsets, &LocalSettings::bf_bu_update_text_insets},
    {kUpdateMasterPages, &LocalSettings::bf_bu_update_master_pages},
    {kUpdateOle, &LocalSettings::bf_bu_update_ole_refs},
    {kShowErrorLog, &LocalSettings::bf_bu_show_book_error_log},
    {kSavePdf, &LocalSettings::bf_post_process_default_enable_pdf_save},
    {kSaveXml, &LocalSettings::bf_post_process_default_enable_xml_save},
};
constexpr TextItem kStepTexts[] = {
    {kVariablesFolder, &LocalSettings::bf_post_process_default_var_import_folder},
    {kTableIdentifier, &LocalSettings::bf_post_process_metadata_table_identifier},
    {kPdfFolder, &LocalSettings::bf_post_process_default_pdf_destination_folder},
    {kPdfName, &LocalSettings::bf_post_process_pdf_filename_pattern},
    {kXmlFolder, &LocalSettings::bf_post_process_default_xml_destination_folder},
    {kXmlName, &LocalSettings::bf_post_process_xml_filename_pattern},
    {kStructureApplication, &LocalSettings::bf_post_process_default_xml_struct_app},
};

// Items that are there only while a box is ticked.
struct Dependent {
  std::int32_t check;
  std::int32_t first;
  std::int32_t last;
};
constexpr Dependent kStepDependents[] = {
    {kImportVariables, kVariablesFolder, kBrowseVariables},
    {kImportMetadata, kTableIdentifier, kTableIdentifier},
    {kUpdateBook, kUpdateGenerated, kShowErrorLog},
    {kSavePdf, kPdfFolder, kPdfName},
    {kSaveXml, kXmlFolder, kStructureApplication},
};

void Show(messages::Dialog& dialog, std::span<const CheckItem> checks, std::span<const TextItem> texts,
          const LocalSettings& settings) {
  for (const CheckItem& check : checks) dialog.SetValue(check.item, settings.*check.setting ? 1 : 0);
  for (const TextItem& text : texts) dialog.SetText(text.item, settings.*text.setting);
}

void Take(const messages::Dialog& dialog, std::span<const CheckItem> checks, std::span<const TextItem> texts,
          LocalSettings* settings) {
  for (const CheckItem& check : checks) settings->*check.setting = dialog.Value(check.item) != 0;
  for (const TextItem& text : texts) settings->*text.setting = common::Trim(dialog.Text(text.item));
}

class BatchDialog {
 public:
  BatchDialog(Plugin& plugin, const BatchRequest& request) : plugin_(plugin), request_(request) {
    for (const schemes::SchemeListing& scheme : schemes::ListSchemes(plugin.engine, plugin.main_settings)) {
      if (scheme.kind != schemes::SchemeKind::kFilter) continue;
      if (std::find(categories_.begin(), categories_.end(), scheme.category) == categories_.end()) {
        categories_.push_back(scheme.category);
      }
    }
    if (request_.category.empty()) request_.category = plugin.settings.default_scheme_category;
  }

  // Goes from page to page until the dialog is done with.
  bool Run();
  const BatchRequest& request() const { return request_; }

 private:
  enum class Way { kOn, kBack, kCancelled };
  Way FirstPage();
  Way SecondPage();
  void ShowFirst(messages::Dialog& dialog);
  std::int32_t UsedFirst(messages::Dialog& dialog, std::int32_t item);
  bool TakeFirst(messages::Dialog& dialog);
  std::int32_t UsedSecond(messages::Dialog& dialog, std::int32_t item);
  void Browse(messages::Dialog& dialog, std::int32_t item, std::string_view title, bool folder);
  bool Refuse(std::string_view id, const std::string& text);

  Plugin& plugin_;
  BatchRequest request_;
  std::vector<std::string> categories_;
};

bool BatchDialog::Run() {
  for (;;) {
    if (FirstPage() == Way::kCancelled) return false;
    const Way way = SecondPage();
    if (way != Way::kBack) return way == Way::kOn;
  }
}

BatchDialog::Way BatchDialog::FirstPage() {
  messages::Dialog dialog(plugin_.messenger, "tsp_Dialog_BatchFilter1", kSourceItems);
  if (!dialog.Opened()) {
    dialog.ReportMissing();
    return Way::kCancelled;
  }
  ShowFirst(dialog);
  const std::int32_t closed =
      dialog.Run(kBatchSourceDialogNumber, [&](std::int32_t item) { return UsedFirst(dialog, item); });
  return closed == kNext ? Way::kOn : Way::kCancelled;
}

void BatchDialog::ShowFirst(messages::Dialog& dialog) {
  dialog.SetTitle(plugin_.messenger.Translated(messages::kDialogStrings, kTitle));
  dialog.SetText(kSource, request_.source);
  dialog.SetValue(request_.configuration.empty() ? kUseCategory : kUseConfiguration, 1);
  dialog.SetList(kCategory, categories_);
  const auto chosen = std::find(categories_.begin(), categories_.end(), request_.category);
  const bool known = chosen != categories_.end();
  dialog.SetValue(kCategory, known ? static_cast<std::int32_t>(chosen - categories_.begin()) : -1);
  dialog.SetText(kConfiguration, request_.configuration);
  dialog.SetList(kPatterns, request_.settings.bf_default_output_folder_patterns);
  dialog.Show(kPatterns, !request_.settings.bf_default_output_folder_patterns.empty());
  dialog.SetText(kOutput, request_.output_pattern);
  Show(dialog, kSourceChecks, kSourceTexts, request_.settings);
}

std::int32_t BatchDialog::UsedFirst(messages::Dialog& dialog, std::int32_t item) {
  const std::vector<std::string>& patterns = request_.settings.bf_default_output_folder_patterns;
  switch (item) {
    case kCancelSource:
      return 0;
    case kNext:
      return TakeFirst(dialog) ? 0 : host::kDialogStaysOpen;
    case kBrowseSource:
      Browse(dialog, kSource, "Browse for file to filter", /*folder=*/false);
      break;
    case kBrowseConfiguration:
      Browse(dialog, kConfiguration, "Browse for configuration file", /*folder=*/false);
      break;
    case kBrowseOutput:
      Browse(dialog, kOutput, "Browse for folder", /*folder=*/true);
      break;
    case kPatterns: {
      const std::int32_t line = dialog.Value(kPatterns);
      const bool is_line = line >= 0 && static_cast<std::size_t>(line) < patterns.size();
      if (is_line) dialog.SetText(kOutput, patterns[static_cast<std::size_t>(line)]);
      break;
    }
    default:
      break;
  }
  return host::kDialogStaysOpen;
}

// A folder that is chosen stands before a folder a scheme, as all schemes cannot go into one.
void BatchDialog::Browse(messages::Dialog& dialog, std::int32_t item, std::string_view title, bool folder) {
  host::Dialogs& dialogs = plugin_.host.dialogs;
  const std::string start = dialog.Text(item);
  const std::string path = folder ? dialogs.ChooseFolder(title, start) : dialogs.ChooseFile(title, start);
  if (path.empty()) return;
  const bool is_pattern = folder && item == kOutput;
  const std::string pattern = common::JoinPath(path, "<scheme_name>");
  dialog.SetText(item, is_pattern ? pattern : path);
}

bool BatchDialog::Refuse(std::string_view id, const std::string& text) {
  plugin_.messenger.AlertFormatted(id, plugin_.messenger.Format(id, text));
  return false;
}

bool BatchDialog::TakeFirst(messages::Dialog& dialog) {
  const bool by_category = dialog.Value(kUseCategory) != 0;
  request_.source = common::PlatformPath(common::Trim(dialog.Text(kSource)));
  request_.output_pattern = common::Trim(dialog.Text(kOutput));
  request_.configuration =
      by_category ? std::string() : common::PlatformPath(common::Trim(dialog.Text(kConfiguration)));
  const std::int32_t category = dialog.Value(kCategory);
  const bool chosen = category >= 0 && static_cast<std::size_t>(category) < categories_.size();
  request_.category = chosen ? categories_[static_cast<std::size_t>(category)] : std::string();
  Take(dialog, kSourceChecks, kSourceTexts, &request_.settings);
  if (!plugin_.host.platform.FileExists(request_.source)) {
    return Refuse("QELM_MSG_DIALOG_9", request_.source);
  }
  filtering::BatchContext context{plugin_.host, plugin_.messenger, plugin_.engine, plugin_.main_settings};
  const filtering::BatchSchemes found = filtering::FindBatchSchemes(context, request_);
  if (found.opened) plugin_.host.documents.Close(found.settings_document, /*discard=*/true);
  if (found.schemes.empty()) {
    return Refuse("QELM_MSG_DIALOG_10", by_category ? request_.category : request_.configuration);
  }
  const auto shared = std::find_if(found.schemes.begin(), found.schemes.end(),
                                   [](const auto& scheme) { return !scheme.shares_with.empty(); });
  if (shared != found.schemes.end()) return Refuse("QELM_MSG_DIALOG_11", shared->folder);
  return true;
}

BatchDialog::Way BatchDialog::SecondPage() {
  messages::Dialog dialog(plugin_.messenger, "tsp_Dialog_BatchFilter2", kStepItems);
  if (!dialog.Opened()) {
    dialog.ReportMissing();
    return Way::kCancelled;
  }
  dialog.SetTitle(plugin_.messenger.Translated(messages::kDialogStrings, kTitle));
  Show(dialog, kStepChecks, kStepTexts, request_.settings);
  UsedSecond(dialog, kImportVariables);
  const std::int32_t closed =
      dialog.Run(kBatchStepsDialogNumber, [&](std::int32_t item) { return UsedSecond(dialog, item); });
  if (closed == kFilter || closed == kBack) Take(dialog, kStepChecks, kStepTexts, &request_.settings);
  if (closed == kBack) return Way::kBack;
  return closed == kFilter ? Way::kOn : Way::kCancelled;
}

std::int32_t BatchDialog::UsedSecond(messages::Dialog& dialog, std::int32_t item) {
  if (item == kFilter || item == kBack || item == kCancelSteps) return 0;
  // Each button stands behind its folder.
  if (item == kBrowseVariables || item == kBrowsePdf || item == kBrowseXml) {
    Browse(dialog, item - 1, "Browse for folder", /*folder=*/true);
  }
  for (const Dependent& dependent : kStepDependents) {
    const bool shown = dialog.Value(dependent.check) != 0;
    for (std::int32_t i = dependent.first; i <= dependent.last; ++i) dialog.Show(i, shown);
  }
  return host::kDialogStaysOpen;
}

}  // namespace

bool AskBatch(Plugin& plugin, BatchRequest* request) {
  BatchDialog dialog(plugin, *request);
  if (!dialog.Run()) return false;
  *request = dialog.request();
  return true;
}

}  // namespace qelm
