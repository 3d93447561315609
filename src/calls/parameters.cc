#include "calls/parameters.h"

#include <array>

#include "common/paths.h"
#include "common/text.h"
#include "common/version.h"
#include "config/settings_table.h"

namespace qelm::calls {
namespace {

using config::LocalSettings;
using filtering::LaunchMode;

struct Readable {
  std::string_view name;
  std::int32_t (*value)();
};
constexpr std::array kReadable = {
    Readable{"QELMVersionMajor", &common::VersionMajor},
    Readable{"QELMVersionMinor", &common::VersionMinor},
};

// The beginnings of filter types; the first that fits counts, so that the longer ones come first.
struct FilterType {
  std::string_view beginning;
  LaunchMode mode;
};
constexpr std::array kFilterTypes = {
    FilterType{"Source_NR", LaunchMode::kSourceNoRestore},
    FilterType{"S_NR", LaunchMode::kSourceNoRestore},
    FilterType{"D", LaunchMode::kDuplicate},
    FilterType{"S", LaunchMode::kSourceRestoreFirst},
};

std::int32_t SetFilterType(CallContext& context, std::string_view value) {
  for (const FilterType& type : kFilterTypes) {
    if (!value.starts_with(type.beginning)) continue;
    context.settings.filter_type = static_cast<std::int32_t>(type.mode);
    return kSuccess;
  }
  return kBadFilterType;
}

std::int32_t SetFilterPath(CallContext& context, std::string_view value) {
  context.state.filter_path = common::ReplaceAll(value, "/", "\\");
  return kSuccess;
}

std::int32_t SetHideAfter(CallContext& context, std::string_view value) {
  config::SetValue(*config::FindSetting("FILT_HIDE_CONTENT_AFTER_NO_RESTORE_FILTER"), value,
                   &context.settings);
  return kSuccess;
}

std::int32_t SetMainSettings(CallContext& context, std::string_view value) {
  const std::string path = common::PlatformPath(value);
  host::Host& host = context.host;
  const bool there = host.documents.FindOpen(path) != host::kNone || host.platform.FileExists(path);
  if (!there) return kNoSettings;
  return context.set_main_settings(path) ? kSuccess : kSettingsNotSet;
}

template <bool LocalSettings::*kSetting>
std::int32_t SetSwitch(CallContext& context, std::string_view value) {
  context.settings.*kSetting = IsTrue(value);
  return kSuccess;
}

struct Settable {
  std::string_view name;
  std::int32_t (*set)(CallContext& context, std::string_view value);
};
constexpr std::array kSettable = {
    Settable{"Filter_Type", &SetFilterType},
    Settable{"Filter_SaveFirst", &SetSwitch<&LocalSettings::filt_default_save_files>},
    // The setting has another name than the parameter.
    Settable{"Filter_RemoveOverrides", &SetSwitch<&LocalSettings::filt_default_remove_coloring>},
    Settable{"Filter_Path", &SetFilterPath},
    Settable{"Filter_HideAfterNRFilt", &SetHideAfter},
    Settable{"Filter_ShowBeforeNRFilt", &SetSwitch<&LocalSettings::filt_show_all_before_restore_filter>},
    Settable{"Val_Rule1Active", &SetSwitch<&LocalSettings::val_rule_1_enabled>},
    Settable{"Val_Rule2Active", &SetSwitch<&LocalSettings::val_rule_2_enabled>},
    Settable{"Val_Rule3Active", &SetSwitch<&LocalSettings::val_rule_3_enabled>},
    Settable{"Val_Rule4Active", &SetSwitch<&LocalSettings::val_rule_4_enabled>},
    Settable{"Val_ApplyStrikethrough", &SetSwitch<&LocalSettings::val_apply_strikethrough_text>},
    Settable{"Gen_MainSettingsPath", &SetMainSettings},
};

}  // namespace

bool IsTrue(std::string_view argument) {
  return common::ReadSwitchWord(argument) == common::SwitchWord::kTrue;
}

Answer GetParm(CallContext&, Arguments arguments) {
  for (const Readable& parameter : kReadable) {
    if (parameter.name == arguments[0]) return {parameter.value()};
  }
  return {kUnknownParameter};
}

Answer SetParm(CallContext& context, Arguments arguments) {
  for (const Settable& parameter : kSettable) {
    if (parameter.name == arguments[0]) return {parameter.set(context, arguments[1])};
  }
  return {kUnknownParameter};
}

}  // namespace qelm::calls
