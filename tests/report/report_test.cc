// Reports: every line format, links, what goes wrong, and the common library's report.
#include "filtering/report/report.h"

#include "filtering/report/common_report.h"
#include "report/report_session.h"

namespace qelm::filtering {
namespace {

class ReportTest : public testing::ReportSession {
 protected:
  host::Id OpenText(const std::string& name, const std::string& content) {
    host::OpenStatus status = host::OpenStatus::kOpened;
    return host.documents.Open(folder.Write(name, content), {}, &status);
  }
  ReportRoles roles = RolesForReports(host);
  Report report;
};

// That the template has each line's format is seen to where the paragraphs are read.
TEST_F(ReportTest, EveryIndexHasALineWithItsText) {
  const host::Id document = OpenText("manual.mif", testing::Mif("<Doc><P>a</P></Doc>"));
  const host::Id element = host.elements.FirstChild(document, host.elements.Root(document, 1));
  ASSERT_TRUE(OpenReport(messenger, roles, folder.File("report.fm"), &report));
  EXPECT_EQ(host.documents.Path(report.document), folder.File("report.fm"));
  constexpr std::int32_t kLines = 29;  // the last index is none
  for (std::int32_t i = 0; i < kLines; ++i) {
    EXPECT_TRUE(
        AddReportLine(messenger, roles, &report,
                      {.format = i, .document = document, .element = element, .texts = {"a", "b", "c"}}));
  }
  const std::vector<std::string> paragraphs = Paragraphs(report.document);
  ASSERT_EQ(paragraphs.size(), kLines + 1U);
  for (const std::string& line : paragraphs) EXPECT_EQ(line.find("MESSAGING ERROR"), std::string::npos);
  for (const char* named : {"\"a\"", "\"b\"", "<P>"}) {
    EXPECT_NE(paragraphs[4].find(named), std::string::npos) << paragraphs[4];
  }
  EXPECT_EQ(paragraphs[12], "Heading1|abc");
  EXPECT_EQ(paragraphs[kLines], "SingleLine|");
}

TEST_F(ReportTest, LinksLeadToElementsDocumentsAndFiles) {
  const host::Id document = OpenText("manual.mif", testing::Mif("<Doc><P>a</P></Doc>"));
  const host::Id element = host.elements.FirstChild(document, host.elements.Root(document, 1));
  const host::Id definition = host.definitions.FindDefinition(document, "P");
  const host::Id numbered =
      host.editing.InsertElement(document, host.elements.Parent(document, element), host::kNone, definition);
  const std::string number = std::to_string(host.elements.UniqueId(document, numbered));
  const host::Id xml = OpenText("manual.xml", "<Doc/>");
  ASSERT_TRUE(OpenReport(messenger, roles, "", &report));
  const ReportLine lines[] = {
      {.format = 16, .document = document, .element = numbered, .link = true, .texts = {"element"}},
      {.format = 16, .document = document, .link = true},
      {.format = 16, .link = true, .texts = {"", "", "/out/other.fm"}},
      {.format = 16, .document = xml, .element = host.elements.Root(xml, 1), .link = true, .texts = {"xml"}},
      {.format = 11, .texts = {"QELM_MSG_VAL_REP_3", ": ", "end"}},
  };
  for (const ReportLine& line : lines) EXPECT_TRUE(AddReportLine(messenger, roles, &report, line));
  const std::vector<std::string> paragraphs = Paragraphs(report.document);
  const std::string path = folder.File("manual.mif");
  ASSERT_EQ(paragraphs.size(), std::size(lines) + 1);
  EXPECT_EQ(paragraphs[1], "HyperlinkMessage|element|openObjectId " + path + ":5 " + number);
  EXPECT_EQ(paragraphs[2], "HyperlinkMessage|" + path + "|openlink " + path + ":firstpage");
  EXPECT_EQ(paragraphs[3], "HyperlinkMessage|/out/other.fm|openlink /out/other.fm:firstpage");
  EXPECT_EQ(paragraphs[4], "HyperlinkMessage|xml|openlink " + folder.File("manual.xml") + ":firstpage");
  EXPECT_EQ(paragraphs[5], "Heading1|" + messenger.Get("QELM_MSG_VAL_REP_3") + ": end");
}

TEST_F(ReportTest, WithoutAReportLinesAreDropped) {
  EXPECT_FALSE(AddReportLine(messenger, roles, &report, {}));
  EXPECT_EQ(user.Alerts().size(), 1U);
  ASSERT_TRUE(OpenReport(messenger, roles, "", &report));
  host.documents.Close(report.document, true);
  EXPECT_FALSE(AddReportLine(messenger, roles, &report, {}));
  EXPECT_EQ(report.document, host::kNone) << "a report that was closed is forgotten";
  EXPECT_EQ(user.Alerts().size(), 2U);
  // A document that takes no paragraphs: told once.
  report.document = OpenText("empty.mif", "<MIFFile 7.00>\n<Para <ParaLine <String `a'>>>\n");
  EXPECT_FALSE(AddReportLine(messenger, roles, &report, {}));
  EXPECT_FALSE(AddReportLine(messenger, roles, &report, {}));
  EXPECT_EQ(user.Alerts().size(), 3U);
  EXPECT_NE(user.Alerts()[2].find(messenger.Get("QELM_MSG_GEN_18")), std::string::npos);
}

TEST_F(ReportTest, AFullReportSaysSoOnceAndTakesNoMore) {
  ASSERT_TRUE(OpenReport(messenger, roles, "", &report));
  report.lines = kMostReportLines - 1;
  EXPECT_TRUE(AddReportLine(messenger, roles, &report, {.texts = {"last"}}));
  EXPECT_FALSE(AddReportLine(messenger, roles, &report, {.texts = {"further"}}));
  EXPECT_FALSE(AddReportLine(messenger, roles, &report, {.texts = {"further"}}));
  ASSERT_EQ(user.Alerts().size(), 1U);
  EXPECT_NE(user.Alerts()[0].find(std::to_string(kMostReportLines)), std::string::npos) << user.Alerts()[0];
}

TEST_F(ReportTest, TheCommonReportHasTitleHeadingAndDate) {
  const CommonReport request{QELM_SOURCE_DIR "/assets", "QELM ", "What was done"};
  const host::Id document = CreateCommonReport(messenger, roles, request, &report);
  ASSERT_NE(document, host::kNone) << host.documents.LastError();
  EXPECT_EQ(CreateCommonReport(messenger, roles, request, &report), document) << "it is used again";
  EXPECT_TRUE(host.documents.Path(document).ends_with("QELM Report"));
  std::vector<std::string> paragraphs = Paragraphs(document);
  ASSERT_EQ(paragraphs.size(), 7U);
  EXPECT_EQ(paragraphs[5].substr(0, 5), "Body|");
  EXPECT_EQ(paragraphs[5].size(), 5 + std::string("2026-11-21, 12:00:00").size());
  paragraphs[5].clear();
  EXPECT_EQ(paragraphs, (std::vector<std::string>{"Title|QELM Report _____", "SingleLine|", "Body|",
                                                  "Heading1|What was done", "Body|", "", "Body|"}));
  Report none;
  EXPECT_EQ(CreateCommonReport(messenger, roles, {folder.path(), "", ""}, &none), host::kNone);
  EXPECT_NE(
      user.Alerts().back().find("using  the following template:\n\n" + folder.File("_Report_Template.fm")),
      std::string::npos);
}

}  // namespace
}  // namespace qelm::filtering
