// The XMP packet of a document: reading its fields, and merging one packet into another.
//
// A packet is XML: descriptions, each with one or more properties, in an RDF group. A value may have been put
// into it as it was, without escaping, so that the packet as a whole is no well-formed XML. Nothing is lost
// by that: descriptions are found by their text, one that holds a single field in the usual form is read up
// to where that form ends, and only the others are read as XML, each by itself. Merging takes the properties
// that the new packet sets out of the old one and puts the new descriptions in, byte for byte as they came.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qelm::embedded::model {

struct MetadataField {
  std::string_view name;  // as users know it: "Title", "Job Reference"
  std::string value;
  friend bool operator==(const MetadataField&, const MetadataField&) = default;
};

// The names of the fields, in the order in which they are shown.
const std::vector<std::string_view>& MetadataNames();

// The fields that a packet sets, in that order. A value that is not in order as XML is given as it stands.
std::vector<MetadataField> PacketFields(std::string_view packet);

// The value of a property by its name without prefix ("CreateDate"); empty when there is none.
std::string PacketProperty(std::string_view packet, std::string_view name);

// A packet that sets one field. The value is escaped.
std::string OneFieldPacket(std::string_view field, std::string_view value);

// `kept` with what `added` sets instead of what it said of the same properties. Room that was left in it for
// growing is used, so that it stays as long as it was where that can be.
std::string MergePackets(std::string_view kept, std::string_view added);

// Whether it has the form of a packet, and whether it is well-formed XML.
bool IsPacket(std::string_view text);
bool IsWellFormed(std::string_view packet);

// A packet that is not well-formed with its fields escaped, so that it is; without what else is not in order.
std::string EscapedPacket(std::string_view packet);

}  // namespace qelm::embedded::model
