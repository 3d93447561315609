#include "filtering/outline.h"

#include <algorithm>
#include <string_view>

namespace qelm::testing {
namespace {

using host::Id;
using host::kNone;

// What the parts of a table are called in the notation of mif_files.h.
std::string NameOf(std::string_view tag) {
  const bool table_part = tag == "Title" || tag == "Heading" || tag == "Body" || tag == "Footing";
  if (tag == "Inset") return "!Inset";
  return (table_part ? "Table" : "") + std::string(tag);
}

std::string TagOf(std::string_view name) {
  const bool table_part = name.starts_with("Table") && name != "Table";
  return std::string(table_part ? name.substr(5) : name);
}

// Reads one outline and writes it in that notation.
class Translator {
 public:
  explicit Translator(std::string_view outline) : rest_(outline) {}

  std::string Content() {
    std::string out;
    for (SkipBlanks(); !rest_.empty() && rest_.front() != ')'; SkipBlanks()) out += Item();
    return out;
  }

 private:
  void SkipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(' '), rest_.size())); }
  std::string_view Until(std::string_view ends) {
    const std::string_view text = rest_.substr(0, rest_.find_first_of(ends));
    rest_.remove_prefix(text.size());
    return text;
  }
  std::string_view Quoted() {
    rest_.remove_prefix(1);
    const std::string_view text = Until("'");
    rest_.remove_prefix(1);
    return text;
  }

  std::string Item() {
    if (rest_.front() == '\'') return std::string(Quoted());
    const std::string name = NameOf(Until(" ()"));
    std::string out = "<" + name;
    for (SkipBlanks(); rest_.find('=') < rest_.find_first_of(" ()'"); SkipBlanks()) {
      out.append(" ").append(Until("="));
      rest_.remove_prefix(1);
      if (rest_.starts_with("'")) out.append("=\"").append(Quoted()).append("\"");
    }
    out += ">";
    if (rest_.starts_with("(")) {
      rest_.remove_prefix(1);
      out += Content();
      rest_.remove_prefix(1);
    }
    return out + "</" + name + ">";
  }

  std::string_view rest_;
};

std::string Conditions(host::Host& host, Id document, const std::vector<Id>& conditions) {
  std::string out;
  for (const Id condition : conditions) {
    out.append("~").append(host.catalogs.ConditionName(document, condition));
  }
  return out;
}

std::string OutlineOfElement(host::Host& host, Id document, Id element) {
  std::string buffer;
  const Id row = host.tables.RowOfElement(document, element);
  const Id first = host.elements.FirstChild(document, element);
  const Id definition = host.elements.Definition(document, element);
  std::string out = TagOf(host.definitions.DefinitionName(document, definition));
  if (definition == kNone) {
    const std::string_view text = host.text.ElementText(document, element, 1000, &buffer);
    if (text.empty()) return {};
    out = "'" + std::string(text) + "'";
  }
  if (row != kNone) {
    out += Conditions(host, document, host.tables.RowConditions(document, row));
  } else if (first == kNone) {
    const host::TextRange range = host.text.ElementRange(document, element);
    const host::TextProperties properties =
        host.text.ReadProperties(document, range, host::kConditionsProperty);
    out += Conditions(host, document, properties.conditions);
  }
  if (first == kNone) return out;
  std::string content;
  for (Id child = first; child != kNone; child = host.elements.NextSibling(document, child)) {
    const std::string inside = OutlineOfElement(host, document, child);
    content += (content.empty() || inside.empty() ? "" : " ") + inside;
  }
  return out + "(" + content + ")";
}

}  // namespace

std::string MifOf(const std::vector<std::string>& outlines, const std::vector<MifDefinition>& definitions) {
  MifFile file;
  file.definitions = definitions;
  for (const std::string& outline : outlines) {
    file.flows.push_back(
        {Translator(outline).Content(), MifFlow::Place::kBody, file.flows.empty() ? "A" : "B"});
  }
  return Mif(file);
}

std::string OutlineOf(host::Host& host, Id document) {
  std::string out;
  for (Id flow = host.elements.FirstFlow(document); flow != kNone;
       flow = host.elements.NextFlow(document, flow)) {
    const Id root = host.elements.Root(document, flow);
    if (root == kNone) continue;
    out += (out.empty() ? "" : " / ") + OutlineOfElement(host, document, root);
  }
  return out;
}

}  // namespace qelm::testing
