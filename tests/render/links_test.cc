// Where the links of a PDF may lead.
#include <gtest/gtest.h>

#include "embedded/render/link_table.h"

namespace qelm::embedded::render {
namespace {

TEST(PdfLinks, LeadToPagesAndLettersButStartNothing) {
  LinkTable links;
  const auto link = [&links](const char* address) { return links.Attributes(0, "URL", address); };
  EXPECT_EQ(link("https://example.com/it's"), "uri='https://example.com/it\\'s'");
  EXPECT_EQ(link("MailTo:anna@example.com"), "uri='MailTo:anna@example.com'");
  EXPECT_EQ(link("www.example.com/a?b=c:d"), "uri='www.example.com/a?b=c:d'");
  for (const char* address : {"javascript:app.alert(1)", "JavaScript://%0aapp.alert(1)", " java\tscript:x",
                              "file:///etc/passwd", "data:text/html,x", "vbscript:x"}) {
    EXPECT_EQ(link(address), "") << address;
  }
}

}  // namespace
}  // namespace qelm::embedded::render
