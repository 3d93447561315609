#include "cli/xpath_prompt.h"

#include <algorithm>
#include <ostream>
#include <set>

#include "cli/did_you_mean.h"
#include "cli/exit_status.h"
#include "cli/line_reader.h"
#include "common/paths.h"
#include "xpath/components.h"

namespace qelm::cli {
namespace {

struct PromptCommand {
  std::string_view name;
  std::string_view help;
};
constexpr PromptCommand kCommands[] = {
    {":help", "what can be typed here"},
    {":names", "the elements and attributes of the document"},
    {":explain", "EXPRESSION: what each of its steps does"},
    {":quit", "ends, as the end of the input does"},
};

constexpr std::string_view kFunctions[] = {"position()",      "last()",       "not(",
                                           "contains(",       "contains-ci(", "starts-with(",
                                           "starts-with-ci(", "node()",       "text()"};

// The names of the document's elements and of the attributes that they have or may have.
Completions NamesOf(host::Host& host, host::Id document) {
  std::set<std::string> elements;
  std::set<std::string> attributes;
  for (host::Id id = host.definitions.FirstDefinition(document); id != host::kNone;
       id = host.definitions.NextDefinition(document, id)) {
    elements.emplace(host.definitions.DefinitionName(document, id));
    for (const host::AttributeDefinition& attribute : host.definitions.AttributeDefinitions(document, id)) {
      attributes.emplace(attribute.name);
    }
  }
  host::AttributeBuffer buffer;
  const host::Id limit = host.elements.IdLimit(document);
  for (host::Id id = 1; id < limit; ++id) {
    host.definitions.ReadAttributes(document, id, &buffer);
    for (const host::AttributeView& attribute : buffer.attributes) {
      if (!attributes.contains(std::string(attribute.name))) attributes.emplace(attribute.name);
    }
  }
  Completions completions;
  completions.names.assign(elements.begin(), elements.end());
  completions.attributes.assign(attributes.begin(), attributes.end());
  return completions;
}

void AddDialect(Completions* completions) {
  for (const xpath::AxisEntry& axis : xpath::kAxes) {
    if (!axis.written.empty()) completions->names.emplace_back(axis.written);
  }
  completions->names.insert(completions->names.end(), std::begin(kFunctions), std::end(kFunctions));
  completions->names.insert(completions->names.end(), xpath::kFmProperties.begin(),
                            xpath::kFmProperties.end());
  for (const PromptCommand& command : kCommands) completions->names.emplace_back(command.name);
}

std::string HistoryFile(host::Platform& platform) {
  std::string folder = platform.Environment("XDG_STATE_HOME");
  const std::string home = platform.Environment("HOME");
  if (folder.empty() && home.empty()) return {};
  if (folder.empty()) folder = common::JoinPath(home, ".local/state");
  return common::JoinPath(folder, "qelm/xpath_history");
}

class Prompt {
 public:
  Prompt(Session& session, host::Id document, const PromptActions& actions)
      : session_(session), document_(document), actions_(actions), out_(session.environment().out) {}

  bool Run();

 private:
  // False for ":quit".
  bool Command(const std::string& line);
  void PrintNames();
  void Explain(const std::string& expression);
  void Expression(const std::string& line, bool interactive);
  // Does something with an expression that may be refused, and tells if it was.
  void Try(const std::function<void()>& action);

  Session& session_;
  host::Id document_;
  const PromptActions& actions_;
  std::ostream& out_;
  bool all_accepted_ = true;
};

void Prompt::PrintNames() {
  const Completions names = NamesOf(session_.roles(), document_);
  out_ << "elements:";
  for (const std::string& name : names.names) out_ << ' ' << name;
  out_ << "\nattributes:";
  for (const std::string& name : names.attributes) out_ << " @" << name;
  out_ << '\n';
}

bool Prompt::Command(const std::string& line) {
  const std::string name = line.substr(0, line.find(' '));
  if (name == ":quit") return false;
  if (name == ":help") {
    out_ << "An expression is answered with a line for each match: its path and its value.\n";
    for (const PromptCommand& command : kCommands)
      out_ << "  " << command.name << "  " << command.help << '\n';
  } else if (name == ":names") {
    PrintNames();
  } else if (name == ":explain") {
    Explain(line.substr(std::min(line.find_first_not_of(" \t", name.size()), line.size())));
  } else {
    std::vector<std::string_view> known;
    for (const PromptCommand& command : kCommands) known.push_back(command.name);
    session_.environment().err << "there is no command " << name
                               << DidYouMean(name, std::span<const std::string_view>(known)) << '\n';
  }
  return true;
}

void Prompt::Explain(const std::string& expression) {
  if (expression.empty()) {
    session_.environment().err << ":explain needs an expression behind it\n";
    return;
  }
  Try([&] { actions_.explain(expression); });
}

void Prompt::Expression(const std::string& line, bool interactive) {
  Try([&] {
    const std::size_t count = actions_.evaluate(line);
    if (interactive) out_ << count << (count == 1 ? " match\n" : " matches\n");
  });
}

void Prompt::Try(const std::function<void()>& action) {
  try {
    action();
  } catch (const Failure& failure) {
    session_.environment().err << failure.what() << '\n';
    all_accepted_ = false;
  }
  out_.flush();
}

bool Prompt::Run() {
  Completions completions;
  if (session_.environment().interactive) completions = NamesOf(session_.roles(), document_);
  AddDialect(&completions);
  const auto reader = MakeLineReader(session_.environment(), "xpath> ",
                                     HistoryFile(session_.roles().platform), std::move(completions));
  for (std::string line; reader->Read(&line);) {
    const std::size_t begin = line.find_first_not_of(" \t");
    if (begin == std::string::npos) continue;
    if (line[begin] != ':') {
      Expression(line, reader->Interactive());
    } else if (!Command(line.substr(begin))) {
      break;
    }
  }
  if (reader->Interactive()) out_ << '\n';
  return all_accepted_ || reader->Interactive();
}

}  // namespace

bool RunPrompt(Session& session, host::Id document, const PromptActions& actions) {
  return Prompt(session, document, actions).Run();
}

}  // namespace qelm::cli
