// qelm filter: hides or deletes what fails a filter scheme.
#include <CLI/CLI.hpp>

#include "cli/command.h"
#include "cli/link_table.h"
#include "cli/scheme_choice.h"
#include "cli/session.h"
#include "common/result_codes.h"
#include "filtering/document_filter.h"
#include "host/contexts.h"

namespace qelm::cli {
namespace {

using filtering::Ending;
using filtering::LaunchMode;

const std::map<std::string, LaunchMode> kModes = {
    {"source", LaunchMode::kSourceRestoreFirst},
    {"source-nr", LaunchMode::kSourceNoRestore},
    {"duplicate", LaunchMode::kDuplicate},
};

std::string ModeName(LaunchMode mode) {
  for (const auto& [name, value] : kModes) {
    if (value == mode) return name;
  }
  return {};
}

// What a run that was not completed came to.
struct EndingText {
  Ending ending;
  ExitStatus status;
  const char* text;
};
constexpr EndingText kEndings[] = {
    {Ending::kDeclined, ExitStatus::kOperation,
     "the highest-level element would go with everything in it, and the answer was no"},
    {Ending::kByUser, ExitStatus::kCancelled, "cancelled"},
    {Ending::kTitleStays, ExitStatus::kOperation, "a table title cannot be hidden, and the answer was no"},
    {Ending::kSchemeRefused, ExitStatus::kRefused, "the scheme was refused"},
    {Ending::kNodeSetCut, ExitStatus::kRefused,
     "the scheme selects more nodes than XPATH_MAX_MATCHES allows"},
    {Ending::kNotSaved, ExitStatus::kFile, "the document could not be saved"},
    {Ending::kNotCopied, ExitStatus::kFile, "the document could not be copied"},
    {Ending::kNotHidden, ExitStatus::kOperation, "an element could not be hidden"},
    {Ending::kNotDeleted, ExitStatus::kOperation, "an element could not be deleted"},
    {Ending::kNotRestored, ExitStatus::kOperation, "what an earlier filter hid could not be restored"},
};

class FilterCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  void Prepare(Session& session);
  std::string DuplicatePath(Session& session, host::Id document) const;
  Outcome Filter(Session& session, host::Id document, const std::string& output);
  void CheckEnding(const filtering::FilterRun& run, std::int32_t result) const;
  std::string Summary(const filtering::FilterRun& run, const std::string& output) const;

  std::string target_;
  std::string scheme_;
  std::string mode_;
  std::string output_;
  bool remove_coloring_ = false;
  bool dry_run_ = false;
};

CLI::App* FilterCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program, {"filter", "Filter a document by a scheme",
                "What fails the scheme is hidden (modes source and source-nr) or deleted from a copy (mode\n"
                "duplicate). Documents only: books are not filtered yet.",
                "qelm filter operation.mif --scheme \"Audience/Beginner\" --mode duplicate -o beginner.mif"});
  command->add_option("TARGET", target_, "The document (MIF or XML)")->required();
  command->add_option("--scheme", scheme_, "The filter scheme")->type_name("CATEGORY/NAME")->required();
  command
      ->add_option(
          "--mode", mode_,
          "source: restore, then hide; source-nr: hide more; duplicate: delete from a copy. Default: as "
          "FILT_DEFAULT_FILTER_TYPE says")
      ->type_name("MODE")
      ->check(CLI::IsMember({"source", "source-nr", "duplicate"}));
  command
      ->add_option(
          "-o,--output", output_,
          "Where the result goes. Default: in the source modes the document itself is replaced, in mode "
          "duplicate a file is made beside it")
      ->type_name("FILE");
  command->add_flag("--remove-coloring", remove_coloring_,
                    "Uncolor the filtered document, as qelm uncolor does. Default: as "
                    "FILT_DEFAULT_REMOVE_COLORING says");
  command->add_flag("--dry-run", dry_run_, "Say how much would be hidden or deleted, and write nothing");
  return command;
}

void FilterCommand::Prepare(Session& session) {
  filtering::FilterRun& run = session.plugin().filter_run;
  filtering::PrepareRun(session.plugin().settings, &run);
  if (!mode_.empty()) run.mode = kModes.at(mode_);
  run.target = filtering::TargetKind::kDocument;
  run.remove_coloring = run.remove_coloring || remove_coloring_;
  run.dry_run = dry_run_;
  if (run.mode == LaunchMode::kDuplicate && !output_.empty() && Session::SameFile(target_, output_)) {
    throw Failure(
        ExitStatus::kUsage,
        output_ + ": -o names the document itself; mode duplicate leaves it as it is and writes a copy",
        {{"result", common::kOutputIsSource}});
  }
}

// Where mode duplicate puts its result when the command line does not say: beside the document.
std::string FilterCommand::DuplicatePath(Session& session, host::Id document) const {
  if (!output_.empty()) return output_;
  return session.NameOf(document) + session.plugin().messenger.Get("QELM_MSG_FILTER_17");
}

Outcome FilterCommand::Run(Session& session) {
  Prepare(session);
  const host::Id document = session.OpenDocument(target_);
  ActivateScheme(session, scheme_, schemes::SchemeKind::kFilter);
  filtering::FilterRun& run = session.plugin().filter_run;
  if (run.mode != LaunchMode::kDuplicate) return Filter(session, document, output_);
  // The document is saved under the other name when everything went well, and only then: its own file is
  // never written, and a run that fails leaves the output of an earlier one as it was.
  run.is_copy = true;
  return Filter(session, document, DuplicatePath(session, document));
}

Outcome FilterCommand::Filter(Session& session, host::Id document, const std::string& output) {
  Plugin& plugin = session.plugin();
  filtering::FilterRun& run = plugin.filter_run;
  plugin.host.documents.Activate(document);
  filtering::FilterContext context = FilterContextOf(plugin);
  Outcome outcome;
  outcome.result = filtering::FilterActiveDocument(context);
  CheckEnding(run, outcome.result);
  if (!dry_run_) outcome.output = session.Save(document, output);
  outcome.members = {{"scheme", scheme_},
                     {"mode", ModeName(run.mode)},
                     {"dry_run", dry_run_},
                     {"elements", run.elements},
                     {"kept", run.kept},
                     {"hidden", run.hidden},
                     {"deleted", run.deleted},
                     {"left", run.left},
                     {"root_filtered", run.root_filtered},
                     {"dangling", DanglingJson(run.dangling)}};
  outcome.text = Summary(run, outcome.output) + DanglingText(run.dangling);
  return outcome;
}

void FilterCommand::CheckEnding(const filtering::FilterRun& run, std::int32_t result) const {
  if (result == common::kDone) return;
  for (const EndingText& known : kEndings) {
    if (known.ending != run.ending) continue;
    throw Failure(known.status, target_ + ": " + known.text + "; nothing was written", {{"result", result}});
  }
  throw Failure(
      ExitStatus::kOperation,
      target_ + ": the filter ended with result " + std::to_string(result) + "; nothing was written",
      {{"result", result}});
}

std::string FilterCommand::Summary(const filtering::FilterRun& run, const std::string& output) const {
  const bool deletes = run.mode == LaunchMode::kDuplicate;
  std::string text = target_ + ": " + std::to_string(run.elements) + " elements, " +
                     std::to_string(run.kept) + " kept, " +
                     std::to_string(deletes ? run.deleted : run.hidden) + (dry_run_ ? " would be " : " ") +
                     (deletes ? "deleted" : "hidden");
  if (run.left != 0) text += ", " + std::to_string(run.left) + " could not be hidden";
  if (dry_run_ && run.root_filtered) text += "; the highest-level element is among them";
  return text + (output.empty() ? "\n" : " -> " + output + "\n");
}

}  // namespace

std::unique_ptr<Command> MakeFilterCommand() { return std::make_unique<FilterCommand>(); }

}  // namespace qelm::cli
