#include "host/held_settings.h"

#include <string>

#include "host/plugin.h"
#include "schemes/main_settings.h"
#include "schemes/scheme_listing.h"
#include "schemes/scheme_loading.h"

namespace qelm {
namespace {

// Takes the document that the settings name in place of the one that is held.
void Follow(Plugin& plugin) {
  host::Documents& documents = plugin.host.documents;
  const std::string& wanted = plugin.settings.paths.main_settings;
  // What the start could not open was told then.
  const bool report = !plugin.held_settings.path.empty();
  plugin.held_settings = {.path = wanted, .revision = 0};
  const host::Id other =
      schemes::OpenMainSettings(plugin.host, plugin.engine, plugin.messenger, wanted, report);
  if (other == plugin.main_settings || other == host::kNone) return;
  // A user who edits the one before goes on editing it.
  if (!documents.Switch(plugin.main_settings, host::DocumentSwitch::kOnScreen)) {
    LetGoOfMainSettings(plugin);
  }
  plugin.main_settings = other;
}

void LoadAgain(Plugin& plugin, schemes::Scheme* scheme) {
  if (!scheme->Active() || scheme->from_table) return;
  schemes::Scheme fresh;
  fresh.kind = scheme->kind;
  schemes::LoadScheme(plugin.engine, plugin.messenger, plugin.main_settings, scheme->category, scheme->name,
                      /*report=*/true, &fresh);
  *scheme = std::move(fresh);
  if (scheme->Active()) schemes::PrintAfterLoading(plugin.host.user, plugin.settings, *scheme);
}

}  // namespace

void RefreshMainSettings(Plugin& plugin) {
  HeldSettings& held = plugin.held_settings;
  const std::string& wanted = plugin.settings.paths.main_settings;
  if (wanted.empty()) return;
  const bool closed =
      plugin.main_settings != host::kNone && plugin.host.documents.Path(plugin.main_settings).empty();
  if (closed) plugin.main_settings = host::kNone;
  if (closed || held.path != wanted) Follow(plugin);
  if (plugin.main_settings == host::kNone) return;
  const std::uint64_t revision = plugin.host.elements.Revision(plugin.main_settings);
  if (revision != 0 && revision == held.revision) return;
  held.revision = revision;
  LoadAgain(plugin, &plugin.schemes.coloring);
  LoadAgain(plugin, &plugin.schemes.filter);
  LoadAgain(plugin, &plugin.schemes.validation);
}

void LetGoOfMainSettings(Plugin& plugin) {
  if (plugin.main_settings != host::kNone) plugin.host.documents.Close(plugin.main_settings, true);
  plugin.main_settings = host::kNone;
}

}  // namespace qelm
