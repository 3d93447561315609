// The options that every command takes, before or after its name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace qelm::cli {

struct Options {
  std::string plugin_folder;
  std::string profile;
  std::string local_settings;
  std::string main_settings;
  bool install = false;
  std::vector<std::string> settings;    // KEY=VALUE
  std::vector<std::string> parameters;  // NAME=VALUE
  std::int32_t host_version = 18;
  bool ignore_lock = false;
  bool overwrite = false;
  bool yes = false;
  bool no = false;
  std::string answers;
  std::string events;
  bool json = false;
  std::string progress = "auto";
  bool quiet = false;
  bool verbose = false;
  // How many arguments stand behind "--"; nothing where there is none.
  std::optional<std::size_t> behind_mark;
  // Of the command, not of the command line: Command::IsShort.
  bool map_large_files = false;
};

void DefineOptions(CLI::App& program, Options* options);

}  // namespace qelm::cli
