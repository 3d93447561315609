// Coloring documents and selections: which rule colors what, what is asked and said, and what is undone.
#include <gtest/gtest.h>

#include "coloring/coloring_session.h"

namespace qelm::coloring {
namespace {

using host::Id;
using testing::Classic;
using testing::ColoringSession;
using testing::RuleOf;
using testing::Selecting;
using testing::XPath;

TEST(Coloring, InnerRulesLieOverOuterOnes) {
  ColoringSession session;
  const Id document = session.OpenMif(
      R"(<Doc><P Audience="admin">one <Em Audience="user">two</Em> three</P><P>four</P></Doc>)");
  const schemes::Scheme scheme =
      Classic({RuleOf("Audience", {"admin"}, "Red", 3), RuleOf("Audience", {"user"}, "Blue", 1, "Yellow"),
               RuleOf("Audience", {"<any value>"}, "Green")});
  EXPECT_EQ(session.Color(scheme), common::kDone);
  EXPECT_EQ(session.Golden(document),
            "<Doc><P Audience=\"admin\">{Red,Underline}one {}<Em "
            "Audience=\"user\">{Blue,Underline,Overline,Background=Yellow}two{}</Em>{Red,Underline} three{}"
            "</P><P>four</P></Doc>");
  EXPECT_EQ(session.run.rule_elements, (std::vector<std::uint64_t>{1, 1, 0}));
  EXPECT_EQ(session.run.colored, 2U);
  EXPECT_EQ(session.user.shown, std::vector<std::string>{});
}

TEST(Coloring, UnderAnOverridingRuleNothingElseColors) {
  ColoringSession session;
  const Id document =
      session.OpenMif(R"(<Doc><Sec A="x"><P B="y">one<Em B="y">two</Em></P></Sec><P B="y">three</P></Doc>)");
  schemes::Scheme scheme = Classic({RuleOf("A", {"x"}, "Red"), RuleOf("B", {"y"}, "Blue")});
  scheme.rules[0].override_others = true;
  session.Color(scheme);
  EXPECT_EQ(session.Golden(document),
            "<Doc><Sec A=\"x\"><P B=\"y\">{Red}one{}<Em B=\"y\">{Red}two{}</Em></P></Sec><P "
            "B=\"y\">{Blue}three{}</P></Doc>");
}

TEST(Coloring, StylesSetTheirProperties) {
  constexpr const char* kStyles[] = {"{Red}",
                                     "{Red,Overline}",
                                     "{Red,Strikethrough}",
                                     "{Red,Underline}",
                                     "{Red,DoubleUnderline}",
                                     "{Red,ChangeBar}",
                                     "{Red,NumericUnderline}",
                                     "{Red,NumericUnderline,ChangeBar}",
                                     "{Red}"};
  for (std::int32_t style = 0; style < 9; ++style) {
    ColoringSession session;
    const Id document = session.OpenMif(R"(<Doc A="x">one</Doc>)");
    session.Color(Classic({RuleOf("A", {"x"}, "Red", style)}));
    EXPECT_EQ(session.Golden(document), std::string("<Doc A=\"x\">") + kStyles[style] + "one{}</Doc>");
  }
}

TEST(Coloring, WordsInPlaceOfAColorSetNone) {
  for (const char* word : {"None", "<skip>"}) {
    ColoringSession session;
    const Id document = session.OpenMif(R"(<Doc><P A="x">one</P></Doc>)");
    EXPECT_EQ(session.Color(Classic({RuleOf("A", {"x"}, word, 3)})), common::kDone);
    EXPECT_EQ(session.Golden(document), "<Doc><P A=\"x\">{Underline}one{}</P></Doc>");
    EXPECT_EQ(session.user.shown, std::vector<std::string>{}) << word;
  }
}

TEST(Coloring, FromDefinitionGivesBackWhatAnOuterRuleSet) {
  ColoringSession session;
  const Id document = session.OpenMif(R"(<Doc A="x"><P>one <Em B="y">two</Em></P></Doc>)");
  session.Color(Classic({RuleOf("A", {"x"}, "Red", 7), RuleOf("B", {"y"}, "<from EDD>", 1)}));
  EXPECT_EQ(session.Golden(document),
            "<Doc A=\"x\"><P>{Red,NumericUnderline,ChangeBar}one {}<Em "
            "B=\"y\">{Overline,ChangeBar}two{}</Em></P></Doc>");
}

TEST(Coloring, SmallestPositionInANodeSetWinsAndTiesGoToTheEarlierRule) {
  ColoringSession session;
  const Id document = session.OpenMif("<Doc><P>one</P><P>two</P><P>three</P><Q>four</Q></Doc>");
  // The second rule finds the third P first; both find the first one in their first place.
  session.Color(XPath(
      {Selecting({"//P"}, "Red"), Selecting({"//P[3]", "//Q"}, "Blue"), Selecting({"//P[1]"}, "Green")}));
  EXPECT_EQ(session.Golden(document),
            "<Doc><P>{Red}one{}</P><P>{Red}two{}</P><P>{Blue}three{}</P><Q>{Blue}four{}</Q></Doc>");
}

TEST(Coloring, TextNodesAreColoredWhereAnExpressionSelectsThem) {
  ColoringSession session;
  const Id document = session.OpenMif("<Doc><P>one <Em>two</Em> three</P></Doc>");
  session.Color(XPath({Selecting({"//P/text()"}, "Red")}));
  EXPECT_EQ(session.Golden(document), "<Doc><P>{Red}one {}<Em>two</Em>{Red} three{}</P></Doc>");
}

TEST(Coloring, NestedMarksStopAtFootnotesAndTables) {
  ColoringSession session;
  const Id document = session.OpenMif(
      R"(<Doc A="x"><P>a<Footnote B="n">b<Em A="z">c</Em>d</Footnote>e<Em A="y">f</Em>g</P><P>h<Em A="y">i</Em></P></Doc>)");
  session.Color(
      Classic({RuleOf("A", {"x"}, "Red", 3), RuleOf("A", {"y"}, "Blue"), RuleOf("A", {"z"}, "Green")}));
  EXPECT_EQ(session.Golden(document),
            "<Doc A=\"x\"><P>{Red,Underline}a{}<Footnote B=\"n\" {Red,Underline}>{Red,Underline}b{}<Em "
            "A=\"z\">{Green,Underline}c{}</Em>{Red,Underline}d{}</Footnote>{Red,Underline}e{}<Em "
            "A=\"y\">{Blue,Underline}f{}</Em>{Red,Underline}g{}</P><P>{Red,Underline}h{}<Em "
            "A=\"y\">{Blue,Underline}i{}</Em></P></Doc>")
      << "the footnote inherits the rule of the root";

  session.Color(testing::XPath({Selecting({"/Doc"}, "Red", 3), Selecting({"//Em"}, "Blue")}));
  EXPECT_EQ(session.Golden(document),
            "<Doc A=\"x\"><P>{Red,Underline}a{}<Footnote B=\"n\" {Red,Underline}>b<Em "
            "A=\"z\">{Blue}c{}</Em>d</Footnote>{Red,Underline}e{}<Em "
            "A=\"y\">{Blue,Underline}f{}</Em>{Red,Underline}g{}</P><P>{Red,Underline}h{}<Em "
            "A=\"y\">{Blue,Underline}i{}</Em></P></Doc>")
      << "a mark around a footnote does not reach its text";
}

TEST(Coloring, TextInTablesIsColoredByTheRulesOfItsOwnElements) {
  ColoringSession session;
  const Id document = session.OpenMif(R"(<Doc A="x"><P>one</P><Table><TableTitle>t</TableTitle><TableBody>
    <Row B="y"><Cell>1</Cell></Row><Row><Cell>2</Cell></Row></TableBody></Table></Doc>)");
  session.Color(Classic({RuleOf("A", {"x"}, "Red"), RuleOf("B", {"y"}, "Blue")}));
  const std::string golden = session.Golden(document);
  EXPECT_NE(golden.find("{Red}one{}"), std::string::npos) << golden;
  EXPECT_NE(golden.find("<TableTitle>t</TableTitle>"), std::string::npos) << golden;
  EXPECT_NE(golden.find("{Blue}1{}"), std::string::npos) << golden;
  EXPECT_NE(golden.find("<Cell>2</Cell>"), std::string::npos) << golden;
}

TEST(Coloring, ColoredTwiceIsColoredOnce) {
  ColoringSession session;
  const Id document =
      session.OpenMif(R"(<Doc><P A="x">one {Hidden}two{} {Blue,Overline}three{}</P>[+]<P>four</P></Doc>)");
  const schemes::Scheme scheme = Classic({RuleOf("A", {"x"}, "Red", 6)});
  session.Color(scheme);
  const std::string once = session.Saved(document);
  session.Color(scheme);
  EXPECT_EQ(session.Saved(document), once);
  const Id reopened = session.Open("again.mif", once);
  session.Color(scheme);
  EXPECT_EQ(session.Saved(reopened), once);
}

TEST(Coloring, SelectionTakesAttributesFromAboveAndUncolorsNothing) {
  ColoringSession session;
  const Id document =
      session.OpenMif(R"(<Doc><Sec A="x"><P>one</P><Q>{Green}two{}<Em A="y">three</Em></Q></Sec></Doc>)");
  const schemes::Scheme scheme = Classic({RuleOf("A", {"x"}, "None", 3), RuleOf("A", {"y"}, "Blue")});
  session.inner().text.SelectElement(document, session.Find(document, "Q"));
  const host::TextRange selection = session.inner().text.Selection(document);
  EXPECT_EQ(session.Run(Command::kColorSelection, scheme), common::kDone);
  EXPECT_EQ(session.Golden(document),
            "<Doc><Sec A=\"x\"><P>one</P><Q>{Green,Underline}two{}<Em "
            "A=\"y\">{Blue,Underline}three{}</Em></Q></Sec></Doc>");
  EXPECT_EQ(session.inner().text.Selection(document).begin, selection.begin);
  EXPECT_EQ(session.inner().text.SelectedElement(document), session.Find(document, "Q"));
}

TEST(Coloring, AllFlowsAreColoredWhereTheSchemeSaysSo) {
  ColoringSession session;
  testing::MifFile file;
  file.flows.push_back({R"(<Doc A="x">one</Doc>)"});
  file.flows.push_back({R"(<Box A="x">two</Box>)", testing::MifFlow::Place::kReference, ""});
  session.Open("doc.mif", testing::Mif(file));
  schemes::Scheme scheme = Classic({RuleOf("A", {"x"}, "Red")});
  session.Color(scheme);
  EXPECT_EQ(session.run.colored, 1U);
  scheme.process_all_flows = true;
  session.Color(scheme);
  EXPECT_EQ(session.run.colored, 2U);
}

TEST(Coloring, MissingColorsAreAskedForAndNotMade) {
  const schemes::Scheme scheme =
      Classic({RuleOf("A", {"x"}, "Orange", 3, "Violet"), RuleOf("A", {"y"}, "Orange")});
  ColoringSession session;
  const Id document = session.OpenMif(R"(<Doc><P A="x">{Green}one{}</P></Doc>)");
  const std::string before = session.Saved(document);
  session.user.no = {"QELM_MSG_COLORING_9"};
  EXPECT_EQ(session.Color(scheme), common::kCancelled);
  EXPECT_EQ(session.user.shown, (std::vector<std::string>{"QELM_MSG_COLORING_9", "QELM_MSG_COLORING_6"}));
  EXPECT_EQ(session.run.missing_colors, (std::vector<std::string>{"Orange", "Violet"}));
  EXPECT_EQ(session.Saved(document), before);

  session.user.no.clear();
  EXPECT_EQ(session.Color(scheme), common::kDone);
  EXPECT_EQ(session.Golden(document), "<Doc><P A=\"x\">{Underline}one{}</P></Doc>");
  EXPECT_EQ(session.inner().catalogs.FindColor(document, "Orange"), host::kNone);

  session.user.shown.clear();
  session.wanted.missing_color_prompt = false;
  EXPECT_EQ(session.Color(scheme), common::kDone);
  EXPECT_EQ(session.user.shown, std::vector<std::string>{});
}

std::string Paragraphs(int count) {
  std::string text = "<Doc>";
  for (int i = 0; i < count; ++i) text += "<P A=\"x\">p</P>\n";
  return text + "</Doc>";
}

TEST(Coloring, EscIsAskedForAtEvery102ndElement) {
  ColoringSession session;
  session.OpenMif(Paragraphs(203));  // with their texts and the root 407
  session.Color(Classic({RuleOf("A", {"x"}, "Red")}));
  EXPECT_EQ(session.run.visited, 407U);
  EXPECT_EQ(session.user.polls, 3);

  session.user.polls = 0;
  session.user.esc_at_poll = 2;
  EXPECT_EQ(session.Color(Classic({RuleOf("A", {"x"}, "Red")})), common::kCancelled);
  EXPECT_EQ(session.run.visited, 203U);
  EXPECT_EQ(session.user.shown, (std::vector<std::string>{"QELM_MSG_GEN_14", "QELM_MSG_COLORING_6"}));

  session.user.polls = 0;
  session.user.no = {"QELM_MSG_GEN_14"};
  EXPECT_EQ(session.Color(Classic({RuleOf("A", {"x"}, "Red")})), common::kDone);
}

TEST(Coloring, CostsNoMoreCallsForMoreRules) {
  ColoringSession session;
  session.OpenMif(Paragraphs(300));
  std::vector<std::uint64_t> totals;
  for (const std::size_t rules : {1U, 40U}) {
    schemes::Scheme scheme = Classic({});
    for (std::size_t i = 1; i < rules; ++i) {
      scheme.rules.push_back(RuleOf("B" + std::to_string(i % 7), {"v" + std::to_string(i)}, "Blue"));
    }
    scheme.rules.push_back(RuleOf("A", {"x"}, "Red"));
    session.counter.calls.clear();
    session.Color(scheme);
    EXPECT_EQ(session.counter.Of("ReadAttributes"), 300U) << "once an element that has some";
    totals.push_back(session.counter.Total() - session.counter.Of("FindColor"));
  }
  EXPECT_EQ(totals[0], totals[1]);
}

}  // namespace
}  // namespace qelm::coloring
