#include "filtering/batch_scheme.h"

#include <unordered_set>

#include "common/paths.h"
#include "common/strings.h"
#include "common/text.h"
#include "filtering/batch_output.h"
#include "filtering/book_filter.h"
#include "filtering/components.h"
#include "filtering/copy_record.h"
#include "filtering/linked_files.h"
#include "filtering/staged_files.h"
#include "schemes/scheme_loading.h"

namespace qelm::filtering {
namespace {

using host::Id;
using host::kNone;

constexpr std::int64_t kMillisecondsASecond = 1000;
constexpr std::int64_t kSecondsAMinute = 60;
constexpr std::string_view kAllSchemes = "*";
constexpr char kBookNotCopied[] =
    "A critical error occurred while attempting to duplicate the book. The exact nature of the error is "
    "unknown.";

bool RemovesColoring(const config::LocalSettings& settings, std::string_view scheme) {
  const std::string& wanted = settings.bf_default_remove_coloring_string;
  if (wanted.empty()) return false;
  if (wanted == kAllSchemes) return true;
  return settings.bf_remove_coloring_string_is_case_sensitive ? scheme.find(wanted) != std::string_view::npos
                                                              : common::ContainsIgnoreCase(scheme, wanted);
}

class SchemeRun {
 public:
  SchemeRun(BatchContext& context, const BatchRequest& request, const BatchSource& source,
            const BatchScheme& scheme, BatchOutcome* outcome)
      : context_(context),
        host_(context.host),
        request_(request),
        source_(source),
        batch_scheme_(scheme),
        outcome_(outcome),
        steps_(context.messenger, &outcome->steps),
        started_(context.host.platform.Milliseconds()) {
    names_.scheme_name = scheme.name;
    names_.scheme_number = scheme.number;
    names_.source_name = NameWithoutExtension(request.source);
    names_.time = request.time;
    names_.folder_name = common::FileName(outcome->folder);
  }

  void Run(Id settings_document, const BatchScheme& scheme);

 private:
  bool Load(Id settings_document, const BatchScheme& scheme);
  bool MakeFolder();
  bool UndoKilled();
  void EndFilling();
  void TellLeftOver();
  std::string NotWritable(const std::string& path);
  void PrepareFilter();
  FilterContext Filter();
  void FilterBook();
  void FilterCopy();
  bool MayReplace();
  bool IsAsPlanned();
  bool NotAsPlanned();
  bool Redirect(Id copy);
  bool Filtered(std::int32_t result);
  void TellResult(const std::string& path);
  void TellFindings();
  void Refuse(std::int32_t result, std::string_view id, const std::string& text);

  BatchContext& context_;
  host::Host& host_;
  const BatchRequest& request_;
  const BatchSource& source_;
  const BatchScheme& batch_scheme_;
  BatchOutcome* outcome_;
  std::optional<host::KeptFolder> kept_;
  BatchSteps steps_;
  std::int64_t started_;
  NameValues names_;
  schemes::Scheme scheme_;
  FilterRun run_;
  std::vector<Id> copies_;  // documents of the new book that the filter opened
  std::unique_ptr<CopyRecord> record_;
};

void SchemeRun::Run(Id settings_document, const BatchScheme& scheme) {
  steps_.Say(kSchemeLine, "QELM_MSG_FILTER_REP_5", scheme.number, scheme.name);
  if (!Load(settings_document, scheme)) return;
  if (!scheme.shares_with.empty()) {
    Refuse(0, "QELM_MSG_FILTER_REP_20", scheme.shares_with);
    return;
  }
  if (source_.id() == kNone) {
    steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_7");
    Refuse(kNoDocument, "QELM_MSG_FILTER_REP_10", source_.why());
    steps_.Link(kLinkLine, request_.source);
    return;
  }
  if (!MakeFolder()) return;
  PrepareFilter();
  if (source_.is_book()) {
    FilterBook();
  } else {
    FilterCopy();
  }
}

void SchemeRun::Refuse(std::int32_t result, std::string_view id, const std::string& text) {
  outcome_->result = result;
  steps_.Say(kErrorLine, id, text);
}

bool SchemeRun::Load(Id settings_document, const BatchScheme& scheme) {
  scheme_.kind = schemes::SchemeKind::kFilter;
  const std::int32_t loaded = schemes::LoadScheme(context_.engine, context_.messenger, settings_document,
                                                  scheme.category, scheme.name, /*report=*/false, &scheme_);
  if (loaded == schemes::kLoaded) return true;
  Refuse(loaded, "QELM_MSG_FILTER_REP_8", scheme.name);
  return false;
}

bool SchemeRun::MakeFolder() {
  const std::string source_folder(common::FolderOf(source_.path()));
  host::Platform& platform = host_.platform;
  if (platform.ResolvedPath(outcome_->folder) == platform.ResolvedPath(source_folder)) {
    const std::string why = context_.messenger.Get("QELM_MSG_FILTER_22");
    Refuse(kOutputIsSource, "QELM_MSG_FILTER_REP_11", why);
    return false;
  }
  kept_.emplace(platform, outcome_->folder);
  if (platform.MakeFolder(outcome_->folder)) return true;
  steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_7");
  Refuse(0, "QELM_MSG_FILTER_REP_9", common::WithReason(outcome_->folder, platform.LastError()));
  return false;
}

// The copy of a book does this itself. A document is written beside what else is in the folder, so that the
// folder is held only while something is put back there. One in a folder whose copy of a book is not complete
// could not be opened.
bool SchemeRun::UndoKilled() {
  host::Platform& platform = host_.platform;
  const std::string& folder = outcome_->folder;
  if (!platform.IsUnfinished(folder) && !HasAbandoned(platform, folder)) return true;
  bool marked = false;
  if (!platform.BeginFilling(folder, &marked)) {
    steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_7");
    Refuse(kCopyFailed, "QELM_MSG_FILTER_REP_11", NotWritable(outcome_->folder));
    return false;
  }
  UndoAbandoned(platform, folder);
  platform.EndFilling(folder, !marked);
  if (!marked) return true;
  steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_7");
  Refuse(kCopyFailed, "QELM_MSG_FILTER_76", folder);
  return false;
}

// What keeps the output folder, or a file in it, from being written, with the host's reason.
std::string SchemeRun::NotWritable(const std::string& path) {
  const std::string reason = host_.platform.LastError();
  return common::WithReason(context_.messenger.Format("QELM_MSG_FILTER_52", path), reason);
}

// After the last file was written. With one that could not be saved the copy is not what it should be.
void SchemeRun::EndFilling() {
  if (record_->Complete(!outcome_->unsaved)) {
    if (!outcome_->unsaved) TellLeftOver();
    return;
  }
  outcome_->complete = false;
  steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_11",
             context_.messenger.Format("QELM_MSG_FILTER_52", record_->why()));
}

void SchemeRun::TellLeftOver() {
  const std::vector<std::string> files = record_->LeftOver();
  if (files.empty()) return;
  steps_.Say(kStepLine, "QELM_MSG_FILTER_REP_87");
  for (const std::string& file : files) steps_.Link(kStepLinkLine, file);
}

// Every filter of a batch deletes from a copy, whatever the settings say for single ones.
void SchemeRun::PrepareFilter() {
  run_.notification_client = context_.notification_client;
  run_.notify = context_.notify;
  PrepareRun(request_.settings, &run_);
  run_.mode = LaunchMode::kDuplicate;
  run_.prompts = false;
  run_.save_first = false;
  run_.redirect_cross_references = true;
  run_.places_dangling = false;  // the report says how many there are
  run_.overwrite = context_.overwrite;
  run_.remove_coloring = RemovesColoring(request_.settings, scheme_.name);
  run_.output_folder = outcome_->folder;
}

FilterContext SchemeRun::Filter() {
  FilterContext filter{host_, context_.messenger, context_.engine, scheme_, run_};
  filter.log = context_.log;
  filter.remove_coloring = [this](Id document) {
    const bool removed = context_.remove_coloring && context_.remove_coloring(document);
    if (!removed) steps_.Say(kErrorLine, "QELM_MSG_FILTER_43", std::string(host_.documents.Path(document)));
    return removed;
  };
  return filter;
}

void SchemeRun::FilterBook() {
  run_.target = TargetKind::kBook;
  FilterContext filter = Filter();
  filter.caller_ends_filling = true;
  // What was filtered is written at once and stays open for the steps that follow.
  filter.component_done = [this](Id document, bool opened, ComponentStage stage) {
    if (stage == ComponentStage::kFinished) {
      if (opened) copies_.push_back(document);
      return host_.documents.Save(document, {});
    }
    if (opened) host_.documents.Close(document, /*discard=*/true);
    return true;
  };
  if (!host_.documents.Activate(source_.id())) {
    Refuse(0, "QELM_MSG_FILTER_REP_17", std::string(host_.documents.LastError()));
    return;
  }
  const std::int32_t result = FilterActiveBook(filter);
  const Id book = run_.result_book;
  if (Filtered(result)) {
    record_ = std::move(filter.copy_record);
    outcome_->output = host_.documents.Path(book);
    TellResult(outcome_->output);
    const std::unordered_set<std::string_view> removed(run_.removed_files.begin(), run_.removed_files.end());
    for (const CopiedFile& file : run_.copied) {
      if (!removed.contains(file.target)) outcome_->files.push_back(file.target);
    }
    FinishOutput(context_, request_, batch_scheme_, names_, source_, book, *record_, outcome_);
    EndFilling();
    // They may be there the next time.
    if (!PassedOver(run_).empty()) outcome_->complete = false;
  }
  for (const Id document : copies_) host_.documents.Close(document, /*discard=*/true);
  if (book != kNone && book != source_.id()) host_.documents.Close(book, /*discard=*/true);
}

// What no earlier run put there is somebody's, and what somebody has changed since.
bool SchemeRun::MayReplace() {
  const std::string& target = record_->target();
  if (!record_->Read() && !context_.overwrite) {
    steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_7");
    steps_.Say(kErrorLine, "QELM_MSG_FILTER_75", record_->path(), record_->why());
    outcome_->result = kCopyFailed;
    return false;
  }
  record_->IsCopyOf(source_.path());
  const bool made = record_->Has(target);
  if (!host_.platform.MayExist(target)) return true;
  const auto refuse = [&](const char* id) {
    steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_7");
    Refuse(kCopyFailed, id, target);
    return false;
  };
  for (const std::string& file : source_.Files()) {
    if (host_.platform.SameFile(file, target)) return refuse("QELM_MSG_FILTER_53");
  }
  if (host_.documents.FindOpen(target) != kNone) return refuse("QELM_MSG_FILTER_54");
  if (context_.overwrite || made) return true;
  return refuse(record_->Names(target) ? "QELM_MSG_FILTER_74" : "QELM_MSG_FILTER_REP_28");
}

// The copy is made from the file, and its references are known by their places among those of the source as
// it was read when the batch began.
bool SchemeRun::IsAsPlanned() {
  const std::string_view state = host_.documents.FileStateAsRead(source_.id());
  return state.empty() || state == host_.platform.FileState(source_.path()) || NotAsPlanned();
}

bool SchemeRun::NotAsPlanned() {
  steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_7");
  Refuse(kCopyFailed, "QELM_MSG_FILTER_72", source_.path());
  return false;
}

// From the look at what is there to the record of what was made, no other run may make the same. The copy of
// a book marks the folder before it looks whether one does.
void SchemeRun::FilterCopy() {
  const std::string name(common::FileName(source_.path()));
  const std::string target = common::JoinPath(outcome_->folder, name);
  const host::HeldFile held(host_.platform, target);
  if (!held.Valid()) {
    steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_7");
    Refuse(kCopyFailed, "QELM_MSG_FILTER_REP_11", NotWritable(target));
    return;
  }
  if (!UndoKilled()) return;
  record_ = std::make_unique<CopyRecord>(host_.platform, outcome_->folder, name);
  if (!MayReplace()) return;
  host::OpenOptions options{.visible = false, .suppress_alerts = true, .as_new = true};
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  const Id copy = host_.documents.Open(source_.path(), options, &status);
  if (copy == kNone || !host_.documents.SetPath(copy, target)) {
    steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_7");
    Refuse(kCopyFailed, "QELM_MSG_FILTER_REP_10", std::string(host_.documents.LastError()));
  } else if (IsAsPlanned() && Redirect(copy)) {
    run_.is_copy = true;
    host_.documents.Activate(copy);
    FilterContext filter = Filter();
    if (Filtered(FilterActiveDocument(filter))) {
      record_->Begin(source_.path());
      record_->Expect(target);
      outcome_->output = target;
      outcome_->files.push_back(target);
      TellResult(target);
      host_.documents.SetSwitch(copy, host::DocumentSwitch::kModified, true);
      FinishOutput(context_, request_, batch_scheme_, names_, source_, copy, *record_, outcome_);
      EndFilling();
    }
  }
  if (copy != kNone) host_.documents.Close(copy, /*discard=*/true);
}

// Relative paths lead from the output folder to what they led to from the source.
bool SchemeRun::Redirect(Id copy) {
  if (source_.Plan() == nullptr) return true;
  CopyPlan plan = *source_.Plan();
  plan.ChooseTargets(outcome_->folder);
  const std::vector<CopyPlan::Rewrite> rewrites = plan.RewritesFor(0, /*redirect=*/false);
  std::vector<host::Link> links;
  if (rewrites.empty() || !host_.links.Read(copy, &links)) return true;
  for (const CopyPlan::Rewrite& rewrite : rewrites) {
    const host::Link* link = CopyPlan::Find(links, rewrite);
    if (link == nullptr) return NotAsPlanned();
    if (host_.links.SetPath(copy, *link, rewrite.path)) continue;
    steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_21", std::string(host_.documents.LastError()));
    break;
  }
  return true;
}

bool SchemeRun::Filtered(std::int32_t result) {
  outcome_->result = result;
  outcome_->cancelled = run_.ending == Ending::kByUser;
  if (result == kDone) return true;
  if (outcome_->cancelled) outcome_->result = kCancelled;
  if (outcome_->result == kCopyFailed) {
    steps_.SayText(kErrorLine, kBookNotCopied);
    // The same in the run's own words, where it knows what it was.
    if (!run_.why.empty()) steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_11", run_.why);
  } else {
    // A copy of the text: the messenger keeps one at a time.
    std::string why = run_.why;
    if (outcome_->cancelled) why = context_.messenger.Get("QELM_MSG_FILTER_29");
    steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_11", why);
  }
  steps_.Link(kLinkLine, source_.path());
  return false;
}

void SchemeRun::TellResult(const std::string& path) {
  const std::int64_t seconds = (host_.platform.Milliseconds() - started_) / kMillisecondsASecond;
  steps_.Say(kResultLine, "QELM_MSG_FILTER_REP_6", seconds / kSecondsAMinute, seconds % kSecondsAMinute);
  steps_.Link(kLinkLine, path);
  TellFindings();
}

// What a reader of the report has to look at, though the filter did what it was to do.
void SchemeRun::TellFindings() {
  const std::string passed_over = PassedOver(run_);
  if (!passed_over.empty()) steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_18", passed_over);
  if (run_.root_filtered) steps_.Say(kErrorLine, "QELM_MSG_FILTER_REP_22");
  if (!run_.dangling.empty()) steps_.Say(kPlainLine, "QELM_MSG_FILTER_REP_19", run_.dangling.size());
}

}  // namespace

bool BatchOutcome::Clean() const {
  for (const BatchStep& step : steps) {
    if (step.failure) return false;
  }
  return result == kDone;
}

BatchOutcome OutcomeFor(const BatchScheme& scheme) {
  BatchOutcome outcome;
  outcome.number = scheme.number;
  outcome.name = scheme.name;
  outcome.folder = scheme.folder;
  return outcome;
}

BatchSource::BatchSource(host::Host& host, const BatchRequest& request) : host_(host) {
  id_ = Open(request.source);
  if (id_ == kNone) {
    why_ = host.documents.LastError();
    return;
  }
  path_ = host.documents.Path(id_);
  is_book_ = host.books.IsBook(id_);
  if (!is_book_) return;
  for (Id component = host.books.FirstComponent(id_); component != kNone;
       component = host.books.NextComponent(id_, component)) {
    Open(std::string(host.books.ComponentPath(id_, component)));
  }
}

BatchSource::~BatchSource() {
  for (std::size_t i = opened_.size(); i-- > 0;) host_.documents.Close(opened_[i], /*discard=*/true);
}

const CopyPlan* BatchSource::Plan() const {
  if (!planned_) {
    planned_ = true;
    plan_.emplace(host_, id_);
    if (!plan_->AddComponent(id_, id_)) plan_.reset();
  }
  return plan_ ? &*plan_ : nullptr;
}

const std::set<std::string>& BatchSource::Files() const {
  if (files_ || id_ == kNone) return files_ ? *files_ : files_.emplace();
  std::vector<Id> documents;
  std::set<std::string> own{path_};
  if (!is_book_) documents.push_back(id_);
  for (Id component = is_book_ ? host_.books.FirstComponent(id_) : kNone; component != kNone;
       component = host_.books.NextComponent(id_, component)) {
    own.emplace(host_.books.ComponentPath(id_, component));
    documents.push_back(host_.books.ComponentDocument(id_, component));
  }
  files_ = FilesBehind(host_, documents, LinksThatCount::kAll);
  files_->merge(own);
  return *files_;
}

Id BatchSource::Open(const std::string& path) {
  host::OpenOptions options{.visible = false, .suppress_alerts = true};
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  const Id id = host_.documents.Open(path, options, &status);
  if (id != kNone && status == host::OpenStatus::kOpened) opened_.push_back(id);
  return id;
}

BatchOutcome RunBatchScheme(BatchContext& context, const BatchRequest& request, const BatchSource& source,
                            Id settings_document, const BatchScheme& scheme) {
  BatchOutcome outcome = OutcomeFor(scheme);
  const std::int64_t started = context.host.platform.Milliseconds();
  SchemeRun(context, request, source, scheme, &outcome).Run(settings_document, scheme);
  outcome.elapsed_ms = context.host.platform.Milliseconds() - started;
  return outcome;
}

}  // namespace qelm::filtering
