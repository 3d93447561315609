#include "host/contexts.h"

#include "coloring/uncoloring.h"

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
  return context;
}

}  // namespace qelm
