// The session's main settings document and the schemes that are active by it.
#pragma once

#include <cstdint>
#include <string>

#include "host/plugin.h"

namespace qelm {

// Opens the main settings document that the local settings have settled on as that of the session. False,
// after an alert, when there is none that can be used; the session then has none.
bool OpenSessionSettings(Plugin& plugin);

// Makes an open document the session's. The one before is closed, unless somebody looks at it or it has
// changes.
void UseMainSettings(Plugin& plugin, host::Id document);

// What came of loading a scheme that the local settings name.
struct DefaultScheme {
  enum Outcome : std::uint8_t { kNotAsked, kLoaded, kUnreadable };
  Outcome outcome = kNotAsked;
  std::string category;
  std::string name;
};

// Loads the coloring or the validation scheme that the local settings name into the active schemes. One that
// is not there is told when `report` is set, and is no longer named.
DefaultScheme LoadDefaultColoring(Plugin& plugin, bool report);
DefaultScheme LoadDefaultValidation(Plugin& plugin);

// Makes a scheme of the main settings document the active one of its kind, for the session. Returns as
// LoadScheme does: names that are none change nothing, and a scheme that is not there leaves none active.
std::int32_t ActivateScheme(Plugin& plugin, schemes::SchemeKind kind, const std::string& category,
                            const std::string& name, bool report);

// Notes in the settings which scheme of a kind the session has chosen. That of filters has no setting.
void NoteActiveScheme(config::LocalSettings* settings, schemes::SchemeKind kind, const std::string& category,
                      const std::string& name);

// Loads the active schemes again by their names; those that were read from a document's table stay. One that
// is not there is no longer active; the user is told.
void ReloadSchemes(Plugin& plugin);

// What a command works with is what the main settings document says at that moment: a user may edit it in the
// host, or close its window. Opens it again in the second case, and loads the active schemes again when it
// has changed since they were loaded. Nothing happens in a session without such a document.
void RefreshMainSettings(Plugin& plugin);

}  // namespace qelm
