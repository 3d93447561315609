#include "embedded/render/setting.h"

#include <algorithm>
#include <array>

#include "embedded/model/links.h"
#include "embedded/model/text_access.h"
#include "embedded/render/design/geometry.h"
#include "embedded/render/design/statements.h"

namespace qelm::embedded::render {
namespace {

// A format string's escapes ("\t" is a tab).
std::string Unescaped(const std::string& format) {
  std::string text;
  for (std::size_t i = 0; i < format.size(); ++i) {
    std::size_t length = 0;
    if (format[i] == '\\') length = model::AppendFormatEscape(std::string_view(format).substr(i + 1), &text);
    if (length == 0) text.push_back(format[i]);
    i += length;
  }
  return text;
}

LetterPosition PositionNamed(std::string_view data) {
  if (data == "FNSuperscript") return LetterPosition::kSuperscript;
  return data == "FNSubscript" ? LetterPosition::kSubscript : LetterPosition::kNormal;
}

struct NoteText {
  std::string_view name;  // behind "DFNote" or "DTblFNote"
  std::string NoteStyle::*text;
};
constexpr std::array kNoteTexts = {
    NoteText{"Tag", &NoteStyle::tag},
    NoteText{"Labels", &NoteStyle::labels},
    NoteText{"AnchorPrefix", &NoteStyle::anchor_prefix},
    NoteText{"AnchorSuffix", &NoteStyle::anchor_suffix},
    NoteText{"NumberPrefix", &NoteStyle::number_prefix},
    NoteText{"NumberSuffix", &NoteStyle::number_suffix},
};

void ReadNoteStyle(std::string_view name, std::string_view data, mif::Encoding encoding, NoteStyle* style) {
  for (const NoteText& text : kNoteTexts) {
    if (text.name == name) style->*text.text = Unescaped(mif::DecodeString(data, encoding));
  }
  if (name == "NumStyle") style->number_style = data;
  if (name == "AnchorPos") style->anchor_position = PositionNamed(data);
  if (name == "NumberPos") style->number_position = PositionNamed(data);
  if (name == "ComputeMethod") style->restarts_on_pages = data == "PerPage";
}

ChangeBarStyle::Side SideNamed(std::string_view data) {
  using Side = ChangeBarStyle::Side;
  if (data == "RightOfCol") return Side::kRight;
  if (data == "NearestEdge" || data == "AwayFromBinding") return Side::kOutside;
  return data == "FurthestEdge" || data == "TowardBinding" ? Side::kInside : Side::kLeft;
}

}  // namespace

std::string NoteStyle::Number(std::int64_t number) const {
  if (number_style != "Custom" || labels.empty()) return model::NumberIn(number_style, number);
  // The labels, then each twice, and so on.
  std::vector<std::string> characters;
  for (const char c : labels) {
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80 || characters.empty()) characters.emplace_back();
    characters.back().push_back(c);
  }
  const auto index = static_cast<std::size_t>(std::max<std::int64_t>(number - 1, 0));
  std::string text;
  for (std::size_t i = 0; i <= index / characters.size() && i < 8; ++i) {
    text += characters[index % characters.size()];
  }
  return text;
}

Setting::Setting(const model::Document& for_document, Fonts& with_fonts, Graphics& with_graphics)
    : document(for_document),
      fonts(with_fonts),
      graphics(with_graphics),
      formats(for_document),
      tables(for_document, formats.unit()),
      indicators(ReadIndicators(for_document)) {
  for (std::size_t set = 0; set < document.condition_sets.size(); ++set) {
    shown.push_back(model::IsShown(document, static_cast<std::uint16_t>(set)));
  }
  table_notes.tag = "TableFootnote";
  table_notes.number_style = "LCAlpha";
  if (!document.document_statement.Empty()) ReadSettings();
}

void Setting::ReadSettings() {
  const double unit = formats.unit();
  EachChild(document.At(document.document_statement), [&](const mif::Reader& child) {
    const std::string_view name = child.name();
    const std::string_view data = child.data();
    if (name.starts_with("DFNote")) ReadNoteStyle(name.substr(6), data, document.encoding, &notes);
    if (name.starts_with("DTblFNote")) ReadNoteStyle(name.substr(9), data, document.encoding, &table_notes);
    if (name == "DLanguage") language = Fonts::LanguageTag(data);
    if (name == "FNoteStartNum") notes.first = static_cast<std::int64_t>(Number(data));
    if (name == "DFNoteMaxH") most_note_height = std::max(Length(data, unit), 0.0);
    if (name == "DChBarGap") change_bars.gap = Length(data, unit);
    if (name == "DChBarWidth") change_bars.width = Length(data, 1);
    if (name == "DChBarPosition") change_bars.side = SideNamed(data);
    if (name == "DChBarColor") change_bars.color = mif::DecodeString(data, document.encoding);
  });
  // Footnotes of tables are numbered table by table.
  table_notes.restarts_on_pages = false;
}

void Setting::FindPlaces(const PlaceNamer& namer) {
  for (const model::LinkTarget& target : model::ReadTargets(document)) {
    if (target.state != model::TargetState::kShown || target.kind == model::LinkKind::kTextInset) continue;
    std::string name = namer(target.name);
    if (!name.empty()) places.push_back({target.item, std::move(name)});
  }
  std::stable_sort(places.begin(), places.end(),
                   [](const Place& one, const Place& other) { return one.item < other.item; });
}

const Face& Setting::FaceOf(const FontFormat& format) {
  const Face*& face = faces_[&format];
  if (face == nullptr) face = &fonts.Find(format);
  return *face;
}

}  // namespace qelm::embedded::render
