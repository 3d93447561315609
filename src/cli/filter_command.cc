// qelm filter: hides or deletes what fails a filter scheme.
#include <CLI/CLI.hpp>

#include "cli/command.h"
#include "cli/filter_book.h"
#include "cli/filter_endings.h"
#include "cli/link_table.h"
#include "cli/scheme_choice.h"
#include "cli/session.h"
#include "common/result_codes.h"
#include "filtering/document_filter.h"
#include "host/contexts.h"

namespace qelm::cli {
namespace {

using filtering::LaunchMode;

class FilterCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  void Prepare(Session& session);
  void CheckOutput(const filtering::FilterRun& run, bool book) const;
  std::string DuplicatePath(Session& session, host::Id document) const;
  Outcome Filter(Session& session, host::Id document, const std::string& output);
  void CheckEnding(const filtering::FilterRun& run, std::int32_t result) const;
  std::string Summary(const filtering::FilterRun& run, const std::string& output) const;

  std::string target_;
  std::string scheme_;
  std::string mode_;
  std::string output_;
  std::string output_folder_;
  bool remove_coloring_ = false;
  bool dry_run_ = false;
};

CLI::App* FilterCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program, {"filter", "Filter a document or book by a scheme",
                "What fails the scheme is hidden (modes source and source-nr) or deleted from a copy (mode\n"
                "duplicate). The copy of a book goes into an output folder, with all that the book shows.",
                "qelm filter operation.mif --scheme \"Audience/Beginner\" --mode duplicate -o beginner.mif"});
  command->add_option("TARGET", target_, "The document (MIF or XML) or book (MIF)")->required();
  command->add_option("--scheme", scheme_, "The filter scheme")->type_name("CATEGORY/NAME")->required();
  command
      ->add_option(
          "--mode", mode_,
          "source: restore, then hide; source-nr: hide more; duplicate: delete from a copy. Default: as "
          "FILT_DEFAULT_FILTER_TYPE says")
      ->type_name("MODE")
      ->check(CLI::IsMember({"source", "source-nr", "duplicate"}));
  command
      ->add_option("-o,--output", output_,
                   "Where the result goes; for documents. Default: in the source modes the document itself "
                   "is replaced, "
                   "in mode duplicate a file is made beside it")
      ->type_name("FILE");
  command
      ->add_option("--output-folder", output_folder_,
                   "Where the copy of a book goes in mode duplicate; it is made when it is missing")
      ->type_name("DIR");
  command->add_flag("--remove-coloring", remove_coloring_,
                    "Uncolor the filtered document, as qelm uncolor does. Default: as "
                    "FILT_DEFAULT_REMOVE_COLORING says");
  command->add_flag("--dry-run", dry_run_, "Say how much would be hidden or deleted, and write nothing");
  return command;
}

void FilterCommand::Prepare(Session& session) {
  filtering::FilterRun& run = session.plugin().filter_run;
  filtering::PrepareRun(session.plugin().settings, &run);
  if (!mode_.empty()) run.mode = ModeNamed(mode_);
  run.remove_coloring = run.remove_coloring || remove_coloring_;
  run.dry_run = dry_run_;
  run.output_folder = output_folder_;
  if (run.mode == LaunchMode::kDuplicate && !output_.empty() && Session::SameFile(target_, output_)) {
    throw Failure(
        ExitStatus::kUsage,
        output_ + ": -o names the document itself; mode duplicate leaves it as it is and writes a copy",
        {{"result", common::kOutputIsSource}});
  }
}

// A document goes to a file and a book into a folder.
void FilterCommand::CheckOutput(const filtering::FilterRun& run, bool book) const {
  const bool copies = run.mode == LaunchMode::kDuplicate;
  std::string problem;
  if (book && !output_.empty()) {
    problem = "this is a book, and -o is for one document only; use --output-folder with mode duplicate";
  } else if (!book && !output_folder_.empty()) {
    problem = "this is a document, and --output-folder is for books; use -o";
  } else if (book && copies && output_folder_.empty() && !dry_run_) {
    problem = "mode duplicate copies the book; say by --output-folder where to";
  } else if (book && !copies && !output_folder_.empty()) {
    problem = "--output-folder is for mode duplicate; the other modes work on the book's own files";
  }
  if (!problem.empty()) throw Failure(ExitStatus::kUsage, target_ + ": " + problem);
}

// Where mode duplicate puts its result when the command line does not say: beside the document.
std::string FilterCommand::DuplicatePath(Session& session, host::Id document) const {
  if (!output_.empty()) return output_;
  return session.NameOf(document) + session.plugin().messenger.Get("QELM_MSG_FILTER_17");
}

Outcome FilterCommand::Run(Session& session) {
  Prepare(session);
  const host::Id document = session.Open(target_);
  filtering::FilterRun& run = session.plugin().filter_run;
  const bool book = session.roles().books.IsBook(document);
  run.target = book ? filtering::TargetKind::kBook : filtering::TargetKind::kDocument;
  CheckOutput(run, book);
  ActivateScheme(session, scheme_, schemes::SchemeKind::kFilter);
  if (book) return FilterBook(session, document, scheme_);
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
  if (const FilterEndingText* known = TextFor(run.ending)) {
    throw Failure(known->status, target_ + ": " + known->text + "; nothing was written",
                  {{"result", result}});
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
