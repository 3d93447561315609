// Telling the notification client of a run how far it is.
#pragma once

#include "filtering/filter_run.h"
#include "host/interface/user_interface.h"

namespace qelm::filtering {

// A client that does not exist is no error.
inline void Notify(host::Clients& clients, const FilterRun& run, std::string_view text) {
  if (run.notify) clients.Send(run.notification_client, text);
}

}  // namespace qelm::filtering
