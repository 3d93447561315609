#include "fixture.h"

namespace qelm::xpath {
namespace {

class SearchTest : public XPathTest {
 protected:
  const std::vector<std::string>& notes() { return tree_host.user.notes; }

  bool Said(std::size_t count, std::string_view text) {
    return notes().size() == count && notes().back().find(text) != std::string::npos;
  }

  host::Id Next(std::int32_t sequence) { return bw_FindNextNodeWithXpath(engine, kDocument, sequence, 0, 0); }
};

TEST_F(SearchTest, FindNextGoesOnAndTellsASpentSequence) {
  Load("d { a a }");
  const std::int32_t sequence = bw_ParseXPath(engine, "a", 0);
  EXPECT_EQ(Next(sequence), 2U);
  EXPECT_EQ(Next(sequence), 3U);
  EXPECT_EQ(Next(sequence), 0U);
  EXPECT_TRUE(notes().empty());
  EXPECT_EQ(Next(sequence), 0U);
  EXPECT_TRUE(Said(1, "bw_FindNextNodeWithXpath() stepped to a spent sequence."));
  Reset(engine, sequence);
  EXPECT_EQ(Next(sequence), 2U);
}

TEST_F(SearchTest, FindNextComputesOnlyTheWayToTheNextMatch) {
  Load("d");
  for (int count = 0; count < 10000; ++count) tree_host.Document(kDocument).AddElement(1, "a");
  const std::int32_t sequence = bw_ParseXPath(engine, "//a[not(b)]", 0);
  tree_host.calls = 0;
  Next(sequence);
  Next(sequence);
  EXPECT_LT(tree_host.calls, 50U);
}

TEST_F(SearchTest, AttributesEditedBetweenCallsAreReadAnew) {
  Load("d { a(x=\"1\") { b } }");
  const std::int32_t sequence = bw_ParseXPath(engine, "//*[../@x!=2]", 0);
  EXPECT_EQ(Next(sequence), 1U);
  EXPECT_EQ(Next(sequence), 2U);
  tree_host.Document(kDocument).elements[2].attributes[0].values = {"2"};
  EXPECT_EQ(Next(sequence), 0U);
}

TEST_F(SearchTest, WhatIsKeptOfADocumentIsReadAnewAfterAnEdit) {
  Load(R"(a { b(x="1") { "one" } b { "two" } })");
  testing::TreeDocument& document = tree_host.Document(kDocument);
  EXPECT_EQ(Paths("//b[@x]"), "/a/b");
  EXPECT_EQ(Paths("//b[contains(.,'w')]"), "/a/b[2]");
  document.elements[4].attributes.push_back({"x", {"2"}});
  document.elements[3].text = "was";
  document.Changed();
  EXPECT_EQ(Paths("//b[@x]"), "/a/b /a/b[2]");
  EXPECT_EQ(Paths("//b[contains(.,'w')]"), "/a/b /a/b[2]");
  document.AddElement(1, "b", "w");
  EXPECT_EQ(Paths("//b[contains(.,'w')]"), "/a/b /a/b[2] /a/b[3]");
}

TEST_F(SearchTest, MatchAllStopsAtTheEnginesMaximumAndSaysSo) {
  Load("d { a a a }");
  MatchList matches;
  const auto all = [&](std::int32_t limit, std::int32_t maximum) {
    bw_XPathEngineInit(engine, 0, 0, limit);
    return xpath_MatchAll(engine, kDocument, 0, bw_ParseXPath(engine, "a", 0), maximum, &matches);
  };
  EXPECT_TRUE(all(3, 0));
  EXPECT_EQ(matches.size(), 3U);
  EXPECT_TRUE(all(2, 1));
  EXPECT_EQ(matches.size(), 1U);
  EXPECT_TRUE(all(2, 2));
  EXPECT_TRUE(notes().empty());
  EXPECT_FALSE(all(2, 0));
  EXPECT_EQ(matches.size(), 2U);
  EXPECT_TRUE(
      Said(1,
           "--> XPath Engine Message <--\n\nThe following XPath expression is too broad and has exceeded the "
           "maximum number of matches allowed in your preferences (2): \n\na\n\nTry"));
  EXPECT_FALSE(all(2, 3));
}

TEST_F(SearchTest, RejectedTextSelectsNothing) {
  Load("d { a }");
  bool complete = false;
  EXPECT_TRUE(MatchAllFromText(engine, kDocument, 0, "a[", 0, 0, &complete).empty());
  EXPECT_TRUE(complete);
  EXPECT_EQ(FindFirst(engine, kDocument, 0, "a[").element, 0U);
  EXPECT_TRUE(GetValues(engine, kDocument, 0, "a[").empty());
  EXPECT_TRUE(notes().empty());
}

TEST_F(SearchTest, ContextIsWhatIsGivenOrTheMainFlow) {
  testing::TreeDocument& document = tree_host.Add("/docs/flows.fm");
  document.AddFlow("A", host::FlowKind::kBody, "d { p }");
  document.AddFlow("B", host::FlowKind::kBody, "e { p }");
  EXPECT_EQ(Paths("p"), "/d/p");
  document.flows[1].name = "Main";
  EXPECT_EQ(Paths("p"), "/e/p");
  EXPECT_EQ(Paths("/*", 2), "/d");
  EXPECT_EQ(Paths("p", 77), "");
  document.flows[1].root = 0;
  EXPECT_EQ(Paths("/*"), "");
}

TEST_F(SearchTest, LinksInACircleEndTheSearchWithAMessage) {
  Load("d { a b { c } a }");
  tree_host.Document(kDocument).elements[5].next = 2;
  const std::pair<const char*, const char*> rows[] = {
      {"//x", "resulting in an endless internal loop."},
      {"a[following::x]", "resulting in an endless internal loop."},
      {"a[../descendant::x]", "resulting in an endless internal loop."},
      {"*[x[1]/../x]/following-sibling::a[x]", "resulting in an endless internal loop."},
      {"//x[1]", "while processing a position() function."},
      {"//x[last()]", "whileprocessing a last() function."},
  };
  std::size_t count = 0;
  for (const auto& [expression, text] : rows) {
    bool complete = true;
    MatchAllFromText(engine, kDocument, 0, expression, 0, 0, &complete);
    EXPECT_FALSE(complete) << expression;
    EXPECT_TRUE(Said(++count, text)) << expression << ": " << (notes().empty() ? "" : notes().back());
  }
}

TEST_F(SearchTest, LongPathsAndDeepFunctionsAreFollowed) {
  bw_XPathEngineInit(engine, 0, 100000, 0);
  Load("d");
  host::Id last = 1;
  for (int depth = 0; depth < 1200; ++depth) last = tree_host.Document(kDocument).AddElement(last, "a");
  std::string up = "..";
  for (int step = 1; step < 990; ++step) up += "/..";
  EXPECT_EQ(Matches("//*[" + up + "]").size(), 1201U - 990U);
  std::string negated = "b";
  for (int depth = 0; depth < 900; ++depth) negated = "not(" + negated + ")";
  EXPECT_EQ(Matches("//a[" + negated + "]").size(), 0U);
}

}  // namespace
}  // namespace qelm::xpath
