#include "support/mif_parts.h"

#include <algorithm>

namespace qelm::testing {
namespace {

constexpr const char* kColors[] = {"Black", "White", "Red", "Green", "Blue", "Cyan", "Magenta", "Yellow"};
constexpr const char* kColorParts[] = {"0 0 0 100",   "0 0 0 0",   "0 100 100 0", "100 0 100 0",
                                       "100 100 0 0", "100 0 0 0", "0 100 0 0",   "0 0 100 0"};

void AddColors(Lines* lines) {
  constexpr const char* kNames[] = {"ColorCyan", "ColorMagenta", "ColorYellow", "ColorBlack"};
  lines->Open(0, "ColorCatalog");
  for (std::size_t i = 0; i < std::size(kColors); ++i) {
    lines->Open(1, "Color");
    lines->Add(2, "<ColorTag " + Quoted(kColors[i]) + ">");
    const std::vector<std::string> parts = Split(kColorParts[i], ' ');
    for (std::size_t part = 0; part < 4; ++part) {
      lines->Add(2, "<" + std::string(kNames[part]) + " " + parts[part] + ".000000>");
    }
    lines->Close(1, "Color");
  }
  lines->Close(0, "ColorCatalog");
}

void AddConditions(const std::vector<MifCondition>& conditions, Lines* lines) {
  if (conditions.empty()) return;
  lines->Open(0, "ConditionCatalog");
  for (const MifCondition& condition : conditions) {
    lines->Open(1, "Condition");
    lines->Add(2, "<CTag " + Quoted(condition.name) + ">");
    lines->Add(2, condition.hidden ? "<CState CHidden>" : "<CState CShown>");
    lines->Add(2, "<CStyle CAsIs>");
    lines->Close(1, "Condition");
  }
  lines->Close(0, "ConditionCatalog");
}

// A group of string statements of one name.
void AddStrings(const std::string& group, const std::string& name, const std::vector<std::string>& texts,
                Lines* lines) {
  lines->Open(4, group);
  for (const std::string& text : texts) lines->Add(5, "<" + name + " " + Quoted(text) + ">");
  lines->Close(4, group);
}

void AddAttribute(const MifAttribute& attribute, Lines* lines) {
  lines->Open(3, "EDAttrDef");
  lines->Add(4, "<EDAttrName " + Quoted(attribute.name) + ">");
  lines->Add(4, "<EDAttrType " + attribute.type + ">");
  AddStrings("EDAttrChoices", "EDAttrChoice", attribute.choices, lines);
  AddStrings("EDAttrDefValues", "EDAttrDefValue", attribute.defaults, lines);
  lines->Close(3, "EDAttrDef");
}

void AddDefinitions(const std::map<std::string, std::string>& definitions, const MifFile& file,
                    Lines* lines) {
  lines->Open(0, "ElementDefCatalog");
  for (const auto& [tag, kind] : definitions) {
    lines->Open(1, "ElementDef");
    lines->Add(2, "<EDTag " + Quoted(tag) + ">");
    lines->Add(2, "<EDObject " + kind + ">");
    lines->Open(2, "EDAttrDefinitions");
    for (const MifDefinition& definition : file.definitions) {
      if (definition.tag != tag) continue;
      for (const MifAttribute& attribute : definition.attributes) AddAttribute(attribute, lines);
    }
    lines->Close(2, "EDAttrDefinitions");
    lines->Close(1, "ElementDef");
  }
  lines->Close(0, "ElementDefCatalog");
}

constexpr std::string_view kParagraphFormats = R"(<PgfCatalog 
 <Pgf 
  <PgfTag `Body'>
  <PgfFont 
   <FTag `'>
   <FColor `Black'>
  > # end of PgfFont
 > # end of Pgf
> # end of PgfCatalog
)";

constexpr std::string_view kVariables = R"(<VariableFormats 
 <VariableFormat 
  <VariableName `Product'>
  <VariableDef `Pump'>
 > # end of VariableFormat
> # end of VariableFormats
)";

void AddPage(const std::string& type, const std::string& number, const std::string& tag, int frame,
             Lines* lines) {
  lines->Open(0, "Page");
  lines->Add(1, "<PageType " + type + ">");
  if (!number.empty()) lines->Add(1, "<PageNum " + Quoted(number) + ">");
  lines->Add(1, "<PageTag " + Quoted(tag) + ">");
  lines->Open(1, "TextRect");
  lines->Add(2, "<ID " + std::to_string(frame) + ">");
  lines->Close(1, "TextRect");
  lines->Close(0, "Page");
}

}  // namespace

std::string Quoted(std::string_view text) {
  std::string out = "`";
  for (const char c : text) {
    switch (c) {
      case '>':
        out += "\\>";
        break;
      case '\'':
        out += "\\q";
        break;
      case '`':
        out += "\\Q";
        break;
      case '\\':
        out += "\\\\";
        break;
      default:
        out += c;
    }
  }
  return out + "'";
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts{""};
  for (const char c : text) {
    if (c == separator) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

bool IsColor(const std::string& name) {
  return std::find(std::begin(kColors), std::end(kColors), name) != std::end(kColors);
}

std::string MifCatalogs(const std::vector<MifCondition>& conditions,
                        const std::map<std::string, std::string>& definitions, const MifFile& file) {
  Lines lines;
  AddColors(&lines);
  AddConditions(conditions, &lines);
  lines.text += kParagraphFormats;
  AddDefinitions(definitions, file, &lines);
  lines.text += kVariables;
  return lines.text;
}

std::string MifPages(const std::vector<MifPage>& pages, int hidden_frame) {
  struct Type {
    MifFlow::Place place;
    const char* name;
  };
  constexpr Type kTypes[] = {{MifFlow::Place::kMaster, "OtherMasterPage"},
                             {MifFlow::Place::kReference, "ReferencePage"},
                             {MifFlow::Place::kBody, "BodyPage"}};
  Lines lines;
  for (const Type& type : kTypes) {
    const bool body = type.place == MifFlow::Place::kBody;
    int number = 0;
    for (const MifPage& page : pages) {
      if (page.place != type.place) continue;
      AddPage(type.name, body ? std::to_string(++number) : "", body ? "" : "Page", page.frame, &lines);
    }
  }
  if (hidden_frame != 0) AddPage("HiddenPage", "", "HIDDEN", hidden_frame, &lines);
  return lines.text;
}

std::string MifBook(const std::vector<std::string>& components) {
  Lines lines;
  lines.Add(0, "<Book 10.0> # a test's book");
  for (const std::string& component : components) {
    lines.Open(0, "BookComponent");
    lines.Add(1, "<FileName " + Quoted(component) + ">");
    lines.Close(0, "BookComponent");
  }
  lines.Open(0, "BookElements");
  lines.Open(1, "ElementBegin");
  lines.Add(2, "<ETag `Book'>");
  lines.Close(1, "ElementBegin");
  for (std::size_t i = 0; i < components.size(); ++i) {
    lines.Open(1, "Element");
    lines.Add(2, "<ETag `Chapter'>");
    lines.Add(2, "<EComponent " + std::to_string(i) + ">");
    lines.Close(1, "Element");
  }
  lines.Add(1, "<ElementEnd `Book'>");
  lines.Close(0, "BookElements");
  lines.Add(0, "# End of Book");
  return lines.text;
}

}  // namespace qelm::testing
