#include "embedded/model/xml_tags.h"

#include <unordered_map>
#include <vector>

#include "embedded/model/text_access.h"
#include "embedded/xml/write.h"

namespace qelm::embedded::model {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// A value as a list of several reads: one blank between two, none around them.
std::string Collapsed(std::string_view value) {
  std::string result;
  for (const char c : value) {
    if (!IsBlank(c)) {
      result.push_back(c);
    } else if (!result.empty() && result.back() != ' ') {
      result.push_back(' ');
    }
  }
  if (result.ends_with(' ')) result.pop_back();
  return result;
}

// Whether a raw value says what the attribute says.
bool SaysTheSame(const Document& document, const Attribute& attribute, std::string_view raw) {
  std::string value;
  if (!xml::ReadValue(raw, &value)) return false;
  const std::string joined = JoinedValues(document, attribute);
  return attribute.value_count == 1 ? value == joined || Collapsed(value) == joined
                                    : Collapsed(value) == joined;
}

void AppendAttribute(std::string_view name, std::string_view value, std::string* tag) {
  tag->append(" ").append(name).append("=\"");
  xml::AppendValue(value, '"', tag);
  tag->append("\"");
}

}  // namespace

std::string JoinedValues(const Document& document, const Attribute& attribute) {
  std::string joined;
  for (std::uint32_t i = 0; i < attribute.value_count; ++i) {
    if (i > 0) joined.push_back(' ');
    joined.append(document.values[attribute.first_value + i]);
  }
  return joined;
}

std::string StartTag(const Document& document, const Element& element) {
  std::string tag = "<";
  tag.append(document.definitions[element.definition].name);
  for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
    const Attribute& attribute = document.attributes[element.first_attribute + i];
    AppendAttribute(document.names[attribute.name], JoinedValues(document, attribute), &tag);
  }
  tag.append(">");
  return tag;
}

std::string RewrittenTag(const Document& document, const Element& element, std::string_view tag) {
  // The attributes to be, by name; each is taken out when its place in the tag is found.
  std::unordered_map<std::string_view, const Attribute*> wanted;
  for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
    const Attribute& attribute = document.attributes[element.first_attribute + i];
    wanted.emplace(document.names[attribute.name], &attribute);
  }
  std::vector<xml::TagAttribute> places;
  std::size_t tail = 0;
  xml::SplitTag(tag, &places, &tail);
  std::string result;
  std::size_t copied = 0;
  std::size_t behind = 0;  // behind the attribute before
  for (const xml::TagAttribute& place : places) {
    const std::string_view raw = tag.substr(place.value_begin, place.value_end - place.value_begin);
    const auto found = wanted.find(tag.substr(place.begin, place.name_end - place.begin));
    const bool is_kept = found != wanted.end() && (found->second->value_count > 0 || Collapsed(raw).empty());
    if (!is_kept) {
      std::size_t blank = place.begin;
      while (blank > behind && IsBlank(tag[blank - 1])) --blank;
      result.append(tag.substr(copied, blank - copied));
      copied = place.end;
    } else if (!SaysTheSame(document, *found->second, raw)) {
      result.append(tag.substr(copied, place.value_begin - copied));
      xml::AppendValue(JoinedValues(document, *found->second), tag[place.value_end], &result);
      copied = place.value_end;
    }
    if (found != wanted.end()) wanted.erase(found);
    behind = place.end;
  }
  result.append(tag.substr(copied, tail - copied));
  for (std::uint32_t i = 0; i < element.attribute_count; ++i) {
    const Attribute& attribute = document.attributes[element.first_attribute + i];
    const auto found = wanted.find(document.names[attribute.name]);
    if (found == wanted.end() || attribute.value_count == 0) continue;
    wanted.erase(found);
    AppendAttribute(document.names[attribute.name], JoinedValues(document, attribute), &result);
  }
  result.append(tag.substr(tail));
  return result;
}

std::string ElementAsXml(const Document& document, Id id) {
  std::string xml;
  const Element& top = document.elements[id];
  for (std::uint32_t i = top.first_item; i < top.end_item; ++i) {
    const Item& item = document.items[i];
    if (item.Is(kDeleted)) continue;
    const bool is_part = item.kind == ItemKind::kPartBegin || item.kind == ItemKind::kPartEnd;
    const bool begins = item.kind == ItemKind::kPartBegin || item.kind == ItemKind::kElementBegin;
    if (item.kind == ItemKind::kString) {
      xml::AppendText(PlainText(document, item), &xml);
    } else if (is_part || begins || item.kind == ItemKind::kElementEnd) {
      const Element& element = document.elements[is_part ? document.parts[item.ref].element : item.ref];
      if (begins) {
        xml.append(StartTag(document, element));
      } else {
        xml.append("</").append(document.definitions[element.definition].name).append(">");
      }
    }
  }
  return xml;
}

}  // namespace qelm::embedded::model
