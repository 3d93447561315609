// Documents taken from MIF to XML and back, and the other way: the tree, the text and what is said of them
// stay.

#include <sstream>

#include "embedded/model/text_access.h"
#include "embedded/xml/names.h"
#include "support/mif_files.h"
#include "support/normal_form.h"
#include "support/samples.h"
#include "support/xml_editing.h"

namespace qelm::test {
namespace {

using namespace embedded::model;

std::unique_ptr<Document> OpenMif(const std::string& bytes) {
  std::string error;
  auto document = BuildMif(bytes, &error);
  EXPECT_NE(document, nullptr) << error;
  return document;
}

// What is said of a stretch of text.
std::string Properties(const Document& document, const Item& item) {
  std::string text;
  for (const Id id : document.condition_sets[item.conditions])
    text += std::string(document.conditions[id].name) + ",";
  const FontState& font = document.fonts[item.font];
  const CharacterProperties& set = font.properties;
  if (!font.tag.empty()) text += "format " + std::string(font.tag) + ",";
  if ((set.known & kColorBit) != 0) text += "color " + std::string(document.colors[set.color].name) + ",";
  if ((set.known & kUnderliningBit) != 0)
    text += "underline " + std::to_string(static_cast<int>(set.underlining)) + ",";
  if ((set.known & kStrikethroughBit) != 0) text += set.strikethrough ? "strike," : "no strike,";
  if ((set.known & kChangeBarBit) != 0) text += set.change_bar ? "bar," : "no bar,";
  return text;
}

// One line an element and one a run of text, in document order.
std::vector<std::string> Structure(const Document& document) {
  std::vector<std::string> lines;
  std::string run;
  std::string properties;
  const auto end_run = [&] {
    if (!run.empty()) lines.push_back("{" + properties + "}" + run);
    run.clear();
  };
  const Id root = document.flows[document.main_flow].root;
  int depth = 0;
  for (Id id = root; id != 0;) {
    const Element& element = document.elements[id];
    if (element.definition != 0) {
      end_run();
      std::string line(static_cast<std::size_t>(depth), ' ');
      line += std::string(document.definitions[element.definition].name) + " kind " +
              std::to_string(static_cast<int>(element.kind));
      for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
        const Attribute& attribute = document.attributes[element.first_attribute + i];
        line += " " + std::string(document.names[attribute.name]) + "=";
        for (std::uint32_t v = 0; v < attribute.value_count; ++v) {
          const std::string_view value = document.values[attribute.first_value + v];
          // Control characters cannot be in XML; they come back on the way to MIF.
          line += "[" +
                  (document.format == Format::kXml ? embedded::xml::FromContent(value) : std::string(value)) +
                  "]";
        }
      }
      if (element.kind == ElementKind::kTableRow) {
        for (const Id set : document.condition_sets[document.parts[document.PartOf(element)].conditions]) {
          line += " if " + std::string(document.conditions[set].name);
        }
      }
      lines.push_back(line);
    }
    const bool is_variable = element.kind == ElementKind::kSystemVariable;
    for (std::uint32_t i = element.first_item;
         i < element.end_item && (element.definition == 0 || is_variable); ++i) {
      std::string text;
      if (!document.items[i].Is(kGenerated)) AppendItemText(document, document.items[i], &text);
      if (text.empty()) continue;
      const std::string now = Properties(document, document.items[i]);
      if (now != properties) end_run();
      properties = now;
      run += text;
    }
    if (element.first_child != 0) {
      id = element.first_child;
      ++depth;
      continue;
    }
    while (id != root && document.elements[id].next == 0) {
      id = document.elements[id].parent;
      --depth;
      end_run();
    }
    id = id == root ? 0 : document.elements[id].next;
  }
  end_run();
  for (const Condition& condition : document.conditions) {
    const bool is_system = condition.name.starts_with("FM8_");
    if (!condition.name.empty() && !is_system) {
      lines.push_back(std::string(condition.name) + (condition.shown ? " shown" : " hidden"));
    }
  }
  return lines;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::stringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// There and back: the first document, and what came of it on each step.
void ExpectStays(const Document& mif) {
  const std::string as_xml = ConvertToXml(mif);
  const auto xml = OpenXml(as_xml);
  ASSERT_NE(xml, nullptr);
  EXPECT_TRUE(xml->warnings.empty()) << xml->warnings.front().text;
  EXPECT_EQ(FirstDifference(Structure(*xml), Structure(mif)), "");
  const auto back = OpenMif(ConvertToMif(*xml));
  ASSERT_NE(back, nullptr);
  EXPECT_TRUE(back->warnings.empty()) << back->warnings.front().text;
  EXPECT_EQ(FirstDifference(Structure(*back), Structure(mif)), "");
  EXPECT_EQ(FirstDifference(Lines(ConvertToXml(*back)), Lines(as_xml)), "");
}

TEST(Convert, MifToXmlAndBack) {
  testing::MifFile file;
  file.flows.push_back({R"(<Doc Audience="admin|user" Note="a &lt; &quot;b&quot;">
    [Heading]<Title>Pump & <Em>filter</Em></Title>
    <P>one {Hidden}two{} {Red,Underline}four{} {Hidden,Draft,Blue}five{}</P>
    <P Empty="">  blanks  at the ends </P>
    {Draft}<P>all of it</P>{}
    <P>see <XRef .format="Page" .source="12: P: four" .file="<c\>b.fm">page 3</XRef>.</P>
    <P>a note<Footnote>its <Em>text</Em></Footnote> <Marker .type="Index" .text="pump?>"/>end<!Marker .type="Index" .text="x"/></P>
    <P><Variable .name="Product"/> <Graphic .file="<c\>img<c\>a.png"/></P>
    <Table .format="Grid">
      <TableTitle>Parts</TableTitle>
      <TableHeading><Row><Cell>No</Cell><Cell>Name</Cell></Row></TableHeading>
      <TableBody>
        <Row {Hidden}><Cell>1</Cell><Cell>{Draft}x{} y</Cell></Row>
        <Row><Cell/><Cell><P>2</P></Cell></Row>
      </TableBody>
    </Table>
  </Doc>)",
                        testing::MifFlow::Place::kBody, "A"});
  file.hidden = {"Hidden"};
  testing::MifDefinition definition;
  definition.tag = "P";
  definition.attributes.push_back({"Level", "FAttrChoice", {"low", "high"}, {"low"}});
  definition.attributes.push_back({"Used by", "FAttrStrings", {}, {"a b", "c"}});
  file.definitions.push_back(definition);
  const auto mif = OpenMif(testing::Mif(file));
  ASSERT_NE(mif, nullptr);
  ExpectStays(*mif);
  const auto xml = OpenXml(ConvertToXml(*mif));
  const Definition& p = xml->definitions[xml->definition_index.at("P")];
  ASSERT_EQ(p.attributes.size(), 2U);
  EXPECT_EQ(p.attributes[0].choices, (std::vector<std::string_view>{"low", "high"}));
  EXPECT_EQ(p.attributes[1].defaults, (std::vector<std::string_view>{"a_x0020_b", "c"}));
  const auto back = OpenMif(ConvertToMif(*xml));
  EXPECT_EQ(back->definitions[back->definition_index.at("P")].attributes[1].defaults,
            (std::vector<std::string_view>{"a b", "c"}));
}

TEST(Convert, TextInTheHiddenFlowIsTextWithItsCondition) {
  testing::MifFile file;
  file.flows.push_back(
      {"<Doc>\n<P>a {Hidden}b{} c</P>\n<P>d</P>\n</Doc>", testing::MifFlow::Place::kBody, "A"});
  file.hidden = {"Hidden"};
  file.hidden_flow = true;
  const std::string xml = ConvertToXml(*OpenMif(testing::Mif(file)));
  EXPECT_NE(xml.find("<P>a <?Fm Condstart Hidden?>b<?Fm Condend Hidden?> c</P>"), std::string::npos) << xml;
}

TEST(Convert, XmlToMifAndBack) {
  const std::string_view files[] = {
      "<a x='1'><b>one <i>two</i> three</b><b/><c><d>four</d></c></a>",
      "<?qelm condition H hidden?><a><b>x<?Fm Condstart H?>y<c>z</c><?Fm Condend H?></b><?Fm Condstart "
      "K?><b>w</b>"
      "<?Fm Condend K?></a>",
      "<a><table frame='all'><title>T</title><tgroup cols='2'><colspec "
      "colname='c1'/><thead><row><entry>h</entry>"
      "</row></thead><tbody><row><?Fm Condstart H?><entry>1</entry><entry><p>2</p><p>3</p></entry><?Fm "
      "Condend H?>"
      "</row></tbody></tgroup></table></a>",
      // No table in MIF has two bodies: these are containers there.
      "<a><p><?qelm text color=\"Red\" underline=\"double\"?>red<?qelm end?> and <?qelm text format=\"Code\" "
      "FWeight=\"`Bold'\"?>bold<?qelm end?></p></a>",
      "<!DOCTYPE a [<!ATTLIST a l NMTOKENS #IMPLIED d CDATA 'v'>]><a l='p q'><_x0041_/><b.c-d/>\xC3\xA4</a>",
      "<a>forced&#10;end &lt;&amp;&gt;'`\\ \xE2\x82\xAC&#9;tab</a>",
      "<?qelm kind f footnote?><a>text<f><p>note<f>in it</f></p></f> more</a>",
  };
  for (const std::string_view bytes : files) {
    SCOPED_TRACE(bytes);
    const auto xml = OpenXml(bytes);
    const auto mif = OpenMif(ConvertToMif(*xml));
    ASSERT_NE(mif, nullptr);
    EXPECT_TRUE(mif->warnings.empty()) << mif->warnings.front().text;
    const auto back = OpenXml(ConvertToXml(*mif));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(FirstDifference(Structure(*back), Structure(*xml)), "") << ConvertToXml(*mif);
  }
}

TEST(Convert, ATableThatMifCannotHoldIsOneOfContainers) {
  const auto xml =
      OpenXml("<a><table><tbody><tr><td>1</td></tr></tbody><tbody><tr><td>2</td></tr></tbody></table></a>");
  const auto mif = OpenMif(ConvertToMif(*xml));
  for (const Element& element : mif->elements) {
    EXPECT_TRUE(element.kind == ElementKind::kContainer || element.kind == ElementKind::kText);
  }
  std::string buffer;
  EXPECT_EQ(ElementText(*mif, mif->flows[mif->main_flow].root, 10, &buffer), "12");
}

TEST(Convert, LineEndsInTheSourceAreBlanks) {
  const auto text = [](std::string_view bytes) {
    const auto mif = OpenMif(ConvertToMif(*OpenXml(bytes)));
    std::string buffer;
    return std::string(ElementText(*mif, mif->flows[mif->main_flow].root, 100, &buffer));
  };
  EXPECT_EQ(text("<a>\n  one\n  two <b>three</b>\n  four\n</a>"), "one two three four");
  EXPECT_EQ(text("<a xml:space='preserve'>one\n two</a>"), "one\n two");
  EXPECT_EQ(text("<a>one&#10;two&#xA;\r\nthree</a>"), "one\ntwo\n three");
}

// Bytes that are no text where MIF has names and words: in an object that XML keeps as it is written, and in
// a name that it puts into an instruction.
TEST(Convert, DamageInAnObjectDoesNotSpoilTheXml) {
  const auto mif = OpenMif(
      "<MIFFile 10.0>\n<ConditionCatalog <Condition <CTag `\x9a\xf0n\xef\xbf\xbf'> <CState CHidden>>>\n<Para "
      "<ParaLine <ElementBegin <ETag `Doc'>> <Variable <Vari\x9a <Word \xff>>>"
      "<String `x'> <ElementEnd `Doc'>>>\n");
  ASSERT_NE(mif, nullptr);
  std::string error;
  EXPECT_NE(BuildXml(ConvertToXml(*mif), &error), nullptr) << error << "\n" << ConvertToXml(*mif);
}

TEST(Convert, NamesThatAreNoXmlNamesComeBack) {
  const auto mif = OpenMif(testing::Mif("<Doc 1st=\"x\">\n<P>a</P>\n</Doc>"));
  ASSERT_NE(mif, nullptr);
  mif->definitions[mif->definition_index.at("P")].name = "Two words_x0020_";
  const std::string xml = ConvertToXml(*mif);
  EXPECT_NE(xml.find("<Two_x0020_words_x005F_x0020_>a</"), std::string::npos) << xml;
  const auto back = OpenMif(ConvertToMif(*OpenXml(xml)));
  EXPECT_NE(back->definition_index.find("Two words_x0020_"), back->definition_index.end());
  EXPECT_NE(back->name_index.find("1st"), back->name_index.end());
}

TEST(Convert, RealDocumentsKeepTheirTree) {
  if (testing::Samples().empty()) GTEST_SKIP() << "no sample documents here";
  testing::EachSample([](const std::filesystem::path& path, const std::string& bytes) {
    SCOPED_TRACE(path.filename().string());
    const auto mif = OpenMif(bytes);
    ASSERT_NE(mif, nullptr);
    if (mif->main_flow == 0 || mif->flows[mif->main_flow].root == 0) {
      EXPECT_NE(OpenXml(ConvertToXml(*mif)), nullptr);
      return;
    }
    ExpectStays(*mif);
  });
}

}  // namespace
}  // namespace qelm::test
