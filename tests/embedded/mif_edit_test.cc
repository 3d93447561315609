// Edits of small MIF documents, down to the bytes that are written.

#include "embedded/model/edit.h"

#include <gtest/gtest.h>

#include "embedded/model/files.h"
#include "embedded/model/text_access.h"
#include "support/normal_form.h"

namespace qelm::test {
namespace {

using namespace embedded::model;

std::unique_ptr<Document> Open(const std::string& bytes) {
  std::string error;
  auto document = BuildMif(bytes, &error);
  EXPECT_NE(document, nullptr) << error;
  return document;
}

Id Find(const Document& document, std::string_view name) {
  for (Id id = 1; id < document.elements.size(); ++id) {
    const Element& element = document.elements[id];
    if (!element.deleted && document.definitions[element.definition].name == name) return id;
  }
  return 0;
}

void Hide(Document* document, Id id) {
  const Id hidden = CreateCondition(document, "Hidden");
  SetConditions(document, document->elements[id].first_item, document->elements[id].end_item,
                document->InternConditions({hidden}));
}

// Statements as FrameMaker lays them out.
std::string Begin(const std::string& tag) {
  return "   <ElementBegin \n    <ETag `" + tag + "'>\n   > # end of ElementBegin\n";
}
std::string End(const std::string& tag) { return "   <ElementEnd `" + tag + "'>\n"; }
std::string Text(const std::string& text) { return "   <String `" + text + "'>\n"; }
std::string Para(const std::string& head, const std::string& items) {
  return " <Para \n" + head + "  <ParaLine \n" + items + "  > # end of ParaLine\n > # end of Para\n";
}
std::string Flow(const std::string& paras) {
  return "<TextFlow \n <TFTag `A'>\n <TFAutoConnect Yes>\n <Notes \n > # end of Notes\n" + paras +
         "> # end of TextFlow\n";
}
const char* const kHead =
    "<MIFFile 7.00> # test\n<ConditionCatalog \n <Condition \n  <CTag `Old'>\n"
    "  <CState CHidden>\n > # end of Condition\n> # end of ConditionCatalog\n";
const char* const kBody = "  <PgfTag `Body'>\n";

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

// Elements that read alike behind their names are read once; what differs is not taken for them.
TEST(MifElements, AreWhatTheirStatementsSayWhateverOthersLookLike) {
  const std::string usual = "\n    <Attributes \n    > # end of Attributes\n    <Collapsed No>\n   >\n";
  const std::string with_value =
      "\n    <Attributes \n     <Attribute \n      <AttrName `a'>\n      <AttrValue `v'>\n     >\n    >\n"
      "    <Collapsed No>\n   >\n";
  const struct {
    std::string content;  // of ElementBegin
    std::string expected;
  } rows[] = {
      {"\n    <ETag `one'>" + usual, "one"},
      {"\n    <ETag `two'>" + usual, "two"},
      {"\n    <ETag `x'>\n    <ETag `three'>" + usual, "three"},
      {"\n    <ETag `x'>\n    <ETag `four'>" + usual, "four"},
      {"\n    <Other \n     <ETag `x'>\n    >\n    <ETag `five'>" + usual, "five"},
      {"\n    <ETag \n     <ETag `x'>" + usual + "    <ETag `six'>" + usual, "six"},
      {"\n    <ETag `x'>\n    <Other \n     <ETag `x'>" + usual + "    <ETag `seven'>" + usual, "seven"},
      {"\n    <ETag `eight'>" + with_value, "eight a"},
      {"\n    <ETag `nine'>" + usual, "nine"},
      {"\n    <ETag `ten'>" + with_value, "ten a"},
      {"\n    <ETag `eleven'> <Collapsed Yes> >\n", "eleven"},
      {"\n    <ETag `twelve'> <Collapsed Yes> >\n", "twelve"},
  };
  std::string text = "<MIFFile 7.00>\n<TextFlow \n <Para \n  <Unique 1>\n  <ParaLine \n";
  for (const auto& row : rows) text += "   <ElementBegin " + row.content + "   <String `t'>\n";
  for (std::size_t i = 0; i < std::size(rows); ++i) text += "   <ElementEnd >\n";
  text += "  > # end of ParaLine\n > # end of Para\n> # end of TextFlow\n# End of MIFFile\n" +
          std::string(300, '\n');
  const auto document = Open(text);
  ASSERT_NE(document, nullptr);
  Id id = 1;
  for (const auto& row : rows) {
    const Element& element = document->elements[id];
    std::string read(document->definitions[element.definition].name);
    if (element.attribute_count > 0) {
      read += " " + std::string(document->names[document->attributes[element.first_attribute].name]);
    }
    EXPECT_EQ(read, row.expected);
    id += 2;
  }
}

TEST(MifEdit, HidingWritesTheStateAndRestoringTakesItBack) {
  const std::string file = kHead + Flow(Para(kBody, Begin("Doc") + Begin("P") + Text("one") + End("P")) +
                                        Para(kBody, Begin("Q") + Text("two") + End("Q") + End("Doc")));
  auto document = Open(file);
  Hide(document.get(), Find(*document, "P"));
  const std::string hidden = SaveMif(*document);
  const std::string set = "   <Conditional \n    <InCondition `Hidden'>\n   > # end of Conditional\n";
  std::string expected = Replaced(file, Begin("P"), set + Begin("P"));
  expected = Replaced(expected, End("P"), End("P") + "   <Unconditional >\n");
  expected = Replaced(expected, "> # end of ConditionCatalog",
                      " <Condition \n  <CTag `Hidden'>\n  <CState CShown>\n  <CStyle CAsIs>\n > # end of "
                      "Condition\n> # end of ConditionCatalog");
  EXPECT_EQ(hidden, expected);

  auto again = Open(hidden);
  SetConditions(again.get(), 0, static_cast<std::uint32_t>(again->items.size()), 0);
  expected = Replaced(expected, set, "");
  expected = Replaced(expected, "   <Unconditional >\n", "");
  EXPECT_EQ(SaveMif(*again), expected);
}

TEST(MifEdit, AHiddenEndOfTheFlowReturnsToUnconditional) {
  const std::string file = kHead + Flow(Para(kBody, Begin("Doc") + Text("a") + End("Doc")));
  auto document = Open(file);
  Hide(document.get(), Find(*document, "Doc"));
  const std::string hidden = SaveMif(*document);
  EXPECT_NE(hidden.find(End("Doc") + "   <Unconditional >\n  > # end of ParaLine"), std::string::npos);
}

TEST(MifEdit, OneLineFilesAreEditedWithinTheLine) {
  const std::string file =
      "<MIFFile 7.00><TextFlow <TFTag `A'><Para <ParaLine <ElementBegin <ETag `D'>><ElementBegin <ETag `P'>>"
      "<String `x'><ElementEnd `P'><String `y'><ElementEnd `D'>>>>";
  auto document = Open(file);
  Hide(document.get(), Find(*document, "P"));
  auto again = Open(SaveMif(*document));
  EXPECT_EQ(FirstDifference(NormalForm(*again), NormalForm(*document)), "");
  SetConditions(again.get(), 0, static_cast<std::uint32_t>(again->items.size()), 0);
  EXPECT_NE(SaveMif(*again).find(file.substr(14)), std::string::npos);
}

TEST(MifEdit, AnEmptiedParagraphGoesAndItsBoundariesMove) {
  const std::string second = Para(kBody, Begin("P") + Text("two") + End("P") + End("Doc"));
  const std::string file =
      kHead + Flow(Para(kBody, Begin("Doc") + Begin("T") + Text("one") + End("T")) + second);
  auto document = Open(file);
  ASSERT_TRUE(DeleteElement(document.get(), Find(*document, "P")));
  std::string expected = Replaced(file, second, "");
  expected = Replaced(expected, End("T"), End("T") + End("Doc"));
  EXPECT_EQ(SaveMif(*document), expected);
}

TEST(MifEdit, TheFirstParagraphHandsOnItsBeginAndItsTextFrame) {
  const std::string first =
      Para(kBody, "   <TextRectID 9>\n" + Begin("Doc") + Begin("T") + Text("one") + End("T"));
  const std::string file =
      kHead + Flow(first + Para(kBody, Begin("P") + Text("two") + End("P") + End("Doc")));
  auto document = Open(file);
  ASSERT_TRUE(DeleteElement(document.get(), Find(*document, "T")));
  std::string expected = Replaced(file, first, "");
  expected = Replaced(
      expected, "  <ParaLine \n" + Begin("P"),
      "  <ParaLine \n   <TextRectID 9>\n  > # end of ParaLine\n  <ParaLine \n" + Begin("Doc") + Begin("P"));
  EXPECT_EQ(SaveMif(*document), expected);
}

TEST(MifEdit, AParagraphWithoutTagKeepsTheFormatOfTheOneBeforeIt) {
  const std::string first = Para("  <PgfTag `Head'>\n", Begin("Doc") + Begin("T") + Text("one") + End("T"));
  const std::string file = kHead + Flow(first + Para("", Begin("P") + Text("two") + End("P") + End("Doc")));
  auto document = Open(file);
  ASSERT_TRUE(DeleteElement(document.get(), Find(*document, "T")));
  auto again = Open(SaveMif(*document));
  EXPECT_EQ(FirstDifference(NormalForm(*again), NormalForm(*document)), "");
  EXPECT_NE(NormalForm(*again)[2].find("(Head)"), std::string::npos);
}

TEST(MifEdit, EmptiedElementsAndStoriesKeepAParagraph) {
  const std::string file = kHead + Flow(Para(kBody, Begin("Doc") + Begin("T") + Text("one") + End("T")) +
                                        Para(kBody, Begin("P") + Text("two") + End("P") + End("Doc")));
  auto document = Open(file);
  DeleteElement(document.get(), Find(*document, "T"));
  DeleteElement(document.get(), Find(*document, "P"));
  auto again = Open(SaveMif(*document));
  EXPECT_EQ(NormalForm(*again), (std::vector<std::string>{"<Doc>", "</>"}));
  DeleteElement(again.get(), Find(*again, "Doc"));
  auto empty = Open(SaveMif(*again));
  EXPECT_EQ(NormalForm(*empty), std::vector<std::string>());
  EXPECT_EQ(empty->paragraphs.size(), 2U);
}

TEST(MifEdit, ADeletedMarkJoinsTheTwoParagraphs) {
  const std::string file =
      kHead + Flow(Para(kBody, Begin("Doc") + Text("before ") + Begin("X") + Text("gone")) +
                   Para("  <PgfTag `Other'>\n", Text("gone too") + End("X") + Text("after") + End("Doc")));
  auto document = Open(file);
  ASSERT_TRUE(DeleteElement(document.get(), Find(*document, "X")));
  auto again = Open(SaveMif(*document));
  EXPECT_EQ(NormalForm(*again), NormalForm(*document));
  EXPECT_EQ(again->paragraphs.size(), 2U);
  EXPECT_EQ(AllText(*again), "before after");
}

TEST(MifEdit, ThreeParagraphsJoinedKeepWhatWasHandedToThem) {
  const std::string file =
      kHead + Flow(Para(kBody, "   <TextRectID 5>\n" + Begin("Doc") + Begin("T") + Text("gone") + End("T")) +
                   Para(kBody, Text("a") + Begin("X") + Text("d1")) +
                   Para(kBody, Text("d2") + End("X") + Text("b") + Begin("Y") + Text("d3")) +
                   Para(kBody, Text("d4") + End("Y") + Text("c")) +
                   Para(kBody, Begin("Z") + Text("gone") + End("Z") + End("Doc")));
  auto document = Open(file);
  for (const char* name : {"T", "X", "Y", "Z"})
    ASSERT_TRUE(DeleteElement(document.get(), Find(*document, name)));
  const std::string saved = SaveMif(*document);
  auto again = Open(saved);
  EXPECT_EQ(NormalForm(*again), (std::vector<std::string>{"<Doc>", "[](Body)abc", "</>"}));
  EXPECT_TRUE(again->warnings.empty());
  EXPECT_NE(saved.find("<TextRectID 5>"), std::string::npos);
}

TEST(MifRead, LooseParagraphsEndWhereAFlowBegins) {
  auto document = Open("<MIFFile 7.00>\n<Para <ParaLine <String `a'>>>\n" + Flow(Para(kBody, Text("b"))));
  EXPECT_EQ(AllText(*document), "ab");
  EXPECT_EQ(document->flows.size(), 3U);
}

// A flow has its notes before its text, and is so long that what was read of it does not stay in memory.
TEST(MifRead, NotesAreAtTheirAnchorsHoweverFarThatIs) {
  constexpr int kNotes = 1000;
  std::string notes;
  std::string paras;
  std::string expected(20000, 'p');
  for (int i = 0; i < 20000; ++i) paras += Para(kBody, Text("p"));
  for (int i = 1; i <= kNotes; ++i) {
    const std::string text = "(" + std::to_string(i) + ")";
    notes += "<FNote <ID " + std::to_string(i) + "> " + Para(kBody, Text(text)) + ">\n";
    paras += Para(kBody, Text("a") + "   <FNote " + std::to_string(i) + ">\n" + Text("b"));
    expected += "a" + text + "b";
  }
  const auto document = Open("<MIFFile 7.00>\n" + Replaced(Flow(paras), "<Notes \n", "<Notes \n" + notes));
  ASSERT_NE(document, nullptr);
  EXPECT_TRUE(AllText(*document) == expected);
  EXPECT_TRUE(document->warnings.empty());
}

// A flow with text in a hidden flow: in the middle of a paragraph, or with paragraph marks of its own.
std::string WithHidden(const std::string& hidden_paras) {
  return kHead +
         Flow(Para(kBody, Begin("Doc") + Text("head ") +
                              "   <Marker \n    <MTypeName `Conditional Text'>\n    <MText `+77'>\n   > # "
                              "end of Marker\n" +
                              Text("tail") + End("Doc"))) +
         "<TextFlow \n <TFTag `HIDDEN'>\n <Notes \n > # end of Notes\n" + hidden_paras +
         Para(kBody, "   <Unconditional >\n") + "> # end of TextFlow\n";
}
std::string Mark(const std::string& text) {
  return "   <Marker \n    <MTypeName `Conditional Text'>\n    <MText `" + text +
         "'>\n   > # end of Marker\n";
}
const std::string kOld = "   <Conditional \n    <InCondition `Old'>\n   > # end of Conditional\n";

TEST(MifEdit, HiddenTextIsReadInItsPlaceAndStaysWhereItIs) {
  const std::string file = WithHidden(
      Para("  <PgfTag `Body'>\n  <PgfEndCond Yes>\n", kOld + Mark("-77") + Text("secret ") + Mark("=77")));
  auto document = Open(file);
  EXPECT_EQ(AllText(*document), "head secret tail");
  document->modified = true;
  EXPECT_EQ(SaveMif(*document), file);
}

TEST(MifEdit, HiddenTextThatLosesItsConditionComesBackInline) {
  const struct {
    const char* situation;
    std::string paras;
    std::vector<std::string> expected;
  } kCases[] = {
      {"within a paragraph",
       Para("  <PgfTag `Body'>\n  <PgfEndCond Yes>\n", kOld + Mark("-77") + Text("secret ") + Mark("=77")),
       {"<Doc>", "[](Body)head secret tail", "</>"}},
      {"with a mark inside",
       Para("  <PgfTag `Hid'>\n", kOld + Mark("-77") + Text("one ")) +
           Para("  <PgfTag `Body'>\n  <PgfEndCond Yes>\n", Text("two ") + Mark("=77")),
       {"<Doc>", "[](Hid)head one ", "[](Body)two tail", "</>"}},
      {"with its last mark hidden too",
       Para("  <PgfTag `Hid'>\n  <PgfEndCond Yes>\n  <PgfCondFullPgf Yes>\n",
            kOld + Mark("-77") + Text("one ") + Mark("=77")),
       {"<Doc>", "[](Hid)head one ", "[](Body)tail", "</>"}},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.situation);
    auto document = Open(WithHidden(test.paras));
    SetConditions(document.get(), 0, static_cast<std::uint32_t>(document->items.size()), 0);
    auto again = Open(SaveMif(*document));
    EXPECT_EQ(NormalForm(*again), test.expected);
    EXPECT_EQ(again->blocks.size(), 1U);
    EXPECT_TRUE(again->warnings.empty());
  }
}

TEST(MifEdit, TheBlockAfterAMovedOneKeepsItsCondition) {
  // The second block has no Conditional of its own: it goes on with the first one's.
  std::string file = WithHidden(
      Para("  <PgfTag `Body'>\n  <PgfEndCond Yes>\n", kOld + Mark("-77") + Text("a ") + Mark("=77")) +
      Para("  <PgfTag `Body'>\n  <PgfEndCond Yes>\n", Mark("-78") + Text("b ") + Mark("=78")));
  file = Replaced(file, Text("tail"), Text("tail ") + Mark("+78"));
  auto document = Open(file);
  const HiddenBlock block = document->blocks[1];
  ASSERT_EQ(block.number, 77U);
  SetConditions(document.get(), block.first_item, block.end_item, 0);
  auto again = Open(SaveMif(*document));
  EXPECT_EQ(NormalForm(*again),
            (std::vector<std::string>{"<Doc>", "[](Body)head a tail ", "{Old}[](Body)b ", "</>"}));
}

TEST(MifEdit, DeletedHiddenTextLeavesBothFlows) {
  const std::string file = WithHidden(
      Para("  <PgfTag `Body'>\n  <PgfEndCond Yes>\n", kOld + Mark("-77") + Text("secret ") + Mark("=77")));
  auto document = Open(file);
  const HiddenBlock block = document->blocks[1];
  DeleteRange(document.get(), block.place, block.end_item);
  const std::string saved = SaveMif(*document);
  EXPECT_EQ(saved.find("secret"), std::string::npos);
  EXPECT_EQ(saved.find("77"), std::string::npos);
}

TEST(MifEdit, RowsTakeConditionsAndGo) {
  const auto row = [](const std::string& tag, const std::string& text) {
    return "   <Row \n    <Element \n     <ETag `" + tag +
           "'>\n    > # end of Element\n    <Cell \n     "
           "<CellContent \n      <Notes \n      > # end of Notes\n      <Para \n       <PgfTag `Cell'>\n     "
           "  "
           "<ParaLine \n        <String `" +
           text +
           "'>\n       >\n      > # end of Para\n     > # end of CellContent\n    > # end of Cell\n   > # "
           "end of Row\n";
  };
  const std::string file = std::string(kHead) +
                           "<Tbls \n <Tbl \n  <TblID 3>\n  <TblNumColumns 1>\n  <Element \n   <ETag "
                           "`Table'>\n  > # end of Element\n  "
                           "<TblBody \n" +
                           row("R1", "one") + row("R2", "two") +
                           "  > # end of TblBody\n > # end of Tbl\n> # end of Tbls\n" +
                           Flow(Para(kBody, Begin("Doc") + Text("x") + "   <ATbl 3>\n" + End("Doc")));
  auto document = Open(file);
  const std::uint32_t first = document->PartOf(document->elements[Find(*document, "R1")]);
  const std::uint32_t second = document->PartOf(document->elements[Find(*document, "R2")]);
  SetRowConditions(document.get(), first,
                   document->InternConditions({CreateCondition(document.get(), "Hidden")}));
  const std::string hidden = SaveMif(*document);
  EXPECT_NE(hidden.find("   <Row \n    <Conditional \n     <InCondition `Hidden'>\n    > # end of "
                        "Conditional\n    <Element"),
            std::string::npos);
  auto again = Open(hidden);
  SetRowConditions(again.get(), first, 0);
  EXPECT_EQ(SaveMif(*again).find("<InCondition"), std::string::npos);

  ASSERT_TRUE(DeleteRow(document.get(), first));
  EXPECT_FALSE(DeleteRow(document.get(), second)) << "the last row of a body stays; the table goes instead";
  EXPECT_EQ(AllText(*Open(SaveMif(*document))), "xtwo");
  ASSERT_TRUE(DeleteElement(document.get(), Find(*document, "Table")));
  const std::string without = SaveMif(*document);
  EXPECT_EQ(without.find("<Tbl \n"), std::string::npos);
  EXPECT_EQ(without.find("ATbl"), std::string::npos);
}

TEST(MifRead, WhatFrameMakerWouldStillOpenOpensWithAWarning) {
  const struct {
    const char* situation;
    std::string file;
    const char* warning;
  } kCases[] = {
      {"an end too many", kHead + Flow(Para(kBody, Begin("Doc") + Text("x") + End("Doc") + End("Doc"))),
       "ends no element"},
      {"an end too few", kHead + Flow(Para(kBody, Begin("Doc") + Begin("P") + Text("x") + End("P"))),
       "still open"},
      {"no tag", kHead + Flow(Para(kBody, "   <ElementBegin \n    <Unique 5>\n   >\n" + Text("x") + End(""))),
       "no ETag"},
      {"two roots",
       kHead + Flow(Para(kBody, Begin("A") + Text("x") + End("A") + Begin("B") + Text("y") + End("B"))),
       "NoName"},
      {"hidden text that is missing", WithHidden(""), "no text"},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.situation);
    const auto document = Open(test.file);
    ASSERT_EQ(document->warnings.size(), 1U);
    EXPECT_NE(document->warnings[0].text.find(test.warning), std::string::npos) << document->warnings[0].text;
    EXPECT_NE(document->flows[document->main_flow].root, 0U);
  }
}

TEST(MifRead, GeneratedTextIsNoContentAndLooseParagraphsAreAFlow) {
  const std::string line =
      "<ElementBegin <ETag `Note'>><String `Note: '><PrefixEnd ><String `real'><Char EmDash>"
      "<String `text'><SuffixBegin ><String `.'><ElementEnd `Note'><String ` outside'>";
  auto document = Open("<MIFFile 7.00>\n<Para <ParaLine " + line + ">>\n");
  std::string buffer;
  EXPECT_EQ(ElementText(*document, Find(*document, "Note"), 255, &buffer), "real—text");
  EXPECT_EQ(ElementText(*document, Find(*document, "Note"), 5, &buffer), "real—");
}

}  // namespace
}  // namespace qelm::test
