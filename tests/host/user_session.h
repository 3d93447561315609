// The plug-in as a user has it: in the embedded host, with a plug-in's folder in order, in which the shipped
// documents are, and a profile that is empty at first. A test may spoil both before the start.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "host/plugin.h"
#include "support/null_roles.h"
#include "support/temp_folder.h"
#include "support/test_user.h"

namespace qelm::testing {

// A main settings document in XML: categories "Review" (classic) and "Quality" (XPath) with a coloring scheme
// "Draft" and a validation scheme "Strict" each.
std::string MainSettingsXml();

// The shipped main settings template in MIF, without the color "BkgdColor".
std::string MainSettingsWithoutColors();

// Files on which nothing can be written below some folders: tests run as a user whom permissions do not stop.
class ReadOnlyPlatform : public embedded::adapter::PosixPlatform {
 public:
  std::vector<std::string> read_only;  // what begins like this cannot be written
  bool folders_too = true;             // else folders can still be made, as on a disk that is full

  bool ReplaceFileByPieces(const std::string& path, std::span<const std::string_view> pieces) override {
    return MayWrite(path) && PosixPlatform::ReplaceFileByPieces(path, pieces);
  }
  bool ReplaceUnchanged(const std::string& path, std::span<const std::string_view> pieces,
                        std::string* state) override {
    return MayWrite(path) && PosixPlatform::ReplaceUnchanged(path, pieces, state);
  }
  bool CopyFile(const std::string& from, const std::string& to) override {
    return MayWrite(to) && PosixPlatform::CopyFile(from, to);
  }
  bool MakeFolder(const std::string& path) override {
    return (!folders_too || MayWrite(path)) && PosixPlatform::MakeFolder(path);
  }

 private:
  bool MayWrite(const std::string& path) const {
    return std::none_of(read_only.begin(), read_only.end(),
                        [&path](const std::string& start) { return path.starts_with(start); });
  }
};

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
  ReadOnlyPlatform platform;
  TestUser user;
  TestClients clients;
  FileBrowser browser;
  StartOptions options;
  std::unique_ptr<embedded::adapter::EmbeddedHost> host;
  std::unique_ptr<Plugin> plugin;
};

}  // namespace qelm::testing
