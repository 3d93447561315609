#include "filtering/batch_filter.h"

#include <filesystem>
#include <unordered_map>

#include "common/paths.h"
#include "filtering/batch_names.h"
#include "filtering/batch_output.h"
#include "filtering/batch_scheme.h"
#include "filtering/filter_run.h"
#include "filtering/report/report.h"
#include "messages/status_shown.h"
#include "schemes/main_settings.h"
#include "schemes/scheme_loading.h"

namespace qelm::filtering {
namespace {

using host::Id;
using host::kNone;

constexpr std::int64_t kMillisecondsASecond = 1000;
constexpr std::int64_t kSecondsAMinute = 60;
constexpr char kTitle[] = "QELM - Batch Filtering";
constexpr char kEsc[] = "Press Esc to cancel";
constexpr std::string_view kMifBegins = "<MIFFile";

std::string WithoutEndSeparator(std::string path) {
  while (path.size() > 1 && path.back() == common::kPathSeparator) path.pop_back();
  return path;
}

// A folder that is written without a root is meant from the source's own.
std::string FromSource(const BatchRequest& request, const std::string& folder) {
  std::string path = folder;
  if (!common::IsAbsolutePath(path)) path = common::JoinPath(common::FolderOf(request.source), path);
  return WithoutEndSeparator(std::filesystem::path(path).lexically_normal().string());
}

NameValues NamesOf(const BatchRequest& request, const BatchScheme& scheme, std::string_view folder) {
  NameValues values;
  values.scheme_name = scheme.name;
  values.scheme_number = scheme.number;
  values.source_name = NameWithoutExtension(request.source);
  values.folder_name = common::FileName(folder);
  values.time = request.time;
  return values;
}

std::string OutputFolder(const BatchRequest& request, const BatchScheme& scheme) {
  const NameValues values = NamesOf(request, scheme, common::FolderOf(request.source));
  return FromSource(request, PathByPattern(request.output_pattern, values));
}

std::string ReportPath(const BatchRequest& request) {
  NameValues values;
  values.source_name = NameWithoutExtension(request.source);
  values.time = request.time;
  const std::string name = PathByPattern(request.settings.bf_report_filename_pattern, values);
  if (common::IsAbsolutePath(name)) return name;
  return common::JoinPath(FromSource(request, FixedFolder(request.output_pattern)), name);
}

// The path, with a number before its extension from 2 on.
std::string NumberedPath(const std::string& path, int number) {
  if (number == 1) return path;
  const std::filesystem::path whole = path;
  const std::string extension = whole.extension().string();
  return path.substr(0, path.size() - extension.size()) + "-" + std::to_string(number) + extension;
}

// Two schemes that write into one folder would each destroy what the other made.
void NameFolders(const BatchRequest& request, std::vector<BatchScheme>* schemes) {
  std::unordered_map<std::string, std::string> owners;
  for (BatchScheme& scheme : *schemes) {
    scheme.folder = OutputFolder(request, scheme);
    const auto [owner, is_new] = owners.try_emplace(scheme.folder, scheme.name);
    if (!is_new) scheme.shares_with = owner->second;
  }
}

// The same for the files that are saved beside, which may go into one folder for all schemes.
void NameExports(const BatchRequest& request, std::vector<BatchScheme>* schemes) {
  std::unordered_map<std::string, std::string> owners;
  for (BatchScheme& scheme : *schemes) {
    if (!scheme.shares_with.empty()) continue;
    const NameValues names = NamesOf(request, scheme, scheme.folder);
    const auto take = [&](host::SaveFormat format, std::string* shares_with) {
      const std::string path = ExportPath(request.settings, names, scheme.folder, format);
      const auto [owner, is_new] = owners.try_emplace(path, scheme.name);
      if (!is_new) *shares_with = owner->second;
    };
    take(host::SaveFormat::kPdf, &scheme.pdf_shares_with);
    take(host::SaveFormat::kXml, &scheme.xml_shares_with);
  }
}

class Batch {
 public:
  Batch(BatchContext& context, const BatchRequest& request, const BatchHooks& hooks)
      : context_(context),
        host_(context.host),
        messenger_(context.messenger),
        request_(request),
        hooks_(hooks),
        roles_(RolesForReports(context.host)),
        started_(context.host.platform.Milliseconds()) {
    if (request_.time.year == 0) request_.time = host_.platform.Now();
    if (!common::IsAbsolutePath(request_.source)) {
      request_.source = host_.platform.ResolvedPath(request_.source);
    }
  }

  BatchRun Run();

 private:
  bool OpenReportFile();
  std::string FreeReport(const std::string& path);
  bool SaveReportFile();
  bool IsReport(const std::string& path);
  void Schemes();
  void Header(const std::vector<BatchScheme>& schemes);
  bool RunScheme(const BatchScheme& scheme, std::size_t count);
  void LeaveOut(const BatchScheme& scheme);
  void Note(const BatchScheme& scheme, BatchOutcome outcome);
  BatchOutcome OutcomeOf(const BatchScheme& scheme);
  void Total();
  void Finish();
  void Write(const std::vector<BatchStep>& steps);

  BatchContext& context_;
  host::Host& host_;
  messages::Messenger& messenger_;
  BatchRequest request_;
  const BatchHooks& hooks_;
  ReportRoles roles_;
  std::int64_t started_;
  Report report_;
  std::optional<host::HeldFile> held_report_;  // by its name, until it is there
  BatchSchemes found_;
  std::optional<BatchSource> source_;
  BatchRun run_;
};

BatchRun Batch::Run() {
  const Id document = host_.documents.ActiveDocument();
  const Id active = document != kNone ? document : host_.documents.ActiveBook();
  if (!OpenReportFile()) return std::move(run_);
  {
    const messages::StatusShown status(host_.user);
    Schemes();
  }
  source_.reset();
  if (found_.opened) host_.documents.Close(found_.settings_document, /*discard=*/true);
  Finish();
  if (active != kNone) host_.documents.Activate(active);
  return std::move(run_);
}

// False when the report would take the place of a file that is no report of a batch.
bool Batch::OpenReportFile() {
  host::Platform& platform = host_.platform;
  std::string path = ReportPath(request_);
  if (request_.report_is_named) {
    if (platform.MayExist(path) && !IsReport(path)) {
      run_.why = messenger_.Format("QELM_MSG_FILTER_REP_27", path);
      if (request_.prompts) messenger_.Alert(run_.why);
      return false;
    }
    platform.MakeFolder(std::string(common::FolderOf(path)));
  } else {
    // Output folders may be links in this one.
    const host::KeptFolder kept(platform, std::string(common::FolderOf(path)));
    platform.MakeFolder(std::string(common::FolderOf(path)));
    path = FreeReport(path);
  }
  if (OpenReport(messenger_, roles_, path, &report_)) run_.report = path;
  return true;
}

// A name that no file has, and no other batch of the same second. Each that another one holds is waited for;
// where the first ones are held, or none can be, the first without a file is taken: it is looked at again in
// the end.
std::string Batch::FreeReport(const std::string& path) {
  constexpr int kMostHeld = 4;
  const auto taken = [this](const std::string& name) {
    return host_.platform.FileExists(name) || host_.platform.FolderExists(name);
  };
  std::string first;
  int not_held = 0;
  for (int number = 1; not_held < kMostHeld; ++number) {
    const std::string free = NumberedPath(path, number);
    if (taken(free)) continue;
    const bool held = held_report_.emplace(host_.platform, free).Valid();
    // Whoever held it before may have written it meanwhile.
    if (held && !taken(free)) return free;
    held_report_.reset();
    if (!held && not_held++ == 0) first = free;
  }
  return first;
}

// Somebody may have put a file there since the batch began.
bool Batch::SaveReportFile() {
  std::string other;
  if (!request_.report_is_named && host_.platform.MayExist(run_.report)) {
    other = run_.report = FreeReport(ReportPath(request_));
  }
  return SaveReport(messenger_, roles_, report_, other);
}

// By the paragraphs with which every report of a batch begins.
bool Batch::IsReport(const std::string& path) {
  const std::optional<std::string> content = host_.platform.ReadFile(path);
  if (!content || !content->starts_with(kMifBegins)) return false;
  for (const char* id : {"QELM_MSG_FILTER_REP_1", "QELM_MSG_FILTER_REP_2"}) {
    if (content->find("`" + std::string(messenger_.Get(id)) + "'") == std::string::npos) return false;
  }
  return true;
}

void Batch::Schemes() {
  found_ = FindBatchSchemes(context_, request_);
  std::vector<BatchScheme> wanted;
  for (BatchScheme& scheme : found_.schemes) {
    if (!hooks_.wanted || hooks_.wanted(scheme)) wanted.push_back(scheme);
  }
  if (found_.schemes.empty()) {
    std::vector<BatchStep> lines;
    BatchSteps steps(messenger_, &lines);
    steps.Say(kTitleLine, "QELM_MSG_FILTER_REP_1");
    steps.Say(kPlainLine, "QELM_MSG_FILTER_REP_2");
    steps.Link(kLinkLine, request_.source);
    if (!found_.why.empty()) steps.Say(kErrorLine, "QELM_MSG_FILTER_REP_25", found_.why);
    steps.Say(kErrorLine, "QELM_MSG_FILTER_REP_14");
    Write(lines);
    run_.why = found_.why;
    if (request_.prompts) messenger_.Alert("QELM_MSG_FILTER_REP_14");
    return;
  }
  run_.result = kDone;
  Header(wanted);
  if (hooks_.begin) hooks_.begin(&wanted);
  for (const BatchScheme& scheme : wanted) {
    if (run_.result == kCancelled) {
      LeaveOut(scheme);
    } else if (!RunScheme(scheme, wanted.size())) {
      run_.result = kCancelled;
    }
  }
  Total();
}

void Batch::Header(const std::vector<BatchScheme>& schemes) {
  std::vector<BatchStep> lines;
  BatchSteps steps(messenger_, &lines);
  steps.Say(kTitleLine, "QELM_MSG_FILTER_REP_1");
  steps.Say(kPlainLine, "QELM_MSG_FILTER_REP_2");
  steps.Link(kLinkLine, request_.source);
  const std::string settings(host_.documents.Path(found_.settings_document));
  if (request_.configuration.empty()) {
    steps.Say(kPlainLine, "QELM_MSG_FILTER_REP_12", settings);
    steps.Say(kPlainLine, "QELM_MSG_FILTER_REP_13", request_.category);
  } else {
    steps.Say(kPlainLine, "QELM_MSG_FILTER_REP_3", settings);
  }
  steps.Say(kPlainLine, "QELM_MSG_FILTER_REP_4", schemes.size());
  Write(lines);
}

// False when the batch is to end.
bool Batch::RunScheme(const BatchScheme& scheme, std::size_t count) {
  messenger_.ShowStatus({kTitle, messenger_.Format("QELM_MSG_FILTER_REP_26", run_.outcomes.size() + 1, count),
                         scheme.name, kEsc});
  BatchOutcome outcome = OutcomeOf(scheme);
  const bool stopped = outcome.cancelled || (host_.user.EscPressed() && messenger_.Ask("QELM_MSG_FILTER_20"));
  Note(scheme, std::move(outcome));
  return !stopped;
}

// After a cancel. Schemes that were run beside the one that was cancelled may be through.
void Batch::LeaveOut(const BatchScheme& scheme) {
  std::optional<BatchOutcome> outcome = hooks_.left ? hooks_.left(scheme) : std::nullopt;
  if (!outcome) {
    outcome = OutcomeFor(scheme);
    outcome->begun = false;
  }
  Note(scheme, std::move(*outcome));
}

void Batch::Note(const BatchScheme& scheme, BatchOutcome outcome) {
  if (outcome.begun) {
    Write(outcome.steps);
    if (hooks_.done) hooks_.done(outcome);
  } else {
    outcome.result = kCancelled;
    BatchSteps(messenger_, &outcome.steps).Say(kErrorLine, "QELM_MSG_FILTER_REP_29", scheme.name);
  }
  run_.outcomes.push_back(std::move(outcome));
}

BatchOutcome Batch::OutcomeOf(const BatchScheme& scheme) {
  if (hooks_.outcome_of) {
    if (std::optional<BatchOutcome> outcome = hooks_.outcome_of(scheme)) return std::move(*outcome);
  }
  if (!source_) source_.emplace(host_, request_);
  return RunBatchScheme(context_, request_, *source_, found_.settings_document, scheme);
}

void Batch::Total() {
  const std::string_view id = run_.result == kCancelled ? "QELM_MSG_FILTER_REP_16" : "QELM_MSG_FILTER_REP_15";
  const std::int64_t seconds = (host_.platform.Milliseconds() - started_) / kMillisecondsASecond;
  std::vector<BatchStep> lines;
  BatchSteps steps(messenger_, &lines);
  steps.Say(kTitleLine, id, seconds / kSecondsAMinute, seconds % kSecondsAMinute);
  Write(lines);
  if (request_.prompts) messenger_.AlertFormatted(id, lines.back().text);
}

void Batch::Finish() {
  if (report_.document == kNone) {
    run_.report.clear();  // it was closed meanwhile
    return;
  }
  if (!SaveReportFile()) run_.report.clear();
  held_report_.reset();
  if (request_.settings.bf_default_close_report_after_batch_filter) {
    CloseReport(roles_, &report_);
  } else {
    ShowReport(roles_, report_);
  }
  run_.report_document = report_.document;
}

void Batch::Write(const std::vector<BatchStep>& steps) {
  if (run_.report.empty()) return;
  for (const BatchStep& step : steps) {
    ReportLine line;
    line.format = step.format;
    line.link = step.link;
    line.texts[step.link ? 2 : 0] = step.text;
    AddReportLine(messenger_, roles_, &report_, line);
  }
}

}  // namespace

BatchRequest BatchDefaults(const config::LocalSettings& settings) {
  BatchRequest request;
  request.settings = settings;
  const std::vector<std::string>& patterns = settings.bf_default_output_folder_patterns;
  request.output_pattern = patterns.empty() ? "<scheme_name>" : patterns.front();
  request.time.year = 0;
  return request;
}

std::string ConfigurationPath(host::Platform& platform, const BatchRequest& request) {
  const std::string& path = request.configuration;
  const std::string in_folder =
      common::JoinPath(common::PlatformPath(request.settings.bf_default_scheme_data_file_folder), path);
  return !platform.FileExists(path) && platform.FileExists(in_folder) ? in_folder : path;
}

BatchSchemes FindBatchSchemes(BatchContext& context, const BatchRequest& request) {
  BatchSchemes found;
  found.settings_document = context.main_settings;
  if (!request.configuration.empty()) {
    const std::string path = ConfigurationPath(context.host.platform, request);
    host::OpenStatus status = host::OpenStatus::kUnreadable;
    found.settings_document = schemes::OpenMainSettings(context.host, context.engine, context.messenger, path,
                                                        /*report=*/false, &status);
    found.opened = found.settings_document != kNone && status == host::OpenStatus::kOpened;
    if (found.settings_document == kNone) {
      found.why =
          status == host::OpenStatus::kOpened ? path : std::string(context.host.documents.LastError());
    }
  }
  if (found.settings_document == kNone) return found;
  for (const schemes::SchemeListing& listed : schemes::ListSchemes(context.engine, found.settings_document)) {
    if (listed.kind != schemes::SchemeKind::kFilter) continue;
    if (request.configuration.empty() && listed.category != request.category) continue;
    const auto number = static_cast<std::int32_t>(found.schemes.size() + 1);
    found.schemes.push_back({number, listed.category, listed.name, {}, {}});
  }
  NameFolders(request, &found.schemes);
  NameExports(request, &found.schemes);
  return found;
}

BatchRun RunBatchFilter(BatchContext& context, const BatchRequest& request, const BatchHooks& hooks) {
  return Batch(context, request, hooks).Run();
}

}  // namespace qelm::filtering
