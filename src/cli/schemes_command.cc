// qelm schemes: lists the schemes of the main settings document, prints one, checks them all, or brings a
// document of an earlier format up to date.
#include <CLI/CLI.hpp>

#include "cli/command.h"
#include "cli/scheme_choice.h"
#include "cli/scheme_findings.h"
#include "cli/scheme_json.h"
#include "cli/session.h"
#include "cli/settings_conversion.h"
#include "common/text.h"
#include "schemes/scheme_listing.h"
#include "schemes/scheme_loading.h"

namespace qelm::cli {
namespace {

using schemes::Scheme;
using schemes::SchemeKind;

constexpr SchemeKind kKinds[] = {SchemeKind::kFilter, SchemeKind::kColoring, SchemeKind::kValidation};

class SchemesCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  std::vector<SchemeKind> Kinds() const;
  Outcome List(Session& session);
  Outcome Show(Session& session);
  Outcome Check(Session& session);

  CLI::App* list_ = nullptr;
  CLI::App* show_ = nullptr;
  CLI::App* check_ = nullptr;
  CLI::App* convert_ = nullptr;
  SettingsConversion conversion_;
  std::string kind_;
  std::string name_;
  std::string document_;
  std::string format_ = "text";
};

CLI::App* SchemesCommand::Define(CLI::App& program) {
  CLI::App* command =
      AddCommand(program, {"schemes", "List, print or check schemes, or convert the document with them", "",
                           "qelm schemes list --main-settings house.xml"});
  command->require_subcommand(1);
  list_ =
      AddCommand(*command, {"list", "List categories and schemes", "", "qelm schemes list --kind filter"});
  show_ = AddCommand(*command, {"show", "Print a scheme with its switches and rules", "",
                                "qelm schemes show \"Audience/Beginner\""});
  for (CLI::App* action : {list_, show_}) {
    action->add_option("--kind", kind_, "Only schemes of this kind: filter, coloring, validation")
        ->type_name("KIND")
        ->check(CLI::IsMember({"filter", "coloring", "validation"}));
  }
  show_->add_option("NAME", name_, "The scheme, as CATEGORY/NAME")->required();
  check_ = AddCommand(*command, {"check", "Check all schemes: names, colors, styles, expressions, values",
                                 "Exit status 1 when something was found.",
                                 "qelm schemes check --main-settings house.xml --document manual.mif"});
  check_->add_option("--document", document_, "Check the colors of rules against those of this document")
      ->type_name("FILE");
  check_->add_option("--format", format_, "How findings are printed: text, sarif")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"text", "sarif"}));
  convert_ = AddCommand(
      *command,
      {"convert", "Bring a main settings document of an earlier format up to date",
       "Converts to format 3.00 and to 3.04, as far as needed, in place. A backup is kept beside the\n"
       "file before each. A document of today's format is left alone.",
       "qelm schemes convert house.fm"});
  convert_->add_option("FILE", conversion_.file, "The main settings document")->required();
  convert_
      ->add_option("-o,--output", conversion_.output, "Write the result to this file; FILE stays as it is")
      ->type_name("FILE");
  convert_->add_flag("--no-backup", conversion_.no_backup, "Keep no backup");
  return command;
}

std::vector<SchemeKind> SchemesCommand::Kinds() const {
  std::vector<SchemeKind> kinds;
  for (const SchemeKind kind : kKinds) {
    if (kind_.empty() || kind_ == KindName(kind)) kinds.push_back(kind);
  }
  return kinds;
}

Outcome SchemesCommand::Run(Session& session) {
  if (check_->parsed()) return Check(session);
  if (convert_->parsed()) return ConvertSettings(session, conversion_);
  return show_->parsed() ? Show(session) : List(session);
}

Outcome SchemesCommand::Check(Session& session) {
  RequireMainSettings(session);
  if (session.options().json && format_ != "text") {
    throw Failure(ExitStatus::kUsage, "--json and --format " + format_ + " exclude each other");
  }
  const host::Id document = document_.empty() ? host::kNone : session.OpenDocument(document_);
  const SchemeReport report = CheckAllSchemes(session, document);
  Outcome outcome;
  if (!report.findings.empty()) outcome.status = ExitStatus::kFound;
  if (format_ == "sarif") {
    WriteSarif(SarifOf(session, report), session.environment().out);
    outcome.printed = true;
    return outcome;
  }
  outcome.text = TextOf(session, report);
  outcome.members = {{"main_settings", session.plugin().settings.paths.main_settings},
                     {"findings", JsonOf(session, report)}};
  return outcome;
}

Outcome SchemesCommand::List(Session& session) {
  Plugin& plugin = session.plugin();
  RequireMainSettings(session);
  Outcome outcome;
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const schemes::SchemeListing& scheme : schemes::ListSchemes(plugin.engine, plugin.main_settings)) {
    const std::string kind(KindName(scheme.kind));
    if (!kind_.empty() && kind_ != kind) continue;
    const std::string family = scheme.is_xpath ? "xpath" : "classic";
    list.push_back(
        {{"category", scheme.category}, {"name", scheme.name}, {"kind", kind}, {"family", family}});
    std::string line = kind;
    line.resize(12, ' ');
    line += family;
    line.resize(21, ' ');
    outcome.text += line + FullName(scheme.category, scheme.name) + "\n";
  }
  outcome.members = {{"main_settings", plugin.settings.paths.main_settings}, {"schemes", std::move(list)}};
  return outcome;
}

Outcome SchemesCommand::Show(Session& session) {
  Outcome outcome;
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const SchemeKind kind : Kinds()) {
    Scheme scheme;
    if (!LoadByName(session, name_, kind, &scheme)) continue;
    list.push_back(SchemeJson(scheme));
    const std::string parameters = schemes::SchemeParameters(scheme);
    outcome.text += std::string(common::Trim(parameters)) + "\n";
  }
  if (list.empty()) throw NoSuchScheme(session, name_, Kinds());
  outcome.members = {{"main_settings", session.plugin().settings.paths.main_settings},
                     {"schemes", std::move(list)}};
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeSchemesCommand() { return std::make_unique<SchemesCommand>(); }

}  // namespace qelm::cli
