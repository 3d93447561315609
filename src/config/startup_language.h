// The language that a session starts with.
#pragma once

#include "config/local_settings.h"
#include "host/interface/session.h"
#include "messages/messenger.h"

namespace qelm::config {

// Makes the language that STARTUP_LANGUAGE names the current one; "DEFAULT" is the host's own. One that is
// not installed or is damaged falls back to the English that is shipped, with a notice. False when that
// cannot be read either: messages are then shown by their fallbacks.
bool LoadStartupLanguage(host::Session& session, messages::Messenger& messenger,
                         const LocalSettings& settings);

}  // namespace qelm::config
