// A command of the program: what it adds to the command line, and what it does.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/exit_status.h"

namespace CLI {
class App;
}

namespace qelm::cli {

class Session;

// What a command came to. With --json it becomes one object of the common members and of `members`; without,
// `text` is printed.
struct Outcome {
  ExitStatus status = ExitStatus::kDone;
  std::int32_t result = 1;           // the operation's result code
  std::string output;                // the file that was written; empty: none
  std::optional<double> elapsed_ms;  // in place of the whole command's time
  nlohmann::ordered_json members = nlohmann::ordered_json::object();
  std::string text;
  // Writes further members, each with a comma before it, or the text, where they are too large to be held.
  std::function<void(std::ostream&)> write_members;
  std::function<void(std::ostream&)> write_text;
  bool printed = false;  // everything is printed already
};

class Command {
 public:
  virtual ~Command() = default;
  // Adds the command with its options and its help. Called once; the command outlives the parser's use.
  virtual CLI::App* Define(CLI::App& program) = 0;
  // Whether Run starts the session itself, when it has settled its options.
  virtual bool StartsSession() const { return false; }
  // Whether it works in a user's session, which prepares the user's folder (StartOptions::install). All
  // others are quick and write nothing there.
  virtual bool NeedsUserSession() const { return false; }
  // Whether it is done with its files soon, so that large ones need not be copied into memory.
  virtual bool IsShort() const { return !StartsSession() && !NeedsUserSession(); }
  // Runs it. Throws Failure.
  virtual Outcome Run(Session& session) = 0;
};

// What the help tells of a command.
struct CommandText {
  const char* name;
  const char* summary;  // one line
  const char* details;  // what else there is to know; empty for nothing
  const char* example;
};

// A check for options: their value is a number from `least` to `most`, both finite, a whole one or any. A
// check returns what is wrong, empty for nothing.
std::function<std::string(const std::string&)> NumberBetween(double least, double most, bool whole = true);

// Adds a command to a parser.
CLI::App* AddCommand(CLI::App& parent, const CommandText& text);

std::unique_ptr<Command> MakeColorCommand();
std::unique_ptr<Command> MakeUncolorCommand();
std::unique_ptr<Command> MakeFilterCommand();
std::unique_ptr<Command> MakeRestoreCommand();
std::unique_ptr<Command> MakeBatchCommand();
std::unique_ptr<Command> MakeValidateCommand();
std::unique_ptr<Command> MakeCheckTableCommand();
std::unique_ptr<Command> MakeXPathCommand();
std::unique_ptr<Command> MakeSchemesCommand();
std::unique_ptr<Command> MakeInfoCommand();
std::unique_ptr<Command> MakeDumpCommand();
std::unique_ptr<Command> MakeConvertCommand();
std::unique_ptr<Command> MakeMenuCommand();
std::unique_ptr<Command> MakeMenusCommand();
std::unique_ptr<Command> MakeRunCommand();
std::unique_ptr<Command> MakeSettingsCommand();
std::unique_ptr<Command> MakeLanguagesCommand();
std::unique_ptr<Command> MakeUpdateCommand();
std::unique_ptr<Command> MakeCallCommand();
std::unique_ptr<Command> MakeServeCommand();

}  // namespace qelm::cli
