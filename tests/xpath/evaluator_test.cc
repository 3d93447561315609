#include <fmt/format.h>

#include "fixture.h"

namespace qelm::xpath {
namespace {

struct Selection {
  const char* expression;
  const char* paths;
};

class EvaluatorTest : public XPathTest {
 protected:
  void ExpectAll(std::initializer_list<Selection> rows) {
    for (const Selection& row : rows) EXPECT_EQ(Paths(row.expression), row.paths) << row.expression;
  }
};

TEST_F(EvaluatorTest, EmptyOperandsCompareByEmptinessAlone) {
  Load("d { a(x=\"b\") a(x) a(x=\"\",\"b\") a }");
  ExpectAll({
      {"a[@x]", "/d/a /d/a[2] /d/a[3]"},
      {"a[@x='']", "/d/a[2] /d/a[3] /d/a[4]"},
      {"a[@x<'b']", "/d/a[2] /d/a[3] /d/a[4]"},
      {"a[@x>'b']", ""},
      {"a[@x>='']", "/d/a /d/a[2] /d/a[3] /d/a[4]"},
      {"a[@x!='b']", "/d/a[2] /d/a[3] /d/a[4]"},
      {"a[@x!='']", "/d/a"},
      {"a[contains(@x,'')]", ""},
      {"a[@x=@y]", "/d/a[2] /d/a[3] /d/a[4]"},
  });
}

TEST_F(EvaluatorTest, ValuesCompareAsIntegersOrBytes) {
  Load("d { a(x=\"a\",\"b\") a(x=\"10\") { \"007\" } a(x=\"9223372036854775808\") { \"A\" } }");
  ExpectAll({
      {"a[@x='a']", "/d/a"},
      {"a[@x!='a']", "/d/a[2] /d/a[3]"},
      {"a[@x>9]", "/d/a /d/a[2] /d/a[3]"},
      {"a[@x<'9']", ""},
      {"a[.=7]", "/d/a[2]"},
      {"a[.='7']", "/d/a[2]"},
      {"a[.='a']", ""},
      {"a[contains-ci(.,'a')]", "/d/a[3]"},
      // Beyond 64 bits it is text, and "9" stands before "92".
      {"a[@x>'92' and @x<'93']", "/d/a[3]"},
  });
}

TEST_F(EvaluatorTest, FunctionsAreTrueOrFalse) {
  Load("d { a(x=\"\xC3\x84pfel\") { b } a(x=\"pear\") }");
  ExpectAll({
      {"a[contains-ci(@x,'\xC3\xA4P')]", "/d/a"},
      {"a[contains(@x,'\xC3\xA4p')]", ""},
      {"a[starts-with(@x,'pe')]", "/d/a[2]"},
      {"a[starts-with-ci(@x,'PE')='false']", "/d/a"},
      {"a[not(b)]", "/d/a[2]"},
      {"a[not(not(b))]", "/d/a"},
      {"a[not(contains(@x,'pear')) and b]", "/d/a"},
      {"a[contains(not(b),'rue')]", "/d/a[2]"},
      {"a[contains(position(),2)]", "/d/a[2]"},
      {"a['2']", ""},
      {"a[2]", "/d/a[2]"},
  });
}

TEST_F(EvaluatorTest, PositionsAreCountedAnewForEachComparison) {
  std::string tree;
  for (int count = 0; count < 20; ++count) tree += "a(x=\"1\") ";
  Load("d { " + tree + "b { \"1\" } }");
  EXPECT_EQ(Matches("a[following-sibling::a/following::b[1]=@x]").size(), 19U);
}

TEST_F(EvaluatorTest, AttributesAreTheOwnerAndAnIndex) {
  Load("d { a(x=\"1\" y=\"2\",\"3\" z) }");
  ExpectAll({
      {"a/@y", "/d/a@1"},
      {"a/@*", "/d/a@0 /d/a@1 /d/a@2"},
      {"a/@*[.=3]", "/d/a@1"},
      {"a/@x[../@y=2]", "/d/a@0"},
      {"a/@text()", ""},
  });
  EXPECT_EQ(GetValues(engine, kDocument, 0, "a/@*"), (std::vector<std::string>{"1", "2 3", ""}));
  const std::int32_t sequence = bw_ParseXPath(engine, "a/@y", 0);
  EXPECT_EQ(bw_FindNextNodeWithXpath(engine, kDocument, sequence, 0, 0), First("a"));
  EXPECT_EQ(AttributeOfMatch(engine, sequence), 1);
}

TEST_F(EvaluatorTest, DefaultsStandBehindOwnAttributes) {
  Load("d { a(x own=\"1\") a(x=\"2\") }");
  tree_host.Document(kDocument).Declare("a", "x", {"5", "6"});
  tree_host.Document(kDocument).Declare("a", "without", {});
  tree_host.Document(kDocument).Declare("a", "absent", {"7"});
  EXPECT_EQ(Paths("a[@x=6]"), "/d/a");
  EXPECT_EQ(Paths("a/@*"), "/d/a@0 /d/a@1 /d/a@2 /d/a[2]@0 /d/a[2]@1");
  EXPECT_EQ(GetValues(engine, kDocument, 0, "a/@absent"), (std::vector<std::string>{"7", "7"}));
  SetAttributeValuesMode(engine, 0);
  EXPECT_EQ(Paths("a[@x=6 or @absent]"), "");
  EXPECT_EQ(Paths("a/@*"), "/d/a@0 /d/a@1 /d/a[2]@0");
}

TEST_F(EvaluatorTest, PropertiesEndAPath) {
  Load(
      R"(d { a(!PgfTag="Body" !XRefSrcText="Head: 1: x" !TblTag="") b(!FChangeBar="true" !PageNumInt="12") })");
  ExpectAll({
      {"*[fmprop::pgftag='Body']", "/d/a"},
      {"*[fmprop::XRefSrcText='Head']", "/d/a"},
      {"*[fmprop::TblTag]", ""},
      {"*[fmprop::FChangeBar='false']", "/d/a"},
      {"*[fmprop::PageNumInt>9]", "/d/b"},
      {"*/fmprop::PgfTag", "/d/a"},
      {"*/fmprop::PgfTag[.='x']", ""},
  });
  EXPECT_EQ(GetValues(engine, kDocument, 0, "*/fmprop::PgfTag"), std::vector<std::string>{"Body"});
}

TEST_F(EvaluatorTest, ParametersTakeTheCallersValues) {
  Load("d { a(x=\"1\") b(x=\"$\") { \"1\" } }");
  EXPECT_EQ(Paths("*[@x=$p]"), "");
  Parameters(engine)["p"] = "1";
  Parameters(engine)["name"] = "b";
  ExpectAll({
      {"*[@x=$p]", "/d/a"},
      {"*[@x='$p']", "/d/a"},
      {"$name", "/d/b"},
      {"*[position()=$p]", "/d/a"},
      {"*[@x='$']", "/d/b"},
      {"$none", ""},
  });
}

TEST_F(EvaluatorTest, FlowAxesGoFromFlowToFlow) {
  testing::TreeDocument& document = tree_host.Add("/docs/flows.fm");
  document.AddFlow("A", host::FlowKind::kBody, "d(id=\"1\") { p }");
  document.AddFlow("Empty", host::FlowKind::kBody, "");
  document.AddFlow("Main", host::FlowKind::kBody, "m(id=\"2\") { p(x) q }");
  document.AddFlow("Header", host::FlowKind::kMaster, "d(id=\"3\") { p(x) }");
  document.AddFlow("Notes", host::FlowKind::kReference, "r");
  ExpectAll({
      {"p", "/m/p"},
      {"flow-any::node()", "/d /m /d /r"},
      {"flow-any::*[1]/p", "/d/p /m/p /d/p"},
      {"flow-body::d/p", "/d/p"},
      {"flow-master::*//p", "/d/p"},
      {"flow-ref::*", "/r"},
      {"q[flow-ref::r]", "/m/q"},
      {"flow-any::*/p[/d]", "/d/p /d/p"},
      {"flow-any::*//p[/*/*/@x=@x]", "/d/p /m/p /d/p"},
      {"flow-any::*//p[../@id=/*/@id]", "/d/p /m/p /d/p"},
      {"flow-any::*/descendant::p[preceding::q or .=/d/p]", "/d/p /m/p /d/p"},
  });
  const std::int32_t sequence = bw_ParseXPath(engine, "flow-any::*", 0);
  EXPECT_EQ(bw_FindNextNodeWithXpath(engine, kDocument, sequence, 0, 3), document.flows[2].root);
  EXPECT_EQ(bw_FindNextNodeWithXpath(engine, kDocument, sequence, 0, 3), 0U);
}

TEST_F(EvaluatorTest, BookAndFileAxesReachOtherDocuments) {
  Load("d { a }");
  tree_host.Add("/docs/other.fm").AddFlow("A", host::FlowKind::kBody, "o { a(x=\"1\") }");
  tree_host.Add("/docs/toc.fm").AddFlow("A", host::FlowKind::kBody, "o");
  tree_host.Add("/docs/manual.book").AddFlow("", host::FlowKind::kBody, "Book { Chapter }");
  tree_host.book = 4;
  tree_host.components = {{1, false}, {2, false}, {0, false}, {3, true}};
  const auto found = [this](const char* expression) {
    std::string text;
    for (const Match& match : Matches(expression))
      text += fmt::format("{}:{} ", match.document, match.element);
    return text;
  };
  EXPECT_EQ(found("fmbook::Book/Chapter"), "4:2 ");
  EXPECT_EQ(found("fmcomp::*"), "1:1 2:1 3:1 ");
  EXPECT_EQ(found("fmchap::o"), "2:1 ");
  EXPECT_EQ(found("fmfile::'other.fm'//a"), "2:2 ");
  EXPECT_EQ(found("fmfile::'/docs/other.fm'"), "2:1 ");
  EXPECT_EQ(found("fmfile::'ther.fm'"), "");
  EXPECT_EQ(found("a[fmfile::'other.fm'/a/@x=1]"), "1:2 ");
  EXPECT_EQ(found("//*/fmcomp::o"), "2:1 3:1 ");
}

TEST_F(EvaluatorTest, TextIsCutWhereItCounts) {
  const std::string text(300, 'a');
  Load("d { p { \"" + text + "\" b { \"" + std::string(900, 'c') + "\" } } }");
  EXPECT_EQ(Paths("p[.='" + text.substr(0, 255 - 5) + "']"), "XPATH_ERR_TOO_DAMNED_LONG");
  bw_XPathEngineInit(engine, 0, 1000, 0);
  EXPECT_EQ(Paths("p[.='" + text.substr(0, 255) + "']"), "/d/p");
  EXPECT_EQ(GetValues(engine, kDocument, 0, "p"), std::vector<std::string>{text + std::string(700, 'c')});
}

TEST_F(EvaluatorTest, EqualityWithManyValuesLooksThemUp) {
  std::string tree = "d { ";
  for (int count = 0; count < 30; ++count)
    tree += "a(x=\"" + std::to_string(count) + "\") b(y=\"n" + std::to_string(count) + "\") ";
  Load(tree + "c(z=\"007\") c(z=\"n7\") c(z=\"n30\") }");
  ExpectAll({{"c[@z=/d/a/@x]", "/d/c"}, {"c[@z=/d/b/@y]", "/d/c[2]"}, {"c[@z!=/d/b/@y]", "/d/c /d/c[3]"}});
}

}  // namespace
}  // namespace qelm::xpath
