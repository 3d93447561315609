#include "embedded/render/design/page_design.h"

#include <gtest/gtest.h>

#include "embedded/model/files.h"

namespace qelm::embedded::render {
namespace {

std::string Page(std::string_view type, std::string_view tag, std::string_view content) {
  return "<Page <PageType " + std::string(type) + "> <PageTag `" + std::string(tag) +
         "'> <PageSize  6.0\" 9.0\"> " + std::string(content) + ">\n";
}
std::string TextFrame(int id, std::string_view place, std::string_view rest = {}) {
  return "<TextRect <ID " + std::to_string(id) + "> <ShapeRect " + std::string(place) + "> " +
         std::string(rest) + ">";
}
std::string Flow(int frame, std::string_view head) {
  return "<TextFlow " + std::string(head) + "<Para <ParaLine <TextRectID " + std::to_string(frame) + ">>>>\n";
}

// Left and right masters with a header each, a cover with two connected frames, a blank page.
std::string DoubleSided(std::string_view parity) {
  return "<MIFFile 10.0>\n<Document <DPageSize  6.0\" 9.0\"> <DTwoSides Yes> " + std::string(parity) + ">\n" +
         Page("LeftMasterPage", "Left",
              TextFrame(1, "1\" 1\" 4\" 7\"") + TextFrame(2, "1\" 36 pt 4\" 20 pt")) +
         Page("RightMasterPage", "Right",
              TextFrame(3, "1.5\" 1\" 4\" 7\"", "<TRNumColumns 2> <TRColumnGap 12 pt>") +
                  "<Frame <ShapeRect 10 pt 20 pt 100 pt 100 pt>" + TextFrame(4, "1 pt 2 pt 30 pt 10 pt") +
                  ">") +
         Page("OtherMasterPage", "Cover", "") +
         Page("BodyPage", "",
              "<PageBackground `Cover'>" + TextFrame(5, "1\" 5\" 4\" 3\"", "<TRNext 7>") +
                  TextFrame(6, "1\" 1\" 4\" 3\"", "<TRNext 5>") + TextFrame(8, "0 0 1\" 1\"")) +
         Page("BodyPage", "", "<PageBackground `Default'>" + TextFrame(7, "1\" 1\" 4\" 7\"")) +
         Page("BodyPage", "", "<PageBackground `None'>") + Flow(1, "<TFTag `A'> <TFAutoConnect Yes>") +
         Flow(2, "") + Flow(3, "<TFTag `A'> <TFAutoConnect Yes>") + Flow(4, "") + Flow(8, "") +
         Flow(6, "<TFTag `A'> <TFAutoConnect Yes>");
}

TEST(PageDesigns, RecordsHoldAndSidesTakeTurnsBehindThem) {
  std::string error;
  const auto document = model::BuildMif(DoubleSided("<DParity FirstRight>"), &error);
  ASSERT_TRUE(document) << error;
  const PageDesigns designs(*document);
  EXPECT_TRUE(designs.double_sided());
  ASSERT_EQ(designs.recorded(), 3U);

  const PageDesign& cover = designs.Design(1, 1);
  EXPECT_EQ(cover.master_name, "Cover");
  ASSERT_EQ(cover.columns.size(), 2U);  // in the order of the text, not of the file
  EXPECT_DOUBLE_EQ(cover.columns[0].y, 72);
  EXPECT_DOUBLE_EQ(cover.columns[1].y, 360);
  ASSERT_EQ(cover.others.size(), 1U);
  EXPECT_EQ(designs.Design(2, 2).master_name, "Left");
  const PageDesign& blank = designs.Design(3, 3);
  EXPECT_EQ(blank.master, model::kNoIndex);
  EXPECT_TRUE(blank.columns.empty());

  const PageDesign& left = designs.Design(4, 4);
  EXPECT_TRUE(left.left);
  ASSERT_EQ(left.background.size(), 1U);
  EXPECT_DOUBLE_EQ(left.background[0].place.y, 36);
  const PageDesign& right = designs.Design(5, 5);
  EXPECT_EQ(right.master_name, "Right");
  EXPECT_DOUBLE_EQ(right.width, 432);
  ASSERT_EQ(right.columns.size(), 2U);
  EXPECT_DOUBLE_EQ(right.columns[0].width, 138);
  EXPECT_DOUBLE_EQ(right.columns[1].x, 108 + 138 + 12);
  ASSERT_EQ(right.background.size(), 1U);  // in a frame of the page
  EXPECT_DOUBLE_EQ(right.background[0].place.x, 11);
  EXPECT_DOUBLE_EQ(right.background[0].place.y, 22);
}

TEST(PageDesigns, TheFirstPageSideIsTheDocumentsOwn) {
  struct Case {
    std::string_view parity;
    std::int64_t number;
    bool left;
  };
  for (const Case& c : {Case{"<DParity FirstLeft>", 5, true}, Case{"<DParity FirstRight>", 4, false},
                        Case{"", 5, false}, Case{"", 4, true}}) {
    std::string error;
    const auto document = model::BuildMif(DoubleSided(c.parity), &error);
    ASSERT_TRUE(document) << error;
    EXPECT_EQ(PageDesigns(*document).Design(5, c.number).left, c.left) << c.parity << c.number;
  }
}

TEST(PageDesigns, WithoutPagesThereIsAMarginOfAnInch) {
  std::string error;
  const auto document = model::BuildMif(
      "<MIFFile 10.0>\n<Units Ucm>\n<Document <DPageSize 21 29.7>>\n"
      "<Para <ParaLine <String `x'>>>\n",
      &error);
  ASSERT_TRUE(document) << error;
  const PageDesigns designs(*document);
  const PageDesign& design = designs.Design(1, 1);
  EXPECT_NEAR(design.width, 595.28, 0.01);
  ASSERT_EQ(design.columns.size(), 1U);
  EXPECT_DOUBLE_EQ(design.columns[0].x, 72);
}

}  // namespace
}  // namespace qelm::embedded::render
