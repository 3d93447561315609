#include "host/text_editor.h"

#include <sstream>

#include "host/plugin.h"

namespace qelm {

std::vector<std::string> EditorCommand(Plugin& plugin) {
  host::Platform& platform = plugin.host.platform;
  const std::string& named = plugin.settings.notepad_exe_path;
  if (named != config::LocalSettings().notepad_exe_path || platform.FileExists(named)) return {named};
  for (const char* variable : {"VISUAL", "EDITOR"}) {
    std::istringstream words(platform.Environment(variable));
    std::vector<std::string> command;
    for (std::string word; words >> word;) command.push_back(word);
    if (!command.empty()) return command;
  }
  return {named};
}

bool OpenInTextEditor(Plugin& plugin, const std::string& path, const char* failure) {
  const std::vector<std::string> command = EditorCommand(plugin);
  std::vector<std::string> arguments(command.begin() + 1, command.end());
  arguments.push_back(path);
  if (plugin.host.platform.Start(command.front(), arguments)) return true;
  plugin.messenger.Alert(failure);
  return false;
}

}  // namespace qelm
