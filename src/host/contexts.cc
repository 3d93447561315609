#include "host/contexts.h"

#include "coloring/uncoloring.h"
#include "host/main_settings_location.h"
#include "host/session_schemes.h"
#include "host/start_up.h"

namespace qelm {

namespace {

std::function<bool(host::Id)> UncoloringBy(Plugin& plugin) {
  return [&plugin](host::Id filtered) {
    coloring::PrepareRun(plugin.settings, &plugin.coloring_run);
    coloring::ColoringContext uncoloring{plugin.host, plugin.messenger, plugin.engine,
                                         plugin.schemes.coloring, plugin.coloring_run};
    return coloring::Uncolor(uncoloring, filtered);
  };
}

}  // namespace

filtering::FilterContext FilterContextOf(Plugin& plugin) {
  filtering::FilterContext context{plugin.host, plugin.messenger, plugin.engine, plugin.schemes.filter,
                                   plugin.filter_run};
  context.remove_coloring = UncoloringBy(plugin);
  context.log = filtering::LogOf(plugin.debug_log);
  return context;
}

filtering::BatchContext BatchContextOf(Plugin& plugin) {
  filtering::BatchContext context{plugin.host, plugin.messenger, plugin.engine, plugin.main_settings};
  context.remove_coloring = UncoloringBy(plugin);
  context.log = filtering::LogOf(plugin.debug_log);
  context.notification_client = plugin.filter_run.notification_client;
  context.notify = plugin.filter_run.notify;
  context.overwrite = plugin.filter_run.overwrite;
  return context;
}

calls::CallContext CallContextOf(Plugin& plugin) {
  return {
      plugin.host,
      plugin.messenger,
      plugin.engine,
      plugin.settings,
      plugin.schemes,
      plugin.coloring_run,
      plugin.filter_run,
      plugin.validation_run,
      plugin.calls,
      [&plugin] { return FilterContextOf(plugin); },
      [&plugin](schemes::SchemeKind kind, const std::string& category, const std::string& name, bool report) {
        return ActivateScheme(plugin, kind, category, name, report);
      },
      [&plugin] { RefreshMainSettings(plugin); },
      [&plugin](bool report) { return ReadLocalSettingsAgain(plugin, report); },
      [&plugin](const std::string& path) { return SetMainSettingsPath(plugin, path); },
  };
}

}  // namespace qelm
