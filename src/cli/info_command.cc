// qelm info: what a document or a book is, and what is in it.
#include "embedded/model/info.h"

#include <CLI/CLI.hpp>

#include "cli/command.h"
#include "cli/link_table.h"
#include "cli/page_table.h"
#include "cli/session.h"
#include "embedded/model/xmp_packet.h"

namespace qelm::cli {
namespace {

namespace model = embedded::model;
using Json = nlohmann::ordered_json;

class InfoCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  std::string target_;
  bool links_ = false;
  bool pages_ = false;
};

CLI::App* InfoCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program, {"info", "Tell what a document or book is and what is in it",
                "Format, version, flows, counts, element definitions, conditions with their state, colors;\n"
                "the components of a book.",
                "qelm info manual.book.mif --json"});
  command->add_option("TARGET", target_, "The document (MIF or XML) or book (MIF)")->required();
  CLI::Option* const links = command->add_flag(
      "--links", links_,
      "List every cross-reference, hypertext link, text inset and graphic instead, with its "
      "target and whether it resolves");
  command
      ->add_flag("--pages", pages_,
                 "List the pages instead that the document has a record of, with their master pages")
      ->excludes(links);
  return command;
}

std::string FormatName(const model::Document& document) {
  return document.format == model::Format::kXml ? "xml" : "mif";
}

// What a count is called, and where it stands.
struct CountField {
  const char* name;
  std::uint64_t model::DocumentInfo::*value;
};
constexpr CountField kCounts[] = {
    {"elements", &model::DocumentInfo::elements},
    {"text_nodes", &model::DocumentInfo::text_nodes},
    {"paragraphs", &model::DocumentInfo::paragraphs},
    {"tables", &model::DocumentInfo::tables},
    {"footnotes", &model::DocumentInfo::footnotes},
    {"frames", &model::DocumentInfo::frames},
    {"markers", &model::DocumentInfo::markers},
    {"cross_references", &model::DocumentInfo::cross_references},
    {"variables", &model::DocumentInfo::variables},
    {"text_insets", &model::DocumentInfo::text_insets},
    {"hidden_blocks", &model::DocumentInfo::hidden_blocks},
};

Json CountsJson(const model::DocumentInfo& info) {
  Json counts = Json::object();
  for (const CountField& field : kCounts) counts[field.name] = info.*field.value;
  return counts;
}

Json FlowsJson(const model::Document& document, const model::DocumentInfo& info) {
  Json flows = Json::array();
  for (std::size_t i = 1; i < document.flows.size(); ++i) {
    const model::Flow& flow = document.flows[i];
    flows.push_back({{"name", flow.name},
                     {"kind", model::FlowKindName(flow.kind)},
                     {"elements", info.flow_elements[i]},
                     {"main", i == document.main_flow}});
  }
  return flows;
}

// Definitions that are declared or used; the model also holds names of elements that are there no longer.
Json DefinitionsJson(const model::Document& document, const model::DocumentInfo& info) {
  Json definitions = Json::array();
  for (std::size_t i = 1; i < document.definitions.size(); ++i) {
    const model::Definition& definition = document.definitions[i];
    if (!definition.declared && info.definition_elements[i] == 0) continue;
    definitions.push_back({{"name", definition.name},
                           {"elements", info.definition_elements[i]},
                           {"declared", definition.declared}});
  }
  return definitions;
}

Json ConditionsJson(const model::Document& document) {
  Json conditions = Json::array();
  for (std::size_t i = 1; i < document.conditions.size(); ++i) {
    conditions.push_back({{"name", document.conditions[i].name}, {"shown", document.conditions[i].shown}});
  }
  return conditions;
}

Json ColorsJson(const model::Document& document) {
  Json colors = Json::array();
  for (std::size_t i = 1; i < document.colors.size(); ++i) colors.push_back(document.colors[i].name);
  return colors;
}

// What a PDF of the document or book says of it.
Json MetadataJson(Session& session, host::Id id) {
  Json metadata = Json::object();
  const std::string packet = session.roles().documents.Metadata(id);
  for (const model::MetadataField& field : model::PacketFields(packet)) {
    metadata[std::string(field.name)] = field.value;
  }
  return metadata;
}

Json DocumentJson(const model::Document& document) {
  const model::DocumentInfo info = model::CountContent(document);
  Json object{{"kind", "document"}, {"format", FormatName(document)}};
  const std::string_view version = model::VersionText(document);
  object["version"] = version.empty() ? Json(nullptr) : Json(version);
  object["flows"] = FlowsJson(document, info);
  object["counts"] = CountsJson(info);
  object["conditions"] = ConditionsJson(document);
  object["show_all"] = document.show_all;
  object["colors"] = ColorsJson(document);
  object["definitions"] = DefinitionsJson(document, info);
  return object;
}

Json BookJson(Session& session, host::Id book) {
  host::Host& host = session.roles();
  const model::Document& tree = session.host().FindBook(book)->tree;
  const model::DocumentInfo info = model::CountContent(tree);
  Json object{{"kind", "book"}, {"format", FormatName(tree)}, {"version", model::VersionText(tree)}};
  object["elements"] = info.elements;
  Json components = Json::array();
  for (host::Id id = host.books.FirstComponent(book); id != host::kNone;
       id = host.books.NextComponent(book, id)) {
    const std::string path(host.books.ComponentPath(book, id));
    components.push_back({{"path", path},
                          {"found", host.platform.IsThere(path)},
                          {"text", host.books.EntryText(book, id)},
                          {"generated", host.books.IsGenerated(book, id)},
                          {"excluded", host.books.IsExcluded(book, id)}});
  }
  object["components"] = std::move(components);
  object["definitions"] = DefinitionsJson(tree, info);
  return object;
}

std::string Upper(std::string text) {
  for (char& letter : text) letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter;
  return text;
}

// "label:      a, b, c", wrapped at a width that a terminal has; nothing for an empty list.
void AppendList(const std::string& label, const std::vector<std::string>& items, std::string* text) {
  constexpr std::size_t kLabel = 14;
  constexpr std::size_t kWidth = 100;
  if (items.empty()) return;
  std::string line = label + ":";
  line.resize(kLabel, ' ');
  bool first = true;
  for (const std::string& item : items) {
    if (!first) line += ',';
    if (!first && line.size() + item.size() + 2 > kWidth) {
      *text += line + "\n";
      line.assign(kLabel, ' ');
    } else if (!first) {
      line += ' ';
    }
    line += item;
    first = false;
  }
  *text += line + "\n";
}

// One item of a text list for each object of a JSON list.
template <typename Function>
std::vector<std::string> Describe(const Json& list, const Function& describe) {
  std::vector<std::string> items;
  for (const Json& entry : list) items.push_back(describe(entry));
  return items;
}

// Definitions that elements have; a template defines many that a document does not use.
std::vector<std::string> DefinitionTexts(const Json& definitions) {
  std::vector<std::string> texts;
  std::size_t unused = 0;
  for (const Json& definition : definitions) {
    const auto elements = definition["elements"].get<std::uint64_t>();
    if (elements == 0) {
      ++unused;
      continue;
    }
    texts.push_back(definition["name"].get<std::string>() + " " + std::to_string(elements) +
                    (definition["declared"] ? "" : " (not defined)"));
  }
  if (unused != 0) texts.push_back(std::to_string(unused) + " without elements");
  return texts;
}

// The main flow and those with elements; a document has many that only hold running heads.
std::vector<std::string> FlowTexts(const Json& flows) {
  std::vector<std::string> texts;
  std::size_t others = 0;
  for (const Json& flow : flows) {
    if (!flow["main"] && flow["elements"] == 0) {
      ++others;
      continue;
    }
    const std::string name = flow["name"];
    texts.push_back((name.empty() ? "unnamed" : name) + " (" + flow["kind"].get<std::string>() +
                    (flow["main"] ? ", main) " : ") ") +
                    std::to_string(flow["elements"].get<std::uint64_t>()) + " elements");
  }
  if (others != 0) texts.push_back(std::to_string(others) + " without elements");
  return texts;
}

std::string DocumentText(const Json& info) {
  std::string text;
  std::vector<std::string> counts;
  for (const auto& [name, count] : info["counts"].items()) {
    std::string label = name;
    std::replace(label.begin(), label.end(), '_', ' ');
    if (count == 1) label.pop_back();
    if (count != 0) counts.push_back(std::to_string(count.get<std::uint64_t>()) + " " + label);
  }
  AppendList("content", counts, &text);
  AppendList("flows", FlowTexts(info["flows"]), &text);
  AppendList("conditions",
             Describe(info["conditions"],
                      [](const Json& condition) {
                        return condition["name"].get<std::string>() +
                               (condition["shown"] ? " shown" : " hidden");
                      }),
             &text);
  if (info["show_all"]) text += "              conditional text is shown whatever its conditions say\n";
  AppendList("colors", Describe(info["colors"], [](const Json& color) { return color.get<std::string>(); }),
             &text);
  AppendList("definitions", DefinitionTexts(info["definitions"]), &text);
  return text;
}

std::string BookText(const Json& info) {
  std::string text = "components:\n";
  for (const Json& component : info["components"]) {
    text += "  " + component["path"].get<std::string>();
    if (component["generated"]) text += " (generated)";
    if (component["excluded"]) text += " (excluded)";
    if (!component["found"]) text += " - not found";
    text += '\n';
  }
  AppendList("definitions", DefinitionTexts(info["definitions"]), &text);
  return text;
}

Outcome InfoCommand::Run(Session& session) {
  const host::Id id = session.Open(target_);
  const bool book = session.roles().books.IsBook(id);
  Outcome outcome;
  if (links_) {
    outcome.members = LinksJson(session.roles(), id);
    outcome.text = LinksText(outcome.members);
    if (!outcome.members["unread"].empty()) outcome.status = ExitStatus::kFound;
    return outcome;
  }
  if (pages_) {
    if (book)
      throw Failure(ExitStatus::kUsage, target_ + ": this is a book, and --pages is for documents only");
    outcome.members = PagesJson(*session.host().Find(id));
    outcome.text = PagesText(outcome.members);
    return outcome;
  }
  outcome.members = book ? BookJson(session, id) : DocumentJson(*session.host().Find(id));
  outcome.members["metadata"] = MetadataJson(session, id);
  const Json& info = outcome.members;
  outcome.text =
      target_ + ": " + Upper(info["format"].get<std::string>()) + " " + info["kind"].get<std::string>();
  if (info["version"].is_string()) outcome.text += ", version " + info["version"].get<std::string>();
  outcome.text += "\n" + (book ? BookText(info) : DocumentText(info));
  for (const auto& [name, value] : info["metadata"].items()) {
    AppendList(name, {value.get<std::string>()}, &outcome.text);
  }
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeInfoCommand() { return std::make_unique<InfoCommand>(); }

}  // namespace qelm::cli
