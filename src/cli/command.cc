#include "cli/command.h"

#include <CLI/CLI.hpp>

namespace qelm::cli {

std::string NotEmpty(const std::string& value) { return value.empty() ? "the value is empty" : ""; }

CLI::App* AddCommand(CLI::App& parent, const CommandText& text) {
  CLI::App* command = parent.add_subcommand(text.name, text.summary);
  command->group("Commands");
  const std::string details = text.details;
  command->footer((details.empty() ? details : details + "\n\n") + "Example: " + text.example +
                  "\nOptions for every command: qelm --help");
  return command;
}

}  // namespace qelm::cli
