#include <charconv>
#include <map>
#include <set>

#include "embedded/model/convert_to_mif.h"
#include "embedded/model/xml_marks.h"
#include "embedded/xml/names.h"

namespace qelm::embedded::model {
namespace {

constexpr std::string_view kObjects[] = {
    "EDContainer", "EDTable",          "EDTblTitle",  "EDTblHeading", "EDTblBody", "EDTblFooting",
    "EDTblRow",    "EDTblCell",        "EDFootNote",  "EDXRef",       "EDGraphic", "EDEquation",
    "EDMarker",    "EDSystemVariable", "EDContainer", "EDContainer",
};

constexpr std::string_view kAttributeTypes[] = {
    "FAttrString", "FAttrStrings", "FAttrChoice",   "FAttrInt",         "FAttrInts",
    "FAttrReal",   "FAttrReals",   "FAttrUniqueId", "FAttrUniqueIdRef", "FAttrUniqueIdRefs",
};

bool IsTableKind(ElementKind kind) { return kind >= ElementKind::kTable && kind <= ElementKind::kTableRow; }

std::string Number(double value) {
  char digits[64];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 6).ptr;
  return std::string(digits, end);
}

// The children that the parts of tables have in the document, in the order of kinds, for their content rules.
using Children = std::map<Id, std::map<ElementKind, std::set<std::string>>>;

Children TableChildren(const Document& document) {
  Children children;
  for (Id id = 1; id < document.elements.size(); ++id) {
    const Element& element = document.elements[id];
    if (element.deleted || element.parent == 0 || element.definition == 0) continue;
    const Element& parent = document.elements[element.parent];
    if (!IsTableKind(parent.kind) || !HasPart(element.kind)) continue;
    children[parent.definition][element.kind].insert(
        xml::FromName(document.definitions[element.definition].name));
  }
  return children;
}

// A rule that the document's own tables keep: for a table its parts in order, for rows and cells any number.
std::string ContentRule(const Definition& definition, const Children& children, Id id) {
  const bool is_object =
      definition.kind >= ElementKind::kCrossReference && definition.kind <= ElementKind::kSystemVariable;
  if (is_object) return {};
  const auto found = children.find(id);
  if (!IsTableKind(definition.kind) || found == children.end()) return "<ANY>";
  std::string rule;
  for (const auto& [kind, names] : found->second) {
    std::string part;
    for (const std::string& name : names) part += (part.empty() ? "" : " | ") + name;
    if (names.size() > 1) part.insert(0, "(").append(")");
    if (definition.kind != ElementKind::kTable) part += "+";
    if (definition.kind == ElementKind::kTable && kind != ElementKind::kTableBody) part += "?";
    rule += (rule.empty() ? "" : ", ") + part;
  }
  return rule;
}

std::string AttributeDefinitionStatement(const Document& document, const AttributeDefinition& attribute) {
  const auto yes_no = [](bool on) { return std::string(on ? "Yes" : "No"); };
  const bool is_list = attribute.type == 1 || attribute.type == 9;
  std::string text =
      "   <EDAttrDef <EDAttrName " + MifString(xml::FromName(document.names[attribute.name])) + ">";
  text += " <EDAttrRequired " + yes_no(attribute.required) + ">";
  text += " <EDAttrReadOnly " + yes_no(attribute.read_only) + ">";
  text += " <EDAttrHidden " + yes_no(attribute.hidden) + ">";
  text += " <EDAttrType " +
          std::string(kAttributeTypes[attribute.type < std::size(kAttributeTypes) ? attribute.type : 0]) +
          ">";
  if (!attribute.choices.empty()) {
    text += " <EDAttrChoices ";
    for (const std::string_view choice : attribute.choices)
      text += "<EDAttrChoice " + MifString(choice) + ">";
    text += ">";
  }
  if (!attribute.defaults.empty()) {
    text += " <EDAttrDefValues ";
    for (const std::string_view value : attribute.defaults) {
      text += "<EDAttrDefValue " + MifString(is_list ? xml::FromToken(value) : xml::FromContent(value)) + ">";
    }
    text += ">";
  }
  return text + ">\n";
}

}  // namespace

std::string MifColors(const Document& document) {
  std::string text = "<ColorCatalog \n";
  for (const Color& color : document.colors) {
    if (color.name.empty()) continue;
    text += " <Color <ColorTag " + MifString(color.name) + "> <ColorCyan  " + Number(color.cyan) +
            "> <ColorMagenta  " + Number(color.magenta) + "> <ColorYellow  " + Number(color.yellow) +
            "> <ColorBlack  " + Number(color.black) + ">";
    if (IsReservedColor(color.name)) {
      std::string keyword = color.name == "Olive" ? "DarkYellow" : std::string(color.name);
      std::erase(keyword, ' ');
      text += " <ColorAttribute ColorIs" + keyword + "> <ColorAttribute ColorIsReserved>";
    }
    text += "> # end of Color\n";
  }
  return text + "> # end of ColorCatalog\n";
}

std::string MifConditions(const Document& document) {
  std::string text = "<ConditionCatalog \n";
  for (const Condition& condition : document.conditions) {
    if (condition.name.empty()) continue;
    text += " <Condition <CTag " + MifString(condition.name) + "> <CState ";
    text += condition.shown ? "CShown" : "CHidden";
    text += "> <CStyle CAsIs>> # end of Condition\n";
  }
  return text + "> # end of ConditionCatalog\n";
}

std::string MifElementDefinitions(const Document& document) {
  const Children children = TableChildren(document);
  const Id root = document.main_flow == 0 ? 0 : document.flows[document.main_flow].root;
  std::string text = "<ElementDefCatalog \n";
  for (Id id = 1; id < document.definitions.size(); ++id) {
    const Definition& definition = document.definitions[id];
    const bool is_root = root != 0 && document.elements[root].definition == id;
    text += " <ElementDef \n  <EDTag " + MifString(xml::FromName(definition.name)) + ">\n  <EDObject ";
    text += kObjects[static_cast<std::size_t>(definition.kind)];
    text += ">\n  <EDValidHighestLevel " + std::string(is_root ? "Yes" : "No") + ">\n";
    const std::string rule = ContentRule(definition, children, id);
    if (!rule.empty()) text += "  <EDGeneralRule " + MifString(rule) + ">\n";
    if (!definition.attributes.empty()) {
      text += "  <EDAttrDefinitions \n";
      for (const AttributeDefinition& attribute : definition.attributes) {
        text += AttributeDefinitionStatement(document, attribute);
      }
      text += "  > # end of EDAttrDefinitions\n";
    }
    text += " > # end of ElementDef\n";
  }
  return text + "> # end of ElementDefCatalog\n";
}

std::string MifCharacterFormats(const Document& document) {
  std::set<std::string_view> tags;
  for (const FontState& font : document.fonts) {
    if (!font.tag.empty()) tags.insert(font.tag);
  }
  if (tags.empty()) return {};
  std::string text = "<FontCatalog \n";
  for (const std::string_view tag : tags) {
    text += " <Font <FTag " + MifString(tag) + "> <FLocked No>> # end of Font\n";
  }
  return text + "> # end of FontCatalog\n";
}

}  // namespace qelm::embedded::model
