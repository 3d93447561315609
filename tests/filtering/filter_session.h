// What the filter tests work with: a document in the embedded host, whose calls are checked, and a user whose
// answers are set beforehand.
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "filtering/document_filter.h"
#include "filtering/outline.h"
#include "support/checking_host.h"
#include "support/temp_folder.h"
#include "support/test_user.h"

namespace qelm::testing {

class FilterSession {
 public:
  // Opens a document of these outlines, and makes it active.
  explicit FilterSession(const std::vector<std::string>& outlines,
                         const std::vector<MifDefinition>& definitions = {});
  // Expects that the contract with the host was kept.
  ~FilterSession();
  FilterSession(const FilterSession&) = delete;
  FilterSession& operator=(const FilterSession&) = delete;

  // Runs an operation of the plug-in, as one entry, on the active document.
  std::int32_t Filter(const schemes::Scheme& scheme, const filtering::FilterRun& wanted);
  std::int32_t Restore();
  // The same through other roles, which stand before the host of this session.
  std::int32_t FilterThrough(host::Host& roles, const schemes::Scheme& scheme,
                             const filtering::FilterRun& wanted);

  // Outlines of what the last run filtered, and of the document that the session opened.
  std::string Result() { return OutlineOf(embedded_.roles(), run.result_document); }
  std::string Source() { return OutlineOf(embedded_.roles(), document); }

  // Whether an alert or question with that id came.
  bool Shown(const std::string& id) const;

  // The host without the checks, for what a test does itself.
  host::Host& inner() { return embedded_.roles(); }
  CheckingHost& checked() { return checking_; }

  TempFolder folder;
  TestUser user;
  TestClients clients;
  host::Id document = host::kNone;
  filtering::FilterRun run;
  bool debug_prompts = false;
  bool logged = false;  // each step of the run is told

 private:
  embedded::adapter::PosixPlatform platform_;
  embedded::adapter::EventLog events_;
  embedded::adapter::NoDialogs dialogs_{events_};
  embedded::adapter::EmbeddedHost embedded_;
  CheckingHost checking_;
};

// A classic filter scheme of rules, each an attribute with its values.
schemes::Scheme Classic(std::vector<schemes::Condition> rules);
schemes::Scheme XPath(std::vector<std::string> expressions, bool negative = false);

// A run in that mode, its copy in the session's folder.
filtering::FilterRun InMode(filtering::LaunchMode mode);

}  // namespace qelm::testing
