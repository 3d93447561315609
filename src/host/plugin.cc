#include "host/plugin.h"

#include <exception>

#include "host/start_up.h"

namespace qelm {

Plugin::Plugin(host::Host& host_roles)
    : host(host_roles),
      messenger(host.user, host.platform, &host.dialogs),
      debug_log(host),
      engine(host, messenger) {}

bool Plugin::Initialize(const StartOptions& options) {
  bool ready = false;
  try {
    ready = StartUp(*this, options);
  } catch (const std::exception& problem) {
    messenger.Alert(std::string(kCannotInitialize) + "\n\n" + problem.what());
  } catch (...) {
    messenger.Alert(kCannotInitialize);
  }
  host.user.HideStatus();
  return ready;
}

}  // namespace qelm
