#include "cli/cli.h"

int main(int argc, char** argv) {
  qelm::cli::Environment environment = qelm::cli::ProcessEnvironment();
  environment.version = QELM_VERSION;
  environment.plugin_folders = {QELM_INSTALLED_ASSETS, QELM_ASSETS};
  return qelm::cli::Main({argv + 1, argv + argc}, environment);
}
