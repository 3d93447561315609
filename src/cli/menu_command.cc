// qelm command: runs one command of the plug-in's menus on a target.
#include <CLI/CLI.hpp>

#include "cli/command.h"
#include "cli/command_choice.h"
#include "cli/save_changed.h"
#include "cli/selection.h"
#include "cli/session.h"
#include "common/result_codes.h"

namespace qelm::cli {
namespace {

class MenuCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  bool NeedsUserSession() const override { return true; }
  Outcome Run(Session& session) override;

 private:
  void OpenTarget(Session& session);
  void CheckResult(Session& session, std::int32_t number) const;

  std::string command_;
  std::string target_;
  std::string output_;
  std::string selection_;
  host::Id id_ = host::kNone;
};

CLI::App* MenuCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program, {"command", "Run one command of the plug-in's menus",
                "The target is opened and active. What the command changed is saved: the target to -o or to\n"
                "itself, other documents to their own files. qelm menus prints numbers and names.",
                "qelm command QELM_Cmd_CheckTabularScheme examples/scheme-table.mif"});
  command->add_option("COMMAND", command_, "The command's number or name")
      ->required()
      ->type_name("NUMBER|NAME");
  command->add_option("TARGET", target_, "The document (MIF or XML) or the book (MIF)");
  command->add_option("-o,--output", output_, "Where the document goes. Default: the file itself is replaced")
      ->type_name("FILE");
  command
      ->add_option("--selection", selection_,
                   "Select the first element that the expression selects, for commands on the selection")
      ->type_name("XPATH");
  return command;
}

void MenuCommand::OpenTarget(Session& session) {
  if (target_.empty()) {
    if (output_.empty() && selection_.empty()) return;
    throw Failure(ExitStatus::kUsage, "-o and --selection need a target");
  }
  id_ = session.Open(target_);
  if (session.roles().books.IsBook(id_) && !(output_.empty() && selection_.empty())) {
    throw Failure(ExitStatus::kUsage,
                  target_ + ": this is a book, and -o and --selection are for documents only");
  }
  session.roles().documents.Activate(id_);
  if (!selection_.empty()) SelectOrFail(session, id_, selection_);
}

Outcome MenuCommand::Run(Session& session) {
  const std::int32_t number = CommandNumber(command_);
  OpenTarget(session);
  session.TellPlugin();
  session.entries().Command(number);
  Outcome outcome;
  const bool exists = CommandIsDefined(session.plugin(), number);
  outcome.members = {{"number", number}, {"name", nullptr}, {"defined", exists}};
  if (const CommandRow* row = FindCommand(number)) outcome.members["name"] = row->name;
  if (!exists) {
    outcome.text = "command " + command_ + ": there is no such command in this session; nothing was done\n";
    return outcome;
  }
  CheckResult(session, number);
  outcome.result = session.last_result();
  SaveChanged(session, {id_}, output_, &outcome);
  return outcome;
}

void MenuCommand::CheckResult(Session& session, std::int32_t number) const {
  const std::int32_t result = session.last_result();
  if (result == common::kDone) return;
  const std::string why(common::ResultText(result));
  const std::string text = "command " + std::to_string(number) + ": " +
                           (why.empty() ? std::string("declined, or it failed") : why) +
                           "; nothing was written";
  throw Failure(result == common::kCancelled ? ExitStatus::kCancelled : ExitStatus::kOperation, text,
                {{"result", result}});
}

}  // namespace

std::unique_ptr<Command> MakeMenuCommand() { return std::make_unique<MenuCommand>(); }

}  // namespace qelm::cli
