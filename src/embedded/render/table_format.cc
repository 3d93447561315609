#include "embedded/render/table_format.h"

#include <algorithm>
#include <array>

#include "embedded/render/design/geometry.h"
#include "embedded/render/design/statements.h"

namespace qelm::embedded::render {
namespace {

// How much of the color each fill lays on; those above are patterns, which are shown as their middle tone.
constexpr std::array kFillParts = {1.0, 0.9, 0.7, 0.5, 0.3, 0.1, 0.03, 0.0};
constexpr double kPatternPart = 0.5;

struct RulingField {
  std::string_view name;
  std::string TableFormat::*ruling;
};
constexpr std::array kRulingFields = {
    RulingField{"TblLRuling", &TableFormat::left_ruling},
    RulingField{"TblTRuling", &TableFormat::top_ruling},
    RulingField{"TblRRuling", &TableFormat::right_ruling},
    RulingField{"TblBRuling", &TableFormat::bottom_ruling},
    RulingField{"TblColumnRuling", &TableFormat::column_ruling},
    RulingField{"TblXColumnRuling", &TableFormat::other_column_ruling},
    RulingField{"TblBodyRowRuling", &TableFormat::row_ruling},
    RulingField{"TblXRowRuling", &TableFormat::other_row_ruling},
    RulingField{"TblHFRowRuling", &TableFormat::heading_row_ruling},
    RulingField{"TblSeparatorRuling", &TableFormat::separator_ruling},
};

struct LengthField {
  std::string_view name;
  double TableFormat::*length;
};
constexpr std::array kLengthFields = {
    LengthField{"TblLIndent", &TableFormat::left_indent},
    LengthField{"TblRIndent", &TableFormat::right_indent},
    LengthField{"TblSpBefore", &TableFormat::space_before},
    LengthField{"TblSpAfter", &TableFormat::space_after},
    LengthField{"TblTitleGap", &TableFormat::title_gap},
};

struct CountField {
  std::string_view name;
  std::uint32_t TableFormat::*count;
};
constexpr std::array kCountFields = {
    CountField{"TblBlockSize", &TableFormat::block_rows},
    CountField{"TblShadePeriod", &TableFormat::shade_period},
    CountField{"TblAltShadePeriod", &TableFormat::other_shade_period},
    CountField{"TblXColumnNum", &TableFormat::other_column},
    CountField{"TblRulingPeriod", &TableFormat::ruling_period},
};

struct ShadeField {
  std::string_view fill;
  std::string_view color;
  TableShade TableFormat::*shade;
};
constexpr std::array kShadeFields = {
    ShadeField{"TblHFFill", "TblHFColor", &TableFormat::heading},
    ShadeField{"TblBodyFill", "TblBodyColor", &TableFormat::body},
    ShadeField{"TblXFill", "TblXColor", &TableFormat::other_body},
};

struct StartName {
  std::string_view name;
  StartAt start;
};
constexpr std::array kStarts = {
    StartName{"ColumnTop", StartAt::kColumn}, StartName{"PageTop", StartAt::kPage},
    StartName{"LPageTop", StartAt::kLeftPage}, StartName{"RPageTop", StartAt::kRightPage}};

void ApplyWord(std::string_view name, std::string_view data, TableFormat* format) {
  if (name == "TblAlignment") {
    format->alignment = data == "Center"  ? Alignment::kCenter
                        : data == "Right" ? Alignment::kRight
                                          : Alignment::kLeft;
  } else if (name == "TblPlacement") {
    format->floats = data == "Float";
    format->start = StartAt::kAnywhere;
    for (const StartName& start : kStarts) {
      if (start.name == data) format->start = start.start;
    }
  } else if (name == "TblTitlePlacement") {
    format->title = data == "InHeader"   ? TitlePlace::kAbove
                    : data == "InFooter" ? TitlePlace::kBelow
                                         : TitlePlace::kNone;
  } else if (name == "TblShadeByColumn") {
    format->shade_by_column = IsYes(data);
  } else if (name == "TblLastBRuling") {
    format->bottom_ruling_last = IsYes(data);
  }
}

}  // namespace

bool FillColor(int fill, const Rgb& full, Rgb* color) {
  if (fill < 0 || fill >= kNoFill) return false;
  const auto index = static_cast<std::size_t>(fill);
  const double part = index < kFillParts.size() ? kFillParts[index] : kPatternPart;
  const auto mixed = [part](double channel) { return 1 - part * (1 - channel); };
  *color = {mixed(full.red), mixed(full.green), mixed(full.blue)};
  return true;
}

TableFormats::TableFormats(const model::Document& document, double unit) : document_(document), unit_(unit) {
  const std::size_t end = document.content_begin != 0 ? document.content_begin : document.source.size();
  const std::string_view head = std::string_view(document.source).substr(0, end);
  mif::Reader reader(head);
  while (reader.Next()) {
    if (reader.kind() != mif::Piece::kGroup) continue;
    const bool tables = reader.token() == mif::Token::kTblCatalog;
    const bool rulings = reader.token() == mif::Token::kRulingCatalog;
    const std::uint32_t begin = reader.begin();
    if (!reader.Skip()) return;
    const std::string_view catalog = head.substr(begin, reader.end() - begin);
    if (rulings) ReadRulings(catalog);
    if (!tables) continue;
    EachChild(catalog, [&](mif::Reader& child) {
      if (child.token() != mif::Token::kTblFormat || child.kind() != mif::Piece::kGroup) return;
      const std::uint32_t at = child.begin();
      if (!child.Skip()) return;
      const std::string_view statement = catalog.substr(at, child.end() - at);
      TableFormat format;
      Apply(statement, &format);
      EachChild(statement, [&](const mif::Reader& leaf) {
        if (leaf.token() != mif::Token::kTblTag) return;
        formats_.insert_or_assign(mif::DecodeString(leaf.data(), document_.encoding), format);
      });
    });
  }
}

void TableFormats::ReadRulings(std::string_view catalog) {
  EachChild(catalog, [&](mif::Reader& reader) {
    if (reader.kind() != mif::Piece::kGroup) return;
    Ruling ruling;
    std::string tag;
    int pen = 0;
    int lines = 1;
    model::Children(&reader, [&] {
      const std::string_view name = reader.name();
      if (name == "RulingTag") tag = mif::DecodeString(reader.data(), document_.encoding);
      if (name == "RulingPenWidth") ruling.width = Length(reader.data(), 1);
      if (name == "RulingGap") ruling.gap = Length(reader.data(), 1);
      if (name == "RulingColor") {
        ruling.color = ColorNamed(document_, mif::DecodeString(reader.data(), document_.encoding));
      }
      if (name == "RulingPen") pen = static_cast<int>(Number(reader.data()));
      if (name == "RulingLines") lines = static_cast<int>(Number(reader.data()));
    });
    Rgb color;
    if (lines == 0 || !FillColor(pen, ruling.color, &color)) ruling.width = 0;
    ruling.color = color;
    ruling.two_lines = lines > 1;
    rulings_.insert_or_assign(std::move(tag), ruling);
  });
}

void TableFormats::Apply(std::string_view statement, TableFormat* format) const {
  const auto decoded = [this](std::string_view data) { return mif::DecodeString(data, document_.encoding); };
  EachChild(statement, [&](const mif::Reader& child) {
    if (child.kind() != mif::Piece::kLeaf) return;
    const std::string_view name = child.name();
    const std::string_view data = child.data();
    for (const RulingField& field : kRulingFields) {
      if (field.name == name) format->*field.ruling = decoded(data);
    }
    for (const LengthField& field : kLengthFields) {
      if (field.name == name) format->*field.length = Length(data, unit_);
    }
    for (const CountField& field : kCountFields) {
      if (field.name == name) {
        format->*field.count = static_cast<std::uint32_t>(std::clamp(Number(data), 0.0, 1e6));
      }
    }
    for (const ShadeField& field : kShadeFields) {
      if (field.fill == name) (format->*field.shade).fill = static_cast<int>(Number(data));
      if (field.color == name) (format->*field.shade).color = decoded(data);
    }
    if (name == "TblCellMargins") {
      const std::vector<double> all = Lengths(data, 1);
      if (all.size() >= 4) format->margins = {all[0], all[1], all[2], all[3]};
    }
    ApplyWord(name, data, format);
  });
}

TableFormat TableFormats::Of(std::string_view tag, std::string_view statement) const {
  const auto found = formats_.find(std::string(tag));
  TableFormat format = found == formats_.end() ? TableFormat() : found->second;
  mif::Reader reader(statement);
  reader.Next();
  // What the table changes stands before its content.
  while (reader.Next() && reader.token() != mif::Token::kTblBody && reader.token() != mif::Token::kTblH &&
         reader.token() != mif::Token::kTblTitle) {
    const std::uint32_t begin = reader.begin();
    const bool changes = reader.kind() == mif::Piece::kGroup && reader.token() == mif::Token::kTblFormat;
    if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) break;
    if (changes) Apply(statement.substr(begin, reader.end() - begin), &format);
  }
  return format;
}

const Ruling* TableFormats::RulingNamed(const std::string& name) const {
  const auto found = rulings_.find(name);
  return name.empty() || found == rulings_.end() || found->second.width <= 0 ? nullptr : &found->second;
}

bool TableFormats::ShadeColor(const TableShade& shade, Rgb* color) const {
  return FillColor(shade.fill, ColorNamed(document_, shade.color), color);
}

}  // namespace qelm::embedded::render
