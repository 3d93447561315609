#include "schemes/scheme_listing.h"

#include <string_view>

#include "schemes/styles.h"

namespace qelm::schemes {
namespace {

constexpr std::string_view kSeparator = "-----------------------------------------------------------";

// Puts the pieces of a listing together. Every piece brings the line ends before it.
class Listing {
 public:
  Listing& Put(std::string_view before, std::string_view text = {}) {
    text_.append(before).append(text);
    return *this;
  }
  Listing& Switch(std::string_view label, bool on) { return Put(label, on ? "Yes" : "No"); }
  std::string Take() { return std::move(text_); }

 private:
  std::string text_;
};

std::string_view TitleOf(SchemeKind kind) {
  switch (kind) {
    case SchemeKind::kFilter:
      return "\nQELM - Active Filter Scheme Parameters";
    case SchemeKind::kColoring:
      return "\nQELM - Active Coloring Scheme Parameters";
    case SchemeKind::kValidation:
      return "\nQELM - Active Validation Scheme Parameters";
  }
  return {};
}

void PutHead(const Scheme& scheme, Listing& listing) {
  listing.Put("\n\n", kSeparator).Put("\n", kSeparator).Put(TitleOf(scheme.kind));
  listing.Put("\n(Current category - ", scheme.category).Put(")").Put("\n", kSeparator);
  listing.Put("\n\nName: ", scheme.name);
  listing.Put("\nType: ", scheme.is_xpath ? "XPath scheme" : "\"Classic\" scheme");
}

void PutSwitches(const Scheme& scheme, Listing& listing) {
  listing.Put("\n\nGeneral settings:").Switch("\n\n - Include EDD defaults:  ", scheme.include_edd_defaults);
  if (!scheme.is_xpath) {
    listing.Switch("\n - Ignore case:  ", scheme.ignore_case);
    listing.Switch("\n - Space delimited vals:  ", scheme.space_delimited);
  }
  listing.Switch("\n - Process all flows:  ", scheme.process_all_flows);
  // Negative logic has no meaning in classic schemes.
  if (scheme.kind == SchemeKind::kFilter && scheme.is_xpath) {
    listing.Switch("\n - Use negative logic:  ", scheme.use_negative_logic);
  }
}

// One blank behind "Style:", two behind the other colons: scripts read these lines.
void PutRule(const Scheme& scheme, const Rule& rule, std::size_t number, Listing& listing) {
  listing.Put("\n\n____ Rule #", std::to_string(number)).Put(" ____");
  listing.Put("\n\n - Color:  ", rule.color).Put("\n - Style: ", StyleName(rule.style));
  listing.Put("\n\n - Background color:  ", rule.background);
  if (!scheme.is_xpath) {
    listing.Switch("\n - Match all:  ", rule.match_all).Switch("\n - Override:  ", rule.override_others);
  }
  for (const Condition& condition : rule.conditions) {
    if (scheme.is_xpath) {
      listing.Put("\n\n  Expressions:\n");
    } else {
      listing.Put("\n\n  Rule attributes:").Put("\n\n   - Attribute:  ", condition.attribute);
    }
    for (const std::string& value : condition.values) {
      listing.Put(scheme.is_xpath ? "\n   - " : "\n     - Value:  ", value);
    }
  }
}

void PutContent(const Scheme& scheme, Listing& listing) {
  if (scheme.is_xpath) {
    listing.Put("\n\nExpressions:\n");
    for (const std::string& expression : scheme.expressions) listing.Put("\n - ", expression);
    return;
  }
  listing.Put("\n\nScheme Attributes:");
  for (const Condition& condition : scheme.attributes) {
    listing.Put("\n\n - Attribute:  ", condition.attribute);
    for (const std::string& value : condition.values) listing.Put("\n   - Value:  ", value);
  }
}

}  // namespace

std::string SchemeParameters(const Scheme& scheme) {
  Listing listing;
  PutHead(scheme, listing);
  PutSwitches(scheme, listing);
  if (scheme.kind == SchemeKind::kColoring) {
    for (std::size_t index = 0; index < scheme.rules.size(); ++index) {
      PutRule(scheme, scheme.rules[index], index + 1, listing);
    }
  } else {
    PutContent(scheme, listing);
  }
  return listing.Put("\n\n", kSeparator).Take();
}

void PrintSchemeParameters(host::UserInterface& user, const Scheme& scheme) {
  user.Print(SchemeParameters(scheme));
}

void PrintAfterLoading(host::UserInterface& user, const config::LocalSettings& settings,
                       const Scheme& scheme) {
  if (settings.debug_mode != 0 || settings.print_scheme_parms_after_any_data_read) {
    PrintSchemeParameters(user, scheme);
  }
}

}  // namespace qelm::schemes
