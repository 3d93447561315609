#include "host/help_commands.h"

#include <string>

#include "common/version.h"
#include "host/plugin.h"
#include "schemes/scheme_loading.h"

namespace qelm {
namespace {

constexpr std::string_view kAboutSection = "About";
constexpr std::string_view kAbout =
    "QELM plugin version %s.%s for Adobe(R) FrameMaker(R), built on %s at %s.\n\n%s";
constexpr std::string_view kNotice =
    "QELM colors, filters and validates structured documents and books by named schemes. The manual tells "
    "how.";
constexpr std::string_view kDebugMode = "*** !WARNING!  Debug mode is on! ***\n\n";
constexpr std::string_view kInternalVersion = "*** !WARNING!  Internal version! ***\n\n";

std::string NameOf(const schemes::Scheme& scheme) {
  return scheme.Active() ? scheme.category + "/" + scheme.name : std::string(schemes::kNoName);
}

}  // namespace

std::int32_t ShowAbout(Plugin& plugin) {
  const auto translated = [&plugin](std::string_view text) {
    return plugin.messenger.Translated(kAboutSection, text);
  };
  std::string warnings;
  if (plugin.settings.debug_mode != 0) warnings += translated(kDebugMode);
  if (plugin.settings.qelm_license_type == kInternalLicence) warnings += translated(kInternalVersion);
  plugin.messenger.Alert(
      messages::Messenger::FormatText(translated(kAbout), std::to_string(common::VersionMajor()),
                                      std::to_string(common::VersionMinor()), __DATE__, __TIME__, warnings) +
      translated(kNotice));
  return common::kDone;
}

std::int32_t WarnOfHostVersion(Plugin& plugin) {
  plugin.messenger.AlertFormatted("QELM_MSG_GEN_31",
                                  plugin.messenger.Format("QELM_MSG_GEN_31", kExpectedHostVersion));
  return common::kDone;
}

std::int32_t RunSelfTest(Plugin& plugin) {
  const config::LocalSettings& settings = plugin.settings;
  const std::size_t listed = plugin.main_settings != host::kNone
                                 ? schemes::ListSchemes(plugin.engine, plugin.main_settings).size()
                                 : 0;
  const std::string text = plugin.messenger.Format(
      "QELM_MSG_GEN_28", plugin.host.session.MajorVersion(), settings.paths.local_settings,
      settings.paths.main_settings, listed, NameOf(plugin.schemes.coloring), NameOf(plugin.schemes.filter),
      NameOf(plugin.schemes.validation));
  plugin.host.user.Print("\n\n" + text + "\n");
  return common::kDone;
}

std::int32_t TellNoMigration(Plugin& plugin) {
  plugin.messenger.Alert("QELM_MSG_GEN_38");
  return 0;
}

}  // namespace qelm
