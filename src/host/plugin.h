// The plug-in: everything that lives for a session, one plain struct a room, and its start.
#pragma once

#include <bitset>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "calls/call_state.h"
#include "coloring/coloring_run.h"
#include "coloring/validation_run.h"
#include "config/local_settings.h"
#include "filtering/filter_run.h"
#include "filtering/report/report.h"
#include "host/commands.h"
#include "host/interface/host.h"
#include "messages/debug_log.h"
#include "messages/messenger.h"
#include "schemes/scheme.h"
#include "xpath/engine.h"

namespace qelm {

// What a caller may set before the start, in place of what the plug-in would find by itself.
struct StartOptions {
  std::string local_settings_path;  // empty: QELM_Local_Settings.txt of the settings folder
  std::string main_settings_path;   // empty: as the local settings say
  std::vector<std::pair<std::string, std::string>> settings;  // local settings for this run, over the file's

  // The start of a user's session, as a host that loads the plug-in makes it: prepares the user's folder,
  // asks and warns, loads the default schemes, defines the menus, opens the files that the user wants open.
  // Without it the plug-in only gets ready for one operation, and writes nothing.
  bool install = false;
};

class Plugin {
 public:
  explicit Plugin(host::Host& host_roles);

  // The initialization (start_up.h). Without a main settings document the plug-in runs, without schemes.
  // False, after a message, when it cannot work, or when the main settings document that `options` name is
  // not to be had.
  bool Initialize(const StartOptions& options);

  host::Host& host;
  messages::Messenger messenger;
  messages::DebugLog debug_log;
  config::LocalSettings settings;
  xpath::Engine engine;
  schemes::ActiveSchemes schemes;
  coloring::ColoringRun coloring_run;
  filtering::FilterRun filter_run;
  coloring::ValidationRun validation_run;
  host::Id main_settings = host::kNone;
  std::uint64_t schemes_revision = 0;  // of the main settings document when the active schemes were loaded
  filtering::Report report;            // of the last validation
  calls::CallState calls;
  std::bitset<kCommandLimit> defined_commands;
};

}  // namespace qelm
