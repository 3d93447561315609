#include "embedded/model/xmp_packet.h"

#include <algorithm>
#include <set>
#include <utility>

#include "embedded/xml/reader.h"
#include "embedded/xml/write.h"

namespace qelm::embedded::model {
namespace {

constexpr std::string_view kDescription = "<rdf:Description";
constexpr std::string_view kDescriptionEnd = "</rdf:Description>";
constexpr std::string_view kRdfEnd = "</rdf:RDF>";

struct Schema {
  std::string_view prefix;
  std::string_view uri;
};
constexpr Schema kSchemas[] = {
    {"dc", "http://purl.org/dc/elements/1.1/"},
    {"pdf", "http://ns.adobe.com/pdf/1.3/"},
    {"xap", "http://ns.adobe.com/xap/1.0/"},
    {"xmp", "http://ns.adobe.com/xap/1.0/"},
    {"xapBJ", "http://ns.adobe.com/xap/1.0/bj/"},
    {"xmpBJ", "http://ns.adobe.com/xap/1.0/bj/"},
    {"xapRights", "http://ns.adobe.com/xap/1.0/rights/"},
    {"xmpRights", "http://ns.adobe.com/xap/1.0/rights/"},
};

// The usual form of a description that holds one field: what stands between the beginning with its schema and
// the value, and what ends it.
struct FieldForm {
  std::string_view name;
  std::string_view prefix;
  std::string_view property;
  std::string_view open;
  std::string_view close;
};
constexpr FieldForm kFields[] = {
    {"Title", "dc", "title", "><dc:title><rdf:Alt><rdf:li xml:lang='x-default'>",
     "</rdf:li></rdf:Alt></dc:title></rdf:Description>"},
    {"Author", "dc", "creator", "><dc:creator><rdf:Seq><rdf:li>",
     "</rdf:li></rdf:Seq></dc:creator></rdf:Description>"},
    {"Subject", "dc", "description", "><dc:description><rdf:Alt><rdf:li xml:lang='x-default'>",
     "</rdf:li></rdf:Alt></dc:description></rdf:Description>"},
    {"Keywords", "pdf", "Keywords", " pdf:Keywords='", "'></rdf:Description>"},
    {"Copyright", "dc", "rights", "><dc:rights><rdf:Alt><rdf:li xml:lang='x-default'>",
     "</rdf:li></rdf:Alt></dc:rights></rdf:Description>"},
    {"Web Statement", "xapRights", "WebStatement", " xapRights:Marked='False' xapRights:WebStatement='",
     "'></rdf:Description>"},
    {"Job Reference", "xapBJ", "JobRef", "><xapBJ:JobRef><rdf:Bag><rdf:li>",
     "</rdf:li></rdf:Bag></xapBJ:JobRef></rdf:Description>"},
};

struct Property {
  std::string name;       // the schema's URI with the property's own name
  std::size_t begin = 0;  // what goes when the property goes, in the packet
  std::size_t end = 0;
  std::string value;
};

struct Description {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::vector<Property> properties;
  std::vector<std::string> prefixes;  // that it uses and does not declare
};

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view UriOf(std::string_view prefix) {
  for (const Schema& schema : kSchemas) {
    if (schema.prefix == prefix) return schema.uri;
  }
  return prefix;
}

std::string NameOf(const FieldForm& field) { return std::string(UriOf(field.prefix)).append(field.property); }

// ---------------------------------------------------------------------------------------------------------------
// A description in the usual form of one field.

// Where a value ends that began at `begin`: before the first closing text that another description or the end
// of all of them follows.
std::size_t EndOfValue(std::string_view packet, std::size_t begin, std::string_view close) {
  for (std::size_t at = packet.find(close, begin); at != std::string_view::npos;
       at = packet.find(close, at + 1)) {
    std::size_t after = at + close.size();
    while (after < packet.size() && IsBlank(packet[after])) ++after;
    const std::string_view rest = packet.substr(after);
    if (rest.starts_with(kDescription) || rest.starts_with(kRdfEnd)) return at;
  }
  return std::string_view::npos;
}

class ValueReader : public xml::Handler {
 public:
  std::string text;
  void OnEvent(const xml::Event& event) override {
    if (event.kind == xml::EventKind::kText || event.kind == xml::EventKind::kCData) text.append(event.text);
  }
};

// A value as it reads where it is in order as XML, else as it stands.
std::string ReadValue(std::string_view raw) {
  if (raw.find('&') == std::string_view::npos || raw.find('<') != std::string_view::npos) {
    return std::string(raw);
  }
  ValueReader reader;
  xml::Error error;
  std::string whole("<v>");
  whole.append(raw).append("</v>");
  return xml::Read(whole, &reader, &error) ? reader.text : std::string(raw);
}

bool ReadUsualForm(std::string_view packet, std::size_t begin, Description* description) {
  constexpr std::string_view kLead = "<rdf:Description about='' xmlns:";
  if (!packet.substr(begin).starts_with(kLead)) return false;
  const std::size_t prefix_begin = begin + kLead.size();
  const std::size_t prefix_end = packet.find("='", prefix_begin);
  if (prefix_end == std::string_view::npos) return false;
  const std::size_t uri_end = packet.find('\'', prefix_end + 2);
  if (uri_end == std::string_view::npos) return false;
  const std::string_view prefix = packet.substr(prefix_begin, prefix_end - prefix_begin);
  for (const FieldForm& field : kFields) {
    if (field.prefix != prefix || !packet.substr(uri_end + 1).starts_with(field.open)) continue;
    const std::size_t value = uri_end + 1 + field.open.size();
    const std::size_t value_end = EndOfValue(packet, value, field.close);
    if (value_end == std::string_view::npos) return false;
    const std::size_t end = value_end + field.close.size();
    *description = {begin, end, {}, {}};
    description->properties.push_back(
        {NameOf(field), begin, end, ReadValue(packet.substr(value, value_end - value))});
    if (field.property == "WebStatement") {
      description->properties.push_back({std::string(UriOf(prefix)) + "Marked", begin, end, "False"});
    }
    return true;
  }
  return false;
}

// ---------------------------------------------------------------------------------------------------------------
// Any other description, as XML.

class DescriptionReader : public xml::Handler {
 public:
  DescriptionReader(std::string_view text, std::size_t offset, Description* description)
      : text_(text), offset_(offset), description_(*description) {}

  void OnEvent(const xml::Event& event) override;
  // After reading: names with their schemas.
  void Finish();

 private:
  void Attributes(const xml::Event& event);
  void Open(const xml::Event& event);
  void Close(const xml::Event& event);
  void Name(std::string* name);

  std::string_view text_;
  std::size_t offset_;
  Description& description_;
  std::vector<std::pair<std::string, std::string>> schemas_;  // prefix and URI, as declared here
  std::size_t depth_ = 0;
  bool in_item_ = false;  // in an rdf:li
  bool has_items_ = false;
  bool is_alternative_ = false;
  bool is_default_ = false;
  bool took_default_ = false;
  std::string item_;
  std::string direct_;
};

void DescriptionReader::Attributes(const xml::Event& event) {
  std::vector<xml::TagAttribute> places;
  std::size_t tail = 0;
  const std::string_view tag = text_.substr(event.begin, event.end - event.begin);
  xml::SplitTag(tag, &places, &tail);
  for (const xml::TagAttribute& place : places) {
    const std::string_view name = tag.substr(place.begin, place.name_end - place.begin);
    const auto value = std::find_if(event.attributes.begin(), event.attributes.end(),
                                    [&](const xml::Attribute& attribute) { return attribute.name == name; });
    if (value == event.attributes.end()) continue;
    if (name.starts_with("xmlns:")) {
      schemas_.emplace_back(name.substr(6), value->value);
    } else if (name != "about" && name != "rdf:about" && name.find(':') != std::string_view::npos) {
      std::size_t begin = event.begin + place.begin;
      while (begin > 0 && IsBlank(text_[begin - 1])) --begin;
      description_.properties.push_back(
          {std::string(name), offset_ + begin, offset_ + event.begin + place.end, std::string(value->value)});
    }
  }
}

void DescriptionReader::Open(const xml::Event& event) {
  if (depth_ == 0) Attributes(event);
  if (depth_ == 1) {
    std::size_t begin = event.begin;
    while (begin > 0 && IsBlank(text_[begin - 1])) --begin;
    description_.properties.push_back({std::string(event.name), offset_ + begin, 0, {}});
    has_items_ = is_alternative_ = took_default_ = false;
    direct_.clear();
  }
  if (event.name == "rdf:Alt") is_alternative_ = true;
  if (event.name == "rdf:li") {
    in_item_ = true;
    item_.clear();
    is_default_ = std::any_of(event.attributes.begin(), event.attributes.end(), [](const auto& attribute) {
      return attribute.name == "xml:lang" && attribute.value == "x-default";
    });
  }
  ++depth_;
}

void DescriptionReader::Close(const xml::Event& event) {
  --depth_;
  if (description_.properties.empty()) return;
  Property& property = description_.properties.back();
  if (event.name == "rdf:li" && in_item_) {
    in_item_ = false;
    // Of alternatives in several languages the default counts, else the first; others are a list.
    if (is_alternative_) {
      if (!has_items_ || (is_default_ && !took_default_)) property.value = item_;
      took_default_ = took_default_ || is_default_;
    } else {
      property.value += (has_items_ ? "; " : "") + item_;
    }
    has_items_ = true;
  }
  if (depth_ == 1) {
    property.end = offset_ + event.end;
    if (!has_items_) property.value = direct_;
  }
}

void DescriptionReader::OnEvent(const xml::Event& event) {
  switch (event.kind) {
    case xml::EventKind::kStartTag:
      Open(event);
      break;
    case xml::EventKind::kEndTag:
      Close(event);
      break;
    case xml::EventKind::kText:
    case xml::EventKind::kCData:
      if (in_item_) {
        item_.append(event.text);
      } else if (depth_ == 2) {
        direct_.append(event.text);
      }
      break;
    default:
      break;
  }
}

void DescriptionReader::Name(std::string* name) {
  const std::size_t colon = name->find(':');
  if (colon == std::string::npos) return;
  const std::string prefix = name->substr(0, colon);
  const auto declared = std::find_if(schemas_.begin(), schemas_.end(),
                                     [&](const auto& schema) { return schema.first == prefix; });
  const std::string_view uri =
      declared == schemas_.end() ? UriOf(prefix) : std::string_view(declared->second);
  if (declared == schemas_.end()) description_.prefixes.push_back(prefix);
  *name = std::string(uri) + name->substr(colon + 1);
}

void DescriptionReader::Finish() {
  for (Property& property : description_.properties) Name(&property.name);
}

// Where the description ends that begins there: descriptions may lie in one another. Without an end it is
// where the next one begins.
std::size_t EndOfDescription(std::string_view packet, std::size_t begin, std::size_t limit) {
  std::size_t depth = 0;
  std::size_t at = begin;
  while (at < limit) {
    const std::size_t open = std::min(packet.find(kDescription, at), limit);
    const std::size_t close_at = packet.substr(at, open - at).find(kDescriptionEnd);
    const std::size_t close = close_at == std::string_view::npos ? limit : at + close_at;
    if (open == limit && close == limit) break;
    if (open < close) {
      const std::size_t tag_end = packet.find('>', open);
      if (tag_end >= limit) break;
      const bool empty = packet[tag_end - 1] == '/';
      if (empty && depth == 0) return tag_end + 1;
      if (!empty) ++depth;
      at = tag_end + 1;
    } else {
      at = close + kDescriptionEnd.size();
      if (depth <= 1) return at;
      --depth;
    }
  }
  const std::size_t next = packet.find(kDescription, begin + 1);
  return std::min(next, limit);
}

Description ReadAsXml(std::string_view packet, std::size_t begin, std::size_t limit) {
  Description description{begin, EndOfDescription(packet, begin, limit), {}, {}};
  const std::string_view text = packet.substr(begin, description.end - begin);
  DescriptionReader reader(text, begin, &description);
  xml::Error error;
  if (xml::Read(text, &reader, &error)) {
    reader.Finish();
  } else {
    description.properties.clear();
  }
  return description;
}

std::vector<Description> ReadDescriptions(std::string_view packet) {
  std::vector<Description> descriptions;
  const std::size_t limit = std::min(packet.rfind(kRdfEnd), packet.size());
  std::size_t at = packet.find(kDescription);
  while (at < limit) {
    Description description;
    if (!ReadUsualForm(packet, at, &description)) description = ReadAsXml(packet, at, limit);
    at = packet.find(kDescription, std::max(description.end, at + 1));
    descriptions.push_back(std::move(description));
  }
  return descriptions;
}

// ---------------------------------------------------------------------------------------------------------------
// Merging.

// A description of a packet as it is put into another one: with the schemas that the packet declared around
// it.
std::string Portable(std::string_view packet, const Description& description) {
  std::string text(packet.substr(description.begin, description.end - description.begin));
  std::set<std::string> done{"rdf", "xml"};
  for (const std::string& prefix : description.prefixes) {
    if (!done.insert(prefix).second) continue;
    const std::string declaration = "xmlns:" + prefix + "=";
    const std::size_t begin = packet.find(declaration);
    if (begin >= description.begin) continue;
    const std::size_t quote = begin + declaration.size();
    const std::size_t end = packet.find(packet[quote], quote + 1);
    if (end >= description.begin) continue;
    text.insert(kDescription.size(), " " + std::string(packet.substr(begin, end + 1 - begin)));
  }
  return text;
}

// White space at the end of a packet is room for it to grow.
void KeepLength(std::size_t length, std::string* packet) {
  constexpr std::size_t kLeastRoom = 64;
  const std::size_t end = packet->rfind("<?xpacket end");
  if (end == std::string::npos) return;
  std::size_t begin = end;
  while (begin > 0 && IsBlank((*packet)[begin - 1])) --begin;
  if (end - begin < kLeastRoom) return;
  if (packet->size() < length) {
    packet->insert(begin, length - packet->size(), ' ');
  } else {
    packet->erase(begin, std::min(packet->size() - length, end - begin));
  }
}

struct Cut {
  std::size_t begin;
  std::size_t end;
};

// What goes from `kept`; `place` takes where the new descriptions go.
std::vector<Cut> CutsOf(std::string_view kept, const std::set<std::string>& names, std::size_t* place) {
  std::vector<Cut> cuts;
  bool placed = false;
  for (const Description& description : ReadDescriptions(kept)) {
    std::vector<Cut> own;
    for (const Property& property : description.properties) {
      if (names.contains(property.name)) own.push_back({property.begin, property.end});
    }
    if (own.empty()) continue;
    if (own.size() == description.properties.size()) {
      cuts.push_back({description.begin, description.end});
      if (!placed) *place = description.begin;
      placed = true;
    } else {
      cuts.insert(cuts.end(), own.begin(), own.end());
    }
  }
  std::sort(cuts.begin(), cuts.end(), [](const Cut& a, const Cut& b) { return a.begin < b.begin; });
  return cuts;
}

}  // namespace

const std::vector<std::string_view>& MetadataNames() {
  static const std::vector<std::string_view> names = [] {
    std::vector<std::string_view> all;
    for (const FieldForm& field : kFields) all.push_back(field.name);
    return all;
  }();
  return names;
}

std::vector<MetadataField> PacketFields(std::string_view packet) {
  std::vector<MetadataField> fields;
  const std::vector<Description> descriptions = ReadDescriptions(packet);
  for (const FieldForm& field : kFields) {
    const std::string name = NameOf(field);
    const Property* found = nullptr;
    for (const Description& description : descriptions) {
      for (const Property& property : description.properties) {
        if (found == nullptr && property.name == name) found = &property;
      }
    }
    if (found != nullptr) fields.push_back({field.name, found->value});
  }
  return fields;
}

std::string PacketProperty(std::string_view packet, std::string_view name) {
  for (const Description& description : ReadDescriptions(packet)) {
    for (const Property& property : description.properties) {
      if (std::string_view(property.name).ends_with("/" + std::string(name))) return property.value;
    }
  }
  return {};
}

std::string OneFieldPacket(std::string_view field, std::string_view value) {
  std::string packet =
      "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xapmeta xmlns:x='adobe:ns:meta/'>"
      "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>";
  for (const FieldForm& form : kFields) {
    if (form.name != field) continue;
    packet.append("<rdf:Description about='' xmlns:").append(form.prefix).append("='");
    packet.append(UriOf(form.prefix)).append("'").append(form.open);
    xml::AppendValue(value, '\'', &packet);
    packet.append(form.close);
  }
  return packet + "</rdf:RDF></x:xapmeta><?xpacket end='w'?>";
}

bool IsPacket(std::string_view text) {
  return text.find("<rdf:RDF") != std::string_view::npos && text.find(kRdfEnd) != std::string_view::npos;
}

bool IsWellFormed(std::string_view packet) {
  xml::Handler nobody;
  xml::Error error;
  return xml::Read(packet, &nobody, &error);
}

std::string EscapedPacket(std::string_view packet) {
  std::string escaped(packet);
  std::string fields_alone = OneFieldPacket({}, {});
  for (const MetadataField& field : PacketFields(packet)) {
    const std::string one = OneFieldPacket(field.name, field.value);
    escaped = MergePackets(escaped, one);
    fields_alone = MergePackets(fields_alone, one);
  }
  return IsWellFormed(escaped) ? escaped : fields_alone;
}

std::string MergePackets(std::string_view kept, std::string_view added) {
  if (!IsPacket(kept)) return std::string(added);
  std::set<std::string> names;
  std::vector<std::string> texts;
  for (const Description& description : ReadDescriptions(added)) {
    if (description.properties.empty()) continue;
    texts.push_back(Portable(added, description));
    for (const Property& property : description.properties) names.insert(property.name);
  }
  std::size_t place = kept.rfind(kRdfEnd);
  const bool in_lines = place > 0 && kept[place - 1] == '\n';
  const std::size_t at_end = place;
  const std::vector<Cut> cuts = CutsOf(kept, names, &place);
  std::string text;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i != 0 && in_lines) text += '\n';
    text += texts[i];
  }
  if (place == at_end && in_lines && !text.empty()) text += '\n';
  std::string merged;
  std::size_t at = 0;
  bool put = false;
  const auto copy_to = [&](std::size_t end) {
    if (!put && place <= end) {
      merged.append(kept.substr(at, place - at)).append(text);
      at = place;
      put = true;
    }
    merged.append(kept.substr(at, end - at));
  };
  for (const Cut& cut : cuts) {
    if (cut.begin < at) continue;
    copy_to(cut.begin);
    at = cut.end;
    // A description that goes takes its line with it, but for the one whose place the new ones take.
    const bool takes_line =
        in_lines && cut.begin != place && kept.substr(cut.begin).starts_with(kDescription);
    if (takes_line && at < kept.size() && kept[at] == '\n') ++at;
  }
  copy_to(kept.size());
  KeepLength(kept.size(), &merged);
  return merged;
}

}  // namespace qelm::embedded::model
