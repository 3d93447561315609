#include "host/entries.h"

#include <exception>
#include <string>

#include "host/dialog_events.h"
#include "host/notifications.h"

namespace qelm {
namespace {

// Sets a flag for as long as it lives.
class Flagged {
 public:
  explicit Flagged(bool* flag) : flag_(flag), before_(*flag) { *flag = true; }
  ~Flagged() { *flag_ = before_; }
  Flagged(const Flagged&) = delete;
  Flagged& operator=(const Flagged&) = delete;

 private:
  bool* flag_;
  bool before_;
};

void Report(Plugin& plugin, const char* what) noexcept {
  try {
    plugin.host.user.HideStatus();
    plugin.host.session.SetScreenUpdates(true);
    plugin.messenger.AlertFormatted("QELM_MSG_GEN_35",
                                    plugin.messenger.Format("QELM_MSG_GEN_35", std::string(what)));
  } catch (...) {  // there is nobody left who could be told
  }
}

}  // namespace

template <typename Work>
void Entries::Guard(Work work) {
  try {
    work();
  } catch (const std::exception& problem) {
    Report(plugin_, problem.what());
  } catch (...) {
    Report(plugin_, "");
  }
}

void Entries::Initialize(std::int32_t) {
  Guard([this] { started_ = plugin_.Initialize(options_); });
}

void Entries::Command(std::int32_t number) {
  last_result_ = 0;
  const Flagged busy(&busy_);
  Guard([this, number] { last_result_ = RunCommand(plugin_, number); });
}

void Entries::Notify(std::int32_t notification, host::Id document_or_book, std::string_view text,
                     std::int32_t value) {
  const bool always = notification == kClientCall || notification == kCloseMainSettings;
  if (busy_ && !always) return;
  // One call may come out of another one, when a client that is notified calls back.
  if (notification == kClientCall) plugin_.calls.busy = busy_;
  const Flagged busy(&busy_);
  Guard([&] { HandleNotification(plugin_, notification, document_or_book, text, value); });
}

std::int32_t Entries::DialogEvent(std::int32_t dialog, std::int32_t item, std::int32_t modifiers) {
  std::int32_t result = 0;
  Guard([&] { result = RouteDialogEvent(plugin_, dialog, item, modifiers); });
  return result;
}

}  // namespace qelm
