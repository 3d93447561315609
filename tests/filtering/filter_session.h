// What the filter tests work with: a document in the embedded host, whose calls are checked, and a user whose
// answers are set beforehand.
#pragma once

#include <functional>
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

namespace qelm::testing {

// Remembers the ids of the messages shown and asked; answers "no" to some, "yes" to the rest; presses Esc at
// one poll.
class TestUser : public host::UserInterface {
 public:
  std::set<std::string> no;
  std::function<bool(const std::string&)> answer;  // in place of `no`, from the whole text
  int esc_at_poll = 0;                             // from 1; 0: never

  std::vector<std::string> shown;  // alerts and questions
  std::vector<std::string> texts;
  std::vector<std::string> status;  // first lines
  int polls = 0;

  void Note(std::string_view text) override { Remember(text); }
  std::int32_t Question(std::string_view text) override {
    const std::string id = Remember(text);
    return (answer ? answer(std::string(text)) : !no.contains(id)) ? 0 : 1;
  }
  void ShowStatus(const host::Status& lines) override { status.push_back(lines.line1); }
  void HideStatus() override { status.push_back(""); }
  bool EscPressed() override { return ++polls == esc_at_poll; }
  void Print(std::string_view) override {}
  host::Id DefineMenu(std::string_view, std::string_view) override { return 1; }
  host::Id DefineCommand(std::int32_t, std::string_view, std::string_view, std::string_view) override {
    return 1;
  }
  bool AddToMenu(std::string_view, host::Id) override { return true; }
  bool AddSeparator(std::string_view) override { return true; }
  bool EnableCommand(host::Id, bool) override { return true; }

 private:
  std::string Remember(std::string_view text);
};

class TestClients : public host::Clients {
 public:
  std::vector<std::string> sent;
  bool Send(std::string_view client, std::string_view text) override {
    sent.push_back(std::string(client) + ":" + std::string(text));
    return true;
  }
  void Return(std::int32_t) override {}
};

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
  std::vector<std::string> log;  // the events of all runs
  std::function<bool(host::Id)> remove_coloring;
  bool debug_prompts = false;

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
