// qelm batch: filters one source by many schemes, each into an output folder of its own.
#include <CLI/CLI.hpp>
#include <charconv>
#include <filesystem>
#include <memory>
#include <ostream>
#include <set>

#include "cli/batch_records.h"
#include "cli/batch_workers.h"
#include "cli/command.h"
#include "cli/did_you_mean.h"
#include "cli/file_names.h"
#include "cli/scheme_choice.h"
#include "cli/session.h"
#include "common/paths.h"
#include "common/result_codes.h"
#include "common/version.h"
#include "config/settings_table.h"
#include "embedded/adapter/book_update.h"
#include "filtering/batch_filter.h"
#include "filtering/batch_names.h"
#include "filtering/batch_scheme.h"
#include "filtering/linked_files.h"
#include "host/contexts.h"
#include "schemes/scheme_loading.h"

namespace qelm::cli {
namespace {

namespace fs = std::filesystem;
using filtering::BatchOutcome;
using filtering::BatchRequest;
using filtering::BatchRun;
using filtering::BatchScheme;
using Json = nlohmann::ordered_json;

constexpr char kRecordFolder[] = ".qelm-batch";
constexpr std::int32_t kMostJobs = 256;

// Part I of N, for runs that share a batch.
struct Shard {
  std::int32_t part = 1;
  std::int32_t parts = 1;
  bool Has(std::int32_t number) const { return (number - 1) % parts == part - 1; }
};

// Nothing for a text that is not "I/N" with I from 1 to N.
std::optional<Shard> ParseShard(std::string_view text) {
  Shard shard;
  const char* end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, shard.part);
  if (first.ec != std::errc() || first.ptr == end || *first.ptr != '/') return std::nullopt;
  const auto second = std::from_chars(first.ptr + 1, end, shard.parts);
  const bool fits = shard.part >= 1 && shard.part <= shard.parts;
  return second.ec == std::errc() && second.ptr == end && fits ? std::optional(shard) : std::nullopt;
}

std::string ShardError(const std::string& text) {
  return ParseShard(text) ? std::string() : "expected I/N with I from 1 to N, such as 2/8";
}

std::string Absolute(const std::string& path) {
  return fs::absolute(common::PlatformPath(path)).lexically_normal().string();
}

// Paths by their name and, where they are there, what they are like; what a file shows may change without it.
void AddFile(const std::string& path, Json* files) {
  const Json state = FileState(path);
  files->push_back(state.is_null() ? Json(path) : state);
}

class BatchCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;
  bool IsShort() const override { return false; }

 private:
  BatchRequest Request(Session& session) const;
  void CheckNames(Session& session, const BatchRequest& request) const;
  Json Inputs(Session& session, const BatchRequest& request);
  Json SourceFiles(Session& session, const BatchRequest& request);
  filtering::BatchHooks Hooks(Session& session, const BatchRequest& request);
  void Begin(Session& session, const BatchRequest& request, std::vector<BatchScheme>* schemes);
  std::optional<BatchOutcome> OutcomeOf(Session& session, const BatchScheme& scheme);
  BatchOutcome Taken(Session& session, std::int32_t number);
  BatchOutcome Handed(Session& session, BatchWorkers::Result result);
  std::optional<BatchOutcome> Left(Session& session, const BatchScheme& scheme);
  Json Notices(const Session& session) const;
  void Keep(const BatchScheme& scheme, const BatchOutcome& outcome);
  Outcome Tell(Session& session, const BatchRun& run) const;
  std::string Nearest(Session& session) const;
  std::string TextOf(const BatchRun& run) const;

  std::string source_;
  std::string category_;
  std::string configuration_;
  std::string output_;
  std::string report_;
  std::string variables_;
  bool pdf_ = true;
  bool xml_ = true;
  std::int32_t jobs_ = 1;
  std::string shard_text_;
  bool resume_ = false;

  std::optional<filtering::BatchSource> held_;  // so that the batch finds it open
  std::optional<BatchRecords> records_;
  std::map<std::int32_t, BatchOutcome> kept_;    // schemes that need not be done again
  std::map<std::int32_t, BatchScheme> schemes_;  // of this run
  std::unique_ptr<BatchWorkers> workers_;
  std::vector<std::string> alerts_;   // of the workers
  std::vector<std::string> notices_;  // likewise
};

CLI::App* BatchCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program, {"batch", "Filter a document or book by every scheme of a category",
                "Each scheme makes a filtered copy in an output folder of its own, which is then finished:\n"
                "variables, PDF metadata, book update, PDF, XML. A report tells everything that was done.",
                "qelm batch pump.book.mif --category Audience --output \"out/<scheme_name>\" --jobs 2"});
  command->add_option("SOURCE", source_, "The document (MIF or XML) or book (MIF)")->required();
  CLI::Option* category = command->add_option("--category", category_, "The filter schemes of this category");
  command
      ->add_option("--config", configuration_,
                   "All filter schemes of this main settings document, also looked for in the folder "
                   "BF_DEFAULT_SCHEME_DATA_FILE_FOLDER")
      ->type_name("FILE")
      ->excludes(category);
  command
      ->add_option("-o,--output", output_,
                   "The output folder of each scheme, with <scheme_name> or <scheme_num> in it. Default: the "
                   "first of BF_DEFAULT_OUTPUT_FOLDER_PATTERNS, seen from the source's folder")
      ->type_name("PATTERN");
  command
      ->add_option(
          "--report", report_,
          "The report's file. Default: as BF_REPORT_FILENAME_PATTERN says, beside the output folders")
      ->type_name("FILE");
  command
      ->add_option("--variables", variables_,
                   "The folder of the variables files. Default: as "
                   "BF_POST_PROCESS_DEFAULT_VAR_IMPORT_FOLDER says")
      ->type_name("DIR");
  command->add_flag("!--no-pdf", pdf_, "Save no PDF");
  command->add_flag("!--no-xml", xml_, "Save no XML");
  command->add_option("--jobs", jobs_, "How many schemes are run at once")
      ->type_name("N")
      ->check(NumberBetween(1, kMostJobs));
  command->add_option("--shard", shard_text_, "Only every N-th scheme, beginning with the I-th")
      ->type_name("I/N")
      ->check(ShardError);
  command->add_flag("--resume", resume_,
                    "Do not run the schemes again whose files are complete and made from what is there now");
  return command;
}

BatchRequest BatchCommand::Request(Session& session) const {
  BatchRequest request = filtering::BatchDefaults(session.plugin().settings);
  config::LocalSettings& settings = request.settings;
  request.source = Absolute(source_);
  request.category = category_;
  if (!configuration_.empty()) {
    const std::string path = Absolute(configuration_);
    request.configuration = fs::exists(path) ? path : configuration_;
  }
  if (!output_.empty()) request.output_pattern = Absolute(output_);
  if (!report_.empty()) settings.bf_report_filename_pattern = Absolute(report_);
  request.report_is_named = !report_.empty();
  if (!variables_.empty()) settings.bf_post_process_default_var_import_folder = Absolute(variables_);
  settings.bf_post_process_default_enable_pdf_save &= pdf_;
  settings.bf_post_process_default_enable_xml_save &= xml_;
  settings.bf_default_close_report_after_batch_filter = true;
  request.configuration = filtering::ConfigurationPath(session.platform(), request);
  request.time = session.platform().Now();
  if (!shard_text_.empty()) {
    // The parts of a batch may be run at the same time, in the same second.
    const Shard shard = *ParseShard(shard_text_);
    fs::path pattern = settings.bf_report_filename_pattern;
    const std::string extension = pattern.extension().string();
    pattern.replace_extension();
    settings.bf_report_filename_pattern = pattern.string() + "_part_" + std::to_string(shard.part) + "_of_" +
                                          std::to_string(shard.parts) + extension;
  }
  return request;
}

// The source with all files that it consists of, shows or takes text from.
Json BatchCommand::SourceFiles(Session& session, const BatchRequest& request) {
  host::Host& host = session.roles();
  Json files = Json::array();
  AddFile(request.source, &files);
  const filtering::BatchSource& source = held_.emplace(host, request);
  std::vector<host::Id> documents;
  if (source.is_book()) {
    for (host::Id component = host.books.FirstComponent(source.id()); component != host::kNone;
         component = host.books.NextComponent(source.id(), component)) {
      AddFile(std::string(host.books.ComponentPath(source.id(), component)), &files);
      documents.push_back(host.books.ComponentDocument(source.id(), component));
    }
  } else if (source.id() != host::kNone) {
    documents.push_back(source.id());
  }
  for (const std::string& path : filtering::FilesBehind(host, documents, filtering::LinksThatCount::kShown))
    AddFile(path, &files);
  return files;
}

// Everything that decides what comes of a scheme.
Json BatchCommand::Inputs(Session& session, const BatchRequest& request) {
  Json inputs;
  inputs["program"] = Json::array({session.environment().version, common::VersionText()});
  AddFile("/proc/self/exe", &inputs["program"]);
  inputs["source"] = SourceFiles(session, request);
  inputs["schemes"] = Json::array({request.category});
  AddFile(
      request.configuration.empty() ? session.plugin().settings.paths.main_settings : request.configuration,
      &inputs["schemes"]);
  inputs["parameters"] = session.options().parameters;
  for (const config::Setting& setting : config::AllSettings()) {
    if (setting.key == "BF_REPORT_FILENAME_PATTERN") continue;
    inputs["settings"][std::string(setting.key)] = config::ValueTexts(setting, request.settings);
  }
  const std::string& folder = request.settings.bf_post_process_default_var_import_folder;
  inputs["variables"] = Json::array();
  if (common::IsAbsolutePath(folder)) {
    for (const std::string& name : session.platform().FolderNames(folder)) {
      AddFile(common::JoinPath(folder, name), &inputs["variables"]);
    }
  }
  return inputs;
}

void BatchCommand::Begin(Session& session, const BatchRequest& request, std::vector<BatchScheme>* schemes) {
  std::vector<BatchScheme> left;
  for (BatchScheme& scheme : *schemes) {
    schemes_[scheme.number] = scheme;
    std::optional<BatchOutcome> kept = resume_ ? records_->Find(scheme) : std::nullopt;
    if (kept) {
      kept_[scheme.number] = std::move(*kept);
    } else {
      left.push_back(scheme);
    }
  }
  if (jobs_ < 2 || left.size() < 2) return;
  BatchWorkers::Hooks hooks;
  hooks.before = [this](const BatchScheme& scheme) { records_->Forget(scheme); };
  Environment environment = session.environment();
  environment.documents = session.host().ShareDocuments();
  held_.reset();
  hooks.after = [this](const BatchScheme& scheme, const BatchOutcome& outcome) { Keep(scheme, outcome); };
  workers_ = std::make_unique<BatchWorkers>(session.options(), environment, request, std::move(left),
                                            static_cast<std::size_t>(jobs_), hooks);
}

BatchOutcome BatchCommand::Taken(Session& session, std::int32_t number) {
  const auto cancelled = [&session] {
    return session.roles().user.EscPressed() && session.plugin().messenger.Ask("QELM_MSG_FILTER_20");
  };
  return Handed(session, workers_->Take(number, cancelled));
}

// Passes on what a worker's session had to say.
BatchOutcome BatchCommand::Handed(Session& session, BatchWorkers::Result result) {
  session.environment().err << result.messages << std::flush;
  alerts_.insert(alerts_.end(), result.alerts.begin(), result.alerts.end());
  notices_.insert(notices_.end(), result.notices.begin(), result.notices.end());
  return std::move(result.outcome);
}

// What is complete from before, or through beside the scheme at which the batch was cancelled.
std::optional<BatchOutcome> BatchCommand::Left(Session& session, const BatchScheme& scheme) {
  const auto kept = kept_.find(scheme.number);
  if (kept != kept_.end()) return kept->second;
  std::optional<BatchWorkers::Result> result = workers_ ? workers_->Left(scheme.number) : std::nullopt;
  return result ? std::optional(Handed(session, std::move(*result))) : std::nullopt;
}

std::optional<BatchOutcome> BatchCommand::OutcomeOf(Session& session, const BatchScheme& scheme) {
  const auto kept = kept_.find(scheme.number);
  if (kept != kept_.end()) return kept->second;
  if (workers_) return Taken(session, scheme.number);
  records_->Forget(scheme);
  return std::nullopt;
}

void BatchCommand::Keep(const BatchScheme& scheme, const BatchOutcome& outcome) {
  if (outcome.complete) records_->Keep(scheme, outcome);
}

filtering::BatchHooks BatchCommand::Hooks(Session& session, const BatchRequest& request) {
  filtering::BatchHooks hooks;
  if (!shard_text_.empty()) {
    hooks.wanted = [shard = *ParseShard(shard_text_)](const BatchScheme& scheme) {
      return shard.Has(scheme.number);
    };
  }
  hooks.begin = [this, &session, &request](std::vector<BatchScheme>* schemes) {
    Begin(session, request, schemes);
  };
  hooks.outcome_of = [this, &session](const BatchScheme& scheme) { return OutcomeOf(session, scheme); };
  hooks.left = [this, &session](const BatchScheme& scheme) { return Left(session, scheme); };
  hooks.done = [this](const BatchOutcome& outcome) {
    if (!workers_ && !kept_.contains(outcome.number)) Keep(schemes_[outcome.number], outcome);
  };
  return hooks;
}

// What would go wrong for every scheme is told before the first.
void BatchCommand::CheckNames(Session& session, const BatchRequest& request) const {
  if (const std::string_view word = filtering::UnknownPlaceholder(output_); !word.empty()) {
    throw Failure(ExitStatus::kUsage, output_ + ": there is no placeholder \"" + std::string(word) +
                                          "\"; most wanted are <scheme_name> and <scheme_num>");
  }
  if (configuration_.empty()) return;
  if (session.platform().FileExists(request.configuration)) return;
  throw Failure(ExitStatus::kFile, configuration_ + ": there is no such file");
}

Outcome BatchCommand::Run(Session& session) {
  if (category_.empty() && configuration_.empty()) {
    throw Failure(ExitStatus::kUsage, "say by --category or --config which schemes to run");
  }
  if (configuration_.empty()) RequireMainSettings(session);
  const BatchRequest request = Request(session);
  CheckNames(session, request);
  // A source that cannot be opened is told at once, and not once a scheme.
  const host::Id source = session.Open(source_);
  const std::string pattern = request.output_pattern;
  const std::string folder = common::IsAbsolutePath(pattern) ? filtering::FixedFolder(pattern)
                                                             : std::string(common::FolderOf(request.source));
  records_.emplace(common::JoinPath(folder, kRecordFolder), request.source + '\n' + request.configuration,
                   Inputs(session, request));
  filtering::BatchContext context = BatchContextOf(session.plugin());
  context.findings_codes = embedded::adapter::FindingsCodes();
  const BatchRun run = filtering::RunBatchFilter(context, request, Hooks(session, request));
  workers_.reset();
  held_.reset();
  session.roles().documents.Close(source, /*discard=*/true);
  session.ShowNotices();
  if (!session.options().quiet) {
    for (const std::string& trouble : records_->Troubles()) {
      session.environment().err << "note: " << trouble << std::endl;
    }
  }
  return Tell(session, run);
}

// A category whose name may have been meant.
std::string BatchCommand::Nearest(Session& session) const {
  std::vector<std::string> names;
  Plugin& plugin = session.plugin();
  for (const schemes::SchemeListing& scheme : schemes::ListSchemes(plugin.engine, plugin.main_settings)) {
    if (scheme.kind == schemes::SchemeKind::kFilter) names.push_back(scheme.category);
  }
  return DidYouMean(category_, names);
}

// What was noticed of files, once: the source is opened for every scheme.
Json BatchCommand::Notices(const Session& session) const {
  Json notices = Json::array();
  std::set<std::string> seen;
  for (const std::vector<std::string>& texts : {session.Notices(), records_->Troubles(), notices_}) {
    for (const std::string& text : texts) {
      if (seen.insert(text).second) notices.push_back(text);
    }
  }
  return notices;
}

std::string BatchCommand::TextOf(const BatchRun& run) const {
  std::string text;
  for (const BatchOutcome& outcome : run.outcomes) {
    text += std::to_string(outcome.number) + ". " + outcome.name;
    text += outcome.output.empty() ? ": not filtered" : " -> " + ShownPath(outcome.output);
    if (kept_.contains(outcome.number)) text += " (complete from an earlier run, not done again)";
    text += "\n";
    for (const filtering::BatchStep& step : outcome.steps) {
      if (step.failure) text += "   " + step.text + "\n";
    }
  }
  return text + "report: " + (run.report.empty() ? "not written" : ShownPath(run.report)) + "\n";
}

Outcome BatchCommand::Tell(Session& session, const BatchRun& run) const {
  Outcome outcome;
  outcome.result = run.result;
  bool clean = !run.report.empty();
  Json schemes = Json::array();
  for (const BatchOutcome& scheme : run.outcomes) {
    clean = clean && scheme.Clean();
    schemes.push_back(OutcomeJson(scheme));
    schemes.back()["resumed"] = kept_.contains(scheme.number);
  }
  outcome.members["report"] = run.report.empty() ? Json(nullptr) : Json(ShownPath(run.report));
  outcome.members["schemes"] = std::move(schemes);
  outcome.members["notices"] = Notices(session);
  for (const std::string& alert : alerts_) outcome.members["scheme_alerts"].push_back(alert);
  outcome.text = TextOf(run);
  outcome.status = clean ? ExitStatus::kDone : ExitStatus::kFound;
  if (run.result == common::kDone) return outcome;
  if (run.result != common::kCancelled && !run.why.empty()) {
    throw Failure(ExitStatus::kOperation, run.why, {{"result", run.result}, {"schemes", Json::array()}});
  }
  if (run.result != common::kCancelled) {
    const std::string where =
        configuration_.empty() ? "category \"" + category_ + "\"" + Nearest(session) : configuration_;
    throw Failure(ExitStatus::kOperation, session.target() + ": there are no filter schemes in " + where,
                  {{"result", run.result}, {"schemes", Json::array()}});
  }
  session.environment().out << (session.options().json ? std::string() : outcome.text);
  outcome.members["result"] = run.result;
  throw Failure(ExitStatus::kCancelled, session.target() + ": cancelled; what was complete before stays",
                std::move(outcome.members));
}

}  // namespace

std::unique_ptr<Command> MakeBatchCommand() { return std::make_unique<BatchCommand>(); }

}  // namespace qelm::cli
