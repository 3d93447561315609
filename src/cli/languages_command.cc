// qelm languages: lists the language files, makes and completes them, and checks them against English.
#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/command.h"
#include "cli/did_you_mean.h"
#include "cli/session.h"
#include "config/language_files.h"

namespace qelm::cli {
namespace {

using config::LanguageOutcome;
using config::LanguagePlace;
using config::LanguageResult;
using messages::LanguageFault;
using messages::LanguageFinding;

std::string_view FaultName(LanguageFault fault) {
  switch (fault) {
    case LanguageFault::kMissing:
      return "missing";
    case LanguageFault::kNoText:
      return "no text";
    case LanguageFault::kFuzzy:
      return "fuzzy";
    case LanguageFault::kEnglishStill:
      return "english";
    case LanguageFault::kPlaceholders:
      return "placeholders";
    case LanguageFault::kNotInEnglish:
      return "unknown";
  }
  return {};
}

class LanguagesCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  Outcome List(Session& session);
  Outcome Create(Session& session);
  Outcome Update(Session& session);
  Outcome Check(Session& session);
  // Throws what a file could not be used for.
  void Require(Session& session, const std::string& name, const LanguageOutcome& outcome);

  CLI::App* list_ = nullptr;
  CLI::App* create_ = nullptr;
  CLI::App* update_ = nullptr;
  CLI::App* check_ = nullptr;
  std::string name_;
};

CLI::App* LanguagesCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(program, {"languages", "List, make, complete or check language files", "",
                                           "qelm languages check German"});
  command->require_subcommand(1);
  list_ = AddCommand(*command, {"list", "List the languages and their files", "", "qelm languages list"});
  create_ = AddCommand(*command, {"create", "Make a language file with the English texts",
                                  "A file that exists is left as it is.", "qelm languages create French"});
  update_ =
      AddCommand(*command, {"update", "Add the texts that a language file lacks, in English",
                            "What is in the file already is not touched.", "qelm languages update German"});
  check_ = AddCommand(*command, {"check", "Compare language files with the English one",
                                 "Exit status 1 when something was found.", "qelm languages check German"});
  for (CLI::App* action : {create_, update_}) {
    action->add_option("NAME", name_, "The language, by its English name")->required();
  }
  check_->add_option("NAME", name_, "The language; without it, all of them");
  return command;
}

Outcome LanguagesCommand::Run(Session& session) {
  if (create_->parsed()) return Create(session);
  if (update_->parsed()) return Update(session);
  return check_->parsed() ? Check(session) : List(session);
}

void LanguagesCommand::Require(Session& session, const std::string& name, const LanguageOutcome& outcome) {
  switch (outcome.result) {
    case LanguageResult::kDone:
      return;
    case LanguageResult::kBadName:
      throw Failure(ExitStatus::kUsage, "\"" + name + "\" cannot be the name of a language file");
    case LanguageResult::kExists:
      throw Failure(ExitStatus::kFile, outcome.path + ": there is a language of that name already");
    case LanguageResult::kDamaged:
      throw Failure(ExitStatus::kFile, outcome.problem);
    case LanguageResult::kUnwritten:
      throw Failure(ExitStatus::kFile, outcome.path + ": cannot be written");
    case LanguageResult::kNotThere:
      break;
  }
  std::vector<std::string> names;
  for (const LanguagePlace& place :
       config::InstalledLanguages(session.roles().platform, session.plugin().settings.paths)) {
    names.push_back(place.name);
  }
  throw Failure(ExitStatus::kFile, "there is no language \"" + name + "\"" + DidYouMean(name, names));
}

Outcome LanguagesCommand::List(Session& session) {
  const Plugin& plugin = session.plugin();
  Outcome outcome;
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const LanguagePlace& place :
       config::InstalledLanguages(session.roles().platform, plugin.settings.paths)) {
    const bool current = place.Path() == plugin.messenger.LanguageFile();
    list.push_back({{"name", place.name}, {"path", place.Path()}, {"own", place.own}, {"current", current}});
    std::string line = (current ? "* " : "  ") + place.name;
    line.resize(std::max<std::size_t>(line.size() + 1, 16), ' ');
    outcome.text += line + place.Path() + "\n";
  }
  outcome.members = {{"languages", std::move(list)}};
  return outcome;
}

Outcome LanguagesCommand::Create(Session& session) {
  const LanguageOutcome created =
      config::CreateLanguage(session.roles().platform, session.plugin().settings.paths, name_);
  Require(session, name_, created);
  Outcome outcome;
  outcome.output = created.path;
  outcome.text = created.path + ": made; texts to be translated: " + std::to_string(created.added) + "\n";
  outcome.members = {{"language", name_}, {"added", created.added}};
  return outcome;
}

Outcome LanguagesCommand::Update(Session& session) {
  const LanguageOutcome updated =
      config::UpdateLanguage(session.roles().platform, session.plugin().settings.paths, name_);
  Require(session, name_, updated);
  Outcome outcome;
  if (updated.added + updated.revived == 0) {
    outcome.text = updated.path + ": nothing is missing\n";
  } else {
    outcome.output = updated.path;
    outcome.text = updated.path + ": texts added, to be translated: " + std::to_string(updated.added) +
                   "; translations taken up again: " + std::to_string(updated.revived) + "\n";
  }
  outcome.members = {{"language", name_}, {"added", updated.added}, {"revived", updated.revived}};
  return outcome;
}

Outcome LanguagesCommand::Check(Session& session) {
  host::Platform& platform = session.roles().platform;
  const config::SettingsPaths& paths = session.plugin().settings.paths;
  std::vector<std::string> names{name_};
  if (name_.empty()) {
    names.clear();
    for (const LanguagePlace& place : config::InstalledLanguages(platform, paths)) {
      if (place.name != config::kEnglish || place.own) names.push_back(place.name);
    }
  }
  Outcome outcome;
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const std::string& name : names) {
    std::vector<LanguageFinding> findings;
    const LanguageOutcome checked = config::CheckLanguage(platform, paths, name, &findings);
    Require(session, name, checked);
    nlohmann::ordered_json found = nlohmann::ordered_json::array();
    for (const LanguageFinding& finding : findings) {
      nlohmann::ordered_json object{{"fault", FaultName(finding.fault)},
                                    {"section", finding.section},
                                    {"id", finding.id},
                                    {"line", nullptr}};
      std::string place = checked.path;
      if (finding.line != 0) {
        object["line"] = finding.line;
        place += ":" + std::to_string(finding.line);
      }
      found.push_back(std::move(object));
      outcome.text += place + ": " + finding.section + ": \"" + finding.id + "\" ";
      outcome.text.append(messages::FaultText(finding.fault)).append("\n");
    }
    if (!findings.empty()) outcome.status = ExitStatus::kFound;
    if (findings.empty()) outcome.text += checked.path + ": complete\n";
    list.push_back({{"name", name}, {"path", checked.path}, {"findings", std::move(found)}});
  }
  outcome.members = {{"languages", std::move(list)}};
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeLanguagesCommand() { return std::make_unique<LanguagesCommand>(); }

}  // namespace qelm::cli
