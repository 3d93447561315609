// Opening and saving documents and books: from bytes by content, whatever the name, and back.
#pragma once

#include <memory>

#include "embedded/model/book.h"
#include "embedded/model/document.h"
#include "embedded/model/pieces.h"

namespace qelm::embedded::model {

// What a file begins with. kEncodedMif: MIF behind a byte order mark or an empty line, or in an encoding that
// MIF has not.
enum class FileKind : std::uint8_t { kMifDocument, kMifBook, kXml, kBinary, kEncodedMif, kEmpty, kUnknown };
FileKind Recognize(std::string_view bytes);

// Whether the last line is missing with which FrameMaker ends every MIF file: a file that was cut between two
// statements is no damaged one. Files that others wrote mostly do without that line, and seem whole.
bool SeemsCut(std::string_view mif);

// The model of a MIF document or an XML document. Null with `error` (line, offset, what was expected) for
// damage.
std::unique_ptr<Document> BuildMif(SourceBytes bytes, std::string* error);
std::unique_ptr<Document> BuildXml(SourceBytes bytes, std::string* error);
// The same into a document that has nothing but names (Document::TakeNamesFrom; one for XML has the colors
// of AddReservedColors before them). False for damage.
bool ReadMif(SourceBytes bytes, Document* document, std::string* error);
bool ReadXml(SourceBytes bytes, Document* document, std::string* error);
std::unique_ptr<Book> BuildBook(SourceBytes bytes, std::string* error);

// The bytes to write: the source with what the edits call for. Equal to the source when there was no edit.
// The pieces refer to the document, which must outlive them and stay as it is.
Pieces Save(const Document& document);
inline std::string SaveMif(const Document& document) { return Save(document).Joined(); }
inline std::string SaveXml(const Document& document) { return Save(document).Joined(); }

// The same for a document that was edited, by format.
Pieces MifPieces(const Document& document);
Pieces XmlPieces(const Document& document);

// The document in the other format, as far as that has words for it.
std::string ConvertToXml(const Document& document);
std::string ConvertToMif(const Document& document);

}  // namespace qelm::embedded::model
