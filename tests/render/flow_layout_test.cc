// Where text stands: pages of five lines of 12 points, 180 points wide, with a header and a footer.
#include <gtest/gtest.h>

#include "render/laid_out.h"

namespace qelm::embedded::render {
namespace {

struct Format {
  std::string tag;
  std::string properties;
};

std::string Para(const std::string& text, const std::string& tag = "Body", const std::string& more = {}) {
  return "<Para <PgfTag `" + tag + "'> " + more + "<ParaLine <String `" + text + "'>>>\n";
}

std::string Paras(std::size_t first, std::size_t last) {
  std::string text;
  for (std::size_t i = first; i <= last; ++i) text += Para("p" + std::to_string(i));
  return text;
}

struct Source {
  std::string text;                  // paragraphs of the main flow
  std::vector<Format> formats = {};  // besides Body
  std::string catalogs = {};
  std::string objects = {};  // Tbls, AFrames
  std::string settings = {};
  std::string header = {};  // paragraph lines
  std::string notes = {};
};

std::string Mif(const Source& source) {
  std::string mif = "<MIFFile 10.0>\n<Units Upt>\n" + source.catalogs + "<PgfCatalog\n";
  const std::string base =
      "<PgfFont <FFamily `Arial'> <FSize 10 pt>> <PgfLineSpacing Fixed> <PgfLeading 2 pt> <PgfBlockSize 1> ";
  mif += "<Pgf <PgfTag `Body'> " + base + ">\n";
  for (const Format& format : source.formats) {
    mif += "<Pgf <PgfTag `" + format.tag + "'> " + base + format.properties + ">\n";
  }
  mif +=
      ">\n<VariableFormats <VariableFormat <VariableName `Page'> <VariableDef `<$curpagenum\\> of "
      "<$lastpagenum\\>'>> <VariableFormat <VariableName `Head'> <VariableDef `<$paratext[Title]\\>'>>>\n";
  mif += "<Document <DPageSize 200 pt 100 pt> <DTwoSides No> " + source.settings + ">\n" + source.objects;
  mif +=
      "<Page <PageType RightMasterPage> <PageTag `Right'> <PageSize 200 pt 100 pt> "
      "<TextRect <ID 1> <ShapeRect 10 pt 20 pt 180 pt 60 pt>> "
      "<TextRect <ID 3> <ShapeRect 10 pt 5 pt 180 pt 12 pt>>>\n"
      "<Page <PageType BodyPage> <PageNum `1'> <PageBackground `Default'> "
      "<TextRect <ID 2> <ShapeRect 10 pt 20 pt 180 pt 60 pt>>>\n"
      "<TextFlow <TFTag `A'> <TFAutoConnect Yes> <Para <ParaLine <TextRectID 1>>>>\n"
      "<TextFlow <Para <PgfTag `Body'> <ParaLine <TextRectID 3> " +
      source.header + ">>>\n";
  std::string text = source.text;
  const std::size_t line = text.find("<ParaLine ");
  text.insert(line + 10, "<TextRectID 2> ");
  return mif + "<TextFlow <TFTag `A'> <TFAutoConnect Yes> <Notes " + source.notes + "> " + text + ">\n";
}

std::string Pages(const Source& source) { return LaidOut(Mif(source)).Pages(); }

TEST(FlowLayout, WhatStaysTogetherGoesOnTogether) {
  const Format heading = {"Heading", "<PgfWithNext Yes>"};
  const Format back = {"Back", "<PgfWithPrev Yes>"};
  const Format block = {"Block", "<PgfBlockSize 2>"};
  const Format top = {"Top", "<PgfPlacement PageTop>"};
  const std::string long_text =
      "first words that fill the line and go on into a second one and from there into a third line of it all";
  const auto lines = [&](const std::string& before) {
    std::string page = Pages({.text = before + Para(long_text, "Block"), .formats = {block}});
    return page.substr(0, page.find('\n'));
  };
  EXPECT_EQ(Pages({.text = Paras(1, 6)}), "p1|p2|p3|p4|p5\np6");
  EXPECT_EQ(Pages({.text = Paras(1, 4) + Para("h", "Heading") + Paras(5, 6), .formats = {heading}}),
            "p1|p2|p3|p4\nh|p5|p6");
  EXPECT_EQ(Pages({.text = Paras(1, 5) + Para("b", "Back") + Paras(6, 6), .formats = {back}}),
            "p1|p2|p3|p4\np5|b|p6");
  EXPECT_EQ(Pages({.text = Paras(1, 2) + Para("t", "Top") + Paras(3, 3), .formats = {top}}), "p1|p2\nt|p3");
  // Headings that fill more than a page are broken all the same.
  std::string headings;
  for (int i = 0; i < 7; ++i) headings += Para("h", "Heading");
  EXPECT_EQ(Pages({.text = headings, .formats = {heading}}), "h|h|h|h|h\nh|h");
  // Neither a first nor a last line stands alone.
  EXPECT_EQ(lines(Paras(1, 3)), "p1|p2|p3");
  EXPECT_EQ(lines(Paras(1, 4)), "p1|p2|p3|p4");
}

TEST(FlowLayout, SpaceBetweenParagraphsIsTheLargerOfTwo) {
  const LaidOut laid(Mif({.text = Para("a", "Loose") + Para("b", "Loose") + Para("c"),
                          .formats = {{"Loose", "<PgfSpBefore 5 pt> <PgfSpAfter 8 pt>"}}}));
  const std::vector<SeenLine>& lines = laid.pages.front().lines;
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_NEAR(lines[1].baseline - lines[0].baseline, 20, 0.01);
  EXPECT_NEAR(lines[2].baseline - lines[1].baseline, 20, 0.01);
  EXPECT_NEAR(lines[0].baseline - 20, 8, 1.5);  // no space above the first; the ascent of the font
}

TEST(FlowLayout, IndentsTabsAndAlignment) {
  const std::string stops =
      "<PgfNumTabs 2> <TabStop <TSX 60 pt> <TSType Left>> <TabStop <TSX 180 pt> <TSType Right>> ";
  const LaidOut laid(Mif({.text = Para("hang\\tbehind", "Hang") + Para("mid", "Center") +
                                  Para("end", "Right") + Para("a\\tb\\tc", "Tabs"),
                          .formats = {{"Hang", "<PgfFIndent 10 pt> <PgfLIndent 50 pt>"},
                                      {"Center", "<PgfAlignment Center>"},
                                      {"Right", "<PgfAlignment Right> <PgfRIndent 20 pt>"},
                                      {"Tabs", stops}}}));
  const std::vector<SeenLine>& lines = laid.pages.front().lines;
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_NEAR(lines[0].x, 20, 0.01);
  EXPECT_GT(lines[0].width, 40);  // as far as the tab goes, to the left indent
  EXPECT_NEAR(lines[1].x + lines[1].width / 2, 100, 0.05);
  EXPECT_NEAR(lines[2].x + lines[2].width, 170, 0.05);
  EXPECT_NEAR(lines[3].width, 180, 0.05);
}

TEST(FlowLayout, TextStandsBesideAFrameThatRunsIn) {
  const auto laid = [](const std::string& more, const std::string& text) {
    return LaidOut(
        Mif({.text = "<Para <PgfTag `Body'> <ParaLine <AFrame 1> <String `" + text + "'>>>\n" + Paras(1, 1),
             .objects = "<AFrames <Frame <ID 1> <FrameType RunIntoParagraph> <NSOffset 4 pt> "
                        "<ShapeRect 0 0 30 pt 20 pt> " +
                        more + ">>\n"}));
  };
  const std::string words =
      "words that fill the first line and the second, both beside the frame, and a third below it";
  const LaidOut left = laid("<AnchorAlign Left>", words);
  const std::vector<SeenLine>& lines = left.pages.at(0).lines;
  ASSERT_GE(lines.size(), 4U);
  EXPECT_NEAR(lines[0].x, 10 + 34, 0.01);
  EXPECT_NEAR(lines[1].x, 10 + 34, 0.01);
  EXPECT_NEAR(lines[2].x, 10, 0.01);
  std::string text;
  for (const SeenLine& line : lines) text += line.text;
  EXPECT_EQ(text, words + "p1");
  const LaidOut right = laid("<AnchorAlign Right>", words);
  EXPECT_NEAR(right.pages.at(0).lines[0].x, 10, 0.01);
  EXPECT_LE(right.pages.at(0).lines[0].width, 146);
  // A paragraph that is lower than the frame is made as high.
  const LaidOut lower = laid("<AnchorAlign Left>", "low");
  EXPECT_NEAR(lower.pages.at(0).lines[1].baseline - lower.pages.at(0).lines[0].baseline, 20, 0.01);
}

TEST(FlowLayout, HiddenTextTakesNoRoom) {
  const std::string conditions =
      "<ConditionCatalog <Condition <CTag `Secret'> <CState CHidden>> <Condition <CTag `Open'> <CState "
      "CShown>>>\n";
  const auto under = [](const std::string& name, const std::string& text) {
    return "<Conditional <InCondition `" + name + "'>> <String `" + text + "'> <Unconditional >";
  };
  const std::string text =
      "<Para <PgfTag `Body'> <ParaLine <String `one '> " + under("Secret", "two ") + under("Open", "three") +
      ">>\n" + "<Para <PgfTag `Body'> <ParaLine <Conditional <InCondition `Secret'>> <String `gone'>>>\n" +
      "<Para <PgfTag `Body'> <ParaLine <Unconditional > <String `four'>>>\n";
  EXPECT_EQ(Pages({.text = text, .catalogs = conditions}), "one three|four");
}

TEST(FlowLayout, HeadersSayWhatStandsOnTheirPage) {
  const std::string header = "<Variable <VariableName `Head'>> <String ` '> <Variable <VariableName `Page'>>";
  const LaidOut laid(Mif({.text = Para("One", "Title") + Paras(1, 9) + Para("Two", "Title") + Paras(10, 10),
                          .formats = {{"Title", ""}},
                          .header = header}));
  ASSERT_EQ(laid.pages.size(), 3U);
  ASSERT_EQ(laid.pages[0].around.size(), 1U);
  // How many pages there are is known to who prints, not to the layout.
  EXPECT_EQ(laid.pages[0].around[0].text, "One 1 of ");
  EXPECT_EQ(laid.pages[1].around[0].text, "One 2 of ");
  EXPECT_EQ(laid.pages[2].around[0].text, "Two 3 of ");
}

std::string Row(const std::string& cells, const std::string& look = {}) {
  return "<Row " + look + cells + ">";
}
std::string Cell(const std::string& text, const std::string& look = {}) {
  return "<Cell " + look + "<CellContent " + Para(text) + ">>";
}
std::string TableMif(const std::string& rows, const std::string& heading = {},
                     const std::string& footing = {}) {
  return "<Tbls <Tbl <TblID 1> <TblTag `T'> <TblNumColumns 2> <TblColumnWidth 60 pt> <TblColumnWidth 60 "
         "pt> " +
         (heading.empty() ? "" : "<TblH " + heading + ">") + "<TblBody " + rows + ">" +
         (footing.empty() ? "" : "<TblF " + footing + ">") + ">>\n";
}
const char* const kTableCatalogs =
    "<RulingCatalog <Ruling <RulingTag `Thin'> <RulingPenWidth 0.5 pt> <RulingPen 0> <RulingLines 1>>>\n"
    "<TblCatalog <TblFormat <TblTag `T'> <TblCellMargins 2 pt 0 pt 2 pt 0 pt> <TblAlignment Left> "
    "<TblSpBefore 0 pt> <TblSpAfter 0 pt> <TblColumnRuling `Thin'> <TblHFFill 5> <TblBodyFill 15>>>\n";
const char* const kAnchor = "<Para <PgfTag `Body'> <ParaLine <String `t'> <ATbl 1>>>\n";

TEST(TableLayout, HeadingsStandOnEveryPage) {
  std::string rows;
  for (int i = 1; i <= 6; ++i) rows += Row(Cell("r" + std::to_string(i)) + Cell(""));
  EXPECT_EQ(Pages({.text = kAnchor + Paras(1, 1),
                   .catalogs = kTableCatalogs,
                   .objects = TableMif(rows, Row(Cell("H") + Cell("")))}),
            "t|H||r1||r2||r3|\nH||r4||r5||r6||p1");
  // But not one that takes more than half of it.
  const std::string high = "<Cell <CellContent " + Para("h1") + Para("h2") + Para("h3") + ">>";
  const std::string text = Pages({.text = kAnchor + Paras(1, 1),
                                  .catalogs = kTableCatalogs,
                                  .objects = TableMif(rows, Row(high + Cell("")))});
  EXPECT_EQ(text.find("h1"), text.rfind("h1")) << text;
  EXPECT_NE(text.find("r6"), std::string::npos) << text;
}

TEST(TableLayout, FootingsStandOnEveryPageAndOnceAtTheEnd) {
  const auto pages = [](int rows, const std::string& footing) {
    std::string body;
    for (int i = 1; i <= rows; ++i) body += Row(Cell("r" + std::to_string(i)) + Cell(""));
    return Pages(
        {.text = kAnchor + Paras(1, 1), .catalogs = kTableCatalogs, .objects = TableMif(body, {}, footing)});
  };
  const std::string footing = Row(Cell("F") + Cell(""));
  EXPECT_EQ(pages(5, footing), "t|r1||r2||r3||F|\nr4||r5||F||p1");
  // Where the table ends with the page, it is there once.
  EXPECT_EQ(pages(3, footing), "t|r1||r2||r3||F|\np1");
  // A last row and its footing stay together.
  EXPECT_EQ(pages(4, footing), "t|r1||r2||r3||F|\nr4||F||p1");
  // One that would take more than half of the page stands at the end only.
  const std::string high =
      Row("<Cell <CellContent " + Para("F1") + Para("F2") + Para("F3") + ">>" + Cell(""));
  EXPECT_EQ(pages(5, high), "t|r1||r2||r3||r4|\nr5||F1|F2|F3||p1");
}

TEST(TableLayout, RowsAndCellsOutOfPlaceAreSaid) {
  const LaidOut laid(Mif({.text = kAnchor + Paras(1, 1),
                          .catalogs = kTableCatalogs,
                          .objects = "<Tbls <Tbl <TblID 1> <TblTag `T'> <TblNumColumns 1> " + Row(Cell("a")) +
                                     "<TblBody " + Row(Cell("b")) + Cell("c") + ">>>\n"}));
  EXPECT_EQ(laid.Pages(), "t|b|p1");
  std::string warnings;
  for (const model::Warning& warning : laid.document->warnings) {
    warnings += warning.text.substr(warning.text.find(": ") + 2) + "|";
  }
  EXPECT_EQ(warnings,
            "table 1 has a row outside of its heading, body and footing; its text is not shown|"
            "table 1 has a cell outside of its rows; its text is not shown|");
}

TEST(TableLayout, StraddledCellsAreAsWideAndHighAsTheySay) {
  const std::string rows = Row(Cell("wide enough for both columns", "<CellColumns 2> ") + Cell("")) +
                           Row(Cell("a tall one in three lines", "<CellRows 2> ") + Cell("x")) +
                           Row(Cell("") + Cell("y"));
  const LaidOut laid(
      Mif({.text = kAnchor + Paras(1, 1), .catalogs = kTableCatalogs, .objects = TableMif(rows)}));
  std::vector<std::string> texts;
  for (const SeenLine& line : laid.pages.front().lines) texts.push_back(line.text);
  ASSERT_GE(texts.size(), 4U);
  EXPECT_EQ(texts[1].substr(0, 11), "wide enough");
  const auto find = [&](const std::string& text) {
    for (const SeenPage& page : laid.pages) {
      for (const SeenLine& line : page.lines) {
        if (line.text == text) return line;
      }
    }
    return SeenLine();
  };
  EXPECT_NEAR(find("x").x, 10 + 60 + 2, 0.01);
  EXPECT_NEAR(find("y").baseline - find("x").baseline, 12, 0.01);
}

TEST(TableLayout, StraddledTextGoesOnWithItsRows) {
  std::string cell = "<Cell <CellRows 8> <CellContent ";
  for (int i = 1; i <= 8; ++i) cell += Para("c" + std::to_string(i));
  std::string rows = Row(cell + ">>" + Cell("r1"));
  for (int i = 2; i <= 8; ++i) rows += Row(Cell("") + Cell("r" + std::to_string(i)));
  const LaidOut laid(
      Mif({.text = kAnchor + Paras(1, 1), .catalogs = kTableCatalogs, .objects = TableMif(rows)}));
  const std::string text = laid.Pages();
  for (int i = 1; i <= 8; ++i) {
    EXPECT_NE(text.find("c" + std::to_string(i)), std::string::npos) << text;
    EXPECT_NE(text.find("r" + std::to_string(i)), std::string::npos) << text;
  }
  for (const SeenPage& page : laid.pages) {
    for (const SeenLine& line : page.lines) EXPECT_LE(line.baseline, 80) << line.text;
  }
}

TEST(TableLayout, RowHigherThanAPageLosesNothing) {
  std::string cell = "<Cell <CellContent ";
  for (int i = 1; i <= 8; ++i) cell += Para("c" + std::to_string(i));
  const std::string text = Pages({.text = kAnchor + Paras(1, 1),
                                  .catalogs = kTableCatalogs,
                                  .objects = TableMif(Row(cell + ">>" + Cell("side")))});
  EXPECT_EQ(text, "t\nc1|c2|c3|c4|c5|side\nc6|c7|c8|p1");
}

TEST(Footnotes, StandAtTheFootOfTheirPageAndCountAnew) {
  const auto anchor = [](int id) {
    return "<Para <PgfTag `Body'> <ParaLine <String `a" + std::to_string(id) + "'> <FNote " +
           std::to_string(id) + ">>>\n";
  };
  std::string notes;
  for (int id = 7; id <= 9; ++id)
    notes += "<FNote <ID " + std::to_string(id) + "> " + Para("n" + std::to_string(id)) + ">";
  const std::string settings =
      "<DFNoteComputeMethod PerPage> <DFNoteNumStyle Arabic> <DFNoteNumberSuffix ` '> ";
  const LaidOut laid(Mif({.text = Paras(1, 1) + anchor(7) + anchor(8) + Paras(2, 3) + anchor(9),
                          .settings = settings,
                          .notes = notes}));
  EXPECT_EQ(laid.Pages(), "p1|a71|a82|1 n7|2 n8\np2|p3|a91|1 n9");
  // At the very foot, whatever stands above.
  EXPECT_NEAR(laid.pages[1].lines.back().baseline, 80 - 12 + 8, 1.5);
}

TEST(FlowLayout, TextOfAnyLengthIsSet) {
  std::string words;
  for (int i = 0; i < 60000; ++i) words += "word ";
  std::size_t count = 0;
  for (const SeenPage& page : LaidOut(Mif({.text = Para(words)})).pages) {
    const std::string text = page.Text();
    for (std::size_t at = 0; (at = text.find("word", at)) != std::string::npos; ++at) ++count;
  }
  EXPECT_EQ(count, 60000U);
}

}  // namespace
}  // namespace qelm::embedded::render
