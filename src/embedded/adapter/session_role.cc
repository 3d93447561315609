#include "embedded/adapter/roles.h"

namespace qelm::embedded::adapter {
namespace {

class SessionRole : public host::Session {
 public:
  explicit SessionRole(Workspace& workspace) : workspace_(workspace) {}

  std::string_view PluginFolder() override { return workspace_.options().plugin_folder; }
  std::int32_t MajorVersion() override { return workspace_.options().major_version; }
  std::string_view InterfaceLanguage() override { return workspace_.options().interface_language; }

  void SetScreenUpdates(bool on) override { workspace_.screen_updates = on; }
  bool ScreenUpdates() override { return workspace_.screen_updates; }
  void Redisplay(Id) override {}  // there is no screen

  void RequestNotification(std::int32_t number, bool on) override {
    if (on) {
      workspace_.requested_notifications.insert(number);
    } else {
      workspace_.requested_notifications.erase(number);
    }
  }

 private:
  Workspace& workspace_;
};

}  // namespace

std::unique_ptr<host::Session> MakeSession(Workspace& workspace) {
  return std::make_unique<SessionRole>(workspace);
}

}  // namespace qelm::embedded::adapter
