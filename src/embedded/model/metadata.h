// A document's or book's metadata for the PDFs that are made of it: an XMP packet (xmp_packet.h).
//
// MIF has it in DocFileInfo, in hexadecimal, and the fields that PDF readers show again in PDFDocInfo; books
// in BookFileInfo and PDFBookInfo. An XML document has it in an instruction before the root element:
// `<?qelm metadata PACKET?>`. What is set is kept as replacements of those statements until the document is
// written.
#pragma once

#include <string>
#include <string_view>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// The packet, empty when there is none. Fields that only PDFDocInfo has are in it. `document` may be the tree
// of a book.
std::string MetadataPacket(const Document& document);

// Merges a packet into the one that the document has: what it says of a field replaces what was said, other
// fields stay. False with `why` for what is no packet, and where the document has no place for one.
bool SetMetadata(Document* document, std::string_view packet, std::string* why);

// The statements of a packet for a new Document statement, indented by one; empty for an empty packet.
std::string MetadataStatements(std::string_view packet);
// The instruction of a packet for XML.
std::string MetadataMark(std::string_view packet);

}  // namespace qelm::embedded::model
