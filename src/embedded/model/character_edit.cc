#include "embedded/model/character_edit.h"

#include <algorithm>

#include "embedded/model/edit.h"
#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

// The first level whose programs know FBackgroundColor.
constexpr double kBackgroundLevel = 10;

constexpr std::uint8_t kAllBits = kDefinedBits | kChangeBarBit;

const char* UnderliningWord(Underlining kind) {
  switch (kind) {
    case Underlining::kSingle:
      return "FSingle";
    case Underlining::kDouble:
      return "FDouble";
    case Underlining::kNumeric:
      return "FNumeric";
    default:
      return "FNoUnderlining";
  }
}

// The order in which FrameMaker writes the children of a Font that follow FTag.
constexpr std::string_view kFontOrder[] = {
    "FPlatformName", "FFamily",          "FVar",      "FWeight",
    "FAngle",        "FPostScriptName",  "FEncoding", "FSize",
    "FUnderlining",  "FOverline",        "FStrike",   "FChangeBar",
    "FOutline",      "FShadow",          "FPairKern", "FTsume",
    "FCase",         "FPosition",        "FDX",       "FDY",
    "FDW",           "FStretch",         "FLanguage", "FSeparation",
    "FColor",        "FBackgroundColor",
};

std::size_t OrderOf(std::string_view name) {
  return static_cast<std::size_t>(std::find(std::begin(kFontOrder), std::end(kFontOrder), name) -
                                  std::begin(kFontOrder));
}

// The statement by which an override says a property.
struct PropertyStatement {
  std::uint8_t bit;
  std::string_view name;
};
constexpr PropertyStatement kStatements[] = {
    {kUnderliningBit, "FUnderlining"}, {kOverlineBit, "FOverline"}, {kStrikethroughBit, "FStrike"},
    {kChangeBarBit, "FChangeBar"},     {kColorBit, "FColor"},       {kBackgroundBit, "FBackgroundColor"},
};

bool SameValue(const CharacterProperties& left, const CharacterProperties& right, std::uint8_t bit) {
  switch (bit) {
    case kUnderliningBit:
      return left.underlining == right.underlining;
    case kOverlineBit:
      return left.overline == right.overline;
    case kStrikethroughBit:
      return left.strikethrough == right.strikethrough;
    case kChangeBarBit:
      return left.change_bar == right.change_bar;
    case kColorBit:
      return left.color == right.color;
    default:
      return left.background == right.background;
  }
}

std::string ColorData(const Document& document, Id color) {
  return "`" + mif::Encode(document.colors[color].name, document.encoding) + "'";
}

std::string StatementData(const Document& document, const CharacterProperties& properties, std::uint8_t bit) {
  const auto yes_no = [](bool on) { return std::string(on ? "Yes" : "No"); };
  switch (bit) {
    case kUnderliningBit:
      return UnderliningWord(properties.underlining);
    case kOverlineBit:
      return yes_no(properties.overline);
    case kStrikethroughBit:
      return yes_no(properties.strikethrough);
    case kChangeBarBit:
      return yes_no(properties.change_bar);
    case kColorBit:
      return ColorData(document, properties.color);
    default:
      return properties.background == 0 ? "NoColor" : ColorData(document, properties.background);
  }
}

void RemoveOverride(FontState* state, const PropertyStatement& property) {
  std::erase_if(state->overrides, [&](const FontState::Override& old) {
    // The legacy number of a color would contradict a new name.
    return old.name == property.name || (property.bit == kColorBit && old.name == "FSeparation");
  });
  state->properties.known &= static_cast<std::uint8_t>(~property.bit);
}

void SetOverride(Document* document, FontState* state, const PropertyStatement& property,
                 const CharacterProperties& properties) {
  RemoveOverride(state, property);
  const std::string data = StatementData(*document, properties, property.bit);
  const std::string_view text = document->Keep("<" + std::string(property.name) + " " + data + ">");
  const auto place = std::find_if(state->overrides.begin(), state->overrides.end(), [&](const auto& old) {
    return OrderOf(old.name) > OrderOf(property.name);
  });
  state->overrides.insert(place, {property.name, text});
}

// What the formats say. A property of which they say nothing is plain, but the color of plain text is only
// known in XML.
CharacterProperties DefinedProperties(const Document& document, std::uint32_t font, std::uint32_t paragraph) {
  CharacterProperties defined;
  defined.known = kAllBits & ~kColorBit;
  const auto black = document.color_index.find("Black");
  if (document.format == Format::kXml && black != document.color_index.end()) {
    defined.color = black->second;
    defined.known = kAllBits;
  }
  defined.Take(FormatProperties(document, font, paragraph));
  return defined;
}

// The overrides of `state` with `wanted` on top of them, as far as the formats do not say it.
void Change(Document* document, const CharacterProperties& wanted, const CharacterProperties& defined,
            FontState* state) {
  for (const PropertyStatement& property : kStatements) {
    if ((wanted.known & property.bit) == 0) continue;
    const bool overridden = (state->properties.known & property.bit) != 0;
    if ((defined.known & property.bit) != 0 && SameValue(wanted, defined, property.bit)) {
      if (overridden) RemoveOverride(state, property);
    } else if (!overridden || !SameValue(wanted, state->properties, property.bit)) {
      SetOverride(document, state, property, wanted);
      CharacterProperties one = wanted;
      one.known = property.bit;
      state->properties.Take(one);
    }
  }
}

void RemoveDefined(FontState* state) {
  for (const PropertyStatement& property : kStatements) {
    if ((kDefinedBits & property.bit) != 0) RemoveOverride(state, property);
  }
}

// A text that two states share only when they mean the same.
std::string ContentKey(const FontState& state) {
  std::vector<std::string_view> texts;
  for (const FontState::Override& override : state.overrides) texts.push_back(override.text);
  std::sort(texts.begin(), texts.end());
  std::string key(state.tag);
  for (const std::string_view text : texts) key.append(1, '\0').append(text);
  return key;
}

// Numbers the states by what they mean. States that the source holds keep their own numbers, of equal ones
// the first stands for all.
void IndexFonts(Document* document) {
  FontEdits& edits = document->font_edits;
  for (auto i = static_cast<std::uint32_t>(edits.same.size()); i < document->fonts.size(); ++i) {
    edits.same.push_back(edits.by_content.try_emplace(ContentKey(document->fonts[i]), i).first->second);
  }
}

std::uint32_t InternFont(Document* document, FontState state) {
  if (state.tag.empty() && state.overrides.empty()) return 0;
  FontEdits& edits = document->font_edits;
  const auto next = static_cast<std::uint32_t>(document->fonts.size());
  const auto [found, is_new] = edits.by_content.try_emplace(ContentKey(state), next);
  if (!is_new) return found->second;
  edits.same.push_back(next);
  document->fonts.push_back(std::move(state));
  return next;
}

// What a change makes of a state in that paragraph.
std::uint32_t ChangedFont(Document* document, const FontEdits::Change& change, std::uint32_t paragraph,
                          const CharacterProperties& wanted) {
  const auto [found, is_new] = document->font_edits.changes.try_emplace(change, 0);
  if (!is_new) return found->second;
  FontState state = document->fonts[change.font];
  if (change.reset) RemoveDefined(&state);
  Change(document, wanted, DefinedProperties(*document, change.font, paragraph), &state);
  const std::uint32_t changed = InternFont(document, std::move(state));
  document->font_edits.changes[change] = changed;
  return changed;
}

CharacterProperties Possible(const Document& document, CharacterProperties properties) {
  if (!HasBackgrounds(document)) properties.known &= static_cast<std::uint8_t>(~kBackgroundBit);
  if (properties.color == 0) properties.known &= static_cast<std::uint8_t>(~kColorBit);
  return properties;
}

}  // namespace

bool HasBackgrounds(const Document& document) {
  return document.format == Format::kXml || document.level >= kBackgroundLevel;
}

ItemChanges::ItemChanges(Document* document, const ItemParagraphs& paragraphs)
    : document_(*document), paragraphs_(paragraphs) {
  KeepSourceFonts(document);
  IndexFonts(document);
}

bool ItemChanges::Change(std::uint32_t index, bool reset, const CharacterProperties& wanted) {
  Item& item = document_.items[index];
  const std::uint32_t before = item.font;
  const std::uint32_t paragraph = index < paragraphs_.size() ? paragraphs_[index] : 0;
  const FontEdits::Change change{before,
                                 paragraph == 0 ? 0 : document_.paragraphs[paragraph].state,
                                 wanted.color,
                                 wanted.background,
                                 wanted.known,
                                 wanted.underlining,
                                 wanted.overline,
                                 wanted.strikethrough,
                                 wanted.change_bar,
                                 reset};
  if (change != last_) {
    last_font_ = ChangedFont(&document_, change, paragraph, wanted);
    last_ = change;
  }
  item.font = last_font_;
  if (index < document_.source_fonts.size()) {
    // Back to what the source says, in its own words.
    const std::uint32_t source = document_.source_fonts[index];
    const std::vector<std::uint32_t>& same = document_.font_edits.same;
    if (same[source] == same[item.font]) item.font = source;
  }
  return item.font != before;
}

void ItemChanges::Reset(std::uint32_t item, const CharacterProperties& rules) {
  Change(item, true, Possible(document_, rules));
  document_.modified = document_.marked = true;
}

bool SetCharacterProperties(Document* document, std::uint32_t begin, std::uint32_t end,
                            const CharacterProperties& properties, const ItemParagraphs& paragraphs) {
  const CharacterProperties wanted = Possible(*document, properties);
  ItemChanges changes(document, paragraphs);
  bool changed = false;
  for (std::uint32_t i = begin; i < end; i = EndOfItem(*document, i)) {
    if (IsContent(document->items[i].kind) && changes.Set(i, wanted)) changed = true;
  }
  if (changed) document->modified = document->marked = true;
  return changed;
}

}  // namespace qelm::embedded::model
