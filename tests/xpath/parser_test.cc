#include <random>

#include "fixture.h"
#include "xpath/errors.h"

namespace qelm::xpath {
namespace {

struct Rejected {
  const char* text;
  ErrorCode code;
  std::int32_t position;
};

class ParserTest : public XPathTest {
 protected:
  void ExpectRejected(const Rejected& row) {
    EXPECT_EQ(ErrorId(bw_ParseXPath(engine, row.text, 0)), ErrorId(row.code)) << row.text;
    EXPECT_EQ(LastParseError(engine).position, row.position) << row.text;
  }

  bool Parses(std::string_view text) {
    const std::int32_t result = bw_ParseXPath(engine, text, 0);
    return result > 0 && result < kFirstError;
  }

  // The dump without its heading, without the numbers of components and without the bars before the indent.
  std::string Dump(std::string_view text) {
    tree_host.user.console.clear();
    bw_DumpParsedXPath(engine, bw_ParseXPath(engine, text, 0));
    return tree_host.user.console;
  }

  std::string Body(std::string_view text) {
    std::string dump = Dump(text);
    dump.erase(0, dump.find("\n\n|") + 2);
    return dump;
  }
};

TEST_F(ParserTest, ChecksBeforeTokens) {
  for (const Rejected& row : std::initializer_list<Rejected>{
           {"not(a", kBadParentheticalPhrase, 3},
           {"a)b(", kBadParentheticalPhrase, 1},
           {"a[b[c]", kNoTermBracketForSubexp, 1},
           {"a]", kNoTermBracketForSubexp, 1},
           {"a///b", kTooManySlashes, 1},
           {"/", kSingleSlashExpression, 0},
           {"foo(a)", kUnknownFunction, 2},
           {"a[my-contains(b,'c')]", kUnknownFunction, 12},
           {"a/foo::b", kUnknownAxis, 2},
           {"self::a/:: b", kUnknownAxis, 8},
           {"a[self::b or selb::c]", kUnknownAxis, 13},
           {"a\\b", kIllegalBackslash, 1},
           {"a[]", kEmptyPredicate, 2},
           {"a[ ]", kEmptyPredicate, 2},
           {"a[   ]", kEmptyPredicate, 2},
           {"a[b='\xC3\xA4']\xC3\xB6[ ]", kEmptyPredicate, 10},
           {"a[ ]///b", kTooManySlashes, 4},
           {"a['b]", kNoTermBracketForSubexp, 1},
       }) {
    ExpectRejected(row);
  }
}

TEST_F(ParserTest, LengthCountsCharacters) {
  const std::string umlaut = "\xC3\xA4";
  std::string text;
  for (int count = 0; count < 255; ++count) text += umlaut;
  EXPECT_TRUE(Parses(text));
  ExpectRejected({(text + umlaut).c_str(), kTooDamnedLong, 255});
}

TEST_F(ParserTest, LiteralsHideWhatIsInThem) {
  for (const char* text : {"a[b='x]y']", "a[b='(']", "a['///'=b]", "a[b='\\']", "a[b='[]']", "a[b=\"it's\"]",
                           "a[b='foo(c)::d']"}) {
    EXPECT_TRUE(Parses(text)) << text;
  }
}

TEST_F(ParserTest, TokensThatMayNotFollow) {
  for (const Rejected& row : std::initializer_list<Rejected>{
           {"self::@a", kBadArgAfterAxis, 6},
           {"//@a", kBadArgAfterAxis, 2},
           {"self:: a", kBadArgAfterAxis, 6},
           {"a b", kBadArgAfterNodeName, 2},
           {"*a", kBadArgAfterNodeName, 1},
           {".a", kBadArgAfterNodeName, 1},
           {"a@b", kBadArgAfterNodeName, 1},
           {"a[b or]", kBadArgAfterNodeName, 4},
           {"text()a", kBadArgAfterNodeName, 6},
           {"a (b)", kBadArgAfterNodeName, 2},
           {"a[position()b]", kBadArgAfterFunction, 12},
           {"a[not(b)/c]", kBadArgAfterFunction, 8},
           {"a[contains(,'b')]", kMissingNodeTest, 11},
           {"a[=1]", kBadArgAfterPredicateStart, 2},
           {"a[[b]]", kBadArgAfterPredicateStart, 2},
           {"a[contains(b,='c')]", kBadArgAfterPredicateStart, 13},
           {"a/'b'", kBadArgAfterSlash, 1},
           {"a[b/ c]", kBadArgAfterSlash, 3},
           {"a/position()", kBadArgAfterSlash, 1},
           {"a[b]c", kBadArgAfterPredicateEnd, 4},
           {"a['b'c]", kBadArgAfterLiteral, 5},
           {"a[1 2]", kBadArgAfterLiteral, 4},
           {"a[b==c]", kBadArgAfterOperator, 4},
           {"a[b= or c]", kBadArgAfterOperator, 5},
           {"a[b or = c]", kMissingLogicalTestSecondTerm, 7},
           {"self::.", kMisplacedPeriod, 6},
           {"@..", kMisplacedPeriod, 1},
           {"ns:a", kColonInElementName, 2},
           {"a[b%c]", kPercentInElementName, 2},
           {"self::/a", kMissingNodeTest, 6},
           {"a[!b]", kMissingNodeTest, 2},
           {"[a]", kNoInitialSlash, 0},
           {"$", kCouldNotParseParamEval, 0},
           {"a[b=$]", kCouldNotParseParamEval, 4},
           {"a'b", kUnterminatedStringLiteral, 1},
           {"fmfile::\"a", kUnterminatedStringLiteral, 8},
       }) {
    ExpectRejected(row);
  }
}

TEST_F(ParserTest, TextsThatEndTooSoon) {
  for (const Rejected& row : std::initializer_list<Rejected>{
           {"", kMissingNodeTest, 0},
           {"  ", kMissingNodeTest, 0},
           {"a/", kMissingNodeTest, 1},
           {"//", kMissingNodeTest, 0},
           {"a[self::]", kMissingNodeTest, 2},
           {"a[@]", kMissingNodeTest, 2},
           {"a[b= ]", kMissingLogicalTestSecondTerm, 3},
           {"a[b and ]", kMissingLogicalTestSecondTerm, 4},
           {"a[contains(b)]", kMissingLogicalTestSecondTerm, 12},
           {"a[not()]", kMissingNodeTest, 6},
       }) {
    ExpectRejected(row);
  }
}

TEST_F(ParserTest, ThingsOutOfPlace) {
  for (const Rejected& row : std::initializer_list<Rejected>{
           {"fmprop::Colour", kUnknownFmProp, 8},
           {"fmprop::*", kUnknownFmProp, 8},
           {"@id/x", kAxisFollowingAttributeAxis, 4},
           {"a[@id//x]", kAxisFollowingAttributeAxis, 7},
           {"fmprop::PgfTag/..", kAxisFollowingFmPropAxis, 15},
           {"a[b='1' and c='2' or d='3']", kMixedAndAndOr, 18},
           {"a[b or c][d]", kMixedAndAndOr, 9},
           {"a[b][c or d]", kMixedAndAndOr, 7},
           {"a=b", kBadArgAfterNodeName, 1},
           {"a[b]='c'", kBadArgAfterNodeName, 4},
           {"a or b", kBadArgAfterNodeName, 2},
           {"=a", kBadArgAfterNodeName, 0},
           {"'a'", kMisplacedLiteral, 0},
           {"12", kMisplacedLiteral, 0},
           {"a[b=c=d]", kMultipleOperators, 5},
           {"contains(a,b,c)", kMisplacedFunction, 0},
           {"position()", kMisplacedFunction, 0},
           {"a[contains(a,b,c)]", kFunctionMoreThanTwoArgs, 14},
           {"a[not(a,b)]", kNotFuncHasMultipleArgs, 7},
           {"a,b", kMisplacedComma, 1},
           {"a[contains(b[c,d],'e')]", kMisplacedComma, 14},
           {"a[not(b])", kMisplacedRightParen, 8},
           {"a[not(b or c)]", kMisplacedRightParen, 12},
           {"a[contains(b='c',d)]", kOperatorInFuncTerm, 12},
           {"(a)", kBadLeftParenthesis, 0},
           {"a[(b)]", kBadLeftParenthesis, 2},
       }) {
    ExpectRejected(row);
  }
}

TEST_F(ParserTest, PredicatesNestTwentyDeep) {
  std::string text = "a";
  for (int depth = 0; depth < 20; ++depth) text = "a[" + text + "]";
  EXPECT_TRUE(Parses(text));
  ExpectRejected({("a[" + text + "]").c_str(), kCriticalErrorExtractingPredicate, 41});
}

TEST_F(ParserTest, OddButRight) {
  for (const char* text : {"or",
                           "and/or",
                           "//or",
                           "a[or ='b']",
                           "a[and and or]",
                           "self::or ",
                           "@and ",
                           "a[not(or )]",
                           "a[contains-ci(or ,'b')]",
                           "a[self::A or self::B]",
                           " a /b ",
                           "a.b",
                           "a[b][c]/d",
                           "a[/b=//c]",
                           "a[contains(/b,'c')]",
                           "a[b='c'and d]",
                           "a[contains(b[c='d'],'e')='true']",
                           "fmfile::'c:/x%y.fm'/a",
                           "a[$p=$q]",
                           "a[not(not(b))]",
                           "node()/text()",
                           "a[-5=b]",
                           "//.",
                           "a|b"}) {
    EXPECT_TRUE(Parses(text)) << text << " " << LastParseError(engine).id << LastParseError(engine).position;
  }
}

TEST_F(ParserTest, LoopGuardStopsAtTwoThousandTokens) {
  bw_XPathEngineInit(engine, 0, 10000, 0);
  std::string text = "a";
  for (int step = 1; step < 1000; ++step) text += "/a";
  EXPECT_TRUE(Parses(text));
  EXPECT_EQ(bw_ParseXPath(engine, text + "/a", 0), 0);
  ASSERT_EQ(tree_host.user.notes.size(), 1U);
  EXPECT_NE(tree_host.user.notes[0].find("An endless loop appears to have formed in the XPath parser."),
            std::string::npos);
}

TEST_F(ParserTest, KnownTextsAreNotParsedAgain) {
  bw_XPathEngineInit(engine, 10, 0, 0);
  const std::int32_t first = bw_ParseXPath(engine, "a/b", 0);
  const std::int32_t second = bw_ParseXPath(engine, "c", 0);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(bw_ParseXPath(engine, "a/b", 0), first);
  bw_XPathEngineInit(engine, 10, 0, 0);
  EXPECT_EQ(bw_ParseXPath(engine, "c", 0), second);
  EXPECT_EQ(bw_ParseXPath(engine, "d/e/f", 0), 8);
  // Now more than ten are allocated: the next new text finds an empty table.
  EXPECT_EQ(bw_ParseXPath(engine, "c", 0), second);
  EXPECT_EQ(bw_ParseXPath(engine, "g", 0), 1);
  EXPECT_EQ(bw_ParseXPath(engine, "a/b", 0), 4);
}

TEST_F(ParserTest, DumpOfStepsPredicatesAndLiterals) {
  EXPECT_EQ(Dump("//a[@x!='$p' and not(b)]"),
            "\n\nParsed components for: //a[@x!='$p' and not(b)],  Sequence number '1'\n\n"
            "|---Type: SEQUENCE (1)\n"
            "||---Type: NODE HANDLERS (2)\n"
            "|||---Type: NODE HANDLER (3)\n"
            "|||Axis: To root\n"
            "|||Node test: node()\n"
            "|||---Type: NODE HANDLER (4)\n"
            "|||Axis: To descendant-or-self\n"
            "|||Node test: a\n"
            "|||Predicate logic:  AND\n"
            "||||---Type: PREDICATE (5)\n"
            "||||Test operator:  !=\n"
            "|||||---Type: TERM (6)\n"
            "||||||---Type: NODE HANDLERS (7)\n"
            "|||||||---Type: NODE HANDLER (8)\n"
            "|||||||Axis: To attribute\n"
            "|||||||Node test: x\n"
            "|||||---Type: LITERAL STRING (9)\n"
            "|||||Return value: $p\n"
            "|||||(*Parameter detected*)\n"
            "||||---Type: PREDICATE (10)\n"
            "||||Test operator:  =\n"
            "|||||---Type: not() (11)\n"
            "||||||---Type: TERM (12)\n"
            "|||||||---Type: NODE HANDLERS (13)\n"
            "||||||||---Type: NODE HANDLER (14)\n"
            "||||||||Axis: To child\n"
            "||||||||Node test: b\n"
            "|||||---Type: LITERAL STRING (15)\n"
            "|||||Return value: true\n");
}

TEST_F(ParserTest, ShortFormsMakeTheTreeOfTheLongOnes) {
  const auto numberless = [](std::string text) {
    for (std::size_t at = text.find(" ("); at != text.npos; at = text.find(" (", at)) {
      text.erase(at, text.find('\n', at) - at);
    }
    return text;
  };
  const std::pair<const char*, const char*> rows[] = {
      {"a[3]", "a[position()=3]"},
      {"a[last()]", "a[position()=last()]"},
      {"a[contains(b,'c')]", "a[contains(b,'c')='true']"},
      {"a[b='1'][c='2']", "a[b='1' and c='2']"},
      {"./a", "self::node()/child::a"},
      {"a[../@b]", "a[parent::node()/attribute::b]"},
      {"//a", "/descendant-or-self::a"},
      {"//.", "/descendant-or-self::node()/self::node()"},
  };
  for (const auto& [short_form, long_form] : rows) {
    EXPECT_EQ(numberless(Body(short_form)), numberless(Body(long_form))) << short_form;
  }
}

// Texts that nobody would write: each is rejected at a place inside it, or selects something without
// complaint.
TEST_F(ParserTest, AnyTextIsRejectedAtAPlaceOrEvaluated) {
  const char* pieces[] = {"a",          "b",        "/",        "//",         "[",           "]",
                          "(",          ")",        "not(",     "contains(",  ",",           "@x",
                          "*",          ".",        "..",       " ",          "or ",         "and ",
                          "=",          "!=",       "<",        "'1'",        "'",           "2",
                          "$p",         "!",        ":",        "::",         "%",           "\\",
                          "x::",        "self::",   "fmprop::", "PgfTag",     "text()",      "last()",
                          "position()", "\xC3\xA4", "\xC3",     "flow-any::", "preceding::", "fmfile::",
                          "[1]",        "[last()]", "\"",       "ancestor::"};
  Load("a(x=\"1\") { b { \"1\" } a }");
  std::mt19937 random(7);
  int parsed = 0;
  for (int round = 0; round < 30000; ++round) {
    std::string text = round % 2 == 0 ? "//a" : "";
    for (unsigned count = random() % 8; count > 0; --count) text += pieces[random() % std::size(pieces)];
    const std::int32_t result = bw_ParseXPath(engine, text, 0);
    ASSERT_NE(result, 0) << text;
    if (result < kFirstError) {
      ++parsed;
      Matches(text);
      continue;
    }
    ASSERT_FALSE(ErrorId(result).empty()) << text;
    ASSERT_GE(LastParseError(engine).position, 0) << text;
    ASSERT_LE(LastParseError(engine).position, static_cast<std::int32_t>(text.size())) << text;
  }
  EXPECT_GT(parsed, 1000);
  EXPECT_TRUE(tree_host.user.notes.empty());
}

}  // namespace
}  // namespace qelm::xpath
