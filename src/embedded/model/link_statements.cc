#include "embedded/model/link_statements.h"

#include <algorithm>

#include "embedded/mif/reader.h"
#include "embedded/model/book.h"
#include "embedded/model/hypertext.h"

namespace qelm::embedded::model {
namespace {

constexpr std::string_view kEmbedded = "2.0 internal inset";

// The first leaf of each name in the statement with which `bytes` begin.
template <std::size_t kCount>
std::array<LinkLeaf, kCount> Leaves(std::string_view bytes, const std::string_view (&names)[kCount]) {
  std::array<LinkLeaf, kCount> leaves;
  for (std::size_t i = 0; i < kCount; ++i) leaves[i].name = names[i];
  mif::Reader reader(bytes);
  while (reader.Next()) {
    if (reader.kind() == mif::Piece::kGroupEnd && reader.depth() == 0) break;
    if (reader.kind() != mif::Piece::kLeaf) continue;
    if (reader.depth() == 0) break;
    for (LinkLeaf& leaf : leaves) {
      if (leaf.name != reader.name() || leaf.Found()) continue;
      leaf.statement = bytes.substr(reader.begin(), reader.end() - reader.begin());
      leaf.data = reader.data();
    }
  }
  return leaves;
}

bool NamesFile(const LinkLeaf& leaf) {
  return !mif::Inside(leaf.data).empty() && mif::Inside(leaf.data) != kEmbedded;
}

}  // namespace

std::array<LinkLeaf, 3> ReferenceLeaves(std::string_view bytes) {
  return Leaves(bytes, {"XRefSrcText", "XRefSrcIsElem", "XRefSrcFile"});
}
std::array<LinkLeaf, 2> MarkerLeaves(std::string_view bytes) { return Leaves(bytes, {"MTypeName", "MText"}); }
std::array<LinkLeaf, 2> InsetLeaves(std::string_view bytes) {
  return Leaves(bytes, {"TiSrcFile", "TiFlowName"});
}
std::array<LinkLeaf, 2> GraphicLeaves(std::string_view bytes) {
  return Leaves(bytes, {"ImportObFileDI", "ImportObFile"});
}

const LinkLeaf* GraphicFile(const std::array<LinkLeaf, 2>& leaves) {
  for (const LinkLeaf& leaf : leaves) {
    if (NamesFile(leaf)) return &leaf;
  }
  return nullptr;
}

ReferenceStatement ReadReference(const Document& document, std::uint32_t statement) {
  const std::string_view bytes = std::string_view(document.source).substr(statement);
  const auto [name] = Leaves(bytes, {"XRefName"});
  const auto [text, is_element, file] = ReferenceLeaves(bytes);
  ReferenceStatement result;
  result.format = mif::DecodeString(name.data, document.encoding);
  result.source_text = mif::DecodeString(text.data, document.encoding);
  result.file = PlatformPath(mif::DecodeString(file.data, document.encoding));
  result.target = TargetOfSourceText(result.source_text, is_element.data == "Yes");
  return result;
}

std::string_view TargetOfSourceText(std::string_view source_text, bool is_element) {
  return is_element ? source_text.substr(0, source_text.find(':')) : source_text;
}

namespace {

// What changes in a statement. Places count from its beginning.
struct Edit {
  std::string_view bytes;  // the statement, and whatever follows it
  mif::Encoding encoding;

  // A leaf with another string, the rest of it as it stands.
  Replacement WithString(const LinkLeaf& leaf, std::string_view text) const {
    const auto begin = static_cast<std::uint32_t>(leaf.statement.data() - bytes.data());
    Replacement edit{{begin, begin + static_cast<std::uint32_t>(leaf.statement.size())}, {}};
    edit.text = leaf.statement;
    const auto at = static_cast<std::size_t>(leaf.data.data() - leaf.statement.data());
    edit.text.replace(at, leaf.data.size(), "`" + mif::Encode(text, encoding) + "'");
    return edit;
  }
  // A cross-reference without a statement for the file gets one behind its text.
  Replacement WithNewFile(const LinkLeaf& text, std::string_view path) const {
    const auto end = static_cast<std::uint32_t>(text.statement.data() + text.statement.size() - bytes.data());
    return {{end, end}, " <XRefSrcFile `" + mif::Encode(path, encoding) + "'>"};
  }
  // Two changes as one, with what is between them.
  Replacement Joined(Replacement first, Replacement second) const {
    if (second.place.begin < first.place.begin) std::swap(first, second);
    first.text.append(bytes.substr(first.place.end, second.place.begin - first.place.end));
    first.text.append(second.text);
    first.place.end = second.place.end;
    return first;
  }
};

// A graphic has its path in two spellings. Programs differ in which of them they read, so both are changed.
std::optional<Replacement> GraphicEdit(const Edit& edit, std::string_view path) {
  const auto [independent, legacy] = GraphicLeaves(edit.bytes);
  std::optional<Replacement> first;
  std::optional<Replacement> second;
  if (NamesFile(independent)) first = edit.WithString(independent, DeviceIndependentPath(path));
  if (NamesFile(legacy)) second = edit.WithString(legacy, path);
  return first && second ? edit.Joined(*first, *second) : first ? first : second;
}

// The statement with which a link of that kind begins.
constexpr std::array<std::string_view, 4> kStatements = {"XRef", "Marker", "TextInset", "ImportObject"};

}  // namespace

bool IsStatementOf(LinkKind kind, std::string_view bytes) {
  mif::Reader reader(bytes);
  return reader.Next() && reader.begin() == 0 && reader.kind() == mif::Piece::kGroup &&
         reader.name() == kStatements[static_cast<std::size_t>(kind)];
}

std::vector<std::pair<LinkKind, std::uint32_t>> LinkStatements(std::string_view bytes) {
  std::vector<std::pair<LinkKind, std::uint32_t>> links;
  mif::Reader reader(bytes);
  while (reader.Next()) {
    if (reader.kind() != mif::Piece::kGroup) continue;
    const auto* const known = std::find(kStatements.begin(), kStatements.end(), reader.name());
    if (known == kStatements.end()) continue;
    links.emplace_back(static_cast<LinkKind>(known - kStatements.begin()), reader.begin());
  }
  return links;
}

std::string FileOfLink(LinkKind kind, std::string_view bytes, mif::Encoding encoding) {
  switch (kind) {
    case LinkKind::kCrossReference:
      return PlatformPath(mif::DecodeString(ReferenceLeaves(bytes)[2].data, encoding));
    case LinkKind::kHypertext: {
      const auto [type, text] = MarkerLeaves(bytes);
      if (mif::Inside(type.data) != kHypertextMarker) return {};
      const std::string content = mif::DecodeString(text.data, encoding);
      return PlatformPath(ReadHypertext(content).file);
    }
    case LinkKind::kTextInset:
      return PlatformPath(mif::DecodeString(InsetLeaves(bytes)[0].data, encoding));
    case LinkKind::kGraphic: {
      const auto leaves = GraphicLeaves(bytes);
      const LinkLeaf* file = GraphicFile(leaves);
      return file == nullptr ? std::string() : PlatformPath(mif::DecodeString(file->data, encoding));
    }
  }
  return {};
}

std::optional<Replacement> LinkEdit(LinkKind kind, std::string_view bytes, mif::Encoding encoding,
                                    std::string_view path) {
  const Edit edit{bytes, encoding};
  const std::string independent = DeviceIndependentPath(path);
  switch (kind) {
    case LinkKind::kCrossReference: {
      const auto [text, is_element, file] = ReferenceLeaves(bytes);
      if (file.Found()) return edit.WithString(file, independent);
      return text.Found() ? std::optional(edit.WithNewFile(text, independent)) : std::nullopt;
    }
    case LinkKind::kHypertext: {
      const auto [type, text] = MarkerLeaves(bytes);
      const std::string command = WithFile(mif::DecodeString(text.data, encoding), path);
      return command.empty() ? std::nullopt : std::optional(edit.WithString(text, command));
    }
    case LinkKind::kTextInset: {
      const auto [file, flow] = InsetLeaves(bytes);
      return file.Found() ? std::optional(edit.WithString(file, independent)) : std::nullopt;
    }
    case LinkKind::kGraphic:
      return GraphicEdit(edit, path);
  }
  return std::nullopt;
}

}  // namespace qelm::embedded::model
