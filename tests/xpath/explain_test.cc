#include <fmt/format.h>

#include "xpath/explain.h"

#include "fixture.h"

namespace qelm::xpath {
namespace {

class ExplainTest : public XPathTest {
 protected:
  // "kept step" for each step and "kept/asked [predicate]" for each predicate.
  std::string Of(std::string_view expression) {
    Explanation explanation;
    EXPECT_TRUE(Explain(engine, kDocument, 0, bw_ParseXPath(engine, expression, 0), &explanation));
    EXPECT_EQ(explanation.matches, Matches(expression)) << expression;
    std::string text;
    for (const ExplainedStep& step : explanation.steps) {
      text += fmt::format("{} {}; ", step.kept, step.text);
      for (const ExplainedPredicate& predicate : step.predicates) {
        text += fmt::format("{}/{} [{}]; ", predicate.kept, predicate.asked, predicate.text);
      }
    }
    return text;
  }
};

TEST_F(ExplainTest, StepsAndPredicatesTellHowManyNodesTheyKept) {
  Load(R"(Doc { Sec(x="1") { P { "a" } P { "b" } } Sec { P { "a" } Sec(x="1") { Note } } })");
  EXPECT_EQ(Of("//Sec[@x=1][P]/P"),
            "1 /; 1 descendant-or-self::Sec[attribute::x=1][child::P]; 2/3 [attribute::x=1]; 1/2 [child::P]; "
            "2 child::P; ");
  EXPECT_EQ(
      Of("//Sec[.//Note or contains(P,'a')]/P[last()]"),
      "1 /; 3 descendant-or-self::Sec[self::node()/descendant-or-self::Note or contains(child::P,'a')]; "
      "2/3 [self::node()/descendant-or-self::Note]; 2/3 [contains(child::P,'a')]; "
      "2 child::P[position()=last()]; ");
  // A predicate that depends on positions in more than one way is asked node by node.
  EXPECT_EQ(Of("/Doc/Sec[position()=2 or @x]"),
            "1 /; 1 child::Doc; 2 child::Sec[position()=2 or attribute::x]; 1/2 [position()=2]; 1/1 "
            "[attribute::x]; ");
}

TEST_F(ExplainTest, WhatFailsSaysSo) {
  Load("Doc { P }");
  Explanation explanation;
  EXPECT_FALSE(Explain(engine, kDocument, 0, 999, &explanation));
  EXPECT_EQ(tree_host.user.notes.size(), 1U);
  // Without an index there is nothing to measure step by step; the matches are all there is.
  tree_host.Document(kDocument).elements[2].next = 1;
  tree_host.Document(kDocument).Changed();
  EXPECT_FALSE(Explain(engine, kDocument, 0, bw_ParseXPath(engine, "//P", 0), &explanation));
  EXPECT_TRUE(explanation.matches.empty());
}

}  // namespace
}  // namespace qelm::xpath
