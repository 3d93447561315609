// Opening and saving documents and books: from bytes by content, whatever the name, and back.
#pragma once

#include <memory>

#include "embedded/model/book.h"
#include "embedded/model/document.h"

namespace qelm::embedded::model {

// What a file begins with.
enum class FileKind : std::uint8_t { kMifDocument, kMifBook, kXml, kBinary, kEmpty, kUnknown };
FileKind Recognize(std::string_view bytes);

// The model of a MIF document or an XML document. Null with `error` (line, offset, what was expected) for
// damage.
std::unique_ptr<Document> BuildMif(std::string bytes, std::string* error);
std::unique_ptr<Document> BuildXml(std::string bytes, std::string* error);
// The same into a document that has nothing but names (Document::TakeNamesFrom; one for XML has the colors
// of AddReservedColors before them). False for damage.
bool ReadMif(std::string bytes, Document* document, std::string* error);
bool ReadXml(std::string bytes, Document* document, std::string* error);
std::unique_ptr<Book> BuildBook(std::string bytes, std::string* error);

// The bytes to write: the source with what the edits call for. Equal to the source when there was no edit.
std::string SaveMif(const Document& document);
std::string SaveXml(const Document& document);

// The document in the other format, as far as that has words for it.
std::string ConvertToXml(const Document& document);
std::string ConvertToMif(const Document& document);

}  // namespace qelm::embedded::model
