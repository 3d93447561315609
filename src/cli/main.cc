#include <cstdlib>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "cli/cli.h"

namespace {

// A document is a few large blocks, and a batch makes a copy of it for each scheme. A block that goes back to
// the system and is asked for anew costs more than the copying, page by page, so that blocks are kept.
void KeepFreedMemory() {
#if defined(__GLIBC__)
  constexpr int kLargestKept = 1 << 30;
  constexpr int kStep = 64 << 20;
  mallopt(M_MMAP_THRESHOLD, kLargestKept);
  mallopt(M_TRIM_THRESHOLD, kLargestKept);
  mallopt(M_TOP_PAD, kStep);
#endif
}

}  // namespace

int main(int argc, char** argv) {
  KeepFreedMemory();
  qelm::cli::Environment environment = qelm::cli::ProcessEnvironment();
  environment.version = QELM_VERSION;
  environment.plugin_folders = {QELM_INSTALLED_ASSETS, QELM_ASSETS};
  return qelm::cli::Main({argv + 1, argv + argc}, environment);
}
