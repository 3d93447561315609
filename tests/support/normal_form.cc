#include "support/normal_form.h"

#include "embedded/model/text_access.h"

namespace qelm::test {

using namespace embedded::model;

namespace {

std::string ElementLine(const Document& document, Id id) {
  const Element& element = document.elements[id];
  std::string line = "<" + std::string(document.definitions[element.definition].name);
  for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
    const Attribute& attribute = document.attributes[element.first_attribute + i];
    line += " " + std::string(document.names[attribute.name]) + "=";
    for (std::uint32_t v = 0; v < attribute.value_count; ++v) {
      line += "'" + std::string(document.values[attribute.first_value + v]) + "'";
    }
  }
  return line + ">";
}

std::string StateOf(const Document& document, std::uint32_t index) {
  const Item& item = document.items[index];
  std::string state;
  for (const Id id : document.condition_sets[item.conditions]) {
    state += "{" + std::string(document.conditions[id].name) + "}";
  }
  const FontState& font = document.fonts[item.font];
  state += "[" + std::string(font.tag);
  for (const FontState::Override& change : font.overrides) state += "," + std::string(change.text);
  state += "]";
  const std::uint32_t paragraph = ParagraphOf(document, index);
  if (paragraph != 0) {
    state += "(" + std::string(document.paragraph_states[document.paragraphs[paragraph].state].tag) + ")";
  }
  return state;
}

}  // namespace

std::vector<std::string> NormalForm(const Document& document) {
  std::vector<std::string> lines;
  std::string run_state;
  std::string run;
  const auto finish = [&] {
    if (!run.empty()) lines.push_back(run_state + run);
    run.clear();
  };
  for (std::uint32_t i = 0; i < document.items.size(); ++i) {
    const Item& item = document.items[i];
    if (item.Is(kDeleted)) continue;
    std::string line;
    switch (item.kind) {
      case ItemKind::kElementBegin:
        line = ElementLine(document, item.ref);
        break;
      case ItemKind::kElementEnd:
        line = "</>";
        break;
      case ItemKind::kPartBegin: {
        const Part& part = document.parts[item.ref];
        line = part.element != 0 ? ElementLine(document, part.element) : "<part>";
        for (const Id id : document.condition_sets[part.conditions]) {
          line += "{" + std::string(document.conditions[id].name) + "}";
        }
        break;
      }
      case ItemKind::kPartEnd:
        line = "</part>";
        break;
      case ItemKind::kMarker:
        line = StateOf(document, i) + "marker " + Substatement(document, item, "MText");
        break;
      case ItemKind::kReferenceBegin:
        line = StateOf(document, i) + "reference";
        break;
      case ItemKind::kFrameAnchor:
        line = StateOf(document, i) + "frame";
        break;
      case ItemKind::kTableAnchor:
        line = StateOf(document, i) + "table";
        break;
      case ItemKind::kNoteAnchor:
        line = StateOf(document, i) + "note";
        break;
      case ItemKind::kString:
      case ItemKind::kCharacter:
      case ItemKind::kVariable: {
        const std::string state = StateOf(document, i);
        if (state != run_state) finish();
        run_state = state;
        AppendItemText(document, item, &run);
        continue;
      }
      default:
        continue;
    }
    finish();
    lines.push_back(line);
  }
  finish();
  return lines;
}

std::string FirstDifference(const std::vector<std::string>& actual,
                            const std::vector<std::string>& expected) {
  const std::size_t most = std::max(actual.size(), expected.size());
  for (std::size_t i = 0; i < most; ++i) {
    const std::string a = i < actual.size() ? actual[i] : "(end)";
    const std::string b = i < expected.size() ? expected[i] : "(end)";
    if (a == b) continue;
    return "line " + std::to_string(i) + " after " + (i > 0 ? expected[i - 1] : "(start)") +
           "\n  actual:   " + a + "\n  expected: " + b;
  }
  return {};
}

std::string AllText(const Document& document) {
  std::string text;
  for (const Item& item : document.items) {
    if (!item.Is(kDeleted)) AppendItemText(document, item, &text);
  }
  return text;
}

}  // namespace qelm::test
