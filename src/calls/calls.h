// Calls from other clients of the host: a call string is a command word with its arguments, all joined by the
// delimiter, and is answered by an integer.
//
//   SetScheme---filter---Audience---Beginner     1
//   FilterFile---/manuals/operation.mif          1
//   FilterFile---/manuals/nowhere.mif            104, as no such file is open
//
// The words, with how many arguments each takes and what stands for those that are missing, are one table
// (calls.cc); parameters.cc has that of the parameters. Operations do their work as the commands of the menus
// do it, on the file that is named instead of the active one; what was active stays so. They say nothing to
// the user unless the caller asks for it.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "calls/call_state.h"
#include "coloring/coloring_run.h"
#include "coloring/validation_run.h"
#include "config/local_settings.h"
#include "filtering/document_filter.h"
#include "host/interface/host.h"
#include "messages/messenger.h"
#include "schemes/scheme.h"
#include "xpath/engine.h"

namespace qelm::calls {

// What calls work with: what the plug-in holds, and what it does for its commands as well. Made anew for a
// call.
struct CallContext {
  host::Host& host;
  messages::Messenger& messenger;
  xpath::Engine& engine;
  config::LocalSettings& settings;
  schemes::ActiveSchemes& schemes;
  coloring::ColoringRun& coloring_run;
  filtering::FilterRun& filter_run;
  coloring::ValidationRun& validation_run;
  CallState& state;

  // The context of a filter run by the active filter scheme.
  std::function<filtering::FilterContext()> filter_context;
  // Makes a scheme the active one of its kind; returns the result of loading it.
  std::function<std::int32_t(schemes::SchemeKind kind, const std::string& category, const std::string& name,
                             bool report)>
      set_scheme;
  // Sees to it that the active schemes are what the main settings document says by now.
  std::function<void()> refresh_schemes;
  // Reads the local settings again; false when the file cannot be read.
  std::function<bool(bool report)> read_local_settings;
  // Makes the document at a path the session's main settings document, now and in the local settings file,
  // without a question. False, with nothing changed, when it cannot be.
  std::function<bool(const std::string& path)> set_main_settings;
};

using Arguments = std::span<const std::string_view>;

// Answers one call and notes the answer in the state.
Answer AnswerCall(CallContext& context, std::string_view call);

}  // namespace qelm::calls
