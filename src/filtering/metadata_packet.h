// The packet by which one field of a PDF's metadata is handed to the host: a small XMP document that says
// this field and nothing else. The host merges what it is given one after the other (Documents::SetMetadata).
//
//   SetMetadataField(documents, document, "Author", "A. Writer");
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "host/interface/documents.h"

namespace qelm::filtering {

// The fields that are known, in the order in which tables of metadata have them.
inline constexpr std::array<std::string_view, 7> kMetadataFields = {
    "Author", "Title", "Subject", "Keywords", "Copyright", "Web Statement", "Job Reference"};

// The packet of one field. The value goes in as it is, without escaping: "<" or an apostrophe in it make a
// packet that is no XML any more. A field that is not known gives a packet without one.
std::string MetadataPacket(std::string_view field, std::string_view value);

// Hands the field to a document or book. False when the host cannot keep it; its last error tells why.
bool SetMetadataField(host::Documents& documents, host::Id document_or_book, std::string_view field,
                      std::string_view value);

}  // namespace qelm::filtering
