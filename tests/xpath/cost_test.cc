// That the work of a search grows with the document and not with its square: counted in calls of the host,
// over trees whose shapes make careless evaluation quadratic.
#include <array>

#include "fixture.h"

namespace qelm::xpath {
namespace {

constexpr int kElements = 10000;
// A quadratic search would make thousands.
constexpr std::uint64_t kCallsAnElement = 25;

class CostTest : public XPathTest {
 protected:
  // Elements a, b, c in turn, each inside the one before.
  void LoadDeep() {
    Load("a");
    host::Id last = 1;
    for (int count = 1; count < kElements; ++count) last = Add(last, count);
  }

  // The same side by side, then one "z".
  void LoadWide() {
    Load("a");
    for (int count = 1; count < kElements; ++count) Add(1, count);
    tree_host.Document(kDocument).AddElement(1, "z");
  }

  // A comb: a chain of elements, each with a child besides the next one.
  void LoadComb() {
    Load("a");
    host::Id last = 1;
    for (int count = 1; count < kElements; count += 2) {
      Add(last, count);
      last = Add(last, count + 1);
    }
  }

  void ExpectLinear(const char* shape) {
    bw_XPathEngineInit(engine, 0, 0, 10 * kElements);
    for (const char* expression : {"//a//b//c",
                                   "//*[..//x]",
                                   "//a//b[2]",
                                   "//a//b[position()>1]",
                                   "//a//b[last()]",
                                   "//a[.//c]",
                                   "//a[not(.//x='1')]",
                                   "//*[ancestor::a/@x='1']",
                                   "//*[ancestor-or-self::*[@x]]",
                                   "//*[preceding::x]",
                                   "//*[following::x/@x]",
                                   "//*/preceding::c",
                                   "//*/following::c",
                                   "//*/ancestor::c",
                                   "//b/ancestor::c[1]",
                                   "//*/ancestor::z[1]",
                                   "//*/ancestor::*[last()]",
                                   "//*/following-sibling::z[1]",
                                   "//*/preceding-sibling::z[1]",
                                   "//*/preceding::z[1]",
                                   "//*/following::z[last()]",
                                   "//*/preceding-sibling::*[position()>2]",
                                   "//*[following-sibling::z]",
                                   "//*[../a/@x='1']",
                                   "//*[/a/x]",
                                   "//*[@x=//a/@x]",
                                   "//*[..[b][c]]",
                                   "//b[following::c[1]]",
                                   "//*[self::b or .//x]/ancestor::a[not(//x)]",
                                   "//*/..",
                                   "//*/preceding::*/following::*",
                                   "//*[preceding::b[last()]]"}) {
      tree_host.calls = 0;
      Matches(expression);
      EXPECT_LT(tree_host.calls, kCallsAnElement * kElements) << shape << ": " << expression;
    }
    EXPECT_TRUE(tree_host.user.notes.empty());
  }

 private:
  host::Id Add(host::Id parent, int number) {
    return tree_host.Document(kDocument).AddElement(
        parent, std::array{"a", "b", "c"}[static_cast<std::size_t>(number % 3)]);
  }
};

TEST_F(CostTest, NestedElements) {
  LoadDeep();
  ExpectLinear("deep");
}

TEST_F(CostTest, Siblings) {
  LoadWide();
  ExpectLinear("wide");
}

TEST_F(CostTest, Comb) {
  LoadComb();
  ExpectLinear("comb");
}

// Steps to children do not ask for an index until they have gone over much of the document.
TEST_F(CostTest, AWalkThatTurnsOutLongGoesOnFasterAndLaterOnesToo) {
  LoadWide();
  bw_XPathEngineInit(engine, 0, 0, 10 * kElements);
  const MatchList all = Matches("/a/b");
  EXPECT_EQ(all.size(), kElements / 3U);
  tree_host.calls = 0;
  EXPECT_EQ(Matches("/a/b"), all);
  EXPECT_EQ(Matches("/a/absent").size(), 0U);
  EXPECT_LT(tree_host.calls, 100U);
}

TEST_F(CostTest, WhatTakesTooLongIsGivenUpAndNamed) {
  LoadWide();
  const char expression[] = "//a[../b/@x=../c/@y]";
  SetMostSteps(engine, kElements);
  bool complete = true;
  EXPECT_TRUE(MatchAllFromText(engine, kDocument, 0, expression, 0, 0, &complete).empty());
  EXPECT_FALSE(complete);
  ASSERT_EQ(tree_host.user.notes.size(), 1U);
  EXPECT_NE(tree_host.user.notes[0].find(expression), std::string::npos) << tree_host.user.notes[0];
}

}  // namespace
}  // namespace qelm::xpath
