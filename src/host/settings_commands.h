// The commands around the settings files: reading them again and opening them. The main settings document is
// edited in the host itself, as any structured document; there are no editors of the plug-in's own.
#pragma once

#include <cstdint>

namespace qelm {

class Plugin;

// Reads the local settings file again, with messages, and says that it did. What was switched off for the
// session stays off, and the active schemes stay the ones that they are.
std::int32_t ReadLocalSettingsOnCommand(Plugin& plugin);

// Opens the local settings file in the user's text editor, after saying so.
std::int32_t OpenLocalSettings(Plugin& plugin);

// Open the main settings document in force, or the local copy, for editing, if the user agrees. The first is
// tried in the host's fallback mode where it does not open normally.
std::int32_t OpenMasterCopy(Plugin& plugin);
std::int32_t OpenLocalCopy(Plugin& plugin);

// What the scheme editors edit.
enum class MainSettingsPart : std::uint8_t { kClassicSchemes, kXPathSchemes, kAttributeLibrary, kColorList };

// Opens the main settings document in force for editing and says where the part stands in it. One that is
// being edited already is only brought to the front.
std::int32_t EditMainSettings(Plugin& plugin, MainSettingsPart part);

// Lets the user choose another main settings document.
std::int32_t ChooseMainSettings(Plugin& plugin);

}  // namespace qelm
