// What a filter or restore that was not completed came to, in words and as an exit status.
#pragma once

#include "cli/exit_status.h"
#include "filtering/filter_run.h"

namespace qelm::cli {

struct FilterEndingText {
  filtering::Ending ending;
  ExitStatus status;
  const char* text;
};

// Null for an ending that has no words of its own.
const FilterEndingText* TextFor(filtering::Ending ending);

// The name of a mode as the command line takes it.
std::string ModeName(filtering::LaunchMode mode);
// The mode of a name; the names are those of ModeName.
filtering::LaunchMode ModeNamed(const std::string& name);

}  // namespace qelm::cli
