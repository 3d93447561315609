#include "coloring/rule_colors.h"

#include <algorithm>
#include <array>

#include "schemes/color_names.h"
#include "schemes/styles.h"

namespace qelm::coloring {
namespace {

using host::Underlining;

// What a style switches on.
struct Decoration {
  std::uint32_t mask;
  Underlining underlining;
};
constexpr std::array<Decoration, 9> kDecorations = {{
    {0, Underlining::kNoLine},
    {host::kOverlineProperty, Underlining::kNoLine},
    {host::kStrikethroughProperty, Underlining::kNoLine},
    {host::kUnderliningProperty, Underlining::kSingle},
    {host::kUnderliningProperty, Underlining::kDouble},
    {host::kChangeBarProperty, Underlining::kNoLine},
    {host::kUnderliningProperty, Underlining::kNumeric},
    {host::kChangeBarProperty | host::kUnderliningProperty, Underlining::kNumeric},
    {0, Underlining::kNoLine},
}};
static_assert(kDecorations.size() == schemes::kStyleNames.size());

void Decorate(std::int32_t style, host::TextProperties* properties) {
  const auto index = static_cast<std::size_t>(style);
  if (style < 0 || index >= kDecorations.size()) return;
  const Decoration& decoration = kDecorations[index];
  properties->mask |= decoration.mask;
  properties->underlining = decoration.underlining;
  properties->overline = (decoration.mask & host::kOverlineProperty) != 0;
  properties->strikethrough = (decoration.mask & host::kStrikethroughProperty) != 0;
  properties->change_bar = (decoration.mask & host::kChangeBarProperty) != 0;
}

class ColorFinder {
 public:
  ColorFinder(host::Catalogs& catalogs, host::Id document, std::vector<std::string>* missing)
      : catalogs_(catalogs), document_(document), missing_(*missing) {}

  host::Id Find(const std::string& name) {
    const host::Id color = catalogs_.FindColor(document_, name);
    if (color == host::kNone && std::find(missing_.begin(), missing_.end(), name) == missing_.end()) {
      missing_.push_back(name);
    }
    return color;
  }

 private:
  host::Catalogs& catalogs_;
  host::Id document_;
  std::vector<std::string>& missing_;
};

}  // namespace

RuleMarks ResolveMarks(host::Catalogs& catalogs, host::Id document, const schemes::Scheme& scheme) {
  RuleMarks marks;
  ColorFinder colors(catalogs, document, &marks.missing);
  for (const schemes::Rule& rule : scheme.rules) {
    RuleMark& mark = marks.rules.emplace_back();
    mark.from_definition = rule.color == schemes::kColorOfDefinition;
    if (!schemes::IsNoColor(rule.color)) {
      mark.properties.color = colors.Find(rule.color);
      if (mark.properties.color != host::kNone) mark.properties.mask |= host::kColorProperty;
    }
    if (!schemes::IsNoBackground(rule.background)) {
      mark.properties.background = colors.Find(rule.background);
      if (mark.properties.background != host::kNone) mark.properties.mask |= host::kBackgroundProperty;
    }
    Decorate(rule.style, &mark.properties);
  }
  return marks;
}

}  // namespace qelm::coloring
