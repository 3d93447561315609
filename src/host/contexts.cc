#include "host/contexts.h"

#include "coloring/uncoloring.h"

namespace qelm {

filtering::FilterContext FilterContextOf(Plugin& plugin) {
  filtering::FilterContext context{plugin.host, plugin.messenger, plugin.engine, plugin.schemes.filter,
                                   plugin.filter_run};
  context.remove_coloring = [&plugin](host::Id filtered) {
    coloring::PrepareRun(plugin.settings, &plugin.coloring_run);
    coloring::ColoringContext uncoloring{plugin.host, plugin.messenger, plugin.engine,
                                         plugin.schemes.coloring, plugin.coloring_run};
    return coloring::Uncolor(uncoloring, filtered);
  };
  context.log = filtering::LogOf(plugin.debug_log);
  return context;
}

}  // namespace qelm
