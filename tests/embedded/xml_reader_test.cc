// What is read without expat must be what expat reads.
#include "embedded/xml/reader.h"

#include <gtest/gtest.h>

#include "embedded/xml/plain_reader.h"

namespace qelm::embedded::xml {
namespace {

class Events : public Handler {
 public:
  void OnEvent(const Event& event) override {
    Add(static_cast<std::size_t>(event.kind), event.begin, event.end, event.plain, event.referenced,
        event.in_entity);
    text.append(event.name).append("|").append(event.text);
    for (const Attribute& attribute : event.attributes) {
      text.append("|").append(attribute.name).append("=").append(attribute.value);
    }
    text += '\n';
  }
  void OnAttributeDeclaration(const AttributeDeclaration& declaration) override {
    text.append(declaration.element).append(" ").append(declaration.name).append(declaration.type) += '\n';
  }

  std::string text;

 private:
  void Add(auto... numbers) { ((text += std::to_string(numbers) + ' '), ...); }
};

struct Case {
  std::string_view xml;
  bool plain;
  bool is_xml = true;
};

TEST(XmlReader, ReadsPlainFilesAsExpatDoes) {
  constexpr std::string_view kType = "<!DOCTYPE a [<!ATTLIST a b NMTOKENS #IMPLIED>]>";
  const std::string typed = std::string(kType) + "<a b='1 2'/>";
  const std::string to_normalize = std::string(kType) + "<a b=' 1  2'/>";
  const Case cases[] = {
      {"<?xml version='1.0' encoding=\"UTF-8\"?>\n<!-- c --><?p  d ?><a>x<b/>&amp;y</a >\n<!--e-->", true},
      {"\xEF\xBB\xBF<a b='1' c = \"&lt;'&#x20AC;\n\"> t]]&gt;\xC3\xA4 </a>", true},
      {"<a>\r\n1\r2<![CDATA[<\r\n]]]]><!--\r\n--><?p \rq\r\n?><b c='\r\n'></b></a>", true},
      {typed, true},
      {to_normalize, false},
      {"<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>", false},
      {"<\xC3\xA4/>", false},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>", false},
      // Not well-formed.
      {"<a>]]></a>", false, false},
      {"<a b='1' b='2'/>", false, false},
      {"<a b='1'c='2'/>", false, false},
      {"<a b='<'/>", false, false},
      {"<a>&#xD800;</a>", false, false},
      {"<a>&b;</a>", false, false},
      {"<a>\x01</a>", false, false},
      {"<a>\xED\xA0\x80</a>", false, false},
      {"<a>\xC0\x80</a>", false, false},
      {"<a>\xEF\xBF\xBE</a>", false, false},
      {"<a><!-- -- --></a>", false, false},
      {"<a><?xml d?></a>", false, false},
      {"<a><b></a></b>", false, false},
      {"<a/><b/>", false, false},
      {"<a/>x", false, false},
      {"<a>", false, false},
      {"<a b='", false, false},
      {"<!-- -->", false, false},
  };
  for (const Case& one : cases) {
    Events plain;
    Events expat;
    Error error;
    EXPECT_EQ(ReadPlain(one.xml, &plain), one.plain) << one.xml;
    EXPECT_EQ(ReadByExpat(one.xml, &expat, &error), one.is_xml) << one.xml << error.Describe();
    if (one.plain) {
      EXPECT_EQ(plain.text, expat.text);
    } else {
      EXPECT_EQ(plain.text, "");
    }
  }
}

}  // namespace
}  // namespace qelm::embedded::xml
