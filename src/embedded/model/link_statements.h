// The statements that are links - XRef, Marker, TextInset, ImportObject - wherever they stand: what they say,
// and the change that lets one name another file.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

enum class LinkKind : std::uint8_t { kCrossReference, kHypertext, kTextInset, kGraphic };

// The type of the markers that are hypertext commands.
inline constexpr std::string_view kHypertextMarker = "Hypertext";

// A leaf statement inside another one.
struct LinkLeaf {
  std::string_view name;
  std::string_view statement = {};
  std::string_view data = {};
  bool Found() const { return !statement.empty(); }
};

// The leaves that say where the statement leads with which `bytes` begin.
std::array<LinkLeaf, 3> ReferenceLeaves(std::string_view bytes);  // source text, is an element's, file
std::array<LinkLeaf, 2> MarkerLeaves(std::string_view bytes);     // type, text
std::array<LinkLeaf, 2> InsetLeaves(std::string_view bytes);      // file, flow
std::array<LinkLeaf, 2> GraphicLeaves(std::string_view bytes);    // file, device-independent and not

// What names the file of a graphic: the device-independent path before the other one; null where it is none
// by reference.
const LinkLeaf* GraphicFile(const std::array<LinkLeaf, 2>& leaves);

// What a cross-reference's statement says.
struct ReferenceStatement {
  std::string format;  // the name of the format that makes its text
  std::string source_text;
  std::string file;    // a path with "/"
  std::string target;  // the part of the source text that names it
};
ReferenceStatement ReadReference(const Document& document, std::uint32_t statement);

// The part of a cross-reference's source text that names its target: of an element its id, else all of it.
std::string_view TargetOfSourceText(std::string_view source_text, bool is_element);

// Whether `bytes` begin with a statement of that kind.
bool IsStatementOf(LinkKind kind, std::string_view bytes);

// The links whose statements lie in these bytes, with where each begins.
std::vector<std::pair<LinkKind, std::uint32_t>> LinkStatements(std::string_view bytes);

// The file that the one names with which `bytes` begin; and the change that lets it name another one, its
// place counted from their beginning.
std::string FileOfLink(LinkKind kind, std::string_view bytes, mif::Encoding encoding);
std::optional<Replacement> LinkEdit(LinkKind kind, std::string_view bytes, mif::Encoding encoding,
                                    std::string_view path);

}  // namespace qelm::embedded::model
