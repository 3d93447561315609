#include "host/session_schemes.h"

#include "schemes/main_settings.h"
#include "schemes/scheme_listing.h"
#include "schemes/scheme_loading.h"

namespace qelm {
namespace {

using schemes::Scheme;
using schemes::SchemeKind;

std::int32_t Load(Plugin& plugin, SchemeKind kind, const std::string& category, const std::string& name,
                  bool report) {
  Scheme loaded;
  loaded.kind = kind;
  const std::int32_t result = schemes::LoadScheme(plugin.engine, plugin.messenger, plugin.main_settings,
                                                  category, name, report, &loaded);
  if (result == schemes::kInvalidNames) return result;
  plugin.schemes.Of(kind) = std::move(loaded);
  if (result == schemes::kLoaded) {
    schemes::PrintAfterLoading(plugin.host.user, plugin.settings, plugin.schemes.Of(kind));
  }
  return result;
}

DefaultScheme LoadDefault(Plugin& plugin, SchemeKind kind, const std::string& category, std::string* name,
                          bool report) {
  DefaultScheme scheme{DefaultScheme::kNotAsked, category, *name};
  if (*name == schemes::kNoName || plugin.main_settings == host::kNone) return scheme;
  const std::int32_t result = Load(plugin, kind, category, scheme.name, report);
  if (result == schemes::kSchemeNotFound) *name = schemes::kNoName;
  scheme.outcome = result == schemes::kLoaded ? DefaultScheme::kLoaded : DefaultScheme::kUnreadable;
  return scheme;
}

// The local setting that names the active scheme of a kind; null for filters.
std::string* NameInSettings(config::LocalSettings& settings, SchemeKind kind) {
  switch (kind) {
    case SchemeKind::kColoring:
      return &settings.color_default_coloring_scheme;
    case SchemeKind::kValidation:
      return &settings.val_default_validation_scheme;
    case SchemeKind::kFilter:
      break;
  }
  return nullptr;
}

}  // namespace

bool OpenSessionSettings(Plugin& plugin) {
  const std::string& path = plugin.settings.paths.main_settings;
  const host::Id document =
      path.empty() ? host::kNone
                   : schemes::OpenMainSettings(plugin.host, plugin.engine, plugin.messenger, path, true);
  UseMainSettings(plugin, document);
  return document != host::kNone;
}

void UseMainSettings(Plugin& plugin, host::Id document) {
  host::Documents& documents = plugin.host.documents;
  const host::Id before = plugin.main_settings;
  plugin.main_settings = document;
  if (before == document || before == host::kNone) return;
  if (documents.Switch(before, host::DocumentSwitch::kOnScreen)) return;
  documents.Close(before, /*discard=*/false);
}

DefaultScheme LoadDefaultColoring(Plugin& plugin, bool report) {
  config::LocalSettings& settings = plugin.settings;
  return LoadDefault(plugin, SchemeKind::kColoring, settings.coloring_category,
                     &settings.color_default_coloring_scheme, report);
}

DefaultScheme LoadDefaultValidation(Plugin& plugin) {
  config::LocalSettings& settings = plugin.settings;
  return LoadDefault(plugin, SchemeKind::kValidation, settings.validation_category,
                     &settings.val_default_validation_scheme, false);
}

std::int32_t ActivateScheme(Plugin& plugin, SchemeKind kind, const std::string& category,
                            const std::string& name, bool report) {
  const std::int32_t result = Load(plugin, kind, category, name, report);
  if (result != schemes::kInvalidNames) {
    NoteActiveScheme(&plugin.settings, kind, category, plugin.schemes.Of(kind).name);
  }
  return result;
}

void NoteActiveScheme(config::LocalSettings* settings, SchemeKind kind, const std::string& category,
                      const std::string& name) {
  std::string* const noted = NameInSettings(*settings, kind);
  if (noted == nullptr) return;
  *noted = name;
  (kind == SchemeKind::kColoring ? settings->coloring_category : settings->validation_category) = category;
}

void ReloadSchemes(Plugin& plugin) {
  constexpr char kNotThere[] = "QELM_MSG_GEN_36";
  bool all_there = true;
  for (const SchemeKind kind : {SchemeKind::kFilter, SchemeKind::kColoring, SchemeKind::kValidation}) {
    const Scheme active = plugin.schemes.Of(kind);
    if (!active.Active() || active.from_table || plugin.main_settings == host::kNone) continue;
    if (Load(plugin, kind, active.category, active.name, false) == schemes::kLoaded) continue;
    all_there = false;
    if (std::string* name = NameInSettings(plugin.settings, kind)) *name = schemes::kNoName;
  }
  if (all_there) return;
  plugin.messenger.AlertFormatted(kNotThere,
                                  plugin.messenger.Format(kNotThere, plugin.settings.paths.main_settings));
}

void RefreshMainSettings(Plugin& plugin) {
  if (plugin.main_settings == host::kNone) return;
  if (plugin.host.documents.Path(plugin.main_settings).empty()) {
    plugin.main_settings = host::kNone;
    plugin.schemes_revision = 0;
    if (!OpenSessionSettings(plugin)) return;
  }
  const std::uint64_t revision = plugin.host.elements.Revision(plugin.main_settings);
  if (revision != 0 && revision == plugin.schemes_revision) return;
  plugin.schemes_revision = revision;
  ReloadSchemes(plugin);
}

}  // namespace qelm
