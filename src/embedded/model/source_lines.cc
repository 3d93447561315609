#include "embedded/model/source_lines.h"

#include <algorithm>

#include "embedded/xml/encoding.h"

namespace qelm::embedded::model {

void SourceLines::FindLines() {
  const std::string_view source = document_.source;
  const xml::Encoding encoding =
      document_.format == Format::kXml ? xml::DetectEncoding(source) : xml::Encoding::kUtf8;
  const std::uint32_t unit = xml::UnitSize(encoding);
  starts_.push_back(0);
  if (unit == 1 && source.find('\r') == source.npos) {
    for (std::size_t end = 0; (end = source.find('\n', end)) != source.npos;) {
      starts_.push_back(static_cast<std::uint32_t>(++end));
    }
    return;
  }
  char before = '\0';
  for (std::uint32_t at = 0; at + unit <= source.size(); at += unit) {
    const char c = unit == 1 ? source[at] : xml::AsciiAt(source, at, encoding);
    // A line ends with CR LF, LF, or a CR alone.
    if (before == '\r' && c != '\n') starts_.push_back(at);
    if (c == '\n') starts_.push_back(at + unit);
    before = c;
  }
}

std::uint32_t SourceLines::LineOf(Id element) {
  if (element < document_.elements.size() && document_.elements[element].kind == ElementKind::kText) {
    element = document_.elements[element].parent;
  }
  if (element == 0 || element >= document_.elements.size()) return 0;
  const std::uint32_t source = document_.elements[element].source;
  // Nothing begins at the very start of a file but what was made later, and a root in XML.
  if (source == 0 && document_.format == Format::kMif) return 0;
  return LineAt(source);
}

std::uint32_t SourceLines::LineAt(std::uint32_t offset) {
  if (starts_.empty()) FindLines();
  const auto next = std::upper_bound(starts_.begin(), starts_.end(), offset);
  return static_cast<std::uint32_t>(next - starts_.begin());
}

}  // namespace qelm::embedded::model
