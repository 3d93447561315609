#include "embedded/render/design/formats.h"

#include <algorithm>
#include <array>

#include "embedded/render/design/geometry.h"
#include "embedded/render/design/statements.h"

namespace qelm::embedded::render {
namespace {

using model::Underlining;

template <typename Value>
struct Word {
  std::string_view name;
  Value value;
};

template <typename Value, std::size_t kCount>
Value WordValue(const std::array<Word<Value>, kCount>& words, std::string_view data, Value other) {
  for (const Word<Value>& word : words) {
    if (word.name == data) return word.value;
  }
  return other;
}

constexpr std::array<Word<Underlining>, 3> kUnderlinings = {{{"FSingle", Underlining::kSingle},
                                                             {"FDouble", Underlining::kDouble},
                                                             {"FNumeric", Underlining::kNumeric}}};
constexpr std::array<Word<LetterCase>, 3> kCases = {{{"FSmallCaps", LetterCase::kSmallCaps},
                                                     {"FLowercase", LetterCase::kLower},
                                                     {"FUppercase", LetterCase::kUpper}}};
constexpr std::array<Word<LetterPosition>, 2> kPositions = {
    {{"FSuperscript", LetterPosition::kSuperscript}, {"FSubscript", LetterPosition::kSubscript}}};
constexpr std::array<Word<Alignment>, 3> kAlignments = {
    {{"Center", Alignment::kCenter}, {"Right", Alignment::kRight}, {"LeftRight", Alignment::kJustified}}};
constexpr std::array<Word<StartAt>, 4> kStarts = {{{"ColumnTop", StartAt::kColumn},
                                                   {"PageTop", StartAt::kPage},
                                                   {"LPageTop", StartAt::kLeftPage},
                                                   {"RPageTop", StartAt::kRightPage}}};
constexpr std::array<Word<PlacementStyle>, 6> kStyles = {
    {{"RunIn", PlacementStyle::kRunIn},
     {"SideheadTop", PlacementStyle::kSideHead},
     {"SideheadFirstBaseline", PlacementStyle::kSideHead},
     {"SideheadLastBaseline", PlacementStyle::kSideHead},
     {"Straddle", PlacementStyle::kStraddle},
     {"StraddleNormalOnly", PlacementStyle::kNormal}}};
constexpr std::array<Word<CellAlignment>, 2> kCellAlignments = {
    {{"Middle", CellAlignment::kMiddle}, {"Bottom", CellAlignment::kBottom}}};
constexpr std::array<Word<TabKind>, 3> kTabKinds = {
    {{"Center", TabKind::kCenter}, {"Right", TabKind::kRight}, {"Decimal", TabKind::kDecimal}}};

}  // namespace

// What a substatement sets. The readers get its data, and strings already decoded.
struct FormatReader {
  Formats& formats;
  std::string_view data;

  double Points() const { return Length(data, formats.unit_); }
  std::string_view Text() const { return formats.Text(data); }
  bool Yes() const { return IsYes(data); }
};

namespace {

struct FontProperty {
  std::string_view name;
  void (*set)(FontFormat*, FormatReader&);
};
constexpr std::array kFontProperties = {
    FontProperty{"FFamily", [](FontFormat* font, FormatReader& in) { font->family = in.Text(); }},
    FontProperty{"FWeight", [](FontFormat* font, FormatReader& in) { font->weight = in.Text(); }},
    FontProperty{"FAngle", [](FontFormat* font, FormatReader& in) { font->angle = in.Text(); }},
    FontProperty{"FVar", [](FontFormat* font, FormatReader& in) { font->variation = in.Text(); }},
    FontProperty{"FLanguage", [](FontFormat* font, FormatReader& in) { font->language = in.Text(); }},
    FontProperty{"FColor", [](FontFormat* font, FormatReader& in) { font->color = in.Text(); }},
    FontProperty{"FBackgroundColor",
                 [](FontFormat* font, FormatReader& in) {
                   font->background = in.data == "NoColor" ? std::string_view() : in.Text();
                 }},
    FontProperty{"FSize",
                 [](FontFormat* font, FormatReader& in) {
                   // Sizes without a unit are points, whatever lengths are.
                   font->size = Length(in.data, 1);
                 }},
    FontProperty{"FDW", [](FontFormat* font, FormatReader& in) { font->spread = Number(in.data); }},
    FontProperty{"FDY", [](FontFormat* font, FormatReader& in) { font->shift_down = Number(in.data); }},
    FontProperty{"FStretch", [](FontFormat* font, FormatReader& in) { font->stretch = Number(in.data); }},
    FontProperty{"FUnderlining",
                 [](FontFormat* font, FormatReader& in) {
                   font->underlining = WordValue(kUnderlinings, in.data, Underlining::kNone);
                 }},
    FontProperty{"FCase",
                 [](FontFormat* font, FormatReader& in) {
                   font->letter_case = WordValue(kCases, in.data, LetterCase::kAsTyped);
                 }},
    FontProperty{"FPosition",
                 [](FontFormat* font, FormatReader& in) {
                   font->position = WordValue(kPositions, in.data, LetterPosition::kNormal);
                 }},
    FontProperty{"FOverline", [](FontFormat* font, FormatReader& in) { font->overline = in.Yes(); }},
    FontProperty{"FStrike", [](FontFormat* font, FormatReader& in) { font->strikethrough = in.Yes(); }},
    FontProperty{"FChangeBar", [](FontFormat* font, FormatReader& in) { font->change_bar = in.Yes(); }},
    FontProperty{"FOutline", [](FontFormat* font, FormatReader& in) { font->outline = in.Yes(); }},
};

struct ParagraphProperty {
  std::string_view name;
  void (*set)(ParagraphFormat*, FormatReader&);
};
using Pgf = ParagraphFormat;
constexpr std::array kParagraphProperties = {
    ParagraphProperty{"PgfAlignment",
                      [](Pgf* pgf, FormatReader& in) {
                        pgf->alignment = WordValue(kAlignments, in.data, Alignment::kLeft);
                      }},
    ParagraphProperty{"PgfFIndent", [](Pgf* pgf, FormatReader& in) { pgf->first_indent = in.Points(); }},
    ParagraphProperty{"PgfLIndent", [](Pgf* pgf, FormatReader& in) { pgf->left_indent = in.Points(); }},
    ParagraphProperty{"PgfRIndent", [](Pgf* pgf, FormatReader& in) { pgf->right_indent = in.Points(); }},
    ParagraphProperty{"PgfFIndentRelative",
                      [](Pgf* pgf, FormatReader& in) { pgf->first_relative = in.Yes(); }},
    ParagraphProperty{"PgfFIndentOffset",
                      [](Pgf* pgf, FormatReader& in) { pgf->first_offset = in.Points(); }},
    ParagraphProperty{"PgfTopSeparator", [](Pgf* pgf, FormatReader& in) { pgf->top_frame = in.Text(); }},
    ParagraphProperty{"PgfBotSeparator", [](Pgf* pgf, FormatReader& in) { pgf->bottom_frame = in.Text(); }},
    ParagraphProperty{"PgfPlacement",
                      [](Pgf* pgf, FormatReader& in) {
                        pgf->start = WordValue(kStarts, in.data, StartAt::kAnywhere);
                      }},
    ParagraphProperty{"PgfPlacementStyle",
                      [](Pgf* pgf, FormatReader& in) {
                        pgf->style = WordValue(kStyles, in.data, PlacementStyle::kNormal);
                      }},
    ParagraphProperty{"PgfRunInDefaultPunct",
                      [](Pgf* pgf, FormatReader& in) { pgf->run_in_mark = in.Text(); }},
    ParagraphProperty{"PgfSpBefore", [](Pgf* pgf, FormatReader& in) { pgf->space_before = in.Points(); }},
    ParagraphProperty{"PgfSpAfter", [](Pgf* pgf, FormatReader& in) { pgf->space_after = in.Points(); }},
    ParagraphProperty{"PgfWithPrev", [](Pgf* pgf, FormatReader& in) { pgf->with_previous = in.Yes(); }},
    ParagraphProperty{"PgfWithNext", [](Pgf* pgf, FormatReader& in) { pgf->with_next = in.Yes(); }},
    ParagraphProperty{"PgfBlockSize",
                      [](Pgf* pgf, FormatReader& in) {
                        const double lines = Number(in.data);
                        pgf->block_lines = lines < 1 ? 1 : lines > 100 ? 100 : static_cast<std::uint32_t>(lines);
                      }},
    ParagraphProperty{"PgfLineSpacing",
                      [](Pgf* pgf, FormatReader& in) { pgf->fixed_spacing = in.data == "Fixed"; }},
    ParagraphProperty{"PgfLeading", [](Pgf* pgf, FormatReader& in) { pgf->leading = in.Points(); }},
    ParagraphProperty{"PgfAutoNum", [](Pgf* pgf, FormatReader& in) { pgf->numbered = in.Yes(); }},
    ParagraphProperty{"PgfNumAtEnd", [](Pgf* pgf, FormatReader& in) { pgf->number_at_end = in.Yes(); }},
    ParagraphProperty{"PgfNumberFont", [](Pgf* pgf, FormatReader& in) { pgf->number_font = in.Text(); }},
    ParagraphProperty{"PgfAcrobatLevel",
                      [](Pgf* pgf, FormatReader& in) {
                        pgf->bookmark_level = static_cast<std::int32_t>(Number(in.data));
                      }},
    ParagraphProperty{"PgfBoxColor",
                      [](Pgf* pgf, FormatReader& in) {
                        pgf->box_color = in.data == "NoColor" ? std::string_view() : in.Text();
                      }},
    ParagraphProperty{"PgfDir",
                      [](Pgf* pgf, FormatReader& in) { pgf->right_to_left = in.data.ends_with("RTL"); }},
    ParagraphProperty{"PgfCellAlignment",
                      [](Pgf* pgf, FormatReader& in) {
                        pgf->cell_alignment = WordValue(kCellAlignments, in.data, CellAlignment::kTop);
                      }},
    ParagraphProperty{"PgfCellMargins",
                      [](Pgf* pgf, FormatReader& in) {
                        const std::vector<double> all = Lengths(in.data, 1);
                        if (all.size() >= 4) pgf->cell_margins = {all[0], all[1], all[2], all[3]};
                      }},
    ParagraphProperty{"PgfCellLMarginFixed",
                      [](Pgf* pgf, FormatReader& in) { pgf->cell_margin_fixed[0] = in.Yes(); }},
    ParagraphProperty{"PgfCellTMarginFixed",
                      [](Pgf* pgf, FormatReader& in) { pgf->cell_margin_fixed[1] = in.Yes(); }},
    ParagraphProperty{"PgfCellRMarginFixed",
                      [](Pgf* pgf, FormatReader& in) { pgf->cell_margin_fixed[2] = in.Yes(); }},
    ParagraphProperty{"PgfCellBMarginFixed",
                      [](Pgf* pgf, FormatReader& in) { pgf->cell_margin_fixed[3] = in.Yes(); }},
    // The new tab stops follow, all of them.
    ParagraphProperty{"PgfNumTabs", [](Pgf* pgf, FormatReader&) { pgf->tabs.clear(); }},
};

template <typename Table>
const auto* PropertyNamed(const Table& table, std::string_view name) {
  for (const auto& property : table) {
    if (property.name == name) return &property;
  }
  return static_cast<const typename Table::value_type*>(nullptr);
}

// A leaf statement's data, the statement given as it stands.
std::string_view DataOf(std::string_view statement) {
  mif::Reader reader(statement);
  return reader.Next() && reader.kind() == mif::Piece::kLeaf ? reader.data() : std::string_view();
}

}  // namespace

Formats::Formats(const model::Document& document) : document_(document), unit_(DefaultUnit(document)) {
  ReadCatalogs();
  states_.resize(document.paragraph_states.size());
}

// Catalogs stand before what uses them, so that reading ends with the first statement behind them.
void Formats::ReadCatalogs() {
  const std::size_t end = document_.content_begin != 0 ? document_.content_begin : document_.source.size();
  const std::string_view head = std::string_view(document_.source).substr(0, end);
  mif::Reader reader(head);
  while (reader.Next()) {
    if (reader.kind() != mif::Piece::kGroup) continue;
    const bool paragraphs = reader.token() == mif::Token::kPgfCatalog;
    if (!paragraphs && reader.token() != mif::Token::kFontCatalog) {
      if (!reader.Skip()) return;
      continue;
    }
    model::Children(&reader, [&] {
      if (reader.kind() != mif::Piece::kGroup) return;
      const std::uint32_t begin = reader.begin();
      if (!reader.Skip()) return;
      const std::string_view statement = head.substr(begin, reader.end() - begin);
      if (paragraphs) {
        ParagraphFormat format;
        ReadParagraph(statement, &format);
        paragraphs_.insert_or_assign(format.tag, std::move(format));
        return;
      }
      std::vector<std::pair<std::string_view, std::string_view>> properties;
      std::string_view tag;
      EachChild(statement, [&](const mif::Reader& child) {
        if (child.token() == mif::Token::kFTag) tag = Text(child.data());
        if (child.kind() == mif::Piece::kLeaf) properties.emplace_back(child.name(), child.data());
      });
      fonts_.insert_or_assign(tag, std::move(properties));
    });
  }
}

std::string_view Formats::Text(std::string_view data) {
  const std::string_view inside = mif::Inside(data);
  if (mif::IsPlain(inside, document_.encoding)) return inside;
  return texts_.emplace_back(mif::DecodeString(data, document_.encoding));
}

void Formats::ApplyFont(std::string_view name, std::string_view data, FontFormat* font) {
  FormatReader in{*this, data};
  if (const auto* property = PropertyNamed(kFontProperties, name)) property->set(font, in);
}

void Formats::ReadFont(std::string_view statement, FontFormat* font) {
  EachChild(statement, [&](const mif::Reader& child) { ApplyFont(child.name(), child.data(), font); });
}

void Formats::ReadParagraph(std::string_view statement, ParagraphFormat* format) {
  const auto read_group = [&](mif::Reader& reader) {
    const std::uint32_t begin = reader.begin();
    const std::string_view name = reader.name();
    if (!reader.Skip()) return;
    const std::string_view group = statement.substr(begin, reader.end() - begin);
    if (name == "PgfFont") ReadFont(group, &format->font);
    if (name != "TabStop") return;
    TabStop& tab = format->tabs.emplace_back();
    EachChild(group, [&](const mif::Reader& child) {
      if (child.name() == "TSX") tab.position = Length(child.data(), unit_);
      if (child.name() == "TSType") tab.kind = WordValue(kTabKinds, child.data(), TabKind::kLeft);
      if (child.name() == "TSLeaderStr") tab.leader = Text(child.data());
      if (child.name() == "TSDecimalChar" && Number(child.data()) > 32 && Number(child.data()) < 127) {
        tab.decimal.assign(1, static_cast<char>(Number(child.data())));
      }
    });
  };
  EachChild(statement, [&](mif::Reader& reader) {
    if (reader.kind() == mif::Piece::kGroup) {
      read_group(reader);
      return;
    }
    if (reader.token() == mif::Token::kPgfTag) format->tag = Text(reader.data());
    FormatReader in{*this, reader.data()};
    if (const auto* property = PropertyNamed(kParagraphProperties, reader.name())) property->set(format, in);
  });
}

const ParagraphFormat& Formats::Paragraph(std::uint32_t paragraph_state) {
  std::vector<std::uint32_t> chain;
  std::uint32_t state = paragraph_state;
  const auto is_override = [&] { return !document_.paragraph_states[state].override_statement.Empty(); };
  while (!states_[state] && state != 0 && is_override()) {
    chain.push_back(state);
    state = document_.paragraph_states[state].before;
  }
  if (!states_[state]) {
    const ParagraphFormat* base = CatalogParagraph(document_.paragraph_states[state].tag);
    states_[state] =
        base != nullptr ? std::make_unique<ParagraphFormat>(*base) : std::make_unique<ParagraphFormat>();
    if (base == nullptr) states_[state]->tag = document_.paragraph_states[state].tag;
  }
  for (auto at = chain.rbegin(); at != chain.rend(); ++at) {
    states_[*at] = std::make_unique<ParagraphFormat>(*states_[state]);
    state = *at;
    ReadParagraph(document_.At(document_.paragraph_states[state].override_statement), states_[state].get());
  }
  return *states_[paragraph_state];
}

const FontFormat& Formats::Font(std::uint32_t paragraph_state, std::uint32_t font) {
  if (font == 0) return Paragraph(paragraph_state).font;
  const std::uint64_t key = (std::uint64_t{paragraph_state} << 32) | font;
  const auto known = state_fonts_.find(key);
  if (known != state_fonts_.end()) return known->second;
  const model::FontState& state = document_.fonts[font];
  FontFormat format = WithCharacterFormat(Paragraph(paragraph_state).font, state.tag);
  for (const model::FontState::Override& change : state.overrides) {
    ApplyFont(change.name, DataOf(change.text), &format);
  }
  return state_fonts_.emplace(key, format).first->second;
}

const ParagraphFormat* Formats::CatalogParagraph(std::string_view tag) const {
  const auto found = paragraphs_.find(tag);
  return found == paragraphs_.end() ? nullptr : &found->second;
}

bool Formats::HasBookmarkLevels() const {
  return std::any_of(paragraphs_.begin(), paragraphs_.end(),
                     [](const auto& format) { return format.second.bookmark_level > 0; });
}

FontFormat Formats::WithCharacterFormat(const FontFormat& font, std::string_view tag) {
  FontFormat format = font;
  const auto found = fonts_.find(tag);
  if (tag.empty() || found == fonts_.end()) return format;
  for (const auto& [name, data] : found->second) ApplyFont(name, data, &format);
  return format;
}

}  // namespace qelm::embedded::render
