// qelm call: sends call strings to the plug-in, as another program does inside the host.
#include <CLI/CLI.hpp>
#include <ostream>

#include "cli/command.h"
#include "cli/save_changed.h"
#include "cli/session.h"
#include "common/result_codes.h"

namespace qelm::cli {
namespace {

class CallCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  bool NeedsUserSession() const override { return true; }
  Outcome Run(Session& session) override;

 private:
  void SplitArguments(const Options& options);
  std::vector<host::Id> OpenTargets(Session& session) const;
  // True when all that was changed may be saved.
  bool Send(Session& session, Outcome* outcome) const;

  std::vector<std::string> arguments_;  // targets and call strings, as the parser gives them
  std::vector<std::string> targets_;
  std::vector<std::string> calls_;
  std::string output_;
};

CLI::App* CallCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program,
      {"call", "Send call strings to the plug-in, as other programs do",
       "The targets are opened, the strings behind -- are sent in their order, and the integer that\n"
       "answers each is printed. What the calls changed is saved: a single target to -o or to itself,\n"
       "other documents to their own files; nothing is, when an operation failed or was cancelled.",
       "qelm call examples/pump/operation.mif -- Hello \"GetParm---QELMVersionMajor\""});
  command->add_option("TARGET", arguments_, "Documents (MIF or XML) and books (MIF), which are opened");
  // All of them arrive as targets; one that stays without a value lets the parser go on behind the mark.
  command->add_option("STRING", calls_, "Call strings, behind --")->expected(1);
  command->add_option("-o,--output", output_, "Where the target goes. Default: the file itself is replaced")
      ->type_name("FILE");
  return command;
}

void CallCommand::SplitArguments(const Options& options) {
  const std::size_t strings = std::min(options.behind_mark.value_or(0), arguments_.size());
  if (strings == 0) {
    throw Failure(ExitStatus::kUsage,
                  "there is no call string; write them behind --, as in qelm call -- Hello");
  }
  const auto first = arguments_.end() - static_cast<std::ptrdiff_t>(strings);
  targets_.assign(arguments_.begin(), first);
  calls_.assign(first, arguments_.end());
  if (!output_.empty() && targets_.size() != 1) {
    throw Failure(ExitStatus::kUsage, "-o is for one target; there are " + std::to_string(targets_.size()));
  }
}

std::vector<host::Id> CallCommand::OpenTargets(Session& session) const {
  std::vector<host::Id> ids;
  for (const std::string& target : targets_) {
    ids.push_back(session.Open(target));
    if (!output_.empty() && session.roles().books.IsBook(ids.back())) {
      throw Failure(ExitStatus::kUsage, target + ": this is a book, and -o is for documents only");
    }
  }
  return ids;
}

bool CallCommand::Send(Session& session, Outcome* outcome) const {
  nlohmann::ordered_json results = nlohmann::ordered_json::array();
  bool good = true;
  for (const std::string& call : calls_) {
    const calls::Answer answer = session.Call(call);
    results.push_back({{"call", call}, {"result", answer.value}, {"from", calls::SourceName(answer.source)}});
    outcome->text += std::to_string(answer.value) + "\n";
    const bool answered = answer.value != calls::kFailed || answer.source != calls::Source::kCall;
    good = good && answered && !answer.broken_off;
    if (!answered) outcome->status = ExitStatus::kOperation;
    if (answer.broken_off && answer.value == common::kCancelled) {
      if (!session.options().json) session.environment().out << outcome->text;
      throw Failure(ExitStatus::kCancelled, "cancelled in \"" + call + "\"; nothing was written",
                    {{"result", answer.value}, {"results", std::move(results)}});
    }
  }
  outcome->members = {{"results", std::move(results)}};
  return good;
}

Outcome CallCommand::Run(Session& session) {
  SplitArguments(session.options());
  const std::vector<host::Id> targets = OpenTargets(session);
  session.TellPlugin();
  Outcome outcome;
  if (!Send(session, &outcome)) {
    session.environment().err << "qelm: an operation failed; nothing was saved" << std::endl;
    outcome.members["saved"] = nlohmann::ordered_json::array();
    return outcome;
  }
  // The integers are the output; what was saved is in the JSON.
  const std::string integers = std::move(outcome.text);
  outcome.text.clear();
  SaveChanged(session, targets, output_, &outcome);
  outcome.text = integers;
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeCallCommand() { return std::make_unique<CallCommand>(); }

}  // namespace qelm::cli
