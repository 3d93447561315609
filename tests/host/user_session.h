// The plug-in as a user has it: in the embedded host, with a plug-in's folder in order and a profile that is
// empty at first, both of which a test may spoil before the start.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "host/plugin.h"
#include "support/null_roles.h"
#include "support/read_only_platform.h"
#include "support/temp_folder.h"
#include "support/test_user.h"

namespace qelm::testing {

// A main settings document in XML: categories "Review" (classic) and "Quality" (XPath) with a coloring scheme
// "Draft" and a validation scheme "Strict" each.
std::string MainSettingsXml();

// The shipped main settings template in MIF, without the color "BkgdColor".
std::string MainSettingsWithoutColors();

class FileBrowser : public NullDialogs {
 public:
  std::string choice;  // what the user chooses
  std::string title;
  std::string start;
  std::string ChooseFile(std::string_view shown_title, const std::string& shown_start) override {
    title = shown_title;
    start = shown_start;
    return choice;
  }
};

class UserSession {
 public:
  UserSession();

  // Starts a plug-in, in place of the one before.
  bool Start();

  // The path, and the content, of a file in the user's folder, and in the plug-in's.
  std::string UserFile(const std::string& name) const { return folder.File(kUserFolder + name); }
  std::string UserText(const std::string& name) const { return folder.Read(kUserFolder + name); }
  std::string ShippedText(const std::string& name) const { return folder.Read("plugin/" + name); }
  std::string WriteUserFile(const std::string& name, const std::string& content) {
    return folder.Write(kUserFolder + name, content);
  }

  // Whether an alert or question with that id, or with this text in it, came.
  bool Shown(const std::string& id) const;
  bool Said(const std::string& text) const;

  host::Host& roles() { return host->roles(); }

  static inline const std::string kUserFolder = "profile/Adobe/FrameMaker/18/Brenwick/QELM/";

  TempFolder folder;
  embedded::adapter::PosixPlatform posix;
  ReadOnlyPlatform platform{posix};
  TestUser user;
  TestClients clients;
  FileBrowser browser;
  StartOptions options;
  std::unique_ptr<embedded::adapter::EmbeddedHost> host;
  std::unique_ptr<Plugin> plugin;
};

}  // namespace qelm::testing
