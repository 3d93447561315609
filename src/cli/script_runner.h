// Runs the steps of a session file in one session of the plug-in, and prints each with what it brought about.
//
// The session starts with the first step that needs one. The host tells the plug-in of what the steps do, as
// it does with a user before it.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/session.h"
#include "cli/session_script.h"

namespace qelm::cli {

struct ScriptPlaces {
  std::string script;  // for messages
  std::string folder;  // of the script: relative paths are seen from here
  std::string work;    // what $WORK stands for
};

struct ScriptResult {
  nlohmann::ordered_json steps = nlohmann::ordered_json::array();
  std::size_t expectations = 0;
  std::size_t failed = 0;  // of them
};

class ScriptRunner {
 public:
  // Prints the steps as they run when `print` is set.
  ScriptRunner(Session& session, ScriptPlaces places, bool print);

  // Runs them all. An expectation that fails is told and counted; a step that cannot be done ends the run by
  // a Failure that names its line.
  ScriptResult Run(const std::vector<Step>& steps);

 private:
  using Json = nlohmann::ordered_json;

  void RunStep(const Step& step);
  void Do(const Step& step);
  void DoWithFile(const Step& step);
  void Edit(const Step& step, host::Id document, host::Id element);
  void SetAttribute(const Step& step, host::Id document, host::Id element);
  void Finish();
  // What was expected, and what there was; empty when the expectation holds.
  std::string Check(const Step& step);
  std::string CheckFile(const Step& step);

  void Start();
  void UseAnswers();
  std::string Path(std::string_view written) const;
  std::string WithWork(std::string line) const;
  void Copy(const Step& step);
  void EditSettings(const std::string& setting);
  host::Id ActiveDocument();
  host::Id Active();
  host::Id SelectedElement(host::Id document);
  host::Id FindOpen(const std::string& path);
  static bool IsOfKind(const Json& event, std::string_view kind);
  std::string MissingEvent(std::string_view kind, const std::string& text) const;
  std::string UnexpectedEvent(std::string_view kind) const;
  std::string EventTexts(std::string_view kind) const;
  void Print(const Json& event);

  Session& session_;
  ScriptPlaces places_;
  bool print_;
  bool started_ = false;
  std::ostream nowhere_{nullptr};
  std::string answers_;                 // for the next step, one a line
  std::optional<std::int32_t> answer_;  // of the last call, until a command is chosen
  std::vector<Json> events_;            // of the last step that was no expectation
  ScriptResult result_;
};

}  // namespace qelm::cli
