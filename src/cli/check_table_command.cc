// qelm check-table: checks scheme data that a document holds in a table.
#include <CLI/CLI.hpp>

#include "cli/command.h"
#include "cli/file_names.h"
#include "cli/scheme_choice.h"
#include "cli/scheme_json.h"
#include "cli/session.h"
#include "embedded/model/source_lines.h"
#include "schemes/scheme_listing.h"
#include "schemes/tabular_check.h"

namespace qelm::cli {
namespace {

class CheckTableCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  std::string target_;
};

CLI::App* CheckTableCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program, {"check-table", "Check scheme data in a document's table",
                "Reads the table whose title names a kind of scheme, and says what is wrong with it. Exit\n"
                "status 1 when something is.",
                "qelm check-table scheme-tables.mif"});
  command->add_option("TARGET", target_, "The document (MIF or XML)")->required();
  return command;
}

// The line of the row's statement in the file; null where the host has made the row itself.
nlohmann::ordered_json LineOf(embedded::model::SourceLines& lines, const embedded::model::Document& model,
                              host::Id row) {
  if (row == host::kNone || row >= model.parts.size()) return nullptr;
  return lines.LineAt(model.parts[row].span.begin);
}

Outcome CheckTableCommand::Run(Session& session) {
  const host::Id document = session.OpenDocument(target_);
  Plugin& plugin = session.plugin();
  schemes::TabularContext context{plugin.host,
                                  plugin.messenger,
                                  plugin.engine,
                                  plugin.schemes,
                                  plugin.settings.default_scheme_category,
                                  /*report=*/false};
  const schemes::TabularCheck check = schemes::CheckTabularScheme(context, document);
  const embedded::model::Document& model = *session.host().Find(document);
  embedded::model::SourceLines lines(model);
  const std::string file = ShownPath(session.NameOf(document));
  nlohmann::ordered_json problems = nlohmann::ordered_json::array();
  Outcome outcome;
  for (const schemes::TabularProblem& problem : check.problems) {
    const nlohmann::ordered_json line = LineOf(lines, model, problem.row_id);
    outcome.text += file + ":" + (line.is_null() ? "" : line.dump() + ":") + " " + problem.message + "\n";
    problems.push_back(
        {{"id", schemes::MessageOf(problem.fault)},
         {"row", problem.row == 0 ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(problem.row)},
         {"line", line},
         {"message", problem.message}});
  }
  const bool found = check.table != host::kNone;
  if (!check.problems.empty()) outcome.status = ExitStatus::kFound;
  if (found) {
    outcome.text += file + ": " + std::string(KindName(check.scheme.kind)) + " scheme " +
                    FullName(check.scheme.category, check.scheme.name) +
                    (check.problems.empty() ? ": in order\n"
                     : check.active         ? ": can be used, but see above\n"
                                            : ": cannot be used\n");
  }
  outcome.members = {{"title", found ? nlohmann::ordered_json(check.title) : nullptr},
                     {"active", check.active},
                     {"scheme", found ? SchemeJson(check.scheme) : nullptr},
                     {"problems", std::move(problems)}};
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeCheckTableCommand() { return std::make_unique<CheckTableCommand>(); }

}  // namespace qelm::cli
