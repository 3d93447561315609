#include "embedded/model/source_lines.h"

#include <algorithm>

#include "embedded/xml/encoding.h"

namespace qelm::embedded::model {
namespace {

// Small, as who goes over a document leaps in its file: the tables of MIF stand before all text.
constexpr std::uint32_t kBlock = 1U << 12U;

// The memory of what was looked at may go, in stretches of so many bytes.
constexpr std::uint32_t kStretch = 1U << 23U;

// Counts in steps of one length, whose sums fit in a byte: those the compiler turns into operations on
// sixteen bytes. Goes behind what it counted.
template <std::size_t kStep>
std::uint32_t CountLineFeeds(std::string_view* bytes) {
  std::uint32_t count = 0;
  for (; bytes->size() >= kStep; bytes->remove_prefix(kStep)) {
    std::uint8_t feeds = 0;
    for (std::size_t i = 0; i < kStep; ++i) {
      if (bytes->data()[i] == '\n') ++feeds;
    }
    count += feeds;
  }
  return count;
}

std::uint32_t CountLineFeeds(std::string_view bytes) {
  std::uint32_t count = CountLineFeeds<128>(&bytes);
  count += CountLineFeeds<16>(&bytes);
  return count + static_cast<std::uint32_t>(std::count(bytes.begin(), bytes.end(), '\n'));
}

}  // namespace

SourceLines::SourceLines(const Document& document)
    : document_(document),
      encoding_(document.format == Format::kXml ? xml::DetectEncoding(document.source)
                                                : xml::Encoding::kUtf8) {}

std::uint32_t SourceLines::LinesBetween(std::uint32_t begin, std::uint32_t end) const {
  const std::string_view source = document_.source;
  const std::uint32_t unit = xml::UnitSize(encoding_);
  const std::string_view between = source.substr(begin, end - begin);
  if (unit == 1 && between.find('\r') == between.npos) return CountLineFeeds(between);
  std::uint32_t lines = 0;
  for (std::uint32_t at = begin; at < end && at + unit <= source.size(); at += unit) {
    const char c = xml::AsciiAt(source, at, encoding_);
    // A line ends with CR LF, LF, or a CR alone.
    const bool is_last = at + 2 * unit > source.size();
    const bool alone = c == '\r' && !is_last && xml::AsciiAt(source, at + unit, encoding_) != '\n';
    if (c == '\n' || alone) ++lines;
  }
  return lines;
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
  offset = std::min(offset, static_cast<std::uint32_t>(document_.source.size()));
  const std::uint32_t block = std::min(offset / kBlock, static_cast<std::uint32_t>(blocks_.size()) - 1);
  Place place{block * kBlock, blocks_[block]};
  if (last_.offset <= offset && last_.offset > place.offset) place = last_;
  while (place.offset / kBlock < offset / kBlock) {
    const std::uint32_t next = (place.offset / kBlock + 1) * kBlock;
    place = {next, place.line + LinesBetween(place.offset, next)};
    if (next / kBlock == blocks_.size()) {
      blocks_.push_back(place.line);
      if (next % kStretch == 0) Rest(next / kStretch - 1);
    }
  }
  last_ = {offset, place.line + LinesBetween(place.offset, offset)};
  LookedAt(offset / kStretch);
  return last_.line;
}

void SourceLines::Rest(std::uint32_t stretch) const {
  const std::size_t begin = std::size_t{stretch} * kStretch;
  document_.source.Rest(begin, begin + kStretch);
}

void SourceLines::LookedAt(std::uint32_t stretch) {
  if (stretch == stretch_ || stretch == (blocks_.size() - 1) * kBlock / kStretch) return;
  Rest(stretch_);
  stretch_ = stretch;
}

}  // namespace qelm::embedded::model
