// The report of rejected XPath expressions, from the shipped template.
#include "report/report_session.h"
#include "xpath/engine.h"

namespace qelm::xpath {
namespace {

class XPathErrorReport : public testing::ReportSession {
 protected:
  XPathErrorReport() { Start(engine); }
  static void Start(Engine& which) { bw_XPathEngineInit(which, 0, 0, 0); }
  // "Element text" of what the root of the report holds.
  std::vector<std::string> Entries() {
    const host::Id document = ErrorReportDocument(engine);
    std::vector<std::string> entries;
    const host::Id root = host.elements.Root(document, host.elements.MainFlow(document));
    for (host::Id at = host.elements.FirstChild(document, root); at != host::kNone;
         at = host.elements.NextSibling(document, at)) {
      std::string buffer;
      const auto text = host.text.ElementText(document, at, 1000, &buffer);
      entries.push_back(
          std::string(host.definitions.DefinitionName(document, host.elements.Definition(document, at))) +
          " " + std::string(text));
    }
    return entries;
  }
  std::string Message(std::string_view id) { return "ErrorMessage " + messenger.Get(id); }

  Engine engine{host, messenger};
};

TEST_F(XPathErrorReport, LinesOfSixtyCharactersWithACaret) {
  // 130 characters, the error at 75.
  const std::string expression = "/" + std::string(73, 'a') + "/" + ":" + std::string(54, 'b');
  ASSERT_EQ(expression.size(), 130U);
  EXPECT_GE(bw_ParseXPath(engine, expression, 1), kFirstError);
  ASSERT_EQ(LastParseError(engine).position, 75);
  EXPECT_EQ(Entries(), (std::vector<std::string>{
                           "XPathErrorHeading XPath expression refused", "XPath " + expression.substr(0, 60),
                           "ErrorPosition " + std::string(60, '.'), "XPath " + expression.substr(60, 60),
                           "ErrorPosition " + std::string(15, '.') + "^", "XPath " + expression.substr(120),
                           "ErrorPosition ", Message(LastParseError(engine).id)}));
  EXPECT_TRUE(user.Alerts().empty()) << "the report takes the place of an alert";
  const std::vector<std::string> paragraphs = Paragraphs(ErrorReportDocument(engine));
  EXPECT_EQ(paragraphs[3], "Expression|" + expression.substr(60, 60));
  EXPECT_EQ(paragraphs[4], "Position|" + std::string(15, '.') + "^");
  EXPECT_EQ(paragraphs.size(), 8U);
}

TEST_F(XPathErrorReport, LaterEntriesFollowBehindAHeadingOfTheirOwn) {
  bw_ParseXPath(engine, "", 1);
  bw_ParseXPath(engine, "//\xC3\xA4\xC3\xB6[]", 1);
  bw_ParseXPath(engine, "//P", 1);
  bw_ParseXPath(engine, "//x::P", 0);
  const std::vector<std::string> entries = Entries();
  ASSERT_EQ(entries.size(), 8U);
  EXPECT_EQ(entries[4], entries[0]);
  EXPECT_EQ(entries[5], "XPath //\xC3\xA4\xC3\xB6[]");
  EXPECT_EQ(entries[6], "ErrorPosition " + std::string(static_cast<std::size_t>(5), '.') + "^")
      << "characters count, not bytes";
  EXPECT_EQ(entries[7], Message("XPATH_ERR_EMPTY_PREDICATE"));
  EXPECT_EQ(host.documents.NextOpenDocument(ErrorReportDocument(engine)), host::kNone)
      << "one report for all";
}

TEST_F(XPathErrorReport, SaysWhatIsMissing) {
  const auto alerts_of = [&](const std::string& plugin_folder) {
    embedded::adapter::EmbeddedHost other{
        {.plugin_folder = plugin_folder, .file_error = {}}, user, dialogs, clients, platform};
    Engine other_engine(other.roles(), messenger);
    Start(other_engine);
    const std::size_t before = user.Alerts().size();
    EXPECT_GE(bw_ParseXPath(other_engine, "//P[]", 1), kFirstError);
    return std::vector<std::string>(user.Alerts().begin() + static_cast<std::ptrdiff_t>(before),
                                    user.Alerts().end());
  };
  std::vector<std::string> alerts = alerts_of(folder.path());
  ASSERT_EQ(alerts.size(), 2U);
  EXPECT_NE(alerts[0].find(folder.File("XPath_Error_Report_Template.fm")), std::string::npos);
  EXPECT_NE(alerts[1].find(messenger.Get("XPATH_GEN_ERR_1")), std::string::npos);
  folder.Write("XPath_Error_Report_Template.fm", testing::Mif("<Doc><P>a</P></Doc>"));
  alerts = alerts_of(folder.path());
  ASSERT_EQ(alerts.size(), 1U);
  EXPECT_NE(alerts[0].find(messenger.Get("XPATH_GEN_ERR_2")), std::string::npos);
}

}  // namespace
}  // namespace qelm::xpath
