#include "cli/cli.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <memory>
#include <ostream>

#include "cli/command.h"
#include "cli/did_you_mean.h"
#include "cli/options.h"
#include "cli/session.h"
#include "embedded/adapter/mapped_file.h"

namespace qelm::cli {
namespace {

struct CommandEntry {
  std::string_view name;
  std::unique_ptr<Command> (*make)();
};
constexpr CommandEntry kCommands[] = {
    {"color", &MakeColorCommand},       {"uncolor", &MakeUncolorCommand},
    {"filter", &MakeFilterCommand},     {"restore", &MakeRestoreCommand},
    {"validate", &MakeValidateCommand}, {"check-table", &MakeCheckTableCommand},
    {"xpath", &MakeXPathCommand},       {"schemes", &MakeSchemesCommand},
    {"info", &MakeInfoCommand},         {"dump", &MakeDumpCommand},
    {"convert", &MakeConvertCommand},   {"command", &MakeMenuCommand},
    {"menus", &MakeMenusCommand},       {"run", &MakeRunCommand},
    {"settings", &MakeSettingsCommand}, {"languages", &MakeLanguagesCommand},
    {"update", &MakeUpdateCommand},     {"batch", &MakeBatchCommand},
    {"call", &MakeCallCommand},         {"serve", &MakeServeCommand},
};

constexpr std::string_view kDescription =
    "QELM colors, filters and validates structured FrameMaker documents (MIF and XML) by named schemes.";

constexpr std::string_view kFooter = R"(Exit status:
  0 done                     1 done, and something was found
  2 usage                    3 a file cannot be read, is damaged or cannot be written
  4 an expression or a scheme was refused
  5 the operation ended with another result
  130 cancelled (Ctrl-C once: the run is undone; twice: ends at once)

Example: qelm filter operation.mif --scheme "Audience/Beginner" --mode duplicate -o beginner.mif)";

// What the parser's own words in the help are called here.
constexpr std::pair<const char*, const char*> kHelpLabels[] = {
    {"SUBCOMMAND", "COMMAND"}, {"Positionals", "Arguments"}, {"REQUIRED", "(required)"}, {"TEXT", ""}};

// The parser's message for a command that is missing.
constexpr std::string_view kNoSubcommand = "A subcommand is required";

using Clock = std::chrono::steady_clock;

struct Program {
  CLI::App app{std::string(kDescription), "qelm"};
  Options options;
  std::vector<std::unique_ptr<Command>> commands;
  std::vector<CLI::App*> definitions;  // of the commands
};

// Defines the commands whose names are `wanted`: to define all of them takes longer than filtering a small
// document. Returns whether there is any.
template <typename Wanted>
bool Define(const Environment& environment, Wanted wanted, Program* program) {
  CLI::App& app = program->app;
  app.fallthrough();  // options of the program are understood behind a command's name too
  app.require_subcommand(1);
  app.set_version_flag("--version", "qelm " + environment.version, "Print the version");
  app.set_help_flag("-h,--help", "Print this help");
  for (const auto& [label, text] : kHelpLabels) app.get_formatter()->label(label, text);
  app.footer(std::string(kFooter));
  DefineOptions(app, &program->options);
  for (const CommandEntry& entry : kCommands) {
    if (!wanted(entry.name)) continue;
    program->commands.push_back(entry.make());
    program->definitions.push_back(program->commands.back()->Define(app));
  }
  return !program->commands.empty();
}

void PrintError(const Environment& environment, std::string_view message) {
  environment.err << (environment.color ? "\033[1;31mqelm:\033[0m " : "qelm: ") << message << std::endl;
}

// Names of the commands, or of the options that the command `app` takes.
std::vector<std::string> CommandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  return names;
}

std::vector<std::string> OptionNames(const CLI::App& program) {
  std::vector<std::string> names;
  for (const CLI::App* app = &program; app != nullptr;) {
    for (const CLI::Option* option : app->get_options()) {
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
    const std::vector<CLI::App*> parsed = app->get_subcommands();
    app = parsed.empty() ? nullptr : parsed.front();
  }
  return names;
}

// What a person needs to know of a command line that could not be read.
std::string UsageMessage(const CLI::App& program, const CLI::ParseError& error) {
  const std::vector<CLI::App*> parsed = program.get_subcommands();
  const std::string help = parsed.empty() ? "qelm --help" : "qelm " + parsed.front()->get_name() + " --help";
  std::string message = error.what();
  const std::vector<std::string> extras = program.remaining(true);
  if (!extras.empty()) {
    const std::string& word = extras.front();
    const bool option = word.size() > 1 && word.front() == '-';
    const std::string name = option ? word.substr(0, word.find('=')) : word;
    if (option) {
      message = "unknown option \"" + name + "\"" + DidYouMean(name, OptionNames(program));
    } else if (parsed.empty()) {
      message = "unknown command \"" + name + "\"" + DidYouMean(name, CommandNames(program));
    } else {
      message = "unexpected argument \"" + name + "\"";
    }
  } else if (message == kNoSubcommand) {
    message = parsed.empty() ? "a command is needed" : "one of these is needed: ";
    std::string_view separator;
    for (const std::string& name :
         parsed.empty() ? std::vector<std::string>() : CommandNames(*parsed.front())) {
      message.append(separator).append(name);
      separator = ", ";
    }
  }
  return message + "; see " + help;
}

// Writes what a command came to. The common members come first, in one order for all commands.
class Report {
 public:
  Report(const Environment& environment, std::string_view command, Clock::time_point start)
      : environment_(environment), command_(command), start_(start) {}

  void Print(const Session& session, const Outcome& outcome, bool json) {
    if (json) {
      PrintObject(Common(&session, outcome), outcome);
    } else if (outcome.write_text) {
      outcome.write_text(environment_.out);
    } else {
      environment_.out << outcome.text;
    }
  }

  void PrintFailure(const Session* session, const Failure& failure, bool json) {
    PrintError(environment_, failure.what());
    if (!json) return;
    Outcome outcome;
    outcome.result = 0;
    outcome.members = failure.Fields();
    if (!outcome.members.contains("error")) outcome.members["error"] = {{"message", failure.what()}};
    if (outcome.members.contains("result")) {
      outcome.result = outcome.members["result"];
      outcome.members.erase("result");
    }
    PrintObject(Common(session, outcome), outcome);
  }

 private:
  nlohmann::ordered_json Common(const Session* session, const Outcome& outcome) const {
    const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start_;
    const double milliseconds = outcome.elapsed_ms.value_or(elapsed.count());
    nlohmann::ordered_json object{{"command", command_}, {"result", outcome.result}};
    object["target"] = nullptr;
    object["output"] = nullptr;
    if (session != nullptr && !session->target().empty()) object["target"] = session->target();
    if (!outcome.output.empty()) object["output"] = outcome.output;
    object["elapsed_ms"] = static_cast<double>(static_cast<std::int64_t>(milliseconds * 1000)) / 1000;
    object["alerts"] = nlohmann::ordered_json::array();
    object["notices"] = nlohmann::ordered_json::array();
    if (session != nullptr) {
      object["alerts"] = session->Alerts();
      object["notices"] = session->Notices();
    }
    return object;
  }

  void PrintObject(nlohmann::ordered_json object, const Outcome& outcome) {
    object.update(outcome.members);
    std::string text = object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    if (outcome.write_members) {
      text.pop_back();
      environment_.out << text;
      outcome.write_members(environment_.out);
      text = "}";
    }
    environment_.out << text << '\n';
  }

  const Environment& environment_;
  std::string command_;
  Clock::time_point start_;
};

// What to say of a file that somebody wrote into while it was read where it lies; empty: there is none.
std::string ChangedFile() {
  const std::string path = embedded::adapter::ChangedMappedFile();
  return path.empty() ? path
                      : path + ": the file was changed on disk while it was read; run the command again";
}

ExitStatus RunCommand(Command& command, const Options& options, const Environment& environment,
                      Report* report) {
  std::unique_ptr<Session> session;
  ExitStatus status = ExitStatus::kDone;
  try {
    session = std::make_unique<Session>(options, environment);
    session->options().map_large_files = command.IsShort();
    if (!command.StartsSession()) session->Start(command.NeedsUserSession());
    const Outcome outcome = command.Run(*session);
    session->ShowNotices();
    if (const std::string changed = ChangedFile(); !changed.empty())
      throw Failure(ExitStatus::kFile, changed);
    status = outcome.status;
    if (!outcome.printed) report->Print(*session, outcome, options.json);
    // Of what is large the file is read while it is printed.
    if (const std::string changed = ChangedFile(); !changed.empty()) {
      PrintError(environment, changed);
      status = ExitStatus::kFile;
    }
  } catch (const Failure& failure) {
    status = failure.Status();
    report->PrintFailure(session.get(), failure, options.json);
  }
  environment.out.flush();
  if (!environment.out) {
    PrintError(environment, "standard output cannot be written");
    return ExitStatus::kFile;
  }
  return status;
}

using Arguments = std::vector<std::string>;

// An empty value is a variable of a shell that was not set: never what was meant, and most often a path in
// whose stead something else would be taken. Throws as the parser does.
void RefuseEmptyValues(const CLI::App& app, bool behind_mark) {
  for (const CLI::Option* option : app.get_options()) {
    // Call strings: the plug-in answers an empty one.
    if (behind_mark && option->get_positional() && app.get_name() == "call") continue;
    for (const std::string& value : option->results()) {
      if (value.empty()) throw CLI::ValidationError(option->get_name(), "the value is empty");
    }
  }
  for (const CLI::App* command : app.get_subcommands()) RefuseEmptyValues(*command, behind_mark);
}

// Throws what the parser throws.
void Parse(Arguments arguments, Program* program) {
  const auto mark = std::find(arguments.begin(), arguments.end(), "--");
  if (mark != arguments.end()) {
    program->options.behind_mark = static_cast<std::size_t>(arguments.end() - mark) - 1;
  }
  std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the end
  program->app.parse(std::move(arguments));
  RefuseEmptyValues(program->app, program->options.behind_mark.value_or(0) > 0);
}

// The program with the arguments parsed, where they ask for a command and nothing else. Its name is one of
// them, so that the commands that they name are enough. Null where there is more to say.
std::unique_ptr<Program> ParseCommand(const Arguments& arguments, const Environment& environment) {
  auto program = std::make_unique<Program>();
  const auto is_named = [&](std::string_view name) {
    return std::find(arguments.begin(), arguments.end(), name) != arguments.end();
  };
  if (!Define(environment, is_named, program.get())) return nullptr;
  try {
    Parse(arguments, program.get());
  } catch (const CLI::Error&) {
    return nullptr;
  }
  return program;
}

// The same with every command at hand, for help and for what is wrong. The exit status when the program is to
// end with that.
std::optional<ExitStatus> ParseAnything(const Arguments& arguments, const Environment& environment,
                                        Program* program) {
  Define(
      environment, [](std::string_view) { return true; }, program);
  try {
    Parse(arguments, program);
  } catch (const CLI::Success& wanted) {
    program->app.exit(wanted, environment.out, environment.err);
    return ExitStatus::kDone;
  } catch (const CLI::ParseError& error) {
    PrintError(environment, UsageMessage(program->app, error));
    return ExitStatus::kUsage;
  }
  return std::nullopt;
}

}  // namespace

int Main(std::vector<std::string> arguments, const Environment& environment) {
  const Clock::time_point start = Clock::now();
  try {
    std::unique_ptr<Program> program = ParseCommand(arguments, environment);
    if (program == nullptr) {
      program = std::make_unique<Program>();
      const auto status = ParseAnything(arguments, environment, program.get());
      if (status) return static_cast<int>(*status);
    }
    for (std::size_t i = 0; i < program->commands.size(); ++i) {
      if (!program->definitions[i]->parsed()) continue;
      Report report(environment, program->definitions[i]->get_name(), start);
      return static_cast<int>(RunCommand(*program->commands[i], program->options, environment, &report));
    }
  } catch (const std::exception& problem) {
    PrintError(environment, std::string("the run was given up: ") + problem.what());
  }
  return static_cast<int>(ExitStatus::kOperation);
}

}  // namespace qelm::cli
