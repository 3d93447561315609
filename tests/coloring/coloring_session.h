// What the coloring tests work with: documents in the embedded host, whose calls are checked and counted, and
// a user whose answers are set beforehand.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "coloring/coloring.h"
#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "support/checking_host.h"
#include "support/mif_files.h"
#include "support/temp_folder.h"
#include "support/test_user.h"

namespace qelm::testing {

// Counts the calls of each operation.
class CallCounter : public CallObserver {
 public:
  std::map<std::string, std::uint64_t, std::less<>> calls;
  std::uint64_t Of(std::string_view name) const;
  std::uint64_t Total() const;
  bool Before(const HostCall& call) override;
  void After(const HostCall&) override {}
};

class ColoringSession {
 public:
  ColoringSession();
  // Expects that the contract with the host was kept.
  ~ColoringSession();
  ColoringSession(const ColoringSession&) = delete;
  ColoringSession& operator=(const ColoringSession&) = delete;

  // Writes the file into the session's folder and opens it, active; 0 when it cannot be opened.
  host::Id Open(const std::string& name, std::string_view content);
  host::Id OpenFile(const std::string& path);
  // The same for a document in the notation of mif_files.h, of a version that has background colors.
  host::Id OpenMif(std::string_view notation, std::vector<MifDefinition> definitions = {});

  // One command, as one entry.
  std::int32_t Run(coloring::Command command, const schemes::Scheme& scheme = {}, bool report = true);
  std::int32_t Color(const schemes::Scheme& scheme) { return Run(coloring::Command::kColorDocument, scheme); }
  std::int32_t Uncolor() { return Run(coloring::Command::kUncolorDocument); }

  // The bytes that the document is saved as, and its text as golden_text.h shows it once that is read again.
  std::string Saved(host::Id document);
  std::string Golden(host::Id document);

  // The first element of that tag.
  host::Id Find(host::Id document, std::string_view tag);
  bool Shown(const std::string& id) const;

  // The host without the checks, for what a test does itself.
  host::Host& inner() { return embedded_.roles(); }

  TempFolder folder;
  TestUser user;
  TestClients clients;
  coloring::ColoringRun wanted;  // what the next run is asked for
  coloring::ColoringRun run;     // what came of the last one
  CallCounter counter;

 private:
  embedded::adapter::PosixPlatform platform_;
  embedded::adapter::EventLog events_;
  embedded::adapter::NoDialogs dialogs_{events_};
  embedded::adapter::EmbeddedHost embedded_;
  CheckingHost checking_;
  ObservedHost counted_;
};

// A classic rule: one attribute with its values.
schemes::Rule RuleOf(const std::string& attribute, std::vector<std::string> values, const std::string& color,
                     std::int32_t style = 0, const std::string& background = "None");
schemes::Scheme Classic(std::vector<schemes::Rule> rules);
// An XPath rule, and a scheme of such rules.
schemes::Rule Selecting(std::vector<std::string> expressions, const std::string& color,
                        std::int32_t style = 0);
schemes::Scheme XPath(std::vector<schemes::Rule> rules);

}  // namespace qelm::testing
