// One session of the plug-in in the embedded host, as a command uses it: started by the options of the
// command line, with the target opened and every failure turned into a message that names the file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "calls/call_state.h"
#include "cli/environment.h"
#include "cli/options.h"
#include "embedded/adapter/clients.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/events.h"
#include "embedded/adapter/platform.h"
#include "embedded/adapter/resource_dialogs.h"
#include "embedded/adapter/user_interface.h"
#include "host/entries.h"
#include "host/plugin.h"

namespace qelm::cli {

class Session {
 public:
  Session(const Options& options, const Environment& environment);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Starts the plug-in, as a user's session when `install` or the option of that name is set. Throws Failure
  // when an option names a file that cannot be used, or the plug-in refuses.
  void Start(bool install);

  // From now on the host tells the plug-in of what it asked for, as a host with a user before it does. Before
  // Start it is told from the start on.
  void TellPlugin();

  // Puts lines of an answers file before those of --answers, in place of those of the last call. Throws
  // Failure when one is wrong.
  void UseAnswers(const std::string& lines);

  // Opens the document or book at `path`, the target of the command. Throws Failure.
  host::Id Open(const std::string& path);
  // The same for commands that work on documents: a book is refused.
  host::Id OpenDocument(const std::string& path);

  // Writes the document to `path`, empty for its own. A press of Esc that nothing has seen yet still counts:
  // then nothing is written. Returns the path that was written. Throws Failure.
  std::string Save(host::Id document, const std::string& path,
                   host::SaveFormat format = host::SaveFormat::kDocument);
  // Writes one page of a document, its place from 1, as PNG with that many dots an inch.
  std::string SavePage(host::Id document, const std::string& path, std::size_t page, double dpi);

  // Shows what the host noticed of files since the last call.
  void ShowNotices();

  // Sends the plug-in a call of another client and returns its answer.
  calls::Answer Call(std::string_view text);
  // Whether a command or a call is under way.
  bool Busy() const { return entries_ && entries_->busy(); }
  // Where the plug-in's notifications of other clients go.
  embedded::adapter::RecordedClients& clients() { return clients_; }

  // The path of an open document, as the user wrote it where it is the target.
  std::string NameOf(host::Id document);

  // Tells a user who asked for more (--verbose) what is going on.
  void Say(const std::string& text);

  // For an option that names a report to write beside the target: that must be none of the files that the run
  // works with. Throws Failure.
  void RefuseFileOf(host::Id target, const std::string& path, const std::string& option);

  // Whether two paths mean the same file, also by links and other spellings.
  static bool SameFile(const std::string& left, const std::string& right);

  Plugin& plugin() { return *plugin_; }
  host::Host& roles() { return *roles_; }
  embedded::adapter::EmbeddedHost& host() { return *host_; }
  embedded::adapter::ScriptedUserInterface& user() { return user_; }
  // The entry points, recorded as events.
  host::EntryPoints& entries() { return *recorded_entries_; }
  // What the last command came to.
  std::int32_t last_result() const { return entries_->last_result(); }
  embedded::adapter::EventLog& events() { return events_; }
  embedded::adapter::PosixPlatform& platform() { return platform_; }
  const Options& options() const { return options_; }
  // For what has to be settled before the start.
  Options& options() { return options_; }
  const Environment& environment() const { return environment_; }
  const std::string& target() const { return target_; }

  // What was said so far: alerts of the plug-in, and notices of the host about files.
  const std::vector<std::string>& Alerts() const { return user_.Alerts(); }
  std::size_t NoticeCount() const { return host_ ? host_->notices().size() : 0; }
  std::vector<std::string> Notices() const { return host_ ? host_->notices() : std::vector<std::string>(); }

 private:
  embedded::adapter::ScriptedUserInterface::Options UserOptions();
  void OpenEvents();
  void ReadAnswers();
  std::string PluginFolder();
  StartOptions PluginOptions();
  void SetParameters();
  void SetHeader();

  Options options_;
  const Environment& environment_;
  std::string target_;
  std::size_t notices_shown_ = 0;
  embedded::adapter::EventLog events_;
  embedded::adapter::PosixPlatform platform_;
  embedded::adapter::RecordedClients clients_{events_};
  embedded::adapter::ScriptedUserInterface user_;
  embedded::adapter::ResourceDialogs dialogs_{user_, platform_, events_};
  std::unique_ptr<embedded::adapter::EmbeddedHost> host_;
  host::Host* roles_ = nullptr;
  std::unique_ptr<Plugin> plugin_;
  std::unique_ptr<Entries> entries_;
  std::unique_ptr<host::EntryPoints> recorded_entries_;
  bool tell_plugin_ = false;
};

}  // namespace qelm::cli
