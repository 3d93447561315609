// The program `qelm` as a function: reads its arguments, runs one command and returns the exit status.
#pragma once

#include <string>
#include <vector>

#include "cli/environment.h"

namespace qelm::cli {

// Runs the program with `arguments` (without the program's name). Results go to `environment.out`, everything
// else to `environment.err`. Returns an ExitStatus as a number.
int Main(std::vector<std::string> arguments, const Environment& environment);

}  // namespace qelm::cli
