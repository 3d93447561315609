// An embedded host over files in memory, and what the plug-in's rooms need around it.
#pragma once

#include "embedded/adapter/clients.h"
#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "messages/messenger.h"
#include "support/memory_platform.h"
#include "xpath/engine.h"

namespace qelm::fuzz {

struct Session {
  testing::MemoryPlatform platform;
  testing::RecordingUser user;
  embedded::adapter::EventLog events;
  embedded::adapter::NoDialogs dialogs{events};
  embedded::adapter::RecordedClients clients{events};
  embedded::adapter::EmbeddedHost embedded{{}, user, dialogs, clients, platform};
  host::Host& host = embedded.roles();
  messages::Messenger messenger{host.user, host.platform};
  xpath::Engine engine{host, messenger};

  host::Id Open(const std::string& path, std::string content) {
    platform.files[path] = std::move(content);
    host::OpenStatus status = host::OpenStatus::kOpened;
    return host.documents.Open(path, {}, &status);
  }
};

}  // namespace qelm::fuzz
