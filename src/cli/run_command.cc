// qelm run: one session of the plug-in, driven by a session file.
#include <stdlib.h>

#include <CLI/CLI.hpp>
#include <filesystem>

#include "cli/command.h"
#include "cli/script_runner.h"
#include "common/paths.h"
#include "common/utf8.h"

namespace qelm::cli {
namespace {

// The folder for the files of a run: the one that was named, which stays, or a new one for this run only.
class WorkFolder {
 public:
  explicit WorkFolder(const std::string& named) : temporary_(named.empty()) {
    std::error_code error;
    if (temporary_) {
      path_ = (std::filesystem::temp_directory_path() / "qelm-run-XXXXXX").string();
      if (::mkdtemp(path_.data()) == nullptr) {
        throw Failure(ExitStatus::kFile, path_ + ": a folder for the run cannot be made; name one by --work");
      }
      return;
    }
    path_ = std::filesystem::absolute(named, error).string();
    std::filesystem::create_directories(path_, error);
    if (error) throw Failure(ExitStatus::kFile, named + ": " + error.message());
  }
  ~WorkFolder() {
    std::error_code ignored;
    if (temporary_) std::filesystem::remove_all(path_, ignored);
  }
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  bool temporary_;
};

class RunScriptCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  bool StartsSession() const override { return true; }
  Outcome Run(Session& session) override;

 private:
  std::vector<Step> ReadScript(Session& session) const;

  std::string script_;
  std::string work_;
};

CLI::App* RunScriptCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program,
      {"run", "Run a session file: what a user does, and what is expected",
       "Paths in it are seen from the file's folder; $WORK is the work folder, where the session's\n"
       "profile lies too. Exit status 1 when an expectation does not hold, 2 when the file cannot be\n"
       "understood.",
       "qelm run examples/pump/working-day.qelm"});
  command->add_option("SCRIPT", script_, "The session file")->required();
  command
      ->add_option("--work", work_,
                   "The work folder, made when it is missing. Default: a new one that is removed at the end")
      ->type_name("DIR");
  return command;
}

std::vector<Step> RunScriptCommand::ReadScript(Session& session) const {
  const std::optional<std::string> text = session.platform().ReadFile(script_);
  if (!text) throw Failure(ExitStatus::kFile, script_ + ": " + session.platform().LastError());
  std::string error;
  std::optional<std::vector<Step>> steps = ParseScript(common::DecodeTextFile(*text), &error);
  if (!steps) throw Failure(ExitStatus::kUsage, script_ + ":" + error);
  return std::move(*steps);
}

Outcome RunScriptCommand::Run(Session& session) {
  const std::vector<Step> steps = ReadScript(session);
  const WorkFolder work(work_);
  if (session.options().profile.empty()) session.options().profile = common::JoinPath(work.path(), "profile");
  const std::string folder = std::filesystem::absolute(script_).parent_path().string();
  const bool json = session.options().json;
  ScriptRunner runner(session, {script_, folder, work.path()}, !json);
  ScriptResult result = runner.Run(steps);
  Outcome outcome;
  if (result.failed != 0) outcome.status = ExitStatus::kFound;
  outcome.text = script_ + ": " + std::to_string(steps.size()) + " steps, " +
                 std::to_string(result.expectations) + " expectations, " + std::to_string(result.failed) +
                 " failed\n";
  outcome.members = {{"script", script_},
                     {"expectations", result.expectations},
                     {"failed", result.failed},
                     {"steps", std::move(result.steps)}};
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeRunCommand() { return std::make_unique<RunScriptCommand>(); }

}  // namespace qelm::cli
