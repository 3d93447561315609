// The XML that goes to readers: what is hidden is not in it, and it is well-formed whatever the conditions
// ran across.
#include "embedded/model/delivered_xml.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "embedded/model/files.h"

namespace qelm::embedded::model {
namespace {

std::string Delivered(const std::string& source) {
  std::string error;
  const std::unique_ptr<Document> document =
      source.starts_with("<MIFFile") ? BuildMif(source, &error) : BuildXml(source, &error);
  if (document == nullptr) return error;
  document->path = "/docs/out/manual.mif";
  const bool is_xml = document->format == Format::kXml;
  Declarations declarations;
  const DeliveredXml xml = Deliver(*document, is_xml ? source : ConvertToXml(*document),
                                   {"/docs/out/xml/manual.xml", {"/docs/out/reference.mif"}}, &declarations);
  const std::string text = FileOf(xml, declarations);
  EXPECT_NE(BuildXml(text, &error), nullptr) << error << "\n" << text;
  return text;
}

// In a document in which the condition H is hidden and S is shown.
std::string Inside(const std::string& content) {
  constexpr std::string_view kBegin = "<?qelm condition H hidden?><?qelm condition S shown?>";
  const std::string text = Delivered(std::string(kBegin) + "<D>" + content + "</D>");
  EXPECT_TRUE(text.starts_with("<D>") && text.ends_with("</D>\n")) << text;
  return text.substr(3, text.size() - 8);
}

TEST(DeliveredXml, HiddenTextIsLeftOut) {
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"a<?Fm Condstart H?>b<?Fm Condend H?>c", "ac"},
      {"<?Fm Condstart H?><P>b<Q/></P><?Fm Condend H?><P/>", "<P/>"},
      {"<P>a<?Fm Condstart H?>b</P><P>c</P><P>d<?Fm Condend H?>e</P>", "<P>a</P><P>e</P>"},
      {"<?Fm Condstart H?><P>b<?Fm Condend H?></P>", ""},
      {"a<?Fm Condstart H?><?Fm Condstart S?>b<?Fm Condend S?>c<?Fm Condend H?>", "ab"},
      {"<?qelm text color=\"Red\"?>a &amp; <![CDATA[<b>]]><?qelm end?><?x y?>",
       "a &amp; <![CDATA[<b>]]><?x y?>"},
      {"<T>a<?qelm paragraph?>b</T>", "<T>a\nb</T>"},
      {"<?Fm Condstart H?><!-- gone --><?Fm Condend H?><!-- <stays> -->", "<!-- <stays> -->"},
      {"<P a='>'>b</P>", "<P a='>'>b</P>"},
  };
  for (const auto& [content, expected] : rows) EXPECT_EQ(Inside(std::string(content)), expected) << content;
}

TEST(DeliveredXml, RowsAndTablesGoAsAWhole) {
  const std::string table = "<table><tgroup><tbody>ROWS</tbody></tgroup></table>";
  const auto with = [&](const std::string& rows) {
    std::string text = table;
    return Inside(text.replace(text.find("ROWS"), 4, rows));
  };
  const std::string kept = "<row><entry>b</entry></row>";
  const std::string row = "<row><?Fm Condstart H?><entry>a</entry><?Fm Condend H?></row>";
  std::string expected = table;
  expected.replace(expected.find("ROWS"), 4, kept);
  EXPECT_EQ(with(row + kept), expected);
  EXPECT_EQ(with("<?Fm Condstart H?><row><entry>a</entry></row><?Fm Condend H?>" + kept), expected);
  EXPECT_EQ(Inside("<?Fm Condstart H?>" + table + "<?Fm Condend H?>x"), "x");
}

TEST(DeliveredXml, DocumentTypeAndNamespacesOfAnXmlFileStay) {
  const std::string source =
      "<?xml version='1.0'?>\n<!DOCTYPE n:D [ <!ELEMENT n:D ANY> <!ENTITY e \"]>\"> ]>\n<!-- first -->\n"
      "<n:D xmlns:n='urn:x'>&e;<n:E/></n:D>\n";
  EXPECT_EQ(Delivered(source), source);
}

TEST(DeliveredXml, DocumentFromMifIsDeclared) {
  std::ostringstream file;
  file << std::ifstream(QELM_SOURCE_DIR "/examples/pump/introduction.mif", std::ios::binary).rdbuf();
  const std::string text = Delivered(file.str());
  EXPECT_NE(text.find("<!DOCTYPE Chapter ["), std::string::npos);
  EXPECT_NE(text.find("<!ELEMENT Section ANY>"), std::string::npos);
  EXPECT_NE(text.find("href=\"../graphics/pump.png\""), std::string::npos);
  EXPECT_NE(text.find("href=\"../operation.mif#sec-network\""), std::string::npos);
  EXPECT_EQ(text.find("<?qelm"), std::string::npos);
  EXPECT_EQ(text.find("<?Fm"), std::string::npos);
}

TEST(DeliveredXml, DeepAndWideDocumentsAreDelivered) {
  constexpr std::size_t kDepth = 100000;
  std::string source;
  for (std::size_t i = 0; i < kDepth; ++i) source += "<a>";
  source += "x";
  for (std::size_t i = 0; i < kDepth; ++i) source += "</a>";
  EXPECT_EQ(Delivered(source), source + "\n");
}

}  // namespace
}  // namespace qelm::embedded::model
