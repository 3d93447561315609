// qelm schemes convert: brings a main settings document of an earlier format up to date.
#pragma once

#include <string>

#include "cli/command.h"

namespace qelm::cli {

class Session;

struct SettingsConversion {
  std::string file;
  std::string output;  // empty: in place
  bool no_backup = false;
};

// Finds out which conversions the document needs, and does them. Throws Failure; what is then on the disk is
// the document as it was, or as the conversion before left it, and the backups.
Outcome ConvertSettings(Session& session, const SettingsConversion& conversion);

}  // namespace qelm::cli
