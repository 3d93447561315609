#include "cli/command.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <iomanip>
#include <sstream>

namespace qelm::cli {

std::function<std::string(const std::string&)> NumberBetween(double least, double most, bool whole) {
  return [least, most, whole](const std::string& text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool read = error == std::errc() && end == text.data() + text.size();
    // A zero in front would be taken for the sign of an octal number.
    const bool digits = text.find_first_not_of("0123456789") == text.npos && (text[0] != '0' || text == "0");
    // What is no number lies in no range.
    if (read && value >= least && value <= most && (digits || !whole)) return std::string();
    std::ostringstream message;
    message << text << (whole ? " is not a whole number from " : " is not a number from ")
            << std::setprecision(10) << least << " to " << most;
    return message.str();
  };
}

CLI::App* AddCommand(CLI::App& parent, const CommandText& text) {
  CLI::App* command = parent.add_subcommand(text.name, text.summary);
  command->group("Commands");
  const std::string details = text.details;
  command->footer((details.empty() ? details : details + "\n\n") + "Example: " + text.example +
                  "\nOptions for every command: qelm --help");
  return command;
}

}  // namespace qelm::cli
