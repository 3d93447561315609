#include "support/golden_text.h"

#include <vector>

#include "embedded/model/text_access.h"

namespace qelm::testing {
namespace {

namespace model = embedded::model;
using model::ElementKind;
using model::Item;
using model::ItemKind;

std::string Bracketed(const std::vector<std::string>& names) {
  std::string out = "{";
  for (const std::string& name : names) out += (out.size() > 1 ? "," : "") + name;
  return out + "}";
}

std::vector<std::string> Conditions(const model::Document& document, std::uint16_t set) {
  std::vector<std::string> names;
  for (const model::Id id : document.condition_sets[set]) names.emplace_back(document.conditions[id].name);
  return names;
}

const char* PartName(ElementKind kind) {
  switch (kind) {
    case ElementKind::kTable:
      return "Table";
    case ElementKind::kTableTitle:
      return "TableTitle";
    case ElementKind::kTableHeading:
      return "TableHeading";
    case ElementKind::kTableBody:
      return "TableBody";
    case ElementKind::kTableFooting:
      return "TableFooting";
    case ElementKind::kTableRow:
      return "Row";
    case ElementKind::kTableCell:
      return "Cell";
    default:
      return "Footnote";
  }
}

class Printer {
 public:
  explicit Printer(const model::Document& document) : document_(document) {}

  std::string Flow(const model::Flow& flow) {
    for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) Print(i);
    Style("");
    return out_;
  }

 private:
  void Print(std::uint32_t index);
  void Text(std::uint32_t index, const std::string& text);
  void Begin(model::Id element, const char* object, const std::string& style);
  void End(model::Id element, const char* object);
  void Alone(std::uint32_t index, model::Id element, const char* object) {
    Begin(element, object, GoldenStyle(document_, index));
    out_.insert(out_.size() - 1, "/");
    in_line_ = true;
  }
  void Style(const std::string& style) {
    if (style == style_) return;
    if (!style_.empty()) out_ += "{}";
    out_ += style;
    style_ = style;
  }
  void NewLine() {
    if (line_ended_) out_ += "\n";
    line_ended_ = false;
  }

  const model::Document& document_;
  std::string out_;
  std::string style_;
  bool line_ended_ = false;
  bool in_line_ = false;  // the line has more than beginnings of elements
};

void Printer::Text(std::uint32_t index, const std::string& text) {
  if (text.empty()) return;
  if (line_ended_) Style("");
  NewLine();
  const std::string style = GoldenStyle(document_, index);
  Style(style == "{}" ? "" : style);
  out_ += text;
  in_line_ = true;
}

void Printer::Begin(model::Id id, const char* object, const std::string& style) {
  Style("");
  NewLine();
  const model::Element& element = document_.elements[id];
  out_ += id != 0 ? "<" + std::string(document_.definitions[element.definition].name)
                  : "<!" + std::string(object);
  for (std::uint32_t i = 0; id != 0 && i < element.attribute_count; ++i) {
    const model::Attribute& attribute = document_.attributes[element.first_attribute + i];
    out_ += " " + std::string(document_.names[attribute.name]);
    for (std::uint32_t value = 0; value < attribute.value_count; ++value) {
      out_ += (value == 0 ? "=\"" : "|") + std::string(document_.values[attribute.first_value + value]);
    }
    if (attribute.value_count != 0) out_ += "\"";
  }
  out_ += (style == "{}" ? "" : " " + style) + ">";
}

void Printer::End(model::Id id, const char* object) {
  Style("");
  out_ += "</" +
          (id != 0 ? std::string(document_.definitions[document_.elements[id].definition].name)
                   : "!" + std::string(object)) +
          ">";
  in_line_ = true;
}

void Printer::Print(std::uint32_t index) {
  const Item& item = document_.items[index];
  if (item.Is(model::kDeleted) || item.Is(model::kGenerated)) return;
  const std::string style = GoldenStyle(document_, index);
  std::string text;
  switch (item.kind) {
    case ItemKind::kParagraphEnd:
      // A line that only begins elements is one with the next.
      line_ended_ = line_ended_ || in_line_;
      in_line_ = false;
      break;
    case ItemKind::kElementBegin:
      Begin(item.ref, "", "{}");
      break;
    case ItemKind::kElementEnd:
      End(item.ref, "");
      break;
    case ItemKind::kString:
    case ItemKind::kCharacter:
      model::AppendItemText(document_, item, &text);
      Text(index, text);
      break;
    case ItemKind::kTableAnchor:
    case ItemKind::kNoteAnchor:
      Begin(document_.parts[item.ref].element, item.kind == ItemKind::kNoteAnchor ? "Footnote" : "Table",
            style);
      break;
    case ItemKind::kPartBegin: {
      const model::Part& part = document_.parts[item.ref];
      const bool anchored = part.kind == ElementKind::kTable || part.kind == ElementKind::kFootnote;
      if (!anchored) {
        Begin(part.element, PartName(part.kind),
              part.kind == ElementKind::kTableRow ? Bracketed(Conditions(document_, part.conditions)) : "{}");
      }
      break;
    }
    case ItemKind::kPartEnd:
      line_ended_ = false;
      End(document_.parts[item.ref].element, PartName(document_.parts[item.ref].kind));
      break;
    case ItemKind::kFrameAnchor:
      Alone(index, document_.frames[item.ref].element, "Graphic");
      break;
    case ItemKind::kMarker:
      Alone(index, item.ref, "Marker");
      break;
    case ItemKind::kVariable:
      Alone(index, item.ref, "Variable");
      break;
    case ItemKind::kReferenceBegin:
      Begin(item.ref, "XRef", style);
      break;
    case ItemKind::kReferenceEnd:
      End(item.ref, "XRef");
      break;
    case ItemKind::kInsetBegin:
      Begin(0, "Inset", style);
      break;
    case ItemKind::kInsetEnd:
      End(0, "Inset");
      break;
    default:
      break;
  }
}

}  // namespace

std::string GoldenStyle(const model::Document& document, std::uint32_t index) {
  const model::CharacterProperties properties = model::PropertiesAt(document, index);
  std::vector<std::string> names;
  const auto color = [&](model::Id id) { return std::string(document.colors[id].name); };
  if (properties.color != 0 && color(properties.color) != "Black") names.push_back(color(properties.color));
  constexpr const char* kLines[] = {"", "Underline", "DoubleUnderline", "NumericUnderline"};
  if (properties.underlining != model::Underlining::kNone) {
    names.emplace_back(kLines[static_cast<std::size_t>(properties.underlining)]);
  }
  if (properties.overline) names.emplace_back("Overline");
  if (properties.strikethrough) names.emplace_back("Strikethrough");
  if (properties.change_bar) names.emplace_back("ChangeBar");
  if (properties.background != 0) names.push_back("Background=" + color(properties.background));
  for (std::string& name : Conditions(document, document.items[index].conditions))
    names.push_back(std::move(name));
  return Bracketed(names);
}

std::string Golden(const model::Document& document) {
  return document.main_flow == 0 ? "" : Printer(document).Flow(document.flows[document.main_flow]);
}

}  // namespace qelm::testing
