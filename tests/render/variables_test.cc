#include "embedded/render/design/variables.h"

#include <gtest/gtest.h>

#include "embedded/model/files.h"
#include "embedded/model/metadata.h"

namespace qelm::embedded::render {
namespace {

TEST(Variables, BlocksAreExpanded) {
  constexpr std::int64_t kMoment = 1258893125;  // Sunday, 22 November 2009, 12:32:05
  struct Case {
    std::string_view definition;
    std::string_view text;
  };
  for (const Case& c : {
           Case{"<$daynum\\> <$monthname\\> <$year\\> <$hour\\>:<$minute00\\> <$ampm\\>",
                "22 November 2009 12:32 pm"},
           Case{"<$monthnum01\\>/<$daynum01\\>/<$shortyear\\> <$shortdayname\\>", "11/22/09 Sun"},
           Case{"<$hour24\\>:<$minute\\>:<$second\\> <$second00\\> <$AMPM\\>", "12:32:5 05 PM"},
           Case{"Page <$curpagenum\\> of <$lastpagenum\\>", "Page iv of x"},
           Case{"<$filename\\>|<$fullfilename\\>", "pump.mif|/m/pump.mif"},
           Case{"<$volnum\\>-<$chapnum\\>", "1-7"},
           Case{" <Emphasis\\>(cont.)<Default \\xa6  Font\\>!", " (cont.)!"},
           Case{"<$paratext[Title, Head]\\>\\\\t<$marker1\\>", "[paratext:Title, Head]\t[marker1:]"},
           Case{"a < b", "a < b"},
       }) {
    std::string error;
    const auto document = model::BuildMif(
        "<MIFFile 7.00>\n<VariableFormats <VariableFormat <VariableName `V'> "
        "<VariableDef `" +
            std::string(c.definition) + "'>>>\n",
        &error);
    ASSERT_TRUE(document) << error;
    document->path = "/m/pump.mif";
    PageFacts facts;
    facts.number = "iv";
    facts.last = "x";
    facts.places.chapter = "7";
    facts.running = [](std::string_view block, std::string_view argument) {
      return "[" + std::string(block) + ":" + std::string(argument) + "]";
    };
    EXPECT_EQ(VariableText(*document, "V", facts, TimeOfSeconds(kMoment)), c.text);
    EXPECT_EQ(VariableText(*document, "other", facts, {}), "other");
  }
}

TEST(Variables, DatesOfTheDocumentAreThoseOfItsMetadata) {
  std::string error;
  const auto document = model::BuildMif(
      "<MIFFile 7.00>\n<VariableFormats <VariableFormat <VariableName `Modification Date (Short)'> "
      "<VariableDef `<$dayname\\> <$daynum\\>.<$monthnum\\>.<$year\\> <$hour24\\>:<$minute00\\>'>>>\n",
      &error);
  ASSERT_TRUE(document) << error;
  const auto text = [&] {
    return VariableText(*document, "Modification Date (Short)", {}, TimeOfSeconds(0));
  };
  EXPECT_EQ(text(), "Thursday 1.1.1970 0:00");
  ASSERT_TRUE(
      model::SetMetadata(document.get(),
                         "<rdf:RDF><rdf:Description about='' xmlns:xap='http://ns.adobe.com/xap/1.0/' "
                         "xap:ModifyDate='2009-11-23T12:32:17.0Z'/>"
                         "</rdf:RDF>",
                         &error));
  EXPECT_EQ(text(), "Monday 23.11.2009 12:32");
}

}  // namespace
}  // namespace qelm::embedded::render
