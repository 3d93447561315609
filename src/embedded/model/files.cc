#include "embedded/model/files.h"

#include "embedded/xml/encoding.h"
#include "embedded/xml/names.h"

namespace qelm::embedded::model {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// FrameMaker's own files, and those that it keeps beside them.
constexpr std::string_view kBinary[] = {
    "<MakerFile", "<BookFile", "<MakerDictionary", "<MakerScreenFont", "<MML", "<!MakerFile",
};

// Whether the name of a statement is followed by a number: `<Book 7.0>` is a book, `<Book id="x">` an
// element.
bool IsStatement(std::string_view bytes, std::string_view opener) {
  if (!bytes.starts_with(opener)) return false;
  std::size_t at = opener.size();
  while (at < bytes.size() && IsBlank(bytes[at])) ++at;
  return at > opener.size() && at < bytes.size() && IsDigit(bytes[at]);
}

// A declaration, document type, comment or instruction, or a start tag as far as it is in `text`.
bool LooksLikeXml(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  if (!text.starts_with('<') || text.size() < 2) return false;
  if (text.starts_with("<?") || text.starts_with("<!DOCTYPE") || text.starts_with("<!--")) return true;
  const std::string_view rest = text.substr(1);
  const std::size_t end = std::min(rest.find_first_of(" \t\r\n/>"), rest.size());
  return end < rest.size() && xml::IsName(rest.substr(0, end));
}

}  // namespace

FileKind Recognize(std::string_view bytes) {
  if (bytes.empty()) return FileKind::kEmpty;
  if (IsStatement(bytes, "<MIFFile")) return FileKind::kMifDocument;
  if (IsStatement(bytes, "<Book")) return FileKind::kMifBook;
  for (const std::string_view opener : kBinary) {
    if (bytes.starts_with(opener)) return FileKind::kBinary;
  }
  constexpr std::size_t kEnough = 4096;
  const xml::Encoding encoding = xml::DetectEncoding(bytes);
  std::string text = xml::ToUtf8(bytes.substr(0, kEnough), encoding);
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (text.starts_with(kMark)) text.erase(0, kMark.size());
  return LooksLikeXml(text) ? FileKind::kXml : FileKind::kUnknown;
}

Pieces Save(const Document& document) {
  if (document.modified) {
    return document.format == Format::kXml ? XmlPieces(document) : MifPieces(document);
  }
  Pieces whole;
  whole.Refer(document.source);
  return whole;
}

}  // namespace qelm::embedded::model
