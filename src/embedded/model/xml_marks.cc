#include "embedded/model/xml_marks.h"

#include <algorithm>
#include <charconv>

#include "embedded/xml/names.h"
#include "embedded/xml/write.h"

namespace qelm::embedded::model {
namespace {

struct KindWord {
  std::string_view word;
  ElementKind kind;
};
constexpr KindWord kKindWords[] = {
    {"container", ElementKind::kContainer},
    {"table", ElementKind::kTable},
    {"table-title", ElementKind::kTableTitle},
    {"table-heading", ElementKind::kTableHeading},
    {"table-body", ElementKind::kTableBody},
    {"table-footing", ElementKind::kTableFooting},
    {"table-row", ElementKind::kTableRow},
    {"table-cell", ElementKind::kTableCell},
    {"footnote", ElementKind::kFootnote},
    {"cross-reference", ElementKind::kCrossReference},
    {"graphic", ElementKind::kGraphic},
    {"equation", ElementKind::kEquation},
    {"marker", ElementKind::kMarker},
    {"system-variable", ElementKind::kSystemVariable},
    {"rubi", ElementKind::kRubi},
};

// How a property is written in a text mark and in MIF.
enum class Form : std::uint8_t { kColor, kBackground, kUnderlining, kYesNo };
struct Property {
  std::string_view word;
  std::string_view statement;
  Form form;
  std::uint8_t bit;
};
constexpr Property kProperties[] = {
    {"color", "FColor", Form::kColor, kColorBit},
    {"underline", "FUnderlining", Form::kUnderlining, kUnderliningBit},
    {"overline", "FOverline", Form::kYesNo, kOverlineBit},
    {"strikethrough", "FStrike", Form::kYesNo, kStrikethroughBit},
    {"change-bar", "FChangeBar", Form::kYesNo, kChangeBarBit},
    {"background", "FBackgroundColor", Form::kBackground, kBackgroundBit},
};

struct UnderliningWord {
  std::string_view word;
  std::string_view keyword;
  Underlining value;
};
constexpr UnderliningWord kUnderliningWords[] = {
    {"none", "FNoUnderlining", Underlining::kNone},
    {"single", "FSingle", Underlining::kSingle},
    {"double", "FDouble", Underlining::kDouble},
    {"numeric", "FNumeric", Underlining::kNumeric},
};

// FrameMaker's reserved colors, with the inks that it writes for them.
constexpr struct {
  std::string_view name;
  double ink[4];
} kReserved[] = {
    {"Black", {0, 0, 0, 100}},      {"White", {0, 0, 0, 0}},           {"Red", {0, 100, 100, 0}},
    {"Green", {100, 0, 100, 0}},    {"Blue", {100, 100, 0, 0}},        {"Cyan", {100, 0, 0, 0}},
    {"Magenta", {0, 100, 0, 0}},    {"Yellow", {0, 0, 100, 0}},        {"Dark Grey", {0, 0, 0, 60}},
    {"Pale Green", {26, 0, 60, 0}}, {"Forest Green", {41, 0, 41, 46}}, {"Royal Blue", {93, 46, 0, 0}},
    {"Mauve", {40, 60, 0, 0}},      {"Light Salmon", {0, 40, 60, 0}},  {"Olive", {0, 0, 40, 60}},
    {"Salmon", {0, 57, 76, 0}},
};

// The first word of `*text`, which goes behind it and the blanks after it.
std::string_view TakeWord(std::string_view* text) {
  const std::size_t end = std::min(text->find(' '), text->size());
  const std::string_view word = text->substr(0, end);
  const std::size_t next = text->find_first_not_of(' ', end);
  *text = next == std::string_view::npos ? std::string_view() : text->substr(next);
  return word;
}

// The last word, which is taken off `*text` with the blanks before it.
std::string_view TakeLastWord(std::string_view* text) {
  while (text->ends_with(' ')) text->remove_suffix(1);
  const std::size_t blank = text->rfind(' ');
  if (blank == std::string_view::npos) return {};
  const std::string_view word = text->substr(blank + 1);
  *text = text->substr(0, blank);
  while (text->ends_with(' ')) text->remove_suffix(1);
  return word;
}

Mark Named(MarkKind kind, std::string_view data) {
  Mark mark;
  mark.name = xml::FromData(data);
  mark.kind = mark.name.empty() ? MarkKind::kNone : kind;
  return mark;
}

constexpr std::string_view kWhileUsed = "while-used";

Mark ReadStateMark(std::string_view data) {
  std::string_view state = TakeLastWord(&data);
  const bool while_used = state == kWhileUsed;
  if (while_used) state = TakeLastWord(&data);
  if (state != "hidden" && state != "shown") return {};
  Mark mark = Named(MarkKind::kConditionState, data);
  mark.on = state == "shown";
  mark.while_used = while_used;
  return mark;
}

Mark ReadKindMark(std::string_view data) {
  const std::string_view word = TakeLastWord(&data);
  for (const KindWord& known : kKindWords) {
    if (known.word != word) continue;
    Mark mark = Named(MarkKind::kElementKind, data);
    mark.element_kind = known.kind;
    return mark;
  }
  return {};
}

Mark ReadColorMark(std::string_view data) {
  double ink[4] = {};
  for (double& value : ink) {
    const std::string_view word = TakeWord(&data);
    const auto result = std::from_chars(word.data(), word.data() + word.size(), value);
    if (result.ec != std::errc() || !(value >= 0 && value <= 100)) return {};
  }
  Mark mark = Named(MarkKind::kColor, data);
  std::copy(std::begin(ink), std::end(ink), mark.ink);
  return mark;
}

Mark ReadOwnMark(std::string_view data) {
  const std::string_view word = TakeWord(&data);
  Mark mark;
  if (word == "text") {
    mark.kind = MarkKind::kText;
    mark.name = data;
  } else if (word == "end" && data.empty()) {
    mark.kind = MarkKind::kTextEnd;
  } else if (word == "condition") {
    mark = ReadStateMark(data);
  } else if (word == "show-all") {
    mark.kind = MarkKind::kShowAll;
    mark.on = data == "yes";
  } else if (word == "kind") {
    mark = ReadKindMark(data);
  } else if (word == "color") {
    mark = ReadColorMark(data);
  } else if (word == "object") {
    mark = Named(MarkKind::kObject, data);
  } else if (word == "object-end") {
    mark.kind = MarkKind::kObjectEnd;
  } else if (word == "graphic") {
    mark = Named(MarkKind::kGraphic, data);
  } else if (word == "paragraph") {
    mark.kind = MarkKind::kParagraph;
  } else if (word == "metadata") {
    mark = Named(MarkKind::kMetadata, data);
  }
  return mark;
}

std::string Instruction(std::string_view before, std::string_view name, std::string_view after = {}) {
  std::string mark = "<?";
  mark.append(before).append(" ").append(xml::ToData(name));
  if (!after.empty()) mark.append(" ").append(after);
  mark.append("?>");
  return mark;
}

void AppendAttribute(std::string_view name, std::string_view value, std::string* mark) {
  mark->append(" ").append(name).append("=\"");
  xml::AppendValue(xml::ToData(value), '"', mark);
  mark->append("\"");
}

// The value of a property in a text mark, from the statement's data.
std::string PropertyWord(const Property& property, std::string_view data, mif::Encoding encoding) {
  switch (property.form) {
    case Form::kUnderlining:
      for (const UnderliningWord& known : kUnderliningWords) {
        if (known.keyword == data) return std::string(known.word);
      }
      return "none";
    case Form::kYesNo:
      return data == "Yes" ? "yes" : "no";
    case Form::kBackground:
      if (!mif::IsString(data)) return "none";
      break;
    case Form::kColor:
      break;
  }
  return mif::DecodeString(data, encoding);
}

// Other statements keep their MIF form, so that a string and a keyword can be told apart.
std::string OtherWord(std::string_view data, mif::Encoding encoding) {
  return mif::IsString(data) ? "`" + mif::DecodeString(data, encoding) + "'" : std::string(data);
}

std::string StringData(std::string_view text) { return "`" + mif::Encode(text, mif::Encoding::kUtf8) + "'"; }

// Puts a property on the state and returns its statement's data.
std::string TakeProperty(Document* document, const Property& property, const std::string& value,
                         CharacterProperties* properties) {
  properties->known |= property.bit;
  const bool yes = value == "yes";
  const auto color = [&] { return document->InternColor(document->Keep(value)); };
  switch (property.form) {
    case Form::kColor:
      properties->color = color();
      return StringData(value);
    case Form::kBackground:
      properties->background = value == "none" ? 0 : color();
      return value == "none" ? "NoColor" : StringData(value);
    case Form::kUnderlining:
      for (const UnderliningWord& known : kUnderliningWords) {
        if (known.word != value) continue;
        properties->underlining = known.value;
        return std::string(known.keyword);
      }
      return "FNoUnderlining";
    case Form::kYesNo:
      break;
  }
  if (property.bit == kOverlineBit) properties->overline = yes;
  if (property.bit == kStrikethroughBit) properties->strikethrough = yes;
  if (property.bit == kChangeBarBit) properties->change_bar = yes;
  return yes ? "Yes" : "No";
}

void SetOverride(Document* document, std::string_view name, const std::string& data, FontState* state) {
  std::erase_if(state->overrides, [&](const FontState::Override& old) { return old.name == name; });
  std::string text = "<";
  text.append(name).append(" ").append(data).append(">");
  state->overrides.push_back({name, document->Keep(std::move(text))});
}

bool IsFontStatement(std::string_view name) {
  return name.size() > 1 && name[0] == 'F' && name[1] >= 'A' && name[1] <= 'Z' && xml::IsName(name);
}

// Whether the text can stand as a statement's numbers or keyword without being taken for more.
bool IsPlainData(std::string_view data) {
  return data.find_first_of("<>`'#\\\n") == std::string_view::npos && !data.empty();
}

}  // namespace

std::string_view StatementData(std::string_view statement) {
  const std::size_t name_end = statement.find_first_of(" \t\r\n`");
  if (name_end == std::string_view::npos) return {};
  std::string_view data = statement.substr(name_end, statement.size() - name_end - 1);
  while (!data.empty() && static_cast<unsigned char>(data.front()) <= ' ') data.remove_prefix(1);
  while (!data.empty() && static_cast<unsigned char>(data.back()) <= ' ') data.remove_suffix(1);
  return data;
}

Mark ReadMark(std::string_view target, std::string_view data) {
  if (target == "qelm") return ReadOwnMark(data);
  if (target != "Fm") return {};
  const std::string_view word = TakeWord(&data);
  if (word == "Condstart") return Named(MarkKind::kConditionStart, data);
  if (word == "Condend") return Named(MarkKind::kConditionEnd, data);
  return {};
}

std::string ConditionStartMark(std::string_view condition) { return Instruction("Fm Condstart", condition); }

std::string ConditionEndMark(std::string_view condition) { return Instruction("Fm Condend", condition); }

std::string TextMark(const Document& document, const FontState& state) {
  std::string mark = "<?qelm text";
  if (!state.tag.empty()) AppendAttribute("format", state.tag, &mark);
  for (const FontState::Override& override : state.overrides) {
    const std::string_view data = StatementData(override.text);
    const auto* known =
        std::find_if(std::begin(kProperties), std::end(kProperties),
                     [&](const Property& property) { return property.statement == override.name; });
    if (known != std::end(kProperties)) {
      AppendAttribute(known->word, PropertyWord(*known, data, document.encoding), &mark);
    } else if (override.name != "FSeparation" && IsFontStatement(override.name)) {
      // The number of a color repeats its name, and the numbers differ from file to file.
      AppendAttribute(override.name, OtherWord(data, document.encoding), &mark);
    }
  }
  mark.append("?>");
  return mark;
}

std::string ConditionStateMark(std::string_view condition, bool shown, bool while_used) {
  std::string state = shown ? "shown" : "hidden";
  if (while_used) state.append(" ").append(kWhileUsed);
  return Instruction("qelm condition", condition, state);
}

std::string KindMark(std::string_view element, ElementKind kind) {
  for (const KindWord& known : kKindWords) {
    if (known.kind == kind) return Instruction("qelm kind", element, known.word);
  }
  return {};
}

std::string ColorMark(const Color& color) {
  std::string mark = "<?qelm color";
  for (const double value : {color.cyan, color.magenta, color.yellow, color.black}) {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6).ptr;
    mark.append(" ").append(digits, end);
  }
  mark.append(" ").append(xml::ToData(color.name)).append("?>");
  return mark;
}

std::string ObjectMark(std::string_view statement) { return Instruction("qelm object", statement); }

std::string MarkerMark(std::string_view type, std::string_view text) {
  const auto quoted = [](std::string_view data) {
    return "`" + mif::Encode(data, mif::Encoding::kUtf8) + "'";
  };
  const bool is_link = type == "Hypertext";
  return ObjectMark("<Marker <MType " + std::string(is_link ? "8" : "11") + "> <MTypeName " + quoted(type) +
                    "> <MText " + quoted(text) + ">>");
}

std::string VariableMark(std::string_view name) {
  return ObjectMark("<Variable <VariableName `" + mif::Encode(name, mif::Encoding::kUtf8) + "'>>") +
         std::string(kObjectEndMark);
}

std::string GraphicMark(std::string_view file) { return Instruction("qelm graphic", file); }

FontState ReadTextMark(Document* document, const FontState& under, std::string_view data) {
  FontState state = under;
  std::string tag = "<text ";
  tag.append(data).append(">");
  std::vector<xml::TagAttribute> attributes;
  std::size_t tail = 0;
  xml::SplitTag(tag, &attributes, &tail);
  std::string raw;
  for (const xml::TagAttribute& attribute : attributes) {
    const auto part = [&](std::size_t begin, std::size_t end) {
      return std::string_view(tag).substr(begin, end - begin);
    };
    const std::string_view name = part(attribute.begin, attribute.name_end);
    if (!xml::ReadValue(part(attribute.value_begin, attribute.value_end), &raw)) continue;
    const std::string value = xml::FromData(raw);
    const auto* known = std::find_if(std::begin(kProperties), std::end(kProperties),
                                     [&](const Property& property) { return property.word == name; });
    if (known != std::end(kProperties)) {
      SetOverride(document, known->statement, TakeProperty(document, *known, value, &state.properties),
                  &state);
    } else if (name == "format") {
      state.tag = document->Keep(value);
    } else if (IsFontStatement(name)) {
      const bool is_string = mif::IsString(value);
      if (!is_string && !IsPlainData(value)) continue;
      SetOverride(document, document->Keep(std::string(name)),
                  is_string ? StringData(std::string_view(value).substr(1, value.size() - 2)) : value,
                  &state);
    }
  }
  return state;
}

void AddReservedColors(Document* document) {
  for (const auto& reserved : kReserved) {
    const bool is_new = !document->color_index.contains(reserved.name);
    Color& color = document->colors[document->InternColor(reserved.name)];
    color.declared = true;
    if (!is_new) continue;
    color.cyan = reserved.ink[0];
    color.magenta = reserved.ink[1];
    color.yellow = reserved.ink[2];
    color.black = reserved.ink[3];
  }
}

bool IsReservedColor(std::string_view name) { return ReservedInks(name) != nullptr; }

const double* ReservedInks(std::string_view name) {
  const auto* const found = std::find_if(std::begin(kReserved), std::end(kReserved),
                                         [&](const auto& reserved) { return reserved.name == name; });
  return found == std::end(kReserved) ? nullptr : found->ink;
}

}  // namespace qelm::embedded::model
