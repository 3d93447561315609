// The main settings document that the session holds open, and the active schemes that came from it.
//
// A user may edit the document in the host, close its window, or name another one in the local settings. What
// a command then works with is what the document says at that moment.
#pragma once

namespace qelm {

class Plugin;

// Opens the document in force again where the user closed it, or where the local settings now name another
// one, and loads the active schemes again when it has changed. A scheme that it no longer holds is no longer
// active, which the user is told. Nothing happens in a session that began without such a document.
void RefreshMainSettings(Plugin& plugin);

// Closes the document without saving.
void LetGoOfMainSettings(Plugin& plugin);

}  // namespace qelm
