// qelm xpath: evaluates expressions over a document and prints what they select.
#include <CLI/CLI.hpp>
#include <charconv>
#include <chrono>
#include <fstream>
#include <istream>
#include <sstream>

#include "cli/command.h"
#include "cli/expression_error.h"
#include "cli/json_text.h"
#include "cli/session.h"
#include "cli/xpath_prompt.h"
#include "common/utf8.h"
#include "messages/element_places.h"
#include "xpath/engine.h"
#include "xpath/explain.h"

namespace qelm::cli {
namespace {

constexpr std::size_t kFlushAt = 65536;

// The whole text as a number, or nothing.
std::optional<std::uint32_t> ReadNumber(std::string_view text) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return number;
}

// What one expression came to.
struct Evaluation {
  xpath::MatchList matches;
  bool complete = true;
  double elapsed_ms = 0;
};

// Prints matches as JSON or as lines.
class MatchWriter {
 public:
  MatchWriter(Session& session, host::Id document)
      : session_(session), document_(document), places_(session.roles(), document) {}

  void WriteJson(const xpath::MatchList& matches, std::ostream& out);
  void WriteLines(const xpath::MatchList& matches, bool values_only, std::ostream& out);
  messages::ElementPlaces& places() { return places_; }

 private:
  std::string_view Tag(host::Id element);
  void AppendMatch(const xpath::Match& match, std::string* json);

  Session& session_;
  host::Id document_;
  messages::ElementPlaces places_;
};

std::string_view MatchWriter::Tag(host::Id element) {
  host::Host& host = session_.roles();
  const host::Id definition = host.elements.Definition(document_, element);
  return definition == host::kNone ? std::string_view()
                                   : host.definitions.DefinitionName(document_, definition);
}

void MatchWriter::AppendMatch(const xpath::Match& match, std::string* json) {
  *json += "{\"element\":" + std::to_string(places_.Number(match.element)) + ",\"tag\":";
  const std::string_view tag = Tag(match.element);
  if (tag.empty()) {
    *json += "null";
  } else {
    AppendJson(tag, json);
  }
  std::string path;
  places_.AppendPath(match.element, &path);
  const std::string attribute = xpath::AttributeNameOfMatch(session_.plugin().engine, match);
  if (!attribute.empty()) path += "/@" + attribute;
  *json += ",\"path\":";
  AppendJson(path, json);
  *json += ",\"attribute\":";
  if (attribute.empty()) {
    *json += "null";
  } else {
    AppendJson(attribute, json);
  }
  *json += ",\"value\":";
  AppendJson(xpath::ValueOfMatch(session_.plugin().engine, match), json);
  *json += '}';
}

void MatchWriter::WriteJson(const xpath::MatchList& matches, std::ostream& out) {
  std::string json = "[";
  std::string_view separator;
  for (const xpath::Match& match : matches) {
    json += separator;
    separator = ",";
    AppendMatch(match, &json);
    if (json.size() > kFlushAt) {
      out << json;
      json.clear();
    }
  }
  out << json << ']';
}

void MatchWriter::WriteLines(const xpath::MatchList& matches, bool values_only, std::ostream& out) {
  for (const xpath::Match& match : matches) {
    std::string line;
    if (!values_only) {
      places_.AppendPath(match.element, &line);
      const std::string attribute = xpath::AttributeNameOfMatch(session_.plugin().engine, match);
      if (!attribute.empty()) line += "/@" + attribute;
      line += '\t';
    }
    for (const char character : xpath::ValueOfMatch(session_.plugin().engine, match)) {
      line += character == '\n' || character == '\r' || character == '\t' ? ' ' : character;
    }
    out << line << '\n';
  }
}

class XPathCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;
  // Who types, or sends, one expression after the other may take all day.
  bool IsShort() const override {
    return !expression_.empty() || (!expressions_.empty() && expressions_ != "-");
  }

 private:
  void CheckArguments(bool json) const;
  host::Id Context(Session& session, MatchWriter* writer, const std::string& text) const;
  Evaluation Evaluate(Session& session, const std::string& expression, host::Id context) const;
  std::string Dump(Session& session) const;
  Outcome RunMode(Session& session);
  Outcome RunOne(Session& session);
  Outcome RunLines(Session& session);
  void SaveReport(Session& session);
  xpath::Explanation Explain(Session& session, const std::string& expression, host::Id context,
                             bool* complete) const;
  Outcome RunExplain(Session& session);
  Outcome RunAll(Session& session);
  void RunLine(Session& session, std::string line, host::Id context, MatchWriter* writer, Outcome* outcome);

  std::string target_;
  std::string expression_;
  std::string expressions_;
  std::string context_;
  std::string report_;
  std::int32_t maximum_ = 0;
  bool first_ = false;
  bool values_ = false;
  bool dump_ = false;
  bool explain_ = false;
  host::Id document_ = host::kNone;
};

CLI::App* XPathCommand::Define(CLI::App& program) {
  CLI::App* command =
      AddCommand(program, {"xpath", "Print what an expression selects in a document",
                           "A line for each match: its path and its value.",
                           "qelm xpath operation.mif \"//Section[@Audience='expert']\" --values"});
  command
      ->add_option("TARGET", target_, "The document (MIF or XML), or a book, whose own elements are searched")
      ->required();
  command->add_option("EXPRESSION", expression_,
                      "The expression; without one expressions are read from the terminal or standard input");
  command
      ->add_option(
          "--expressions", expressions_,
          "Evaluate the lines of a file in turn and print one JSON object a line (-: standard input). A line "
          "may begin with the number of its context element and a tab")
      ->type_name("FILE");
  command
      ->add_option(
          "--context", context_,
          "Where the expression starts: an element's number, or an expression whose first match it is")
      ->type_name("XPATH|N");
  command->add_flag("--first", first_, "Only the first match");
  command->add_option("--max", maximum_, "At most so many matches")
      ->type_name("N")
      ->check(NumberBetween(1, 2147483647));
  command->add_flag("--values", values_, "Print the values only");
  command
      ->add_option("--report", report_,
                   "Write refused expressions, with the place and the reason, into a document (MIF or XML)")
      ->type_name("FILE");
  command->add_flag("--dump", dump_, "Print the components that the expression was parsed into");
  command->add_flag("--explain", explain_,
                    "Print, in place of the matches, how many nodes each step kept and how long it took");
  return command;
}

void XPathCommand::CheckArguments(bool json) const {
  if (!expression_.empty() && !expressions_.empty()) {
    throw Failure(ExitStatus::kUsage,
                  "EXPRESSION and --expressions FILE cannot be used together; see qelm xpath --help");
  }
  if (expression_.empty() && expressions_.empty() && (json || dump_)) {
    throw Failure(ExitStatus::kUsage, "--json and --dump need an EXPRESSION; see qelm xpath --help");
  }
  if (explain_ && (first_ || maximum_ > 0 || expression_.empty())) {
    throw Failure(
        ExitStatus::kUsage,
        "--explain evaluates the whole of one EXPRESSION; leave out --first, --max and --expressions");
  }
}

// The element at which an expression starts; 0, the default, for an empty text.
host::Id XPathCommand::Context(Session& session, MatchWriter* writer, const std::string& text) const {
  if (text.empty()) return host::kNone;
  host::Id context = host::kNone;
  if (const std::optional<std::uint32_t> number = ReadNumber(text)) {
    context = writer->places().ByNumber(*number);
  } else {
    ParseOrFail(session, text, "--context");
    context = xpath::FindFirst(session.plugin().engine, document_, host::kNone, text).element;
  }
  if (context == host::kNone) {
    throw Failure(ExitStatus::kUsage, target_ + ": there is no context element " + text);
  }
  return context;
}

Evaluation XPathCommand::Evaluate(Session& session, const std::string& expression, host::Id context) const {
  Evaluation evaluation;
  const auto start = std::chrono::steady_clock::now();
  const std::int32_t sequence = ParseOrFail(session, expression, "", !report_.empty());
  evaluation.complete = xpath::xpath_MatchAll(session.plugin().engine, document_, context, sequence,
                                              first_ ? 1 : maximum_, &evaluation.matches);
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
  evaluation.elapsed_ms = elapsed.count();
  return evaluation;
}

std::string XPathCommand::Dump(Session& session) const {
  std::ostringstream text;
  session.user().SetConsole(&text);
  xpath::bw_DumpParsedXPath(session.plugin().engine, ParseOrFail(session, expression_, ""));
  session.user().SetConsole(nullptr);
  return text.str();
}

Outcome XPathCommand::Run(Session& session) {
  CheckArguments(session.options().json);
  document_ = session.Open(target_);
  if (report_.empty()) return RunMode(session);
  session.RefuseFileOf(document_, report_, "--report");
  if (!expressions_.empty() && Session::SameFile(report_, expressions_)) {
    throw Failure(ExitStatus::kUsage, report_ + ": --report names the file of --expressions");
  }
  try {
    Outcome outcome = RunMode(session);
    SaveReport(session);
    return outcome;
  } catch (const Failure& failure) {
    if (failure.Status() != ExitStatus::kRefused) throw;
    try {
      SaveReport(session);
    } catch (const Failure& of_report) {
      // Whoever asked for the report still learns why the expression was refused.
      throw Failure(failure.Status(), std::string(failure.what()) + "\n" + of_report.what(),
                    failure.Fields());
    }
    throw;
  }
}

Outcome XPathCommand::RunMode(Session& session) {
  if (explain_) return RunExplain(session);
  if (!expressions_.empty()) return RunAll(session);
  return expression_.empty() ? RunLines(session) : RunOne(session);
}

// Where nothing was refused there is nothing to report.
void XPathCommand::SaveReport(Session& session) {
  const host::Id report = xpath::ErrorReportDocument(session.plugin().engine);
  if (report != host::kNone) session.Save(report, report_);
}

Outcome XPathCommand::RunLines(Session& session) {
  MatchWriter writer(session, document_);
  const host::Id context = Context(session, &writer, context_);
  Outcome outcome;
  outcome.printed = true;
  const PromptActions actions = {
      .evaluate =
          [&](const std::string& line) {
            const Evaluation found = Evaluate(session, line, context);
            writer.WriteLines(found.matches, values_, session.environment().out);
            return found.matches.size();
          },
      .explain =
          [&](const std::string& line) {
            bool complete = false;
            session.environment().out << xpath::ExplanationText(Explain(session, line, context, &complete));
          },
  };
  const bool accepted = RunPrompt(session, document_, actions);
  if (!accepted) outcome.status = ExitStatus::kRefused;
  return outcome;
}

Outcome XPathCommand::RunOne(Session& session) {
  auto writer = std::make_shared<MatchWriter>(session, document_);
  const host::Id context = Context(session, writer.get(), context_);
  Outcome outcome;
  outcome.members["expression"] = expression_;
  std::string dump;
  if (dump_) outcome.members["dump"] = dump = Dump(session);
  auto found = std::make_shared<const Evaluation>(Evaluate(session, expression_, context));
  outcome.elapsed_ms = found->elapsed_ms;
  outcome.members["count"] = found->matches.size();
  outcome.members["complete"] = found->complete;
  outcome.write_members = [writer, found](std::ostream& out) {
    out << ",\"matches\":";
    writer->WriteJson(found->matches, out);
  };
  outcome.write_text = [writer, found, dump, values = values_](std::ostream& out) {
    out << dump;
    writer->WriteLines(found->matches, values, out);
  };
  return outcome;
}

nlohmann::ordered_json ExplanationJson(const xpath::Explanation& explanation) {
  nlohmann::ordered_json steps = nlohmann::ordered_json::array();
  for (const xpath::ExplainedStep& step : explanation.steps) {
    nlohmann::ordered_json predicates = nlohmann::ordered_json::array();
    for (const xpath::ExplainedPredicate& predicate : step.predicates) {
      predicates.push_back({{"predicate", predicate.text},
                            {"asked", predicate.asked},
                            {"kept", predicate.kept},
                            {"elapsed_ms", predicate.elapsed_ms}});
    }
    steps.push_back({{"step", step.text},
                     {"kept", step.kept},
                     {"elapsed_ms", step.elapsed_ms},
                     {"predicates", std::move(predicates)}});
  }
  return {{"index_ms", explanation.index_ms}, {"steps", std::move(steps)}};
}

xpath::Explanation XPathCommand::Explain(Session& session, const std::string& expression, host::Id context,
                                         bool* complete) const {
  const std::int32_t sequence = ParseOrFail(session, expression, "", !report_.empty());
  xpath::Explanation explanation;
  *complete = xpath::Explain(session.plugin().engine, document_, context, sequence, &explanation);
  return explanation;
}

Outcome XPathCommand::RunExplain(Session& session) {
  MatchWriter writer(session, document_);
  const host::Id context = Context(session, &writer, context_);
  const auto start = std::chrono::steady_clock::now();
  bool complete = false;
  const xpath::Explanation explanation = Explain(session, expression_, context, &complete);
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
  Outcome outcome;
  outcome.elapsed_ms = elapsed.count();
  outcome.members["expression"] = expression_;
  if (dump_) outcome.text = Dump(session);
  if (dump_) outcome.members["dump"] = outcome.text;
  outcome.members["count"] = explanation.matches.size();
  outcome.members["complete"] = complete;
  outcome.members["explain"] = ExplanationJson(explanation);
  outcome.text += xpath::ExplanationText(explanation);
  return outcome;
}

Outcome XPathCommand::RunAll(Session& session) {
  std::ifstream file;
  if (expressions_ != "-") {
    file.open(expressions_, std::ios::binary);
    if (!file) throw Failure(ExitStatus::kFile, expressions_ + ": the file cannot be read");
  }
  std::istream& lines = expressions_ == "-" ? session.environment().in : file;
  MatchWriter writer(session, document_);
  const host::Id context = Context(session, &writer, context_);
  Outcome outcome;
  outcome.printed = true;
  bool first = true;
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (first && line.starts_with(common::kByteOrderMark)) line.erase(0, common::kByteOrderMark.size());
    first = false;
    RunLine(session, std::move(line), context, &writer, &outcome);
  }
  return outcome;
}

// One line of an expressions file gives one line of output, also when it is refused.
void XPathCommand::RunLine(Session& session, std::string line, host::Id context, MatchWriter* writer,
                           Outcome* outcome) {
  std::ostream& out = session.environment().out;
  nlohmann::ordered_json object;
  try {
    const std::size_t tab = line.find('\t');
    if (tab != std::string::npos && ReadNumber(std::string_view(line).substr(0, tab))) {
      context = Context(session, writer, line.substr(0, tab));
      line.erase(0, tab + 1);
    }
    const Evaluation found = Evaluate(session, line, context);
    object = {{"expression", line},
              {"result", 1},
              {"elapsed_ms", found.elapsed_ms},
              {"count", found.matches.size()},
              {"complete", found.complete}};
    std::string text = object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    text.back() = ',';
    out << text << "\"matches\":";
    writer->WriteJson(found.matches, out);
    out << "}\n";
  } catch (const Failure& failure) {
    object = {{"expression", line}, {"result", 0}, {"error", {{"message", failure.what()}}}};
    object.update(failure.Fields());
    out << object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
    outcome->status = ExitStatus::kRefused;
  }
}

}  // namespace

std::unique_ptr<Command> MakeXPathCommand() { return std::make_unique<XPathCommand>(); }

}  // namespace qelm::cli
