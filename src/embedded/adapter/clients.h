// The clients role of a host in which the plug-in is the only client: what is sent is recorded and nobody
// receives it; the result of a call is kept for whoever made the call.
#pragma once

#include <optional>
#include <utility>

#include "embedded/adapter/events.h"
#include "host/interface/user_interface.h"

namespace qelm::embedded::adapter {

class RecordedClients : public host::Clients {
 public:
  explicit RecordedClients(EventLog& events) : events_(events) {}

  bool Send(std::string_view client, std::string_view text) override {
    events_.Write("notification", {{"client", client}, {"text", text}, {"received", false}});
    return false;
  }
  void Return(std::int32_t value) override { returned_ = value; }

  // What the call under way returned, if anything; forgotten by asking.
  std::optional<std::int32_t> TakeReturned() { return std::exchange(returned_, std::nullopt); }

 private:
  EventLog& events_;
  std::optional<std::int32_t> returned_;
};

}  // namespace qelm::embedded::adapter
