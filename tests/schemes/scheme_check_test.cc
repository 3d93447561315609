// Looking over all schemes: one case for each thing that can be wrong.
#include "schemes/scheme_check.h"

#include <gtest/gtest.h>

#include "schemes/settings_session.h"
#include "support/mif_files.h"

namespace qelm::schemes {
namespace {

using testing::Attribute;
using testing::Category;
using testing::Expressions;
using testing::MainSettings;
using testing::RuleOf;
using testing::SchemeOf;
using testing::SettingsSession;
using testing::T;

const std::string kRed = T("Name", "Red");
const std::string kGood = Attribute("a", {"x"});

struct FaultCase {
  std::string classic;
  std::string xpath;
  std::vector<SchemeFault> faults;
  std::string text1;
};

TEST(CheckSchemes, EveryFaultHasItsCase) {
  using enum SchemeFault;
  const auto filter = [](const std::string& settings, const std::string& content) {
    return Category("C", SchemeOf("S", settings, content));
  };
  const auto coloring = [](const std::string& content) {
    return Category("C", "", SchemeOf("S", "", content));
  };
  const auto validation = [](const std::string& content) {
    return Category("C", "", "", SchemeOf("S", "", content));
  };
  const std::string spaces = T("SpaceDelimitedVals", "True");
  const std::string all = T("MatchAll", "yes");
  const std::vector<FaultCase> cases = {
      {filter("", kGood), filter("", Expressions({"//P", "//S"})), {kSchemeHidden}, ""},
      {Category("", ""), "", {kCategoryName}, ""},
      {Category(std::string(256, 'x'), ""), "", {kCategoryName}, ""},
      {Category("C", "") + Category("C", ""), Category("C", ""), {kCategoryAgain}, "C"},
      {Category("C", SchemeOf("<none>", "", kGood)), "", {kSchemeName}, ""},
      {Category("C", SchemeOf("S", "", kGood) + SchemeOf("S", "", kGood)), "", {kSchemeAgain}, ""},
      {filter(T("ProcessAllFlows", "perhaps"), kGood), "", {kSwitch}, "ProcessAllFlows"},
      {filter("", ""), "", {kNothingInIt}, ""},
      {"", filter("", kGood), {kNothingInIt}, ""},
      {coloring(RuleOf(kRed, "")), "", {kNoConditions}, ""},
      {"", coloring(RuleOf(kRed, Expressions({}))), {kNoConditions}, ""},
      {filter("", Attribute("", {"x"})), "", {kAttributeName}, ""},
      {filter("", Attribute("a", {})), "", {}, ""},
      {validation(Attribute("a", {})), "", {kNoValues}, "a"},
      {filter("", kGood + kGood), "", {kAttributeAgain}, "a"},
      {filter("", Attribute("a", {"x", "y", "x"})), "", {kValueAgain}, "x"},
      {filter("", Attribute("a", {"x", ""})), "", {kValueEmpty}, "a"},
      {filter(spaces, Attribute("a", {"x y", "<no value>"})), "", {kValueWithBlank}, "x y"},
      {filter("", Attribute("a", {"x y"})), "", {}, ""},
      {coloring(RuleOf(kRed + all, Attribute("a", {"<no value>", "<any value>"}))),
       "",
       {kNoAndAnyValue},
       "a"},
      {coloring(RuleOf(kRed, Attribute("a", {"<no value>", "<any value>"}))), "", {}, ""},
      {coloring(RuleOf("", kGood)), "", {kColorName}, ""},
      {coloring(RuleOf(T("Name", "Pink") + T("BkgdColor", "None"), kGood)), "", {kNoSuchColor}, "Pink"},
      {coloring(RuleOf(T("Name", "<skip>") + T("BkgdColor", "Mauve"), kGood)), "", {kNoSuchColor}, "Mauve"},
      {coloring(RuleOf(T("Name", "<from EDD>") + T("BkgdColor", "<skip>"), kGood)),
       "",
       {kNoSuchColor},
       "<skip>"},
      {coloring(RuleOf(kRed + T("Style", "12"), kGood)), "", {kStyle}, "12"},
      {"", filter("", Expressions({"//P", "//P"})), {kExpressionAgain}, "//P"},
      {"", coloring(RuleOf(kRed, Expressions({"//P[", "//S"}))), {kExpression}, "//P["},
      {"", validation(kGood), {}, ""},
  };
  for (const FaultCase& test : cases) {
    SCOPED_TRACE(test.classic + test.xpath);
    SettingsSession session;
    const host::Id settings = session.Open("/main.xml", MainSettings(test.classic, test.xpath));
    const host::Id document = session.Open("/doc.mif", testing::Mif("<Doc><P>x</P></Doc>"));
    const std::vector<SchemeFinding> findings = CheckSchemes(session.engine, settings, document);
    std::vector<SchemeFault> faults;
    for (const SchemeFinding& finding : findings) faults.push_back(finding.fault);
    ASSERT_EQ(faults, test.faults);
    if (!findings.empty()) {
      EXPECT_EQ(findings[0].text1, test.text1);
    }
  }
}

}  // namespace
}  // namespace qelm::schemes
