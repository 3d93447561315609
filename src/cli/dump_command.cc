// qelm dump: a document's structure and text in a normal form.
#include <CLI/CLI.hpp>
#include <ostream>

#include "cli/command.h"
#include "cli/json_text.h"
#include "cli/session.h"
#include "embedded/model/dump.h"
#include "embedded/model/info.h"

namespace qelm::cli {
namespace {

namespace model = embedded::model;

constexpr std::size_t kFlushAt = 65536;

std::string_view UnderliningName(model::Underlining underlining) {
  switch (underlining) {
    case model::Underlining::kNone:
      return {};
    case model::Underlining::kSingle:
      return "single";
    case model::Underlining::kDouble:
      return "double";
    case model::Underlining::kNumeric:
      return "numeric";
  }
  return {};
}

// The name of a run's color; empty for what plain text has.
std::string_view ColorName(const model::Document& document, model::Id color) {
  if (color == 0) return {};
  const std::string_view name = document.colors[color].name;
  return name == "Black" ? std::string_view() : name;
}

// What both forms have in common: the document, and text that is written as it becomes much.
class Writer : public model::DumpSink {
 public:
  Writer(const model::Document& document, std::ostream& out) : document_(document), out_(out) {}
  ~Writer() override { out_ << text_; }

 protected:
  void FlushSome() {
    if (text_.size() < kFlushAt) return;
    out_ << text_;
    text_.clear();
  }

  // The attributes of an element, each with its values.
  template <typename Function>
  void ForEachAttribute(const model::Element& element, const Function& function) const {
    for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
      const model::Attribute& attribute = document_.attributes[element.first_attribute + i];
      function(document_.names[attribute.name],
               document_.values.Run(attribute.first_value, attribute.value_count));
    }
  }

  const model::Document& document_;
  std::ostream& out_;
  std::string text_;
};

class JsonWriter : public Writer {
 public:
  JsonWriter(Session& session, host::Id id, std::ostream& out)
      : Writer(*session.host().Find(id), out), elements_(session.roles().elements), id_(id) {}

  void Write();
  void BeginElement(model::Id element, std::uint16_t row_conditions) override;
  void EndElement(model::Id) override;
  void Run(const model::DumpRun& run) override;

 private:
  void Separate();
  void Member(std::string_view name, std::string_view value);
  void Conditions(std::uint16_t set);

  host::Elements& elements_;
  host::Id id_;
  bool first_ = true;  // nothing was written yet in the list that is open
};

void JsonWriter::Separate() {
  if (!first_) text_ += ',';
  first_ = false;
}

void JsonWriter::Member(std::string_view name, std::string_view value) {
  if (value.empty()) return;
  text_ += ',';
  AppendJson(name, &text_);
  text_ += ':';
  AppendJson(value, &text_);
}

void JsonWriter::Conditions(std::uint16_t set) {
  if (set == 0) return;
  text_ += ",\"conditions\":[";
  std::string_view separator;
  for (const model::Id condition : document_.condition_sets[set]) {
    text_ += separator;
    AppendJson(document_.conditions[condition].name, &text_);
    separator = ",";
  }
  text_ += ']';
}

void JsonWriter::BeginElement(model::Id id, std::uint16_t row_conditions) {
  FlushSome();
  Separate();
  const model::Element& element = document_.elements[id];
  text_ += "{\"tag\":";
  AppendJson(document_.definitions[element.definition].name, &text_);
  const std::int64_t unique_id = elements_.UniqueId(id_, id);
  text_ +=
      ",\"id\":" + (unique_id == 0 ? std::string("null") : std::to_string(unique_id)) + ",\"attributes\":[";
  std::string_view separator;
  ForEachAttribute(element, [&](std::string_view name, std::span<const std::string_view> values) {
    text_ += separator;
    text_ += '[';
    AppendJson(name, &text_);
    text_ += ",[";
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (i != 0) text_ += ',';
      AppendJson(values[i], &text_);
    }
    text_ += "]]";
    separator = ",";
  });
  text_ += ']';
  Conditions(row_conditions);
  text_ += ",\"children\":[";
  first_ = true;
}

void JsonWriter::EndElement(model::Id) {
  text_ += "]}";
  first_ = false;
}

void JsonWriter::Run(const model::DumpRun& run) {
  FlushSome();
  Separate();
  text_ += "{\"text\":";
  AppendJson(run.text, &text_);
  Member("object", run.object);
  const model::CharacterProperties& properties = run.properties;
  Member("color", ColorName(document_, properties.color));
  Member("underline", UnderliningName(properties.underlining));
  if (properties.overline) text_ += ",\"overline\":true";
  if (properties.strikethrough) text_ += ",\"strikethrough\":true";
  if (properties.change_bar) text_ += ",\"change_bar\":true";
  Member("background", ColorName(document_, properties.background));
  Conditions(run.conditions);
  text_ += '}';
}

void JsonWriter::Write() {
  text_ += ",\"flows\":[";
  for (model::Id flow = 1; flow < document_.flows.size(); ++flow) {
    const model::Flow& entry = document_.flows[flow];
    text_ += flow == 1 ? "{\"name\":" : ",{\"name\":";
    AppendJson(entry.name, &text_);
    text_ += ",\"kind\":";
    AppendJson(model::FlowKindName(entry.kind), &text_);
    // A flow without elements has its text in a list of its own.
    text_ += entry.root != 0 ? ",\"root\":" : ",\"root\":null,\"text\":[";
    first_ = true;
    model::DumpFlow(document_, flow, this);
    text_ += entry.root != 0 ? "}" : "]}";
  }
  text_ += ']';
}

// Lines for people and for diffs: an element a line, set in by its depth, with its text below it. Text whose
// properties are not plain is written {Red,Underline}text{}.
class LineWriter : public Writer {
 public:
  using Writer::Writer;

  void Write();
  void BeginElement(model::Id element, std::uint16_t row_conditions) override;
  void EndElement(model::Id) override;
  void Run(const model::DumpRun& run) override;

 private:
  void Indent();
  void EndTextLine();
  void AppendEscaped(std::string_view text, char mark);
  std::string PropertyText(const model::DumpRun& run) const;
  std::string ConditionText(std::uint16_t set) const;

  std::size_t depth_ = 0;
  bool in_text_ = false;    // a line of text is open
  std::string properties_;  // in force in that line
};

void LineWriter::Indent() {
  // Deeper than this nobody reads the indentation, and it would be most of the output.
  constexpr std::size_t kDeepest = 50;
  text_.append(std::min(depth_, kDeepest) * 2, ' ');
  if (depth_ > kDeepest) text_ += "(" + std::to_string(depth_) + ") ";
}

void LineWriter::EndTextLine() {
  if (!in_text_) return;
  if (!properties_.empty()) text_ += "{}";
  text_ += '\n';
  in_text_ = false;
  properties_.clear();
}

// Escapes what would be taken for the end of the text, for a property or for a line end.
void LineWriter::AppendEscaped(std::string_view text, char mark) {
  for (const char character : text) {
    switch (character) {
      case '\n':
        text_ += "\\n";
        break;
      case '\r':
        text_ += "\\r";
        break;
      case '\t':
        text_ += "\\t";
        break;
      case '{':
      case '}':
      case '\\':
      case '"':
        if (character != '"' || mark == '"') text_ += '\\';
        text_ += character;
        break;
      default:
        text_ += character;
    }
  }
}

std::string LineWriter::ConditionText(std::uint16_t set) const {
  std::string text;
  for (const model::Id condition : document_.condition_sets[set]) {
    text += (text.empty() ? "" : ",") + std::string(document_.conditions[condition].name);
  }
  return text;
}

std::string LineWriter::PropertyText(const model::DumpRun& run) const {
  std::string text;
  const auto add = [&text](std::string_view word) {
    if (!word.empty()) text += (text.empty() ? "" : ",") + std::string(word);
  };
  const model::CharacterProperties& properties = run.properties;
  add(ColorName(document_, properties.color));
  switch (properties.underlining) {
    case model::Underlining::kNone:
      break;
    case model::Underlining::kSingle:
      add("Underline");
      break;
    case model::Underlining::kDouble:
      add("DoubleUnderline");
      break;
    case model::Underlining::kNumeric:
      add("NumericUnderline");
      break;
  }
  if (properties.overline) add("Overline");
  if (properties.strikethrough) add("Strikethrough");
  if (properties.change_bar) add("ChangeBar");
  const std::string_view background = ColorName(document_, properties.background);
  if (!background.empty()) add("Background=" + std::string(background));
  add(ConditionText(run.conditions));
  return text;
}

void LineWriter::BeginElement(model::Id id, std::uint16_t row_conditions) {
  FlushSome();
  EndTextLine();
  Indent();
  const model::Element& element = document_.elements[id];
  text_ += document_.definitions[element.definition].name;
  ForEachAttribute(element, [&](std::string_view name, std::span<const std::string_view> values) {
    text_ += ' ';
    text_ += name;
    text_ += '=';
    for (std::size_t i = 0; i < values.size(); ++i) {
      text_ += i == 0 ? "\"" : "|\"";
      AppendEscaped(values[i], '"');
      text_ += '"';
    }
  });
  if (row_conditions != 0) text_ += " {" + ConditionText(row_conditions) + "}";
  text_ += '\n';
  ++depth_;
}

void LineWriter::EndElement(model::Id) {
  EndTextLine();
  --depth_;
}

void LineWriter::Run(const model::DumpRun& run) {
  FlushSome();
  if (!in_text_) Indent();
  in_text_ = true;
  const std::string properties = PropertyText(run);
  if (properties != properties_) {
    text_ += "{" + properties + "}";
    properties_ = properties;
  }
  if (!run.object.empty()) text_ += "{#" + std::string(run.object) + "}";
  AppendEscaped(run.text, ' ');
  // The paragraphs of a flow without elements are lines.
  if (run.text.ends_with('\n')) EndTextLine();
}

void LineWriter::Write() {
  for (model::Id flow = 1; flow < document_.flows.size(); ++flow) {
    const model::Flow& entry = document_.flows[flow];
    text_ += "flow " + std::string(entry.name) + " (" + std::string(model::FlowKindName(entry.kind)) + ")\n";
    depth_ = 1;
    model::DumpFlow(document_, flow, this);
    EndTextLine();
  }
}

class DumpCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  std::string target_;
};

CLI::App* DumpCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program, {"dump", "Print a document's structure and text in a normal form",
                "Elements with their attributes, and text with the properties that are not plain, as in\n"
                "{Red,Underline}text{}.",
                "qelm dump operation.mif"});
  command->add_option("TARGET", target_, "The document (MIF or XML)")->required();
  return command;
}

Outcome DumpCommand::Run(Session& session) {
  const host::Id id = session.OpenDocument(target_);
  Outcome outcome;
  outcome.write_members = [&session, id](std::ostream& out) { JsonWriter(session, id, out).Write(); };
  outcome.write_text = [&session, id](std::ostream& out) {
    LineWriter(*session.host().Find(id), out).Write();
  };
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeDumpCommand() { return std::make_unique<DumpCommand>(); }

}  // namespace qelm::cli
