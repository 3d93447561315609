// The plug-in in the embedded host, called through its entry points, with files in a folder of its own and a
// user whose answers are set beforehand. No language is installed, so that messages are told by their ids.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "host/entries.h"
#include "support/checking_host.h"
#include "support/failing_host.h"
#include "support/mif_files.h"
#include "support/temp_folder.h"
#include "support/test_user.h"

namespace qelm::testing {

// Local settings for a session.
using Settings = std::vector<std::pair<std::string, std::string>>;

class HostSession {
 public:
  explicit HostSession(Settings settings = {}, std::int32_t host_version = 18);
  // Expects that the contract with the host was kept.
  ~HostSession();
  HostSession(const HostSession&) = delete;
  HostSession& operator=(const HostSession&) = delete;

  // As the user opens it; active then. 0 when it cannot be opened.
  host::Id Open(const std::string& path);
  host::Id OpenMif(const std::string& name, std::string_view notation, std::vector<std::string> hidden = {});

  // Makes a scheme of the session's main settings the active one.
  void Activate(schemes::SchemeKind kind, const std::string& name);
  void ActivateAll();

  // The ids, or texts, of what the entry showed, with blanks between.
  std::string Command(std::int32_t number);
  std::string Notify(std::int32_t number, host::Id document, std::string_view text = {},
                     std::int32_t value = 0);
  // What was shown since the last look.
  std::string Shown();

  // The bytes that the document would be saved as.
  std::string Saved(host::Id document);

  // The host without the checks, for what a test does itself.
  host::Host& inner() { return embedded_.roles(); }
  Plugin& plugin() { return *plugin_; }
  Entries& entries() { return *entries_; }
  FailingHost& failing() { return failing_; }
  embedded::adapter::EmbeddedHost& embedded() { return embedded_; }

  TempFolder folder;
  TestUser user;
  TestClients clients;

 private:
  embedded::adapter::PosixPlatform platform_;
  embedded::adapter::EventLog events_;
  embedded::adapter::NoDialogs dialogs_{events_};
  embedded::adapter::EmbeddedHost embedded_;
  CheckingHost checking_;
  FailingHost failing_;
  std::unique_ptr<Plugin> plugin_;
  std::unique_ptr<Entries> entries_;
  std::size_t seen_ = 0;
};

}  // namespace qelm::testing
