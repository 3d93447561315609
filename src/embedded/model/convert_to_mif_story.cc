#include "embedded/model/convert_to_mif.h"

#include <algorithm>

#include "embedded/xml/names.h"

namespace qelm::embedded::model {

std::string MifString(std::string_view text) { return "`" + mif::Encode(text, mif::Encoding::kUtf8) + "'"; }

std::string MifElementBody(const Document& document, const Element& element, std::string_view user_string) {
  const Definition& definition = document.definitions[element.definition];
  std::string body = "<ETag " + MifString(xml::FromName(definition.name)) + ">";
  if (!user_string.empty()) body += " <UserString " + MifString(user_string) + ">";
  body += " <Attributes ";
  for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
    const Attribute& attribute = document.attributes[element.first_attribute + i];
    bool is_list = attribute.value_count != 1;
    for (const AttributeDefinition& known : definition.attributes) {
      is_list = is_list || (known.name == attribute.name && (known.type == 1 || known.type == 9));
    }
    body += "<Attribute <AttrName " + MifString(xml::FromName(document.names[attribute.name])) + ">";
    for (std::uint32_t v = 0; v < attribute.value_count; ++v) {
      const std::string_view value = document.values[attribute.first_value + v];
      body += " <AttrValue " + MifString(is_list ? xml::FromToken(value) : xml::FromContent(value)) + ">";
    }
    body += "> ";
  }
  return body + "> <Collapsed No> <SpecialCase No> <AttributeDisplay None>";
}

// Opens a paragraph and a line where none is open.
void MifStory::Line() {
  if (in_line_) return;
  if (!in_paragraph_) {
    text_.append(" <Para \n  <PgfTag ").append(MifString(format_)).append(">\n");
    in_paragraph_ = true;
    has_content_ = false;
    has_blank_ = false;
    must_break_ = false;
    font_ = 0;
  }
  text_.append("  <ParaLine \n");
  if (!first_line_.empty()) text_.append("   ").append(first_line_).append("\n");
  first_line_.clear();
  in_line_ = true;
}

void MifStory::EndParagraph() {
  Line();
  text_.append("  > # end of ParaLine\n > # end of Para\n");
  in_line_ = in_paragraph_ = false;
}

void MifStory::Conditions(std::uint16_t conditions) {
  if (conditions == conditions_) return;
  conditions_ = conditions;
  if (conditions == 0) {
    text_.append("   <Unconditional >\n");
    return;
  }
  text_.append("   <Conditional ");
  for (const Id id : document_->condition_sets[conditions]) {
    text_.append("<InCondition ").append(MifString(document_->conditions[id].name)).append(">");
  }
  text_.append(">\n");
}

void MifStory::Font(std::uint32_t font) {
  if (font == font_) return;
  font_ = font;
  const FontState& state = document_->fonts[font];
  text_.append("   <Font <FTag ").append(MifString(state.tag)).append("> <FLocked No>");
  for (const FontState::Override& override : state.overrides) text_.append(" ").append(override.text);
  text_.append(">\n");
}

// Before content: a paragraph, the blank that a line end left, and the state.
void MifStory::Content(std::uint16_t conditions, std::uint32_t font) {
  if (must_break_ && in_paragraph_) EndParagraph();
  const bool has_blank = has_blank_ && in_paragraph_ && has_content_;
  Line();
  has_blank_ = false;
  Font(font);
  Conditions(conditions);
  if (has_blank) text_.append("   <String ` '>\n");
  has_content_ = true;
}

void MifStory::BeginElement(const std::string& body, bool is_block, std::uint16_t conditions) {
  if (in_paragraph_ && (must_break_ || (is_block && has_content_))) EndParagraph();
  if (!is_block && has_blank_ && in_paragraph_ && has_content_) {
    // The blank belongs before the element, not into it.
    Content(conditions_, 0);
  }
  Line();
  Conditions(conditions);
  text_.append("   <ElementBegin ").append(body).append(">\n");
}

void MifStory::EndElement(std::string_view name, bool is_block, std::uint16_t conditions) {
  Line();
  Conditions(conditions);
  text_.append("   <ElementEnd ").append(MifString(name)).append(">\n");
  if (is_block) must_break_ = true;
}

void MifStory::Object(std::string_view statement, std::uint16_t conditions, std::uint32_t font,
                      bool is_block) {
  if (is_block && in_paragraph_ && has_content_) must_break_ = true;
  Content(conditions, font);
  text_.append("   ").append(statement).append("\n");
  if (is_block) must_break_ = true;
}

void MifStory::Text(std::string_view in_xml, std::uint16_t conditions, std::uint32_t font) {
  Content(conditions, font);
  const std::string decoded = xml::FromContent(in_xml);
  std::string_view text = decoded;
  // FrameMaker's own strings are about as long as a line.
  constexpr std::size_t kLongest = 200;
  while (!text.empty()) {
    std::size_t length = std::min(text.size(), kLongest);
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) ++length;
    text_.append("   <String ").append(MifString(text.substr(0, length))).append(">\n");
    text.remove_prefix(length);
  }
}

// A line ends behind a forced line end.
void MifStory::HardReturn(std::uint16_t conditions, std::uint32_t font) {
  Content(conditions, font);
  text_.append("   <Char HardReturn>\n  > # end of ParaLine\n");
  in_line_ = false;
}

void MifStory::Finish() {
  if (conditions_ != 0) {
    Line();
    Conditions(0);
  }
  if (in_paragraph_ || text_.empty()) EndParagraph();
}

}  // namespace qelm::embedded::model
