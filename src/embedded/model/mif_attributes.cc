#include "embedded/model/mif_attributes.h"

#include "embedded/mif/reader.h"

namespace qelm::embedded::model {
namespace {

// Where an element's statement has its attributes, or where they go: before what follows them, or at the
// statement's end. Offsets are those of the bytes given.
struct AttributesPlace {
  bool found = false;
  bool at_end = false;
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
};

bool ComesBefore(std::string_view name) {
  return name == "Unique" || name == "ETag" || name == "UserString" || name == "ENamespace";
}

// `bytes` begin with the element's statement.
AttributesPlace FindAttributes(std::string_view bytes) {
  AttributesPlace place;
  mif::Reader reader(bytes);
  reader.Next();
  if (reader.kind() != mif::Piece::kGroup) {
    place.at_end = true;
    place.begin = place.end = reader.end() - 1;
    return place;
  }
  while (reader.Next() && reader.kind() != mif::Piece::kGroupEnd) {
    const std::uint32_t begin = reader.begin();
    const bool is_attributes = reader.token() == mif::Token::kAttributes;
    const bool follows = !ComesBefore(reader.name());
    if (reader.kind() == mif::Piece::kGroup && !reader.Skip()) return place;
    if (is_attributes) return {true, false, begin, reader.end()};
    if (follows && place.begin == 0) place.begin = place.end = begin;
  }
  if (place.begin == 0) {
    place.at_end = true;
    place.begin = place.end = reader.begin();
  }
  return place;
}

}  // namespace

std::string AttributesStatement(const Document& document, const MifLayout& layout, const Element& element) {
  std::string text = "<Attributes \n";
  for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
    const Attribute& attribute = document.attributes[element.first_attribute + i];
    text += " <Attribute \n  <AttrName " + layout.Quoted(document.names[attribute.name]) + ">\n";
    for (std::uint32_t v = 0; v < attribute.value_count; ++v) {
      text += "  <AttrValue " + layout.Quoted(document.values[attribute.first_value + v]) + ">\n";
    }
    text += " > # end of Attribute\n";
  }
  return text + "> # end of Attributes";
}

void SaveElementAttributes(const Document& document, const MifLayout& layout, const Element& element,
                           Splice* splice) {
  const AttributesPlace place = FindAttributes(std::string_view(document.source).substr(element.source));
  const std::string text = AttributesStatement(document, layout, element);
  const std::uint32_t begin = element.source + place.begin;
  if (place.found) {
    layout.Replace(begin, element.source + place.end, text, splice);
  } else if (place.at_end) {
    layout.InsertAtEnd(begin, {text}, splice);
  } else {
    layout.InsertBefore(begin, {text}, splice);
  }
}

std::string WithAttributes(const Document& document, const MifLayout& layout, const Element& element,
                           std::string statement) {
  mif::Reader reader(statement);
  while (reader.Next() && reader.token() != mif::Token::kElementBegin &&
         reader.token() != mif::Token::kElement) {
  }
  if (reader.Failed()) return statement;
  const std::size_t base = reader.begin();
  const AttributesPlace place = FindAttributes(std::string_view(statement).substr(base));
  const std::size_t begin = base + place.begin;
  const std::size_t line = statement.rfind('\n', begin);
  const std::size_t line_begin = line == std::string::npos ? 0 : line + 1;
  std::size_t blanks = 0;
  while (line_begin + blanks < begin && statement[line_begin + blanks] == ' ') ++blanks;
  // The comment that ends the old group stays behind the new one.
  std::string text = AttributesStatement(document, layout, element);
  text.resize(text.rfind('>') + 1);
  std::string indented;
  for (const char c : text) {
    indented.push_back(c);
    if (c == '\n') indented.append(blanks, ' ');
  }
  if (!place.found) indented += "\n" + std::string(blanks, ' ');
  return statement.replace(begin, place.end - place.begin, indented);
}

}  // namespace qelm::embedded::model
