// The embedded host over a folder of a test's own.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string_view>

#include "embedded/adapter/clients.h"
#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "embedded/adapter/user_interface.h"
#include "support/temp_folder.h"

namespace qelm::testing {

struct HostSession {
  TempFolder folder;
  embedded::adapter::PosixPlatform platform;
  std::stringstream no_input, messages;
  embedded::adapter::EventLog events;
  embedded::adapter::ScriptedUserInterface user{embedded::adapter::ScriptedUserInterface::Options{
      .in = no_input, .messages = messages, .events = events}};
  embedded::adapter::NoDialogs dialogs{events};
  embedded::adapter::RecordedClients clients{events};
  embedded::adapter::EmbeddedHost embedded{
      {.plugin_folder = folder.path(), .file_error = [this] { return platform.LastError(); }},
      user,
      dialogs,
      clients,
      platform};
  host::Host& host = embedded.roles();

  // Opens a file of the folder; 0 when that fails.
  host::Id OpenFile(const std::string& name) {
    host::OpenStatus status = host::OpenStatus::kOpened;
    return host.documents.Open(folder.File(name), {}, &status);
  }
  // The first element of that tag in document order, `skip` others passed over.
  host::Id Find(host::Id document, std::string_view tag, int skip = 0) {
    const host::Id definition = host.definitions.FindDefinition(document, tag);
    for (host::Id id = 1; definition != host::kNone && id < host.elements.IdLimit(document); ++id) {
      const bool is =
          host.elements.IsElement(document, id) && host.elements.Definition(document, id) == definition;
      if (is && skip-- == 0) return id;
    }
    ADD_FAILURE() << "no element " << tag;
    return host::kNone;
  }
};

}  // namespace qelm::testing
