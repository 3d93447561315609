#include <charconv>
#include <vector>

#include "embedded/model/mif_scan.h"
#include "embedded/model/xml_marks.h"

namespace qelm::embedded::model {

using mif::Piece;
using mif::Token;

namespace {

double RealData(const mif::Reader& reader) {
  double value = 0;
  const std::string_view data = reader.data();
  std::from_chars(data.data(), data.data() + data.size(), value);
  return value;
}

struct ObjectKind {
  std::string_view name;
  ElementKind kind;
};
// EDObject keywords (MIF reference, "ElementDef").
constexpr ObjectKind kObjectKinds[] = {
    {"EDContainer", ElementKind::kContainer},
    {"EDEquation", ElementKind::kEquation},
    {"EDFootNote", ElementKind::kFootnote},
    {"EDFootnote", ElementKind::kFootnote},
    {"EDGraphic", ElementKind::kGraphic},
    {"EDMarker", ElementKind::kMarker},
    {"EDSystemVariable", ElementKind::kSystemVariable},
    {"EDTable", ElementKind::kTable},
    {"EDTblBody", ElementKind::kTableBody},
    {"EDTblCell", ElementKind::kTableCell},
    {"EDTblFooting", ElementKind::kTableFooting},
    {"EDTblHeading", ElementKind::kTableHeading},
    {"EDTblRow", ElementKind::kTableRow},
    {"EDTblTitle", ElementKind::kTableTitle},
    {"EDXRef", ElementKind::kCrossReference},
};

struct AttributeKind {
  std::string_view name;
  std::uint8_t type;
};
// EDAttrType keywords, with the numbers that the model uses for them.
constexpr AttributeKind kAttributeKinds[] = {
    {"FAttrString", 0},      {"FAttrStrings", 1},      {"FAttrChoice", 2}, {"FAttrInt", 3},
    {"FAttrInts", 4},        {"FAttrReal", 5},         {"FAttrReals", 6},  {"FAttrUniqueId", 7},
    {"FAttrUniqueIdRef", 8}, {"FAttrUniqueIdRefs", 9},
};

void ReadAttributeDefinition(mif::Reader* reader, Document* document, AttributeDefinition* attribute) {
  Children(reader, [&] {
    const bool yes = reader->data() == "Yes";
    switch (reader->token()) {
      case Token::kEDAttrName:
        attribute->name = document->InternName(StringData(*reader, document));
        break;
      case Token::kEDAttrRequired:
        attribute->required = yes;
        break;
      case Token::kEDAttrReadOnly:
        attribute->read_only = yes;
        break;
      case Token::kEDAttrHidden:
        attribute->hidden = yes;
        break;
      case Token::kEDAttrType:
        for (const AttributeKind& kind : kAttributeKinds) {
          if (kind.name == reader->data()) attribute->type = kind.type;
        }
        break;
      case Token::kEDAttrChoices:
        if (reader->kind() != Piece::kGroup) break;
        Children(reader, [&] { attribute->choices.push_back(StringData(*reader, document)); });
        break;
      case Token::kEDAttrDefValues:
        if (reader->kind() != Piece::kGroup) break;
        Children(reader, [&] { attribute->defaults.push_back(StringData(*reader, document)); });
        break;
      default:
        break;
    }
  });
}

void ReadElementDefinition(mif::Reader* reader, Document* document) {
  Definition definition;
  definition.declared = true;
  Children(reader, [&] {
    switch (reader->token()) {
      case Token::kEDTag:
        definition.name = StringData(*reader, document);
        break;
      case Token::kEDGeneralRule:
        definition.content_rule = StringData(*reader, document);
        break;
      case Token::kEDObject:
        for (const ObjectKind& object : kObjectKinds) {
          if (object.name == reader->data()) definition.kind = object.kind;
        }
        break;
      case Token::kEDAttrDefinitions:
        if (reader->kind() != Piece::kGroup) break;
        Children(reader, [&] {
          if (reader->kind() != Piece::kGroup || reader->token() != Token::kEDAttrDef) return;
          ReadAttributeDefinition(reader, document, &definition.attributes.emplace_back());
        });
        break;
      default:
        break;
    }
  });
  if (definition.name.empty()) return;
  const Id id = document->InternDefinition(definition.name);
  definition.name = document->definitions[id].name;
  document->definitions[id] = std::move(definition);
}

}  // namespace

std::string_view StringData(const mif::Reader& reader, Document* document) {
  const std::string_view data = reader.data();
  if (!mif::IsString(data)) return data;
  const std::string_view inside = mif::Inside(data);
  if (mif::IsPlain(inside, document->encoding)) return inside;
  std::string text;
  mif::AppendDecoded(inside, document->encoding, &text);
  return document->Keep(std::move(text));
}

std::uint32_t NumberData(const mif::Reader& reader) {
  std::uint32_t value = 0;
  const std::string_view data = reader.data();
  std::from_chars(data.data(), data.data() + data.size(), value);
  return value;
}

struct Tint {
  std::string_view color;
  std::string_view base;
  double percentage = 0;
};

// A tint has a share of the inks of its base; the inks of its own statement are not what it looks like.
void TakeTint(const Tint& tint, Document* document) {
  const auto found = document->color_index.find(tint.base);
  const bool known = found != document->color_index.end() && document->colors[found->second].declared;
  const double* const reserved = ReservedInks(tint.base);
  if (!known && reserved == nullptr) return;
  Color base;
  if (known) {
    base = document->colors[found->second];
  } else {
    base.cyan = reserved[0];
    base.magenta = reserved[1];
    base.yellow = reserved[2];
    base.black = reserved[3];
  }
  const double share = tint.percentage / 100;
  Color& color = document->colors[document->InternColor(tint.color)];
  color.cyan = base.cyan * share;
  color.magenta = base.magenta * share;
  color.yellow = base.yellow * share;
  color.black = base.black * share;
}

void ScanColors(mif::Reader* reader, Document* document) {
  std::vector<Tint> tints;  // a base may follow what it is the base of
  Children(reader, [&] {
    if (reader->token() != Token::kColor || reader->kind() != Piece::kGroup) return;
    Color color;
    Tint tint;
    color.declared = true;
    Children(reader, [&] {
      switch (reader->token()) {
        case Token::kColorTag:
          color.name = StringData(*reader, document);
          break;
        case Token::kColorCyan:
          color.cyan = RealData(*reader);
          break;
        case Token::kColorMagenta:
          color.magenta = RealData(*reader);
          break;
        case Token::kColorYellow:
          color.yellow = RealData(*reader);
          break;
        case Token::kColorBlack:
          color.black = RealData(*reader);
          break;
        default:
          if (reader->name() == "ColorTintPercentage") tint.percentage = RealData(*reader);
          if (reader->name() == "ColorTintBaseColor") tint.base = StringData(*reader, document);
          break;
      }
    });
    Color& known = document->colors[document->InternColor(color.name)];
    color.name = known.name;
    known = color;
    tint.color = known.name;
    if (!tint.base.empty() && tint.percentage >= 0 && tint.percentage <= 100) tints.push_back(tint);
  });
  for (const Tint& tint : tints) TakeTint(tint, document);
}

void ScanConditions(mif::Reader* reader, Document* document) {
  Children(reader, [&] {
    if (reader->token() != Token::kCondition || reader->kind() != Piece::kGroup) return;
    Condition condition;
    condition.declared = true;
    Children(reader, [&] {
      if (reader->token() == Token::kCTag) {
        condition.name = StringData(*reader, document);
        // Without a CState this is where one would go.
        if (condition.state.Empty()) condition.state = {reader->end(), reader->end()};
      }
      if (reader->token() == Token::kCState) {
        condition.shown = reader->data() != "CHidden";
        condition.state = {reader->begin(), reader->end()};
      }
    });
    condition.source_shown = condition.shown;
    Condition& known = document->conditions[document->InternCondition(condition.name)];
    condition.name = known.name;
    known = condition;
  });
}

void ScanElementDefinitions(mif::Reader* reader, Document* document) {
  Children(reader, [&] {
    if (reader->token() == Token::kElementDef && reader->kind() == Piece::kGroup) {
      ReadElementDefinition(reader, document);
    }
  });
}

void ScanFont(mif::Reader* reader, Document* document, CharacterProperties* properties, std::string_view* tag,
              std::vector<FontState::Override>* overrides) {
  Children(reader, [&] {
    const std::string_view data = reader->data();
    const bool yes = data == "Yes";
    std::uint8_t bit = 0;
    switch (reader->token()) {
      case Token::kFTag:
        if (tag != nullptr) *tag = StringData(*reader, document);
        return;
      case Token::kFColor:
        properties->color = document->InternColor(StringData(*reader, document));
        bit = kColorBit;
        break;
      case Token::kFBackgroundColor:
        properties->background =
            mif::IsString(data) ? document->InternColor(StringData(*reader, document)) : 0;
        bit = kBackgroundBit;
        break;
      case Token::kFUnderlining:
        properties->underlining = data == "FSingle"    ? Underlining::kSingle
                                  : data == "FDouble"  ? Underlining::kDouble
                                  : data == "FNumeric" ? Underlining::kNumeric
                                                       : Underlining::kNone;
        bit = kUnderliningBit;
        break;
      case Token::kFOverline:
        properties->overline = yes;
        bit = kOverlineBit;
        break;
      case Token::kFStrike:
        properties->strikethrough = yes;
        bit = kStrikethroughBit;
        break;
      case Token::kFChangeBar:
        properties->change_bar = yes;
        bit = kChangeBarBit;
        break;
      default:
        break;
    }
    properties->known |= bit;
    if (overrides != nullptr && reader->kind() == Piece::kLeaf && reader->token() != Token::kFLocked) {
      overrides->push_back({reader->name(), document->At(Span{reader->begin(), reader->end()})});
    }
  });
}

void ScanCharacterFormats(mif::Reader* reader, Document* document) {
  Children(reader, [&] {
    if (reader->token() != Token::kFont || reader->kind() != Piece::kGroup) return;
    CharacterProperties properties;
    std::string_view tag;
    ScanFont(reader, document, &properties, &tag, nullptr);
    document->character_formats[tag] = properties;
  });
}

void ScanParagraphFormats(mif::Reader* reader, Document* document) {
  Children(reader, [&] {
    if (reader->token() != Token::kPgf || reader->kind() != Piece::kGroup) return;
    CharacterProperties properties;
    std::string_view tag;
    Children(reader, [&] {
      if (reader->token() == Token::kPgfTag) tag = StringData(*reader, document);
      if (reader->token() == Token::kPgfFont && reader->kind() == Piece::kGroup) {
        ScanFont(reader, document, &properties, nullptr, nullptr);
      }
    });
    document->paragraph_formats[tag] = properties;
  });
}

void ScanVariables(mif::Reader* reader, Document* document) {
  Children(reader, [&] {
    if (reader->token() != Token::kVariableFormat || reader->kind() != Piece::kGroup) return;
    std::string_view name;
    std::string_view definition;
    Children(reader, [&] {
      if (reader->token() == Token::kVariableName) name = StringData(*reader, document);
      if (reader->token() == Token::kVariableDef) definition = StringData(*reader, document);
    });
    document->variables[name] = definition;
  });
}

}  // namespace qelm::embedded::model
