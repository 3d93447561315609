#include "embedded/model/files.h"
#include "embedded/model/tree_builder.h"

namespace qelm::embedded::model {

bool ReadMif(SourceBytes bytes, Document* document, std::string* error) {
  document->format = Format::kMif;
  document->source = std::move(bytes);
  const std::size_t line_end = document->source.find('\n');
  document->crlf = line_end != std::string::npos && line_end > 0 && document->source[line_end - 1] == '\r';
  Scan scan;
  if (!ScanMif(document, &scan, error)) return false;
  BuildTree(document, &scan);
  return true;
}

std::unique_ptr<Document> BuildMif(SourceBytes bytes, std::string* error) {
  auto document = std::make_unique<Document>();
  return ReadMif(std::move(bytes), document.get(), error) ? std::move(document) : nullptr;
}

}  // namespace qelm::embedded::model
