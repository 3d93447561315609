// qelm validate: checks the attributes of a document or book against a validation scheme.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <ostream>

#include "cli/command.h"
#include "cli/file_names.h"
#include "cli/junit.h"
#include "cli/scheme_choice.h"
#include "cli/selection.h"
#include "cli/session.h"
#include "cli/violations.h"
#include "coloring/validation.h"
#include "coloring/validation_report.h"
#include "common/result_codes.h"
#include "common/strings.h"

namespace qelm::cli {
namespace {

using coloring::StrikethroughUse;
using coloring::ValidationEnding;
using coloring::ValidationRun;
using Json = nlohmann::ordered_json;

// A report that is closed when the command is over.
class OpenedReport {
 public:
  OpenedReport(Session& session, const std::string& path)
      : session_(session), roles_(filtering::RolesForReports(session.roles())) {
    if (path.empty()) return;
    if (!filtering::OpenReport(session.plugin().messenger, roles_, path, &report_)) {
      throw Failure(ExitStatus::kFile, path + ": the report could not be begun");
    }
  }
  ~OpenedReport() { filtering::CloseReport(roles_, &report_); }
  OpenedReport(const OpenedReport&) = delete;
  OpenedReport& operator=(const OpenedReport&) = delete;

  bool Exists() const { return report_.document != host::kNone; }
  filtering::Report* Get() { return &report_; }
  void Save(const std::string& path) {
    if (filtering::SaveReport(session_.plugin().messenger, roles_, report_, path)) return;
    throw Failure(ExitStatus::kFile, path + ": the report could not be written");
  }

 private:
  Session& session_;
  filtering::ReportRoles roles_;
  filtering::Report report_;
};

class ValidateCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  void CheckOptions(Session& session, host::Id target) const;
  void CheckReportPath(Session& session, host::Id target) const;
  void Activate(Session& session, std::string* scheme) const;
  void Prepare(Session& session) const;
  void ReadRules(ValidationRun* run) const;
  std::int32_t Validate(Session& session, host::Id target, coloring::ValidationContext& context);
  void FinishComponent(Session& session, host::Id document, bool opened) const;
  void CheckEnding(const ValidationRun& run, std::int32_t result) const;
  void Report(Session& session, const std::shared_ptr<const Violations>& found, Outcome* outcome) const;
  Json MembersOf(const Violations& violations, const ValidationRun& run) const;
  void WriteText(const Violations& violations, const ValidationRun& run, std::ostream& out) const;
  SarifLog SarifOf(Session& session, const Violations& violations) const;
  std::vector<JunitSuite> JunitOf(const Violations& violations, const ValidationRun& run) const;

  std::string target_;
  std::string scheme_;
  std::string selection_;
  std::string rules_;
  std::string report_;
  std::string output_;
  std::string format_ = "text";
  bool in_place_ = false;
};

CLI::App* ValidateCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program,
      {"validate", "Check attribute values against a validation scheme",
       "Exit status 1 when something was found. The documents are only read, unless -o or --in-place asks\n"
       "for strikethrough on what violates a rule.",
       "qelm validate manual.book.mif --scheme \"Quality/Allowed values\" --format sarif"});
  command->add_option("TARGET", target_, "The document (MIF or XML) or book (MIF)")->required();
  command
      ->add_option("--scheme", scheme_,
                   "The validation scheme. Default: VAL_DEFAULT_VALIDATION_SCHEME of the local settings")
      ->type_name("CATEGORY/NAME");
  command
      ->add_option("--selection", selection_,
                   "Check only the first element that the expression selects, with what is in it")
      ->type_name("XPATH");
  command->add_option("--rules", rules_, "The rules to check, as 1,2,4. Default: as the local settings say")
      ->type_name("NUMBERS");
  command->add_option("--report", report_, "Write a report document")->type_name("FILE");
  CLI::Option* output =
      command->add_option("-o,--output", output_, "Write the document with strikethrough marks to a file")
          ->type_name("FILE");
  command
      ->add_flag("--in-place", in_place_, "Replace the document, or the book's documents, by the marked one")
      ->excludes(output);
  command->add_option("--format", format_, "How results are printed: text, sarif, junit")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"text", "sarif", "junit"}));
  return command;
}

void ValidateCommand::CheckOptions(Session& session, host::Id target) const {
  const bool book = session.roles().books.IsBook(target);
  if (session.options().json && format_ != "text") {
    throw Failure(ExitStatus::kUsage, "--json and --format " + format_ + " exclude each other");
  }
  if (book && !output_.empty()) {
    throw Failure(ExitStatus::kUsage,
                  target_ + ": this is a book; -o is for a document. Use --in-place to mark its documents");
  }
  if (book && !selection_.empty()) {
    throw Failure(ExitStatus::kUsage, target_ + ": this is a book; --selection is for a document");
  }
  if (!report_.empty()) CheckReportPath(session, target);
}

// A report takes the place of the file at its path, so that must be none of those that are worked on.
void ValidateCommand::CheckReportPath(Session& session, host::Id target) const {
  const auto refuse = [this](const std::string& why) {
    throw Failure(ExitStatus::kUsage, report_ + ": " + why);
  };
  if (common::EqualsIgnoreCase(std::filesystem::path(report_).extension().string(), ".xml")) {
    refuse("--report writes MIF; give the file a name that does not end in .xml");
  }
  session.RefuseFileOf(target, report_, "--report");
  if (!output_.empty() && Session::SameFile(report_, output_)) refuse("--report and -o name the same file");
}

void ValidateCommand::Activate(Session& session, std::string* scheme) const {
  *scheme = scheme_.empty() ? session.plugin().settings.val_default_validation_scheme : scheme_;
  if (scheme_.empty() && *scheme == schemes::kNoName) {
    throw Failure(ExitStatus::kOperation,
                  "no validation scheme is active; name one by --scheme (see qelm schemes list --kind "
                  "validation)",
                  {{"result", common::kNoActiveScheme}});
  }
  ActivateScheme(session, *scheme, schemes::SchemeKind::kValidation);
}

void ValidateCommand::ReadRules(ValidationRun* run) const {
  if (rules_.empty()) return;
  run->rules = {};
  for (std::size_t i = 0; i < rules_.size(); i += 2) {
    const char digit = rules_[i];
    const bool more = i + 1 < rules_.size();
    if (digit < '1' || digit > '4' || (more && (rules_[i + 1] != ',' || i + 2 == rules_.size()))) {
      throw Failure(ExitStatus::kUsage,
                    "--rules: expected numbers from 1 to 4 with commas between, found \"" + rules_ + "\"");
    }
    run->rules[static_cast<std::size_t>(digit - '1')] = true;
  }
}

void ValidateCommand::Prepare(Session& session) const {
  ValidationRun& run = session.plugin().validation_run;
  coloring::PrepareValidation(session.plugin().settings, &run);
  ReadRules(&run);
  if (std::none_of(run.rules.begin(), run.rules.end(), [](bool rule) { return rule; })) {
    throw Failure(ExitStatus::kUsage,
                  "the local settings switch every rule off, so there is nothing to check; name rules by "
                  "--rules");
  }
  run.prompts = false;  // the command says it in its own words
  if (output_.empty() && !in_place_) run.strikethrough = StrikethroughUse::kLeave;
}

// Saves what was marked, and closes what was opened for it, so that a book of any size needs no more memory
// than its largest document.
void ValidateCommand::FinishComponent(Session& session, host::Id document, bool opened) const {
  host::Documents& documents = session.roles().documents;
  session.ShowNotices();
  if (in_place_ && documents.Switch(document, host::DocumentSwitch::kModified)) session.Save(document, "");
  if (opened) documents.Close(document, true);
}

std::int32_t ValidateCommand::Validate(Session& session, host::Id target,
                                       coloring::ValidationContext& context) {
  session.roles().documents.Activate(target);
  if (session.roles().books.IsBook(target)) {
    context.component_done = [this, &session](host::Id document, bool opened) {
      FinishComponent(session, document, opened);
    };
    return coloring::ValidateActiveBook(context);
  }
  return selection_.empty() ? coloring::ValidateActiveDocument(context)
                            : coloring::ValidateSelection(context);
}

Outcome ValidateCommand::Run(Session& session) {
  const host::Id target = session.Open(target_);
  const bool book = session.roles().books.IsBook(target);
  CheckOptions(session, target);
  std::string scheme;
  Activate(session, &scheme);
  Prepare(session);
  if (!selection_.empty()) SelectOrFail(session, target, selection_);
  Plugin& plugin = session.plugin();
  OpenedReport report(session, report_);
  coloring::ValidationReport report_sink(plugin.messenger, plugin.host, plugin.schemes.validation,
                                         report.Get());
  const auto violations = std::make_shared<Violations>(session, session.options().json);
  coloring::ValidationContext context{plugin.host,           plugin.messenger,   plugin.schemes.validation,
                                      plugin.validation_run, {violations.get()}, {}};
  if (report.Exists()) context.sinks.push_back(&report_sink);
  Outcome outcome;
  outcome.result = Validate(session, target, context);
  CheckEnding(plugin.validation_run, outcome.result);
  if (report.Exists()) report.Save(report_);
  if (!book && (in_place_ || !output_.empty())) outcome.output = session.Save(target, output_);
  Report(session, violations, &outcome);
  return outcome;
}

void ValidateCommand::CheckEnding(const ValidationRun& run, std::int32_t result) const {
  switch (run.ending) {
    case ValidationEnding::kCompleted:
      return;
    case ValidationEnding::kByUser:
      throw Failure(ExitStatus::kCancelled, "cancelled", {{"result", result}});
    case ValidationEnding::kMissingRoot:
      throw Failure(ExitStatus::kOperation,
                    target_ + ": the main flow has no elements, and the scheme does not process other flows",
                    {{"result", result}});
    default:
      throw Failure(ExitStatus::kOperation,
                    target_ + ": the validation ended with result " + std::to_string(result),
                    {{"result", result}});
  }
}

void ValidateCommand::Report(Session& session, const std::shared_ptr<const Violations>& found,
                             Outcome* outcome) const {
  const Violations& violations = *found;
  const ValidationRun& run = session.plugin().validation_run;
  if (run.violations != 0 || !run.passed_over.empty()) outcome->status = ExitStatus::kFound;
  std::ostream& out = session.environment().out;
  if (format_ == "sarif") {
    WriteSarif(SarifOf(session, violations), out);
  } else if (format_ == "junit") {
    WriteJunit("qelm validate", JunitOf(violations, run), out);
  } else if (session.options().json) {
    outcome->members = MembersOf(violations, run);
  } else {
    outcome->write_text = [this, found, &run](std::ostream& stream) { WriteText(*found, run, stream); };
  }
  outcome->printed = format_ != "text";
}

Json ValidateCommand::MembersOf(const Violations& violations, const ValidationRun& run) const {
  Json list = Json::array();
  for (const FoundViolation& found : violations.All()) {
    list.push_back({{"rule", found.rule},
                    {"element", found.element},
                    {"tag", found.tag},
                    {"path", found.path},
                    {"attribute", found.attribute},
                    {"value", found.has_value ? Json(found.value) : Json(nullptr)},
                    {"file", violations.Files()[found.file]},
                    {"line", found.line == 0 ? Json(nullptr) : Json(found.line)}});
  }
  Json rules = Json::array();
  for (std::size_t i = 0; i < run.rules.size(); ++i) {
    if (run.rules[i]) rules.push_back(i + 1);
  }
  Json passed_over = Json::array();
  for (const std::string& path : run.passed_over) passed_over.push_back(ShownPath(path));
  return {{"report", report_.empty() ? Json(nullptr) : Json(report_)},
          {"rules", std::move(rules)},
          {"elements", run.elements},
          {"last_rule", run.last_rule},
          {"files", violations.Files()},
          {"passed_over", std::move(passed_over)},
          {"violations", std::move(list)}};
}

// "file:line: " as compilers write it, so that editors can jump there.
void AppendPlace(std::string_view file, std::uint32_t line, std::string* text) {
  text->append(file).append(":");
  if (line != 0) text->append(std::to_string(line)).append(":");
  *text += ' ';
}

std::string PlaceOf(const Violations& violations, const FoundViolation& found) {
  std::string place;
  AppendPlace(violations.Files()[found.file], found.line, &place);
  return place;
}

void ValidateCommand::WriteText(const Violations& violations, const ValidationRun& run,
                                std::ostream& out) const {
  constexpr std::size_t kBuffer = 1U << 16U;
  std::vector<std::string> files(violations.Files().size());
  for (std::size_t i = 0; i < files.size(); ++i) AppendOneLine(violations.Files()[i], &files[i]);
  std::string text;
  text.reserve(kBuffer);
  const auto write = [&] {
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    text.clear();
  };
  for (const FoundViolation& found : violations.All()) {
    AppendPlace(files[found.file], found.line, &text);
    AppendOneLine(found.path, &text);
    text += ": ";
    AppendDescription(found, &text);
    text += '\n';
    if (text.size() > kBuffer / 2) write();
  }
  for (const std::string& path : run.passed_over) {
    AppendOneLine(ShownPath(path), &text);
    text += ": could not be opened and was not checked\n";
  }
  text += target_ + ": " + std::to_string(run.elements) + " elements";
  if (violations.Files().size() != 1) text += " in " + std::to_string(violations.Files().size()) + " files";
  text += run.violations == 1 ? ", 1 violation" : ", " + std::to_string(run.violations) + " violations";
  if (run.unmarked != 0) text += ", " + std::to_string(run.unmarked) + " texts could not be marked";
  text += '\n';
  write();
}

SarifLog ValidateCommand::SarifOf(Session& session, const Violations& violations) const {
  SarifLog log;
  log.version = session.environment().version;
  log.rules = ValidationSarifRules();
  for (const FoundViolation& found : violations.All()) {
    SarifResult result;
    result.rule = static_cast<std::size_t>(found.rule) - 1;
    result.message = std::string(found.path) + ": " + Describe(found);
    result.file = violations.Files()[found.file];
    result.line = found.line;
    result.logical_name = found.tag;
    result.logical_path = found.path;
    result.logical_kind = "element";
    log.results.push_back(std::move(result));
  }
  for (const std::string& path : session.plugin().validation_run.passed_over) {
    log.notifications.push_back(
        {"This file of the book could not be opened and was not checked.", ShownPath(path)});
  }
  return log;
}

// A suite for each document, with a failed case for each violation; a document without one has one case that
// passed, so that it is seen that it was checked.
std::vector<JunitSuite> ValidateCommand::JunitOf(const Violations& violations,
                                                 const ValidationRun& run) const {
  using CaseOutcome = JunitCase::Outcome;
  std::vector<JunitSuite> suites;
  for (const std::string& file : violations.Files()) suites.push_back({file, {}});
  for (const FoundViolation& found : violations.All()) {
    const std::string_view type = ValidationSarifRules()[static_cast<std::size_t>(found.rule) - 1].id;
    suites[found.file].cases.push_back(
        {.name = std::string(found.path) + "/@" + std::string(found.attribute) + " (rule " +
                 std::to_string(found.rule) + ")",
         .class_name = violations.Files()[found.file],
         .outcome = CaseOutcome::kFailed,
         .type = std::string(type),
         .message = Describe(found),
         .details = PlaceOf(violations, found) + std::string(found.path) + ": " + Describe(found)});
  }
  for (JunitSuite& suite : suites) {
    if (!suite.cases.empty()) continue;
    suite.cases.emplace_back();
    suite.cases.back().name = "attribute values";
    suite.cases.back().class_name = suite.name;
  }
  for (const std::string& path : run.passed_over) {
    const std::string file = ShownPath(path);
    const std::string message = "the file could not be opened and was not checked";
    suites.push_back({file, {{"attribute values", file, CaseOutcome::kError, "file", message, message}}});
  }
  return suites;
}

}  // namespace

std::unique_ptr<Command> MakeValidateCommand() { return std::make_unique<ValidateCommand>(); }

}  // namespace qelm::cli
