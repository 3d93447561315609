#include "filtering/metadata_packet.h"

#include <algorithm>

namespace qelm::filtering {
namespace {

// How a field is written: the namespace that its description declares, and what stands before and behind the
// value. A value that is an attribute stands in the description's own tag.
struct FieldForm {
  std::string_view field;
  std::string_view prefix;
  std::string_view uri;
  std::string_view before;
  std::string_view after;
};

constexpr std::string_view kDublinCore = "http://purl.org/dc/elements/1.1/";

constexpr FieldForm kForms[] = {
    {"Keywords", "pdf", "http://ns.adobe.com/pdf/1.3/", " pdf:Keywords='", "'>"},
    {"Job Reference", "xapBJ", "http://ns.adobe.com/xap/1.0/bj/", "><xapBJ:JobRef><rdf:Bag><rdf:li>",
     "</rdf:li></rdf:Bag></xapBJ:JobRef>"},
    {"Web Statement", "xapRights", "http://ns.adobe.com/xap/1.0/rights/",
     " xapRights:Marked='False' xapRights:WebStatement='", "'>"},
    {"Author", "dc", kDublinCore, "><dc:creator><rdf:Seq><rdf:li>", "</rdf:li></rdf:Seq></dc:creator>"},
    {"Title", "dc", kDublinCore, "><dc:title><rdf:Alt><rdf:li xml:lang='x-default'>",
     "</rdf:li></rdf:Alt></dc:title>"},
    {"Subject", "dc", kDublinCore, "><dc:description><rdf:Alt><rdf:li xml:lang='x-default'>",
     "</rdf:li></rdf:Alt></dc:description>"},
    {"Copyright", "dc", kDublinCore, "><dc:rights><rdf:Alt><rdf:li xml:lang='x-default'>",
     "</rdf:li></rdf:Alt></dc:rights>"},
};

constexpr std::string_view kBegin =
    "<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?>"
    "<x:xapmeta xmlns:x='adobe:ns:meta/' x:xaptk='XMP toolkit 2.8.1-28, framework 1.5'>"
    "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#' "
    "xmlns:iX='http://ns.adobe.com/iX/1.0/'>";
constexpr std::string_view kEnd = "</rdf:RDF></x:xapmeta><?xpacket end='w'?>";

std::string Description(std::string_view prefix, std::string_view uri) {
  return "<rdf:Description about='' xmlns:" + std::string(prefix) + "='" + std::string(uri) + "'";
}

}  // namespace

std::string MetadataPacket(std::string_view field, std::string_view value) {
  std::string packet(kBegin);
  const auto* form = std::find_if(std::begin(kForms), std::end(kForms),
                                  [&](const FieldForm& known) { return known.field == field; });
  if (form == std::end(kForms)) {
    packet += Description("dc", kDublinCore) + ">";
  } else {
    packet += Description(form->prefix, form->uri);
    packet.append(form->before).append(value).append(form->after);
  }
  return packet.append("</rdf:Description>").append(kEnd);
}

bool SetMetadataField(host::Documents& documents, host::Id document_or_book, std::string_view field,
                      std::string_view value) {
  return documents.SetMetadata(document_or_book, MetadataPacket(field, value));
}

}  // namespace qelm::filtering
