// qelm color and qelm uncolor: mark by a coloring scheme what its rules select, and take the marks away.
#include <CLI/CLI.hpp>
#include <array>

#include "cli/command.h"
#include "cli/expression_error.h"
#include "cli/file_names.h"
#include "cli/scheme_choice.h"
#include "cli/selection.h"
#include "cli/session.h"
#include "coloring/coloring.h"
#include "common/result_codes.h"
#include "schemes/styles.h"

namespace qelm::cli {
namespace {

using coloring::Ending;

// What a run that was not completed came to.
struct EndingText {
  Ending ending;
  ExitStatus status;
  const char* text;
};
constexpr std::array<EndingText, 10> kEndings = {{
    {Ending::kByUser, ExitStatus::kCancelled, "cancelled"},
    {Ending::kColorsMissing, ExitStatus::kOperation,
     "the scheme names colors that the document does not define, and the answer was no"},
    {Ending::kBookDeclined, ExitStatus::kOperation,
     "not all files of the book can be opened, and the answer was no"},
    {Ending::kMissingDocument, ExitStatus::kOperation, "there is no document"},
    {Ending::kMissingElement, ExitStatus::kOperation, "no element is selected"},
    {Ending::kMissingScheme, ExitStatus::kOperation, "there is no coloring scheme; name one by --scheme"},
    {Ending::kMissingFlow, ExitStatus::kOperation,
     "the main flow has no structure, and the scheme does not process all flows"},
    {Ending::kSchemeRefused, ExitStatus::kRefused, "the scheme was refused"},
    {Ending::kNoBlack, ExitStatus::kOperation,
     "text cannot be set to black, as the document has no color \"Black\""},
    {Ending::kNotUncolored, ExitStatus::kOperation, "the document could not be uncolored"},
}};

const EndingText* TextFor(Ending ending) {
  for (const EndingText& known : kEndings) {
    if (known.ending == ending) return &known;
  }
  return nullptr;
}

// What became of a component, for the line that names it.
std::string FateOf(const coloring::ColoredComponent& component, bool changed) {
  if (component.document == host::kNone) return "cannot be opened, passed over";
  if (component.result == common::kDone) return changed ? "written" : "as it was";
  const EndingText* known = TextFor(component.ending);
  return (known != nullptr ? known->text : "failed with result " + std::to_string(component.result)) +
         std::string("; not written");
}

// What both commands share: the target, running, saving and telling what was saved.
class ColoringCommand : public Command {
 protected:
  void DefineTarget(CLI::App* command);
  // Opens the target and makes it active; tells whether it is a book.
  bool OpenTarget(Session& session);
  std::int32_t RunOn(Session& session, coloring::Command command);
  void CheckEnding(const coloring::ColoringRun& run, std::int32_t result) const;
  void Save(Session& session, Outcome* outcome);

  std::string target_;
  std::string output_;
  host::Id id_ = host::kNone;
  bool is_book_ = false;

 private:
  void SaveComponents(Session& session, Outcome* outcome);
};

void ColoringCommand::DefineTarget(CLI::App* command) {
  command->add_option("TARGET", target_, "The document (MIF or XML) or the book (MIF)")->required();
  command
      ->add_option(
          "-o,--output", output_,
          "Where the result goes; for documents only. Default: the file itself is replaced, and of a "
          "book the files that have changed")
      ->type_name("FILE");
}

bool ColoringCommand::OpenTarget(Session& session) {
  id_ = session.Open(target_);
  is_book_ = session.roles().books.IsBook(id_);
  if (is_book_ && !output_.empty()) {
    throw Failure(ExitStatus::kUsage, target_ +
                                          ": this is a book, and -o is for one document only; the book's "
                                          "files are replaced where they are, so copy the book first");
  }
  session.roles().documents.Activate(id_);
  return is_book_;
}

std::int32_t ColoringCommand::RunOn(Session& session, coloring::Command command) {
  Plugin& plugin = session.plugin();
  coloring::ColoringContext context{plugin.host, plugin.messenger, plugin.engine, plugin.schemes.coloring,
                                    plugin.coloring_run};
  const std::int32_t result = coloring::RunColoring(context, command, /*report=*/true);
  CheckEnding(plugin.coloring_run, result);
  return result;
}

void ColoringCommand::CheckEnding(const coloring::ColoringRun& run, std::int32_t result) const {
  const nlohmann::ordered_json fields = {{"result", result}};
  if (run.node_set_cut) {
    throw Failure(
        ExitStatus::kRefused,
        target_ + ": the scheme selects more nodes than XPATH_MAX_MATCHES allows; nothing was written",
        fields);
  }
  // The components of a book that failed are told with the others.
  if (result == common::kDone || (is_book_ && run.ending == Ending::kCompleted)) return;
  if (const EndingText* known = TextFor(run.ending)) {
    throw Failure(known->status, target_ + ": " + known->text + "; nothing was written", fields);
  }
  throw Failure(ExitStatus::kOperation,
                target_ + ": the run ended with result " + std::to_string(result) + "; nothing was written",
                fields);
}

void ColoringCommand::Save(Session& session, Outcome* outcome) {
  if (is_book_) return SaveComponents(session, outcome);
  const bool changed = session.roles().documents.Switch(id_, host::DocumentSwitch::kModified);
  outcome->members["changed"] = changed;
  if (changed || !output_.empty()) outcome->output = session.Save(id_, output_);
}

// Saving begins when all components are done, so that a run that is given up leaves all files as they are. A
// component that failed is left as it is; the others do not suffer from it.
void ColoringCommand::SaveComponents(Session& session, Outcome* outcome) {
  nlohmann::ordered_json components = nlohmann::ordered_json::array();
  outcome->result = common::kDone;
  for (const coloring::ColoredComponent& component : session.plugin().coloring_run.components) {
    const bool opened = component.document != host::kNone;
    const bool done = opened && component.result == common::kDone;
    const bool changed =
        done && session.roles().documents.Switch(component.document, host::DocumentSwitch::kModified);
    if (changed) session.Save(component.document, "");
    if (!opened && outcome->status == ExitStatus::kDone) outcome->status = ExitStatus::kFound;
    if (opened && !done) {
      if (outcome->status != ExitStatus::kOperation) outcome->result = component.result;
      outcome->status = ExitStatus::kOperation;
    }
    const std::string path = ShownPath(component.path);
    components.push_back(
        {{"path", path}, {"opened", opened}, {"result", component.result}, {"changed", changed}});
    if (!opened) components.back()["error"] = component.why;
    outcome->text += "  " + path + ": " + FateOf(component, changed) + "\n";
    if (!opened) outcome->text += "    " + component.why + "\n";
  }
  outcome->members["components"] = std::move(components);
}

class ColorCommand : public ColoringCommand {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  void ChooseScheme(Session& session);
  void Report(const Plugin& plugin, Outcome* outcome) const;

  std::string scheme_;
  std::string selection_;
};

CLI::App* ColorCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program,
      {"color", "Color what the rules of a coloring scheme select",
       "Each element gets the color, style and background of the rule that it matches; marks of an earlier\n"
       "run go first. Generated files of a book are left out.",
       "qelm color operation.mif --scheme \"Review/By audience\" -o colored.mif"});
  DefineTarget(command);
  command
      ->add_option("--scheme", scheme_, "The coloring scheme. Default: as COLOR_DEFAULT_COLORING_SCHEME says")
      ->type_name("CATEGORY/NAME");
  command
      ->add_option("--selection", selection_,
                   "Color only the first element that the expression selects, and what is in it; nothing is "
                   "uncolored first")
      ->type_name("XPATH");
  return command;
}

void ColorCommand::ChooseScheme(Session& session) {
  if (scheme_.empty() && session.plugin().settings.color_default_coloring_scheme != schemes::kNoName) {
    const config::LocalSettings& settings = session.plugin().settings;
    scheme_ = FullName(settings.default_scheme_category, settings.color_default_coloring_scheme);
  }
  if (scheme_.empty()) return;
  const schemes::Scheme& scheme = ActivateScheme(session, scheme_, schemes::SchemeKind::kColoring);
  if (!scheme.is_xpath) return;
  for (const schemes::Rule& rule : scheme.rules) {
    for (const schemes::Condition& condition : rule.conditions) {
      for (const std::string& expression : condition.values) {
        ParseOrFail(session, expression, "the coloring scheme " + scheme_);
      }
    }
  }
}

Outcome ColorCommand::Run(Session& session) {
  coloring::PrepareRun(session.plugin().settings, &session.plugin().coloring_run);
  OpenTarget(session);
  if (is_book_ && !selection_.empty()) {
    throw Failure(ExitStatus::kUsage, target_ + ": this is a book, and --selection is for documents only");
  }
  ChooseScheme(session);
  if (!selection_.empty()) SelectOrFail(session, id_, selection_);
  Outcome outcome;
  outcome.result = RunOn(session, is_book_              ? coloring::Command::kColorBook
                                  : !selection_.empty() ? coloring::Command::kColorSelection
                                                        : coloring::Command::kColorDocument);
  Report(session.plugin(), &outcome);
  Save(session, &outcome);
  return outcome;
}

void ColorCommand::Report(const Plugin& plugin, Outcome* outcome) const {
  const coloring::ColoringRun& run = plugin.coloring_run;
  const std::vector<schemes::Rule>& rules = plugin.schemes.coloring.rules;
  nlohmann::ordered_json counts = nlohmann::ordered_json::array();
  outcome->text = target_ + ": " + std::to_string(run.colored) + " elements colored\n";
  for (std::size_t i = 0; i < rules.size(); ++i) {
    const std::uint64_t elements = i < run.rule_elements.size() ? run.rule_elements[i] : 0;
    const std::string style(schemes::StyleName(rules[i].style));
    counts.push_back({{"index", i}, {"color", rules[i].color}, {"style", style}, {"elements", elements}});
    outcome->text += "  rule " + std::to_string(i) + " (" + rules[i].color;
    if (style != "None") outcome->text += ", " + style;
    outcome->text += "): " + std::to_string(elements) + "\n";
  }
  if (run.refused != 0) {
    outcome->text += "  " + std::to_string(run.refused) + " elements could not be changed\n";
    outcome->status = ExitStatus::kFound;
  }
  outcome->members = {{"scheme", scheme_},      {"colored", run.colored},
                      {"rules", counts},        {"visited", run.visited},
                      {"refused", run.refused}, {"missing_colors", run.missing_colors}};
}

class UncolorCommand : public ColoringCommand {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;
};

CLI::App* UncolorCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program,
      {"uncolor", "Take the marks of colorings away",
       "The text gets the formatting again that its formats and element definitions give it, or is set\n"
       "to plain black: as COLOR_IMPORT_ELEM_DEFS_TO_UNCOLOR says.",
       "qelm uncolor colored.mif"});
  DefineTarget(command);
  return command;
}

Outcome UncolorCommand::Run(Session& session) {
  coloring::PrepareRun(session.plugin().settings, &session.plugin().coloring_run);
  OpenTarget(session);
  Outcome outcome;
  // The command is the answer to the question whether to uncolor.
  outcome.result =
      RunOn(session, is_book_ ? coloring::Command::kUncolorBook : coloring::Command::kUncolorDocument);
  outcome.text = target_ + ": uncolored\n";
  Save(session, &outcome);
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeColorCommand() { return std::make_unique<ColorCommand>(); }
std::unique_ptr<Command> MakeUncolorCommand() { return std::make_unique<UncolorCommand>(); }

}  // namespace qelm::cli
