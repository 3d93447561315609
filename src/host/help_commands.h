// The commands that only tell something: about the plug-in, its host, and what it does not have.
#pragma once

#include <cstdint>

namespace qelm {

class Plugin;

// The about box: version, date of the build, debug mode, notice.
std::int32_t ShowAbout(Plugin& plugin);

// That the plug-in was made for another version of the host.
std::int32_t WarnOfHostVersion(Plugin& plugin);

// Prints on the console which files, schemes and limits the session works with, and looks once through the
// main settings document, so that a support person sees whether the parts work together.
std::int32_t RunSelfTest(Plugin& plugin);

// What this version does not have.
std::int32_t TellNoMigration(Plugin& plugin);

}  // namespace qelm
