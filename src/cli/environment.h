// What the process gives the program: streams, how they are attached, and where the plug-in's files are.
// Tests give their own and run the whole program in their process.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace qelm::embedded::adapter {
class SharedDocuments;
}

namespace qelm::host {
struct Host;
}

namespace qelm::cli {

struct Environment {
  std::istream& in;
  std::ostream& out;         // results
  std::ostream& err;         // alerts, questions, progress, errors
  bool interactive = false;  // a person sits at `in` and `err`
  bool err_is_terminal = false;
  bool color = false;              // `err` shows colors
  std::function<bool()> esc = {};  // whether Esc (Ctrl-C) was pressed since the last call
  std::string version = {};
  std::vector<std::string> plugin_folders = {};  // the first one that exists is the plug-in's folder
  // What another session of the process has read, so that this one need not read it again.
  std::shared_ptr<const embedded::adapter::SharedDocuments> documents = {};
  // What stands between the host and everything that uses it, where a test wants to see or spoil the calls.
  std::function<host::Host&(host::Host&)> around_host = {};
};

// The environment of this process, with Ctrl-C as Esc from now on: the first press is Esc, a second one ends
// the process at once.
Environment ProcessEnvironment();

}  // namespace qelm::cli
