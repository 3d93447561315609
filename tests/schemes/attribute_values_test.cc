#include "schemes/attribute_values.h"

#include <gtest/gtest.h>

#include "schemes/settings_session.h"
#include "support/mif_files.h"

namespace qelm::schemes {
namespace {

// The attributes that a reader gives: name=value,value; and so on.
std::string Text(const host::AttributeBuffer& buffer) {
  std::string text;
  for (const host::AttributeView& attribute : buffer.attributes) {
    text += std::string(attribute.name) + "=";
    for (std::uint32_t value = 0; value < attribute.value_count; ++value) {
      text += (value == 0 ? "" : ",") + std::string(buffer.values[attribute.first_value + value]);
    }
    text += HasNoValue(buffer, attribute) ? "(none); " : "; ";
  }
  return text;
}

class AttributeReaderTest : public ::testing::Test {
 protected:
  // Reads both sections of one document, so that the second reading finds everything of the first in place.
  std::string Read(bool defaults, bool spaces) {
    host::Host& host = session.host();
    Scheme scheme;
    scheme.include_edd_defaults = defaults;
    scheme.space_delimited = spaces;
    AttributeReader reader(host.definitions, host.elements, document, scheme);
    const host::Id root = host.elements.Root(document, host.elements.MainFlow(document));
    std::string text;
    for (host::Id element = host.elements.FirstChild(document, root); element != host::kNone;
         element = host.elements.NextSibling(document, element)) {
      text += Text(reader.Read(element)) + "/ ";
    }
    return text;
  }

  static std::string Document() {
    testing::MifFile file;
    file.flows.emplace_back();
    file.flows[0].text =
        "<Doc>\n<Section Audience=\"a  b|c\" Level=\"\">\n<Title>x</Title>\n</Section>\n"
        "<Section Level=\"high\">\n<Title>y</Title>\n</Section>\n</Doc>";
    file.definitions = {{"Section",
                         {{"Level", "FAttrString", {}, {"low"}},
                          {"Product", "FAttrStrings", {}, {"P1 P2", "P3"}},
                          {"Audience", "FAttrStrings", {}, {}}}}};
    return testing::Mif(file);
  }

  testing::SettingsSession session;
  host::Id document = session.Open("/d.mif", Document());
};

TEST_F(AttributeReaderTest, GivesWhatTheElementCarries) {
  EXPECT_EQ(Read(false, false), "Audience=a  b,c; Level=(none); / Level=high; / ");
}

TEST_F(AttributeReaderTest, DefaultsStandInForMissingAndEmptyAttributes) {
  EXPECT_EQ(Read(true, false),
            "Audience=a  b,c; Level=low; Product=P1 P2,P3; / Level=high; Product=P1 P2,P3; / ");
}

TEST_F(AttributeReaderTest, ValuesAreSplitAtSpaces) {
  EXPECT_EQ(Read(false, true), "Audience=a,b,c; Level=(none); / Level=high; / ");
  EXPECT_EQ(Read(true, true),
            "Audience=a,b,c; Level=low; Product=P1,P2,P3; / Level=high; Product=P1,P2,P3; / ");
}

}  // namespace
}  // namespace qelm::schemes
