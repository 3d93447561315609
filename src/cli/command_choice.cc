#include "cli/command_choice.h"

#include <charconv>
#include <string_view>
#include <vector>

#include "cli/did_you_mean.h"
#include "cli/exit_status.h"

namespace qelm::cli {

std::int32_t CommandNumber(const std::string& text) {
  std::int32_t number = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && rest == end) return number;
  if (const CommandRow* command = FindCommand(text)) return command->number;
  std::vector<std::string_view> names;
  for (const CommandRow& command : AllCommands()) names.push_back(command.name);
  throw Failure(ExitStatus::kUsage, "there is no command \"" + text + "\"" +
                                        DidYouMean(text, std::span<const std::string_view>(names)) +
                                        "; see qelm menus");
}

bool CommandIsDefined(const Plugin& plugin, std::int32_t number) {
  return number > 0 && number < kCommandLimit && plugin.defined_commands[static_cast<std::size_t>(number)];
}

}  // namespace qelm::cli
