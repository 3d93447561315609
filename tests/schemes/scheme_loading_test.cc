#include "schemes/scheme_loading.h"

#include <gtest/gtest.h>

#include "schemes/scheme_listing.h"
#include "schemes/settings_session.h"
#include "schemes/styles.h"

namespace qelm::schemes {
namespace {

using namespace testing;  // the notation of settings_session.h

TEST(LoadScheme, AFilterSchemeOfEitherFamily) {
  SettingsSession session;
  const host::Id document = session.Open(
      "/m.xml",
      MainSettings(
          Category("A", SchemeOf("S", E("SpaceDelimitedVals", "True") + E("UseNegativeLogic", "no"),
                                 Attribute("Audience", {"expert", "<no value>"}) + Attribute("Product", {}))),
          Category("X", SchemeOf("S", E("UseNegativeLogic", "True") + E("Comment", " why "),
                                 Expressions({"//a[b='<']", " //c "}) + Expressions({"//d"})))));
  Scheme scheme;
  ASSERT_EQ(session.Load(document, SchemeKind::kFilter, "A", "S", &scheme), kLoaded);
  EXPECT_FALSE(scheme.is_xpath);
  EXPECT_TRUE(scheme.space_delimited);
  EXPECT_FALSE(scheme.use_negative_logic);
  ASSERT_EQ(scheme.attributes.size(), 2U);
  EXPECT_EQ(scheme.attributes[0].attribute, "Audience");
  EXPECT_EQ(scheme.attributes[0].values, (std::vector<std::string>{"expert", "<no value>"}));
  EXPECT_TRUE(scheme.attributes[1].values.empty());

  ASSERT_EQ(session.Load(document, SchemeKind::kFilter, "X", "S", &scheme), kLoaded);
  EXPECT_TRUE(scheme.is_xpath);
  EXPECT_TRUE(scheme.use_negative_logic);
  EXPECT_FALSE(scheme.space_delimited) << "nothing is left of the scheme before";
  EXPECT_TRUE(scheme.attributes.empty());
  EXPECT_EQ(scheme.expressions, (std::vector<std::string>{"//a[b='<']", "//c", "//d"}));
  EXPECT_EQ(scheme.comment, "why");
  EXPECT_TRUE(scheme.Active());
}

TEST(LoadScheme, RulesOfColoringSchemes) {
  SettingsSession session;
  const std::string classic = RuleOf(T("Name", " Red ") + E("Style", "3abc") + E("MatchAll", "1") +
                                         E("Override", "Yes") + E("BkgdColor", "Yellow"),
                                     Attribute("Audience", {"expert"})) +
                              RuleOf(E("Style", "12") + E("MatchAll", "off"));
  const std::string xpath = RuleOf(T("Name", "Blue"), Expressions({"//a", "//b"})) + RuleOf("");
  const host::Id document = session.Open(
      "/m.xml", MainSettings(Category("A", "", SchemeOf("S", "", classic) + SchemeOf("Empty", "")),
                             Category("X", "", SchemeOf("S", "", xpath))));
  Scheme scheme;
  ASSERT_EQ(session.Load(document, SchemeKind::kColoring, "A", "S", &scheme), kLoaded);
  ASSERT_EQ(scheme.rules.size(), 2U);
  EXPECT_EQ(scheme.rules[0].color, "Red");
  EXPECT_EQ(scheme.rules[0].style, kStyleUnderline);
  EXPECT_EQ(scheme.rules[0].background, "Yellow");
  EXPECT_TRUE(scheme.rules[0].match_all);
  EXPECT_TRUE(scheme.rules[0].override_others);
  EXPECT_EQ(scheme.rules[1].style, kStyleNone);
  EXPECT_EQ(scheme.rules[1].background, "None");
  EXPECT_FALSE(scheme.rules[1].match_all);

  ASSERT_EQ(session.Load(document, SchemeKind::kColoring, "X", "S", &scheme), kLoaded);
  ASSERT_EQ(scheme.rules.size(), 2U);
  ASSERT_EQ(scheme.rules[0].conditions.size(), 1U);
  EXPECT_EQ(scheme.rules[0].conditions[0].attribute, "XPathExpressions");
  EXPECT_EQ(scheme.rules[0].conditions[0].values, (std::vector<std::string>{"//a", "//b"}));
  ASSERT_EQ(scheme.rules[1].conditions.size(), 1U);

  ASSERT_EQ(session.Load(document, SchemeKind::kColoring, "A", "Empty", &scheme), kLoaded);
  EXPECT_TRUE(scheme.rules.empty());
}

TEST(LoadScheme, TheClassicCategoryComesFirst) {
  SettingsSession session;
  const host::Id document = session.Open(
      "/m.xml", MainSettings(Category("A", SchemeOf("S", "") + SchemeOf("S", E("ProcessAllFlows", "True"))),
                             Category("A", SchemeOf("S", "") + SchemeOf("Only", ""))));
  Scheme scheme;
  ASSERT_EQ(session.Load(document, SchemeKind::kFilter, "A", "S", &scheme), kLoaded);
  EXPECT_FALSE(scheme.is_xpath);
  EXPECT_FALSE(scheme.process_all_flows) << "the first of two with one name";
  ASSERT_EQ(session.Load(document, SchemeKind::kFilter, "A", "Only", &scheme), kLoaded);
  EXPECT_TRUE(scheme.is_xpath);
}

TEST(LoadScheme, OneThatIsNotThereEmptiesTheScheme) {
  SettingsSession session;
  session.platform.files["English.po"] =
      "msgctxt \"General Strings\"\nmsgid \"QELM_MSG_COLORING_11\"\nmsgstr \"%s, %s, %s: %s\"\n\n"
      "msgctxt \"General Strings\"\nmsgid \"QELM_MSG_VAL_GEN_7\"\nmsgstr \"validation %s\"\n";
  ASSERT_TRUE(session.messenger.LoadLanguage("", "English"));
  const host::Id document =
      session.Open("/m.xml", MainSettings(Category("A", SchemeOf("S", "") + SchemeOf("T", ""))));
  Scheme scheme;
  ASSERT_EQ(session.Load(document, SchemeKind::kFilter, "A", "S", &scheme), kLoaded);
  EXPECT_EQ(session.Load(document, SchemeKind::kFilter, "A", "s", &scheme), kSchemeNotFound);
  EXPECT_EQ(scheme.name, "<none>");
  EXPECT_FALSE(scheme.Active());
  EXPECT_TRUE(session.user.notes.empty());
  EXPECT_EQ(session.Load(document, SchemeKind::kFilter, "B", "S", &scheme, true), kSchemeNotFound);
  EXPECT_EQ(session.Load(document, SchemeKind::kColoring, "A", "S", &scheme, true), kSchemeNotFound);
  EXPECT_EQ(session.Load(document, SchemeKind::kValidation, "A", "S", &scheme, true), kSchemeNotFound);
  ASSERT_EQ(session.user.notes.size(), 3U);
  EXPECT_TRUE(session.user.notes[0].ends_with("S, B, /m.xml: A/S\nA/T"));
  EXPECT_TRUE(session.user.notes[1].ends_with("S, A, /m.xml: <none>"));
  EXPECT_TRUE(session.user.notes[2].ends_with("validation S"));
}

TEST(LoadScheme, NamesThatAreHardToWriteInAnExpression) {
  SettingsSession session;
  xpath::bw_XPathEngineInit(session.engine, 0, 100, 0);  // too short for any look-up by expression
  const std::string long_name(255, 'n');
  const std::vector<std::string> names = {
      "Ann's", "12\" pipe", "Ann's 12\" pipe", "a]/b[", "\u00DCbersicht", long_name, "A  B", "1"};
  std::string schemes;
  for (const std::string& name : names) schemes += SchemeOf(name, T("Comment", name));
  const host::Id document = session.Open("/m.xml", MainSettings(Category("It's", schemes)));
  for (const std::int32_t longest : {100, 1000}) {
    xpath::bw_XPathEngineInit(session.engine, 0, longest, 0);
    for (const std::string& name : names) {
      Scheme scheme;
      EXPECT_EQ(session.Load(document, SchemeKind::kFilter, "It's", name, &scheme), kLoaded) << name;
      EXPECT_EQ(scheme.comment, name);
    }
  }
}

TEST(LoadScheme, LimitsOfTheEngineDoNotCutASchemeShort) {
  SettingsSession session;
  xpath::bw_XPathEngineInit(session.engine, 0, 10000, 100);
  std::vector<std::string> values;
  for (int value = 0; value < 250; ++value) values.push_back(std::to_string(value));
  const std::string expression = "//a[b='" + std::string(5000, 'x') + "']";
  const host::Id document =
      session.Open("/m.xml", MainSettings(Category("A", SchemeOf("S", "", Attribute("Number", values))),
                                          Category("X", SchemeOf("S", "", Expressions({expression})))));
  Scheme scheme;
  ASSERT_EQ(session.Load(document, SchemeKind::kFilter, "A", "S", &scheme), kLoaded);
  EXPECT_EQ(scheme.attributes.at(0).values, values);
  ASSERT_EQ(session.Load(document, SchemeKind::kFilter, "X", "S", &scheme), kLoaded);
  EXPECT_EQ(scheme.expressions, std::vector<std::string>{expression});
  EXPECT_TRUE(session.user.notes.empty());
}

// The two shipped main settings documents hold the same, every scheme in them loads, and all expressions are
// accepted.
TEST(ShippedSchemes, MifAndXmlAreTheSame) {
  SettingsSession session;
  const host::Id xml = session.OpenSource("assets/QELM_MainSettings_LocalCopy.xml");
  const host::Id mif = session.OpenSource("assets/QELM_MainSettings_LocalCopy.fm");
  const std::vector<SchemeListing> in_xml = ListSchemes(session.engine, xml);
  const std::vector<SchemeListing> in_mif = ListSchemes(session.engine, mif);
  ASSERT_EQ(in_xml.size(), in_mif.size());
  std::vector<std::string> names;
  for (std::size_t index = 0; index < in_xml.size(); ++index) {
    const SchemeListing& listing = in_xml[index];
    names.push_back(listing.category + "/" + listing.name);
    Scheme from_xml;
    Scheme from_mif;
    ASSERT_EQ(session.Load(xml, listing.kind, listing.category, listing.name, &from_xml), kLoaded);
    ASSERT_EQ(session.Load(mif, listing.kind, in_mif[index].category, in_mif[index].name, &from_mif),
              kLoaded);
    EXPECT_EQ(SchemeParameters(from_xml), SchemeParameters(from_mif));
    EXPECT_EQ(from_xml.comment, from_mif.comment);
    EXPECT_EQ(from_xml.is_xpath, listing.is_xpath);
    for (const Rule& rule : from_xml.rules) {
      if (listing.is_xpath) {
        from_xml.expressions.insert(from_xml.expressions.end(), rule.conditions.at(0).values.begin(),
                                    rule.conditions.at(0).values.end());
      }
    }
    for (const std::string& expression : from_xml.expressions) {
      EXPECT_LT(xpath::bw_ParseXPath(session.engine, expression, 0), xpath::kFirstError) << expression;
    }
  }
  for (const std::string name : {"Audience/Beginner", "Review/By audience", "Quality/Allowed values"}) {
    EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << name;
  }
}

}  // namespace
}  // namespace qelm::schemes
