// qelm restore: shows again what a filter hid.
#include <CLI/CLI.hpp>

#include "cli/command.h"
#include "cli/filter_book.h"
#include "cli/session.h"
#include "common/result_codes.h"
#include "filtering/restore.h"

namespace qelm::cli {
namespace {

class RestoreCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  std::string target_;
  std::string output_;
  bool dry_run_ = false;
};

CLI::App* RestoreCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program, {"restore", "Show again what a filter hid",
                "The condition of the filter is taken away, and all conditions of table rows with it.",
                "qelm restore operation.mif"});
  command->add_option("TARGET", target_, "The document (MIF or XML) or book (MIF)")->required();
  command
      ->add_option("-o,--output", output_,
                   "Where the result goes; for documents. Default: the document itself is replaced")
      ->type_name("FILE");
  command->add_flag("--dry-run", dry_run_, "Say whether anything would change, and write nothing");
  return command;
}

Outcome RestoreCommand::Run(Session& session) {
  const host::Id document = session.Open(target_);
  Plugin& plugin = session.plugin();
  filtering::PrepareRun(plugin.settings, &plugin.filter_run);
  if (session.roles().books.IsBook(document)) {
    if (output_.empty()) return RestoreBook(session, document, dry_run_);
    throw Failure(ExitStatus::kUsage, target_ +
                                          ": this is a book, and -o is for one document only; the book's "
                                          "files are replaced where they are");
  }
  // The command is the answer to the question whether to restore.
  Outcome outcome;
  outcome.result = filtering::RestoreDocument(plugin.host, plugin.messenger, plugin.filter_run, document,
                                              /*ask=*/false, /*notify=*/false);
  if (outcome.result == common::kCancelled || plugin.filter_run.restore_cancelled) {
    throw Failure(ExitStatus::kCancelled, "cancelled; nothing was written", {{"result", common::kCancelled}});
  }
  if (outcome.result != common::kDone) {
    throw Failure(ExitStatus::kOperation,
                  target_ + ": the document could not be restored; nothing was written",
                  {{"result", outcome.result}});
  }
  const bool changed = plugin.host.documents.Switch(document, host::DocumentSwitch::kModified);
  if (!dry_run_ && (changed || !output_.empty())) outcome.output = session.Save(document, output_);
  outcome.members = {{"dry_run", dry_run_}, {"changed", changed}};
  outcome.text = target_ + ": " +
                 (!changed   ? "nothing to restore"
                  : dry_run_ ? "would be restored"
                             : "restored") +
                 (outcome.output.empty() ? "" : " -> " + outcome.output) + "\n";
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeRestoreCommand() { return std::make_unique<RestoreCommand>(); }

}  // namespace qelm::cli
