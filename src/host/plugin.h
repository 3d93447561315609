// The plug-in: everything that lives for a session, one plain struct a room, and its start.
#pragma once

#include <bitset>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "coloring/coloring_run.h"
#include "coloring/validation_run.h"
#include "config/local_settings.h"
#include "filtering/filter_run.h"
#include "filtering/report/report.h"
#include "host/commands.h"
#include "host/interface/host.h"
#include "messages/messenger.h"
#include "schemes/scheme.h"
#include "xpath/engine.h"

namespace qelm {

// What a caller may set before the start, in place of what the plug-in would find by itself.
struct StartOptions {
  std::string local_settings_path;  // empty: QELM_Local_Settings.txt of the settings folder
  std::string main_settings_path;   // empty: as the local settings say
  std::vector<std::pair<std::string, std::string>> settings;  // local settings for this run, over the file's
};

// What the session knows of the main settings document that it holds (held_settings.h).
struct HeldSettings {
  std::string path;            // the one that was looked for last; empty: none yet
  std::uint64_t revision = 0;  // of the document when the active schemes were loaded from it
};

class Plugin {
 public:
  explicit Plugin(host::Host& host_roles);

  // The initialization: local settings, engine limits, language, main settings document. Without a main
  // settings document the plug-in runs, without schemes. False, after a message, when it cannot work, or when
  // the main settings document that `options` name is not to be had.
  bool Initialize(const StartOptions& options);

  host::Host& host;
  messages::Messenger messenger;
  config::LocalSettings settings;
  xpath::Engine engine;
  schemes::ActiveSchemes schemes;
  coloring::ColoringRun coloring_run;
  filtering::FilterRun filter_run;
  coloring::ValidationRun validation_run;
  host::Id main_settings = host::kNone;
  HeldSettings held_settings;
  filtering::Report report;  // of the last validation
  std::bitset<kCommandLimit> defined_commands;

 private:
  bool Start(const StartOptions& options);
};

}  // namespace qelm
