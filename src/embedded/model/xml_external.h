// The files that an XML document's type declaration names: its external part, and entities that are other
// files. They are not read; what names them has to lead to them from wherever the document lies.
#pragma once

#include <string>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

struct ExternalFile {
  Span literal;              // with its quotation marks
  std::string file;          // a path with "/", relative or not
  bool is_unparsed = false;  // an entity that is no XML: a graphic
};

// Those that are named by a path, in their order; none for a document that is not XML.
std::vector<ExternalFile> ExternalFiles(const Document& document);

// The literal for a file, in double quotes, with what no address may hold written as %XX.
std::string ExternalLiteral(std::string_view path);

}  // namespace qelm::embedded::model
