#include "xml_writer.h"

namespace qelm::bench {
namespace {

constexpr std::string_view kProlog = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE manual [
<!ATTLIST section id ID #IMPLIED audience NMTOKENS #IMPLIED product NMTOKENS #IMPLIED level NMTOKEN #IMPLIED>
<!ATTLIST para audience NMTOKENS #IMPLIED product NMTOKENS #IMPLIED level NMTOKEN #IMPLIED>
<!ATTLIST note audience NMTOKENS #IMPLIED product NMTOKENS #IMPLIED level NMTOKEN #IMPLIED>
<!ATTLIST list audience NMTOKENS #IMPLIED product NMTOKENS #IMPLIED level NMTOKEN #IMPLIED>
<!ATTLIST item audience NMTOKENS #IMPLIED product NMTOKENS #IMPLIED level NMTOKEN #IMPLIED>
<!ATTLIST remark audience NMTOKENS #IMPLIED product NMTOKENS #IMPLIED level NMTOKEN #IMPLIED>
<!ATTLIST em audience NMTOKENS #IMPLIED product NMTOKENS #IMPLIED level NMTOKEN #IMPLIED>
<!ATTLIST table audience NMTOKENS #IMPLIED product NMTOKENS #IMPLIED level NMTOKEN #IMPLIED>
<!ATTLIST row audience NMTOKENS #IMPLIED product NMTOKENS #IMPLIED level NMTOKEN #IMPLIED>
<!ATTLIST ref linkend IDREF #IMPLIED>
<!ATTLIST index term CDATA #IMPLIED>
]>)";

bool StartsALine(Kind kind) {
  return kind != Kind::kInline && kind != Kind::kReference && kind != Kind::kMarker;
}

bool HoldsText(Kind kind) {
  return kind == Kind::kParagraph || kind == Kind::kTableTitle || kind == Kind::kCell || !StartsALine(kind);
}

}  // namespace

XmlWriter::XmlWriter() : document_(kProlog) {}

void XmlWriter::NewLine() {
  document_ += '\n';
  document_.append(static_cast<std::size_t>(depth_) * 2, ' ');
}

void XmlWriter::Escaped(std::string_view utf8) {
  for (const char c : utf8) {
    switch (c) {
      case '<':
        document_ += "&lt;";
        break;
      case '&':
        document_ += "&amp;";
        break;
      case '"':
        document_ += "&quot;";
        break;
      default:
        document_ += c;
    }
  }
}

void XmlWriter::Begin(Kind kind, std::string_view tag, std::span<const Attribute> attributes) {
  if (StartsALine(kind)) NewLine();
  ++depth_;
  document_.append("<").append(tag);
  for (const Attribute& attribute : attributes) {
    document_.append(" ").append(attribute.name).append("=\"");
    Escaped(attribute.values);
    document_ += '"';
  }
  document_ += kind == Kind::kMarker ? "/>" : ">";
}

void XmlWriter::End(Kind kind, std::string_view tag) {
  --depth_;
  if (kind == Kind::kMarker) return;
  if (!HoldsText(kind)) NewLine();
  document_.append("</").append(tag).append(">");
  if (depth_ == 0) document_ += '\n';
}

void XmlWriter::Text(std::string_view utf8) { Escaped(utf8); }

void XmlWriter::HiddenText(std::string_view utf8) {
  document_ += "<?Fm Condstart Internal?>";
  Escaped(utf8);
  document_ += "<?Fm Condend Internal?>";
}

}  // namespace qelm::bench
