// What the scheme tests work with: the embedded host over files in memory, an engine, and main settings
// documents that are written down in short.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "embedded/adapter/clients.h"
#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "messages/messenger.h"
#include "schemes/scheme_loading.h"
#include "support/memory_platform.h"
#include "xpath/engine.h"

namespace qelm::testing {

class SettingsSession {
 public:
  SettingsSession();

  host::Host& host() { return embedded_.roles(); }
  // Opens a document of that content; 0 when it cannot be opened.
  host::Id Open(const std::string& path, std::string content);
  // Opens a file of the source tree.
  host::Id OpenSource(const std::string& path);
  std::int32_t Load(host::Id document, schemes::SchemeKind kind, std::string_view category,
                    std::string_view name, schemes::Scheme* scheme, bool report = false);

  MemoryPlatform platform;
  RecordingUser user;

 private:
  embedded::adapter::EventLog events_;
  embedded::adapter::NoDialogs dialogs_{events_};
  embedded::adapter::RecordedClients clients_{events_};
  embedded::adapter::EmbeddedHost embedded_;

 public:
  messages::Messenger messenger;
  xpath::Engine engine;
};

// An element with content, and one whose content is a text as it stands ("<no value>").
std::string E(std::string_view tag, std::string_view content);
std::string T(std::string_view tag, std::string_view text);

// A category with what lies in its three groups, and a scheme with settings and content.
std::string Category(std::string_view name, std::string_view filters, std::string_view colorings = {},
                     std::string_view validations = {});
std::string SchemeOf(std::string_view name, std::string_view settings, std::string_view content = {});

// What schemes and rules consist of.
std::string Attribute(std::string_view name, const std::vector<std::string>& values);
std::string Expressions(const std::vector<std::string>& expressions);
std::string RuleOf(std::string_view settings, std::string_view content = {});

// A main settings document of categories.
std::string MainSettings(std::string_view classic, std::string_view xpath = {});

}  // namespace qelm::testing
