#include "embedded/render/indicators.h"

#include <algorithm>
#include <array>

#include "embedded/render/design/statements.h"

namespace qelm::embedded::render {
namespace {

struct StyleName {
  std::string_view name;
  Indicator::Style style;
};
constexpr std::array kStyles = {
    StyleName{"CUnderline", Indicator::Style::kUnderline},
    StyleName{"CDoubleUnderline", Indicator::Style::kDouble},
    StyleName{"CNumericUnderline", Indicator::Style::kNumeric},
    StyleName{"COverline", Indicator::Style::kOverline},
    StyleName{"CStrike", Indicator::Style::kStrike},
    StyleName{"CChangeBar", Indicator::Style::kChangeBar},
};

bool ShowsIndicators(const model::Document& document) {
  bool shows = false;
  EachChild(document.At(document.document_statement), [&](const mif::Reader& child) {
    if (child.name() == "DDisplayOverrides") shows = IsYes(child.data());
  });
  return shows;
}

}  // namespace

std::vector<std::vector<Indicator>> ReadIndicators(const model::Document& document) {
  std::vector<std::vector<Indicator>> by_set;
  if (document.document_statement.Empty() || !ShowsIndicators(document)) return by_set;
  std::vector<Indicator> by_condition(document.conditions.size());
  EachChild(document.At(document.condition_catalog), [&](mif::Reader& reader) {
    if (reader.token() != mif::Token::kCondition || reader.kind() != mif::Piece::kGroup) return;
    Indicator indicator;
    std::string tag;
    const auto name_of_color = [&](std::string_view data) {
      const auto found = document.color_index.find(mif::DecodeString(data, document.encoding));
      return found == document.color_index.end() ? mif::Inside(data) : document.colors[found->second].name;
    };
    model::Children(&reader, [&] {
      if (reader.token() == mif::Token::kCTag) tag = mif::DecodeString(reader.data(), document.encoding);
      if (reader.name() == "CColor") indicator.color = name_of_color(reader.data());
      if (reader.name() == "CBackgroundColor") indicator.background = name_of_color(reader.data());
      if (reader.name() != "CStyle") return;
      for (const StyleName& style : kStyles) {
        if (style.name == reader.data()) indicator.style = style.style;
      }
    });
    const auto found = document.condition_index.find(tag);
    if (found != document.condition_index.end()) by_condition[found->second] = indicator;
  });
  for (const std::vector<model::Id>& set : document.condition_sets) {
    std::vector<Indicator>& indicators = by_set.emplace_back();
    for (const model::Id condition : set) {
      Indicator indicator = by_condition[condition];
      for (Indicator& other : indicators) {
        if (!indicator.color.empty() && !other.color.empty() && other.color != indicator.color) {
          other.color = indicator.color = "Magenta";
        }
      }
      indicators.push_back(indicator);
    }
  }
  return by_set;
}

}  // namespace qelm::embedded::render
