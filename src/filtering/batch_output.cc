#include "filtering/batch_output.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <unordered_set>

#include "common/paths.h"
#include "common/text.h"
#include "filtering/batch_scheme.h"
#include "filtering/metadata_packet.h"
#include "filtering/variables_file.h"
#include "messages/component_document.h"

namespace qelm::filtering {
namespace {

using config::LocalSettings;
using host::Id;
using host::kNone;

constexpr std::string_view kSameFolder = "(same)";
constexpr std::string_view kFieldSeparator = ",***";
constexpr std::string_view kAny = "*";

// The entry "source match,***element,***attribute,***value" of the settings.
struct RootAttribute {
  std::string source;
  std::string element;
  std::string attribute;
  std::string value;
};

// False for an entry that has not four fields.
bool ParseRootAttribute(std::string_view entry, RootAttribute* attribute) {
  std::vector<std::string> fields;
  for (std::size_t at = 0; at != std::string_view::npos;) {
    const std::size_t end = entry.find(kFieldSeparator, at);
    fields.emplace_back(common::Trim(entry.substr(at, end == std::string_view::npos ? end : end - at)));
    at = end == std::string_view::npos ? end : end + kFieldSeparator.size();
  }
  if (fields.size() != 4) return false;
  *attribute = {common::PlatformPath(fields[0]), fields[1], fields[2], fields[3]};
  return true;
}

// A format that is saved beside the output: what the settings say of it, and what is said of it.
struct ExportForm {
  bool LocalSettings::*enabled;
  std::string LocalSettings::*folder;
  std::string LocalSettings::*pattern;
  std::string BatchScheme::*shares_with;
  std::string_view extension;
  host::SaveFormat format;
  std::string_view disabled_id;
  std::string_view saved_id;
  std::string_view no_folder_id;
  std::string_view not_saved_id;
};

constexpr ExportForm kPdf = {&LocalSettings::bf_post_process_default_enable_pdf_save,
                             &LocalSettings::bf_post_process_default_pdf_destination_folder,
                             &LocalSettings::bf_post_process_pdf_filename_pattern,
                             &BatchScheme::pdf_shares_with,
                             ".pdf",
                             host::SaveFormat::kPdf,
                             "QELM_MSG_FILTER_REP_40",
                             "QELM_MSG_FILTER_REP_41",
                             "QELM_MSG_FILTER_REP_42",
                             "QELM_MSG_FILTER_REP_43"};
constexpr ExportForm kXml = {&LocalSettings::bf_post_process_default_enable_xml_save,
                             &LocalSettings::bf_post_process_default_xml_destination_folder,
                             &LocalSettings::bf_post_process_xml_filename_pattern,
                             &BatchScheme::xml_shares_with,
                             ".xml",
                             host::SaveFormat::kXml,
                             "QELM_MSG_FILTER_REP_50",
                             "QELM_MSG_FILTER_REP_51",
                             "QELM_MSG_FILTER_REP_52",
                             "QELM_MSG_FILTER_REP_53"};

// Folders of the settings are seen from the output folder.
std::string FolderFromOutput(const std::string& output_folder, const std::string& folder) {
  if (folder.empty() || folder == kSameFolder) return output_folder;
  std::string path = common::PlatformPath(folder);
  if (!common::IsAbsolutePath(path)) path = common::JoinPath(output_folder, path);
  return std::filesystem::path(path).lexically_normal().string();
}

// What the book's update does, by setting.
struct UpdatePart {
  bool LocalSettings::*setting;
  host::BookUpdate flag;
};
constexpr UpdatePart kUpdateParts[] = {
    {&LocalSettings::bf_bu_update_generatable_files, host::kUpdateGeneratedFiles},
    {&LocalSettings::bf_bu_update_numbering, host::kUpdateNumbering},
    {&LocalSettings::bf_bu_update_master_pages, host::kUpdateMasterPages},
    {&LocalSettings::bf_bu_update_ole_refs, host::kUpdateOleLinks},
    {&LocalSettings::bf_bu_update_text_insets, host::kUpdateTextInsets},
    {&LocalSettings::bf_bu_update_xrefs, host::kUpdateCrossReferences},
};

class OutputSteps {
 public:
  OutputSteps(BatchContext& context, const BatchRequest& request, const BatchScheme& scheme,
              const NameValues& names, const BatchSource& source, Id output, CopyRecord& record,
              BatchOutcome* outcome)
      : context_(context),
        host_(context.host),
        request_(request),
        settings_(request.settings),
        scheme_(scheme),
        names_(names),
        source_(source),
        output_(output),
        is_book_(context.host.books.IsBook(output)),
        record_(record),
        outcome_(outcome),
        steps_(context.messenger, &outcome->steps) {}
  ~OutputSteps() { Close(); }
  OutputSteps(const OutputSteps&) = delete;
  OutputSteps& operator=(const OutputSteps&) = delete;

  void Run();

 private:
  void OpenDocuments();
  void Close();
  void RootAttributes();
  bool SetOnRoot(Id document, const RootAttribute& wanted);
  void ImportVariables();
  void ImportMetadata();
  void HideBoundaries();
  void UpdateBook();
  void SaveChanged();
  void Export(const ExportForm& form);
  bool IsInUse(const std::string& path);
  std::unique_ptr<CopyRecord> RecordBeside(const std::string& path);
  bool MayReplace(const std::string& path, CopyRecord* beside);
  template <typename... Arguments>
  void Incomplete(std::int32_t format, std::string_view id, const Arguments&... arguments) {
    steps_.Say(format, id, arguments...);
    outcome_->complete = false;
  }
  std::string HostSays() { return std::string(host_.documents.LastError()); }

  BatchContext& context_;
  host::Host& host_;
  const BatchRequest& request_;
  const LocalSettings& settings_;
  const BatchScheme& scheme_;
  const NameValues& names_;
  const BatchSource& source_;
  Id output_;
  bool is_book_;
  CopyRecord& record_;
  BatchOutcome* outcome_;
  BatchSteps steps_;
  std::vector<Id> documents_;  // the output itself, or its components
  std::vector<Id> opened_;     // here
  Id variables_ = kNone;
  bool names_sources_ = false;  // the new book names files that were not copied
};

void OutputSteps::Run() {
  outcome_->complete = true;
  OpenDocuments();
  RootAttributes();
  ImportVariables();
  ImportMetadata();
  HideBoundaries();
  UpdateBook();
  SaveChanged();
  Export(kPdf);
  Export(kXml);
}

void OutputSteps::OpenDocuments() {
  if (!is_book_) {
    documents_.push_back(output_);
    return;
  }
  const std::unordered_set<std::string_view> made(outcome_->files.begin(), outcome_->files.end());
  for (Id component = host_.books.FirstComponent(output_); component != kNone;
       component = host_.books.NextComponent(output_, component)) {
    // What could not be opened in the source was said there, and was not copied: the new book names it where
    // it is, and it is not to be changed.
    const std::string path(host_.books.ComponentPath(output_, component));
    const bool is_made = made.contains(path);
    if (!is_made && !host_.platform.MayExist(path)) continue;
    const messages::OpenedComponent found =
        messages::OpenComponent(host_, output_, component, settings_.suppress_file_opening_alerts);
    if (found.document == kNone) {
      if (is_made) Incomplete(kStepErrorLine, "QELM_MSG_FILTER_REP_11", found.why);
      continue;
    }
    if (found.opened) opened_.push_back(found.document);
    if (is_made) {
      documents_.push_back(found.document);
    } else {
      names_sources_ = true;
    }
  }
}

void OutputSteps::Close() {
  for (const Id document : opened_) host_.documents.Close(document, /*discard=*/true);
  opened_.clear();
}

void OutputSteps::RootAttributes() {
  for (const std::string& entry : settings_.bf_post_process_root_attr_config) {
    RootAttribute wanted;
    if (!ParseRootAttribute(entry, &wanted)) {
      steps_.Say(kStepErrorLine, "QELM_MSG_FILTER_REP_81", entry);
      continue;
    }
    if (wanted.source != kAny && request_.source.find(wanted.source) == std::string::npos) continue;
    std::int32_t count = is_book_ && SetOnRoot(output_, wanted) ? 1 : 0;
    for (const Id document : documents_) count += SetOnRoot(document, wanted) ? 1 : 0;
    if (count > 0) steps_.Say(kStepLine, "QELM_MSG_FILTER_REP_80", wanted.attribute, wanted.value, count);
  }
}

bool OutputSteps::SetOnRoot(Id document, const RootAttribute& wanted) {
  const Id root = host_.elements.Root(document, host_.elements.MainFlow(document));
  const std::string_view tag =
      host_.definitions.DefinitionName(document, host_.elements.Definition(document, root));
  if (root == kNone || (wanted.element != kAny && tag != wanted.element)) return false;
  host::AttributeBuffer buffer;
  host_.definitions.ReadAttributes(document, root, &buffer);
  std::vector<host::AttributeValue> attributes;
  for (const host::AttributeView& view : buffer.attributes) {
    host::AttributeValue& attribute = attributes.emplace_back();
    attribute.name = view.name;
    for (std::uint32_t i = 0; i < view.value_count; ++i) {
      attribute.values.emplace_back(buffer.values[view.first_value + i]);
    }
  }
  const auto own = std::find_if(attributes.begin(), attributes.end(), [&](const host::AttributeValue& known) {
    return known.name == wanted.attribute;
  });
  host::AttributeValue& attribute = own != attributes.end() ? *own : attributes.emplace_back();
  attribute = {wanted.attribute, {wanted.value}};
  if (host_.editing.SetAttributes(document, root, attributes)) return true;
  steps_.Say(kStepErrorLine, "QELM_MSG_FILTER_REP_82", wanted.attribute, HostSays());
  return false;
}

void OutputSteps::ImportVariables() {
  if (!settings_.bf_post_process_default_enable_var_import) {
    steps_.Say(kStepLine, "QELM_MSG_FILTER_REP_30");
    return;
  }
  const std::string folder =
      FolderFromOutput(outcome_->folder, settings_.bf_post_process_default_var_import_folder);
  const std::optional<std::string> found =
      FindVariablesFile(host_.platform, settings_, folder, names_.scheme_name);
  if (!found) {
    const std::string why = host_.platform.LastError();
    Incomplete(kStepErrorLine, "QELM_MSG_FILTER_REP_33", common::WithReason(folder, why));
    return;
  }
  if (found->empty()) {
    steps_.Say(kStepLine, "QELM_MSG_FILTER_REP_32", folder);
    return;
  }
  const std::string& path = *found;
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  variables_ = host_.documents.Open(path, {.visible = false, .suppress_alerts = true}, &status);
  if (variables_ == kNone || host_.books.IsBook(variables_)) {
    Incomplete(kStepErrorLine, "QELM_MSG_FILTER_REP_33", path);
    if (variables_ != kNone && status == host::OpenStatus::kOpened) host_.documents.Close(variables_, true);
    variables_ = kNone;
    return;
  }
  if (status == host::OpenStatus::kOpened) opened_.push_back(variables_);
  for (const Id document : documents_) {
    if (host_.documents.ImportFormats(document, variables_, host::kImportVariableFormats)) continue;
    Incomplete(kStepErrorLine, "QELM_MSG_FILTER_REP_34", HostSays());
  }
  steps_.Say(kStepLine, "QELM_MSG_FILTER_REP_31");
  steps_.Link(kStepLinkLine, path);
}

void OutputSteps::ImportMetadata() {
  if (!settings_.bf_post_process_default_enable_import_metadata) {
    steps_.Say(kStepLine, "QELM_MSG_FILTER_REP_63");
    return;
  }
  if (variables_ == kNone) {
    steps_.Say(kStepLine, "QELM_MSG_FILTER_REP_65");
    return;
  }
  const std::string& identifier = settings_.bf_post_process_metadata_table_identifier;
  const std::optional<MetadataEntries> entries = ReadMetadata(host_.tables, variables_, identifier);
  if (!entries) {
    steps_.Say(kStepErrorLine, "QELM_MSG_FILTER_REP_67", identifier);
    return;
  }
  std::vector<Id> targets = documents_;
  if (is_book_) targets.insert(targets.begin(), output_);
  for (const Id target : targets) {
    for (const auto& [field, value] : *entries) {
      if (SetMetadataField(host_.documents, target, field, value)) continue;
      Incomplete(kStepErrorLine, "QELM_MSG_FILTER_REP_66", HostSays());
      return;
    }
  }
  std::string fields;
  for (const auto& [field, value] : *entries) fields += (fields.empty() ? "" : ", ") + field;
  steps_.Say(kStepLine, "QELM_MSG_FILTER_REP_64", fields);
}

void OutputSteps::HideBoundaries() {
  if (!settings_.bf_post_process_default_enable_hide_boundaries) {
    steps_.Say(kStepLine, "QELM_MSG_FILTER_REP_61");
    return;
  }
  for (const Id document : documents_) {
    if (host_.documents.SetSwitch(document, host::DocumentSwitch::kElementBoundaries, false)) continue;
    const std::string why = HostSays();
    Incomplete(kStepErrorLine, "QELM_MSG_FILTER_REP_85", std::string(host_.documents.Path(document)), why);
  }
  steps_.Say(kStepLine, "QELM_MSG_FILTER_REP_60");
}

void OutputSteps::UpdateBook() {
  if (names_sources_) {
    Incomplete(kStepErrorLine, "QELM_MSG_FILTER_REP_72", request_.source);
    return;
  }
  if (!is_book_ || !settings_.bf_post_process_default_enable_book_update) {
    steps_.Say(kStepLine, is_book_ ? "QELM_MSG_FILTER_REP_70" : "QELM_MSG_FILTER_REP_73");
    return;
  }
  std::uint32_t flags = 0;
  for (const UpdatePart& part : kUpdateParts) {
    if (settings_.*part.setting) flags |= part.flag;
  }
  if (host_.books.Update(output_, flags)) {
    steps_.Say(kStepLine, "QELM_MSG_FILTER_REP_71");
  } else {
    const std::int32_t code = host_.documents.ErrorCode();
    steps_.Say(kStepErrorLine, "QELM_MSG_FILTER_REP_72", HostSays());
    // A file that cannot be read or written now may be there the next time.
    const std::vector<std::int32_t>& findings = context_.findings_codes;
    if (std::find(findings.begin(), findings.end(), code) == findings.end()) outcome_->complete = false;
  }
  if (settings_.bf_bu_show_book_error_log) host_.books.ShowErrorLog(output_);
}

void OutputSteps::SaveChanged() {
  std::vector<Id> files = documents_;
  if (is_book_) files.push_back(output_);
  for (const Id file : files) {
    if (!host_.documents.Switch(file, host::DocumentSwitch::kModified)) continue;
    if (host_.documents.Save(file, {})) continue;
    Incomplete(kErrorLine, "QELM_MSG_FILTER_REP_23", HostSays());
    outcome_->unsaved = true;
  }
}

// Whether saving there would destroy what is filtered or what came of it.
bool OutputSteps::IsInUse(const std::string& path) {
  const auto is_it = [&](const std::string& file) {
    return file == path || host_.platform.SameFile(file, path);
  };
  return is_it(request_.source) || is_it(outcome_->output) ||
         std::any_of(outcome_->files.begin(), outcome_->files.end(), is_it) ||
         (host_.platform.MayExist(path) &&
          std::any_of(source_.Files().begin(), source_.Files().end(), is_it));
}

// The record of a file that is saved elsewhere lies beside it: the output folder may be another one each
// time. Null for one below the output folder.
std::unique_ptr<CopyRecord> OutputSteps::RecordBeside(const std::string& path) {
  if (record_.Covers(path)) return nullptr;
  const std::string folder(common::FolderOf(path));
  return std::make_unique<CopyRecord>(host_.platform, folder, common::FileName(path));
}

// As the output itself, a file that is saved from it takes the place only of what an earlier run saved there.
bool OutputSteps::MayReplace(const std::string& path, CopyRecord* beside) {
  if (beside != nullptr && !beside->Read() && !context_.overwrite) {
    Incomplete(kStepErrorLine, "QELM_MSG_FILTER_75", beside->path(), beside->why());
    return false;
  }
  if (beside != nullptr) beside->IsCopyOf(request_.source);
  CopyRecord& record = beside != nullptr ? *beside : record_;
  if (record.Has(path) || !host_.platform.MayExist(path) || context_.overwrite) return true;
  Incomplete(kStepErrorLine, record.Names(path) ? "QELM_MSG_FILTER_74" : "QELM_MSG_FILTER_REP_86", path);
  return false;
}

void OutputSteps::Export(const ExportForm& form) {
  if (!(settings_.*form.enabled)) {
    steps_.Say(kStepLine, form.disabled_id);
    return;
  }
  host::SaveOptions options;
  options.format = form.format;
  options.path = ExportPath(settings_, names_, outcome_->folder, form.format);
  if (const std::string& owner = scheme_.*form.shares_with; !owner.empty()) {
    Incomplete(kStepErrorLine, "QELM_MSG_FILTER_REP_83", owner, options.path);
    return;
  }
  if (IsInUse(options.path)) {
    Incomplete(kStepErrorLine, "QELM_MSG_FILTER_REP_84", options.path);
    return;
  }
  const std::string folder = FolderFromOutput(outcome_->folder, settings_.*form.folder);
  const host::KeptFolder kept(host_.platform, folder);
  if (!host_.platform.MakeFolder(folder)) {
    Incomplete(kStepErrorLine, form.no_folder_id, common::WithReason(folder, host_.platform.LastError()));
    return;
  }
  // Schemes of other runs may save theirs into the same folder.
  const host::HeldFile held(host_.platform, options.path);
  if (!held.Valid()) {
    const std::string why = host_.platform.LastError();
    Incomplete(kStepErrorLine, form.not_saved_id, common::WithReason(options.path, why));
    return;
  }
  const std::unique_ptr<CopyRecord> beside = RecordBeside(options.path);
  if (!MayReplace(options.path, beside.get())) return;
  if (form.format == host::SaveFormat::kPdf) {
    options.pdf_job_options = settings_.bf_post_process_pdf_job_options;
    options.pdf_page_width = settings_.pdf_page_width;
    options.pdf_page_height = settings_.pdf_page_width > 0 ? settings_.pdf_page_height : 0;
  } else {
    options.structure_application = settings_.bf_post_process_default_xml_struct_app;
  }
  if (beside) beside->Begin(request_.source);
  (beside ? *beside : record_).Expect(options.path);
  // A file of an earlier run that is still there is no success of this one.
  const bool saved = host_.documents.Save(output_, options);
  if (!saved || !host_.platform.FileExists(options.path)) {
    Incomplete(kStepErrorLine, form.not_saved_id, HostSays());
    return;
  }
  if (beside && !beside->Seal()) Incomplete(kStepErrorLine, "QELM_MSG_FILTER_52", beside->why());
  outcome_->files.push_back(options.path);
  steps_.Say(kStepLine, form.saved_id);
  steps_.Link(kStepLinkLine, options.path);
}

}  // namespace

std::string ExportPath(const LocalSettings& settings, const NameValues& names,
                       const std::string& output_folder, host::SaveFormat format) {
  const ExportForm& form = format == host::SaveFormat::kPdf ? kPdf : kXml;
  return common::JoinPath(FolderFromOutput(output_folder, settings.*form.folder),
                          FileNameByPattern(settings.*form.pattern, names, form.extension));
}

void FinishOutput(BatchContext& context, const BatchRequest& request, const BatchScheme& scheme,
                  const NameValues& names, const BatchSource& source, Id output, CopyRecord& record,
                  BatchOutcome* outcome) {
  OutputSteps(context, request, scheme, names, source, output, record, outcome).Run();
}

}  // namespace qelm::filtering
