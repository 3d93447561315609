#include "embedded/model/info.h"

#include <array>

#include "embedded/model/text_access.h"

namespace qelm::embedded::model {
namespace {

constexpr std::array<std::string_view, 5> kFlowKinds = {"body", "master", "reference", "hidden", "frame"};

void CountItems(const Document& document, DocumentInfo* info) {
  for (const Item& item : document.items) {
    if (item.Is(kDeleted)) continue;
    switch (item.kind) {
      case ItemKind::kParagraphEnd:
        ++info->paragraphs;
        break;
      case ItemKind::kTableAnchor:
        info->tables += item.ref != 0 ? 1 : 0;
        break;
      case ItemKind::kNoteAnchor:
        info->footnotes += item.ref != 0 ? 1 : 0;
        break;
      case ItemKind::kFrameAnchor:
        ++info->frames;
        break;
      case ItemKind::kMarker:
        ++info->markers;
        break;
      case ItemKind::kReferenceBegin:
        ++info->cross_references;
        break;
      case ItemKind::kVariable:
        ++info->variables;
        break;
      case ItemKind::kInsetBegin:
        ++info->text_insets;
        break;
      case ItemKind::kHiddenPlace:
        ++info->hidden_blocks;
        break;
      default:
        break;
    }
  }
}

}  // namespace

DocumentInfo CountContent(const Document& document) {
  DocumentInfo info;
  info.flow_elements.resize(document.flows.size());
  info.definition_elements.resize(document.definitions.size());
  for (Id id = 1; id < document.elements.size(); ++id) {
    const Element& element = document.elements[id];
    if (element.deleted || element.is_virtual) continue;
    if (element.definition == 0) {
      ++info.text_nodes;
      continue;
    }
    ++info.elements;
    ++info.definition_elements[element.definition];
    ++info.flow_elements[FlowOf(document, element.first_item)];
  }
  CountItems(document, &info);
  return info;
}

std::string_view VersionText(const Document& document) {
  if (document.format != Format::kMif) return {};
  const std::string_view source = document.source;
  const std::size_t word = source.find_first_of(" \t");
  const std::size_t end = source.find('>');
  if (end == std::string_view::npos || word > end) return {};
  const std::size_t begin = source.find_first_not_of(" \t", word);
  const std::size_t stop = source.find_first_of(" \t>", begin);
  return source.substr(begin, stop - begin);
}

std::string_view FlowKindName(FlowKind kind) { return kFlowKinds[static_cast<std::size_t>(kind)]; }

}  // namespace qelm::embedded::model
