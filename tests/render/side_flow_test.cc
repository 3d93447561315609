// Flows besides the main one: pages of four lines of 10 points, a frame of two lines beside them.
#include <gtest/gtest.h>

#include <cmath>

#include "embedded/render/frame_text.h"
#include "render/laid_out.h"

namespace qelm::embedded::render {
namespace {

std::string Lines(const std::string& letter, int count) {
  std::string text;
  for (int i = 1; i <= count; ++i) {
    text += "<Para <PgfTag `Body'> <ParaLine <String `" + letter + std::to_string(i) + "'>>>\n";
  }
  return text;
}

std::string Frame(int id, const std::string& place, const std::string& more = {}) {
  return "<TextRect <ID " + std::to_string(id) + "> " + more + " <ShapeRect " + place + ">>";
}
const char* const kMain = "10 pt 10 pt 80 pt 40 pt";
const char* const kSide = "110 pt 10 pt 80 pt 20 pt";

std::string Flow(int frame, const std::string& head, std::string text) {
  text.insert(text.find("<ParaLine ") + 10, "<TextRectID " + std::to_string(frame) + "> ");
  return "<TextFlow " + head + " " + text + ">\n";
}
const char* const kMainHead = "<TFTag `A'> <TFAutoConnect Yes>";

// Two body pages with a frame of both flows, and a master page that has one of each as well.
std::string TwoPages(const std::string& side_head, int main_lines, int side_lines,
                     const std::string& second_frame = Frame(14, kSide)) {
  const std::string size = "<PageSize 200 pt 100 pt> ";
  return "<MIFFile 10.0>\n<Units Upt>\n<PgfCatalog <Pgf <PgfTag `Body'> <PgfFont <FFamily `Arial'> <FSize 8 "
         "pt>> "
         "<PgfLineSpacing Fixed> <PgfLeading 2 pt> <PgfBlockSize 1>>>\n"
         "<Document <DPageSize 200 pt 100 pt> <DTwoSides No>>\n"
         "<Page <PageType RightMasterPage> <PageTag `Right'> " +
         size + Frame(1, kMain) + Frame(2, kSide) +
         ">\n"
         "<Page <PageType BodyPage> <PageNum `1'> <PageBackground `Default'> " +
         size + Frame(11, kMain, "<TRNext 13>") + Frame(12, kSide, "<TRNext 14>") +
         ">\n"
         "<Page <PageType BodyPage> <PageNum `2'> <PageBackground `Default'> " +
         size + Frame(13, kMain) + second_frame + ">\n" + Flow(1, kMainHead, "<Para <ParaLine >>") +
         Flow(2, "<TFTag `B'> <TFAutoConnect Yes>", "<Para <ParaLine >>") +
         Flow(11, kMainHead, Lines("m", main_lines)) + Flow(12, side_head, Lines("s", side_lines));
}

TEST(SideFlow, RunsThroughTheFramesOfItsPages) {
  const LaidOut laid(TwoPages("<TFTag `B'>", 6, 4));
  EXPECT_EQ(laid.Pages(), "m1|m2|m3|m4|s1|s2\nm5|m6|s3|s4");
  EXPECT_TRUE(laid.setting->notices.empty());
  ASSERT_EQ(laid.pages.size(), 2U);
  EXPECT_NEAR(laid.pages[1].lines[2].x, 110, 0.01);
}

TEST(SideFlow, OneThatConnectsByItselfMakesPages) {
  const LaidOut laid(TwoPages("<TFTag `B'> <TFAutoConnect Yes>", 9, 7));
  EXPECT_EQ(laid.Pages(), "m1|m2|m3|m4|s1|s2\nm5|m6|m7|m8|s3|s4\nm9\ns5|s6\ns7");
  EXPECT_TRUE(laid.setting->notices.empty());
  EXPECT_NEAR(laid.pages[3].lines[0].x, 110, 0.01);
}

TEST(SideFlow, TextWithoutAPlaceIsSaid) {
  const LaidOut laid(TwoPages("<TFTag `B'>", 1, 5));
  EXPECT_EQ(laid.Pages(), "m1|s1|s2\ns3|s4");
  ASSERT_EQ(laid.setting->notices.size(), 1U);
  EXPECT_EQ(
      laid.setting->notices[0],
      "the text of the flow B does not fit into its text frames; its end has no place behind page 2 and is "
      "not printed.");
  // Blank lines at its end are nothing that anybody misses, and a last line may stand out with its leading.
  std::string blank = TwoPages("<TFTag `B'>", 1, 5);
  blank.replace(blank.rfind("s5"), 2, "");
  EXPECT_TRUE(LaidOut(blank).setting->notices.empty());
}

TEST(SideFlow, TurnedFramesHaveATextOfTheirOwn) {
  const LaidOut laid(TwoPages("<TFTag `B'>", 1, 4, Frame(14, "110 pt 10 pt 40 pt 20 pt", "<Angle 90>")));
  ASSERT_EQ(laid.pages.size(), 2U);
  ASSERT_EQ(laid.pages[1].texts.size(), 1U);
  EXPECT_EQ(laid.pages[1].texts[0].angle, 90);
  EXPECT_EQ(laid.pages[1].texts[0].place.width, 40);
}

TEST(SideFlow, BalancedColumnsEndAtTheSameHeight) {
  const std::string columns = "<TRNumColumns 2> <TRColumnGap 0> <TRColumnBalance Yes>";
  const auto places = [&](int lines, const std::string& columns_say) {
    const LaidOut laid(TwoPages("<TFTag `B'>", 1, lines, Frame(14, kSide, columns_say)));
    std::string text;
    for (const SeenLine& line : laid.pages.at(1).lines) {
      text += line.text + "@" + std::to_string(std::lround(line.x)) + "," +
              std::to_string(std::lround(line.baseline - laid.pages.at(1).lines[0].baseline)) + " ";
    }
    return text;
  };
  EXPECT_EQ(places(5, "<TRNumColumns 2> <TRColumnGap 0>"), "s3@110,0 s4@110,10 s5@150,0 ");
  EXPECT_EQ(places(4, columns), "s3@110,0 s4@150,0 ");
  EXPECT_EQ(places(5, columns), "s3@110,0 s4@110,10 s5@150,0 ");
}

TEST(SideFlow, HeadsStandBesideAndAcross) {
  std::string mif =
      TwoPages("<TFTag `B'> <TFSideheads Yes>", 1, 5,
               Frame(14, "100 pt 10 pt 90 pt 60 pt", "<TRSideheadWidth 30 pt> <TRSideheadGap 10 pt>"));
  const auto format = [&](const std::string& text, const std::string& style) {
    mif.replace(mif.find("<PgfTag `Body'> <ParaLine <String `" + text), 15,
                "<Pgf <PgfTag `Body'> <PgfPlacementStyle " + style + ">>");
  };
  format("s3", "SideheadTop");
  format("s5", "Straddle");
  const LaidOut laid(mif);
  std::string places;
  for (const SeenLine& line : laid.pages.at(1).lines) {
    places += line.text + "@" + std::to_string(std::lround(line.x)) + " ";
  }
  EXPECT_EQ(places, "s3@100 s4@140 s5@100 ");
}

TEST(FrameText, GoesOnInTheNextFrameOfItsGraphic) {
  const auto lines = [](int count, std::uint32_t place) {
    const LaidOut laid(
        "<MIFFile 10.0>\n<Units Upt>\n<PgfCatalog <Pgf <PgfTag `Body'> <PgfFont <FFamily `Arial'> "
        "<FSize 8 pt>> <PgfLineSpacing Fixed> <PgfLeading 2 pt> <PgfBlockSize 1>>>\n"
        "<AFrames <Frame <ID 1> <ShapeRect 0 0 100 pt 100 pt> " +
        Frame(21, "0 0 40 pt 20 pt", "<TRNext 22>") +
        Frame(22, "50 pt 0 50 pt 20 pt", "<TRNumColumns 2> <TRColumnGap 10 pt>") + ">>\n" +
        Flow(21, "", Lines("f", count)) +
        "<TextFlow <TFTag `A'> <TFAutoConnect Yes> <Para <ParaLine <AFrame 1>>>>\n");
    std::string text;
    for (const Mark& mark : FrameMarks(*laid.setting, 1, place)) {
      text += mark.paragraph->LineText(mark.ref) + "@" + std::to_string(std::lround(mark.x)) + " ";
    }
    return text + std::to_string(laid.setting->notices.size());
  };
  EXPECT_EQ(lines(6, 0), "f1@0 f2@0 0");
  EXPECT_EQ(lines(6, 1), "f3@50 f4@50 f5@80 f6@80 0");
  // What has no room stands below the last one, and that is said.
  EXPECT_EQ(lines(7, 1), "f3@50 f4@50 f5@80 f6@80 f7@80 1");
}

}  // namespace
}  // namespace qelm::embedded::render
