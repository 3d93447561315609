// The clients role of a host whose other clients, if any, are outside of it: what is sent to them is recorded
// and handed to a receiver; the result of a call is kept for whoever made the call.
#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "embedded/adapter/events.h"
#include "host/interface/user_interface.h"

namespace qelm::embedded::adapter {

class RecordedClients : public host::Clients {
 public:
  explicit RecordedClients(EventLog& events) : events_(events) {}

  bool Send(std::string_view client, std::string_view text) override {
    // The receiver may set another one while it runs.
    const Receiver receiver = receiver_;
    const bool received = receiver && receiver(client, text);
    events_.Write("notification", {{"client", client}, {"text", text}, {"received", received}});
    return received;
  }
  void Return(std::int32_t value) override { returned_ = value; }

  // Who passes on what is sent, and tells whether there is a client of that name. Without one there is none.
  using Receiver = std::function<bool(std::string_view client, std::string_view text)>;
  void SetReceiver(Receiver receiver) { receiver_ = std::move(receiver); }

  // What the call under way returned, if anything; forgotten by asking.
  std::optional<std::int32_t> TakeReturned() { return std::exchange(returned_, std::nullopt); }

 private:
  EventLog& events_;
  Receiver receiver_;
  std::optional<std::int32_t> returned_;
};

}  // namespace qelm::embedded::adapter
