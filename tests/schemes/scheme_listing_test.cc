#include "schemes/scheme_listing.h"

#include <gtest/gtest.h>

#include "support/memory_platform.h"

namespace qelm::schemes {
namespace {

constexpr char kSeparator[] = "-----------------------------------------------------------";

std::string Framed(const std::string& title, const std::string& rest) {
  const std::string separator = kSeparator;
  return "\n\n" + separator + "\n" + separator + "\nQELM - Active " + title +
         " Scheme Parameters\n(Current category - Audience)\n" + separator + rest + "\n\n" + separator;
}

Scheme SchemeOfKind(SchemeKind kind) {
  Scheme scheme;
  scheme.kind = kind;
  scheme.category = "Audience";
  scheme.name = "50% %s";
  return scheme;
}

TEST(SchemeParameters, OfAClassicColoringScheme) {
  Scheme scheme = SchemeOfKind(SchemeKind::kColoring);
  scheme.include_edd_defaults = true;
  scheme.space_delimited = true;
  scheme.rules.push_back({.color = "Red",
                          .style = 7,
                          .background = "Yellow",
                          .match_all = true,
                          .conditions = {{"Audience", {"expert", "<no value>"}}, {"Product", {}}}});
  scheme.rules.emplace_back().color = "Blue";
  scheme.rules.back().override_others = true;
  EXPECT_EQ(SchemeParameters(scheme),
            Framed("Coloring",
                   "\n\nName: 50% %s\nType: \"Classic\" scheme\n\nGeneral settings:"
                   "\n\n - Include EDD defaults:  Yes\n - Ignore case:  No\n - Space delimited vals:  Yes"
                   "\n - Process all flows:  No"
                   "\n\n____ Rule #1 ____\n\n - Color:  Red\n - Style: Num UL / Ch Bar"
                   "\n\n - Background color:  Yellow\n - Match all:  Yes\n - Override:  No"
                   "\n\n  Rule attributes:\n\n   - Attribute:  Audience\n     - Value:  expert"
                   "\n     - Value:  <no value>\n\n  Rule attributes:\n\n   - Attribute:  Product"
                   "\n\n____ Rule #2 ____\n\n - Color:  Blue\n - Style: None"
                   "\n\n - Background color:  None\n - Match all:  No\n - Override:  Yes"));
}

TEST(SchemeParameters, OfAnXPathFilterScheme) {
  Scheme scheme = SchemeOfKind(SchemeKind::kFilter);
  scheme.is_xpath = true;
  scheme.use_negative_logic = true;
  scheme.expressions = {"//a"};
  EXPECT_EQ(SchemeParameters(scheme),
            Framed("Filter",
                   "\n\nName: 50% %s\nType: XPath scheme\n\nGeneral settings:\n\n - Include EDD defaults:  No"
                   "\n - Process all flows:  No\n - Use negative logic:  Yes\n\nExpressions:\n\n - //a"));
}

TEST(PrintAfterLoading, OnlyWhenTheSettingsAskForIt) {
  testing::RecordingUser user;
  const Scheme scheme = SchemeOfKind(SchemeKind::kFilter);
  config::LocalSettings settings;
  PrintAfterLoading(user, settings, scheme);
  EXPECT_EQ(user.console, "");
  settings.print_scheme_parms_after_any_data_read = true;
  PrintAfterLoading(user, settings, scheme);
  EXPECT_EQ(user.console, SchemeParameters(scheme));
  settings.print_scheme_parms_after_any_data_read = false;
  settings.debug_mode = 3;
  PrintAfterLoading(user, settings, scheme);
  EXPECT_EQ(user.console, SchemeParameters(scheme) + SchemeParameters(scheme));
}

}  // namespace
}  // namespace qelm::schemes
