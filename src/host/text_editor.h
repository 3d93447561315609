// Opening a file in the user's text editor.
#pragma once

#include <string>
#include <vector>

namespace qelm {

class Plugin;

// The editor as a program and its first arguments: NOTEPAD_EXE_PATH; where that has its default and there is
// no such program, what the environment names in VISUAL or EDITOR, whose words are set apart by blanks.
std::vector<std::string> EditorCommand(Plugin& plugin);

// Starts it with the file and does not wait. False, after the alert `failure`, when it cannot be started.
bool OpenInTextEditor(Plugin& plugin, const std::string& path, const char* failure);

}  // namespace qelm
