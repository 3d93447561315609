#include "cli/scheme_choice.h"

#include <algorithm>

#include "cli/did_you_mean.h"
#include "cli/exit_status.h"
#include "cli/expression_error.h"
#include "cli/session.h"
#include "schemes/scheme_listing.h"
#include "schemes/scheme_loading.h"

namespace qelm::cli {
namespace {

bool Load(Plugin& plugin, std::string_view category, std::string_view name, schemes::SchemeKind kind,
          schemes::Scheme* scheme) {
  schemes::Scheme loaded;
  loaded.kind = kind;
  if (schemes::LoadScheme(plugin.engine, plugin.messenger, plugin.main_settings, category, name, false,
                          &loaded) != schemes::kLoaded) {
    return false;
  }
  *scheme = std::move(loaded);
  return true;
}

// The first ones of the names, so that who has mistaken the way to write one sees it.
std::string Listed(const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 8;
  if (names.empty()) return "; there is none";
  const std::size_t shown = std::min(names.size(), kMost);
  std::string list = "; there are ";
  for (std::size_t i = 0; i < shown; ++i) list += (i == 0 ? "\"" : ", \"") + names[i] + '"';
  return shown == names.size() ? list : list + " and " + std::to_string(names.size() - shown) + " more";
}

}  // namespace

std::string_view KindName(schemes::SchemeKind kind) {
  switch (kind) {
    case schemes::SchemeKind::kFilter:
      return "filter";
    case schemes::SchemeKind::kColoring:
      return "coloring";
    case schemes::SchemeKind::kValidation:
      return "validation";
  }
  return {};
}

std::string FullName(std::string_view category, std::string_view name) {
  return std::string(category) + "/" + std::string(name);
}

void RequireMainSettings(Session& session) {
  if (session.plugin().main_settings != host::kNone) return;
  throw Failure(ExitStatus::kFile,
                "there are no schemes, as no main settings document is open; name one by --main-settings");
}

bool LoadByName(Session& session, std::string_view full_name, schemes::SchemeKind kind,
                schemes::Scheme* scheme) {
  RequireMainSettings(session);
  Plugin& plugin = session.plugin();
  std::size_t slash = full_name.find('/');
  if (slash == std::string_view::npos) {
    return Load(plugin, plugin.settings.default_scheme_category, full_name, kind, scheme);
  }
  for (; slash != std::string_view::npos; slash = full_name.find('/', slash + 1)) {
    if (Load(plugin, full_name.substr(0, slash), full_name.substr(slash + 1), kind, scheme)) return true;
  }
  return false;
}

Failure NoSuchScheme(Session& session, std::string_view full_name,
                     const std::vector<schemes::SchemeKind>& kinds) {
  Plugin& plugin = session.plugin();
  std::vector<std::string> names;
  for (const schemes::SchemeListing& listing : schemes::ListSchemes(plugin.engine, plugin.main_settings)) {
    if (std::find(kinds.begin(), kinds.end(), listing.kind) != kinds.end()) {
      names.push_back(FullName(listing.category, listing.name));
    }
  }
  std::string message = "there is no ";
  if (kinds.size() == 1) message += std::string(KindName(kinds.front())) + " ";
  message += "scheme \"" + std::string(full_name) + "\" in " + plugin.settings.paths.main_settings;
  const std::string near = DidYouMean(full_name, std::span<const std::string>(names));
  return {ExitStatus::kRefused, message + (near.empty() ? Listed(names) : near) + "; see qelm schemes list"};
}

schemes::Scheme& ActivateScheme(Session& session, std::string_view full_name, schemes::SchemeKind kind) {
  schemes::Scheme& scheme = session.plugin().schemes.Of(kind);
  if (!LoadByName(session, full_name, kind, &scheme)) throw NoSuchScheme(session, full_name, {kind});
  const std::string owner = "the " + std::string(KindName(kind)) + " scheme " + std::string(full_name);
  for (const std::string& expression : scheme.expressions) ParseOrFail(session, expression, owner);
  schemes::PrintAfterLoading(session.plugin().host.user, session.plugin().settings, scheme);
  return scheme;
}

}  // namespace qelm::cli
