// The embedded host with the shipped templates and messages, and what a report says once it is saved.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "embedded/adapter/clients.h"
#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "embedded/adapter/user_interface.h"
#include "embedded/model/files.h"
#include "embedded/model/text_access.h"
#include "messages/messenger.h"
#include "support/mif_files.h"
#include "support/temp_folder.h"

namespace qelm::testing {

class ReportSession : public ::testing::Test {
 protected:
  explicit ReportSession(std::string plugin_folder = QELM_SOURCE_DIR "/assets")
      : embedded({.plugin_folder = std::move(plugin_folder), .file_error = {}}, user, dialogs, clients,
                 platform),
        host(embedded.roles()),
        messenger(user, platform) {
    EXPECT_TRUE(messenger.LoadLanguage(QELM_SOURCE_DIR "/assets/languages", "English"));
  }

  // A paragraph a line, of the main flow as it reads in the saved file: "Format|text", and behind it "|" and
  // the text of a marker.
  std::vector<std::string> Paragraphs(host::Id document) {
    host::SaveOptions options;
    options.path = folder.File("saved" + std::to_string(++saved_) + ".fm");
    EXPECT_TRUE(host.documents.Save(document, options)) << host.documents.LastError();
    std::string error;
    const auto read =
        embedded::model::BuildMif(folder.Read("saved" + std::to_string(saved_) + ".fm"), &error);
    EXPECT_NE(read, nullptr) << error;
    for (const auto& warning : read->warnings) ADD_FAILURE() << warning.text;
    const embedded::model::Flow& flow = read->flows[read->main_flow];
    std::vector<std::string> paragraphs;
    std::string text;
    std::string markers;
    for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) {
      const embedded::model::Item& item = read->items[i];
      embedded::model::AppendItemText(*read, item, &text);
      if (item.kind == embedded::model::ItemKind::kMarker) {
        markers += "|" + embedded::model::Substatement(*read, item, "MText");
      }
      if (item.kind != embedded::model::ItemKind::kParagraphEnd) continue;
      const auto& state = read->paragraph_states[read->paragraphs[item.ref].state];
      EXPECT_TRUE(read->paragraph_formats.contains(state.tag)) << state.tag << " is not in the template";
      paragraphs.push_back(std::string(state.tag) + "|" + text + markers);
      text.clear();
      markers.clear();
    }
    return paragraphs;
  }

  TempFolder folder;
  std::stringstream no_input, shown;
  embedded::adapter::PosixPlatform platform;
  embedded::adapter::EventLog events;
  embedded::adapter::ScriptedUserInterface user{
      embedded::adapter::ScriptedUserInterface::Options{.in = no_input, .messages = shown, .events = events}};
  embedded::adapter::NoDialogs dialogs{events};
  embedded::adapter::RecordedClients clients{events};
  embedded::adapter::EmbeddedHost embedded;
  host::Host& host;
  messages::Messenger messenger;

 private:
  int saved_ = 0;
};

}  // namespace qelm::testing
