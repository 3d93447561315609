// What is in a document, in numbers.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

struct DocumentInfo {
  // Elements by flow and by definition, with the ids of both as index. Text nodes are not elements, and
  // neither is a root that only the reader made.
  std::vector<std::uint64_t> flow_elements;
  std::vector<std::uint64_t> definition_elements;
  std::uint64_t elements = 0;

  std::uint64_t text_nodes = 0;
  std::uint64_t paragraphs = 0;
  std::uint64_t tables = 0;
  std::uint64_t footnotes = 0;
  std::uint64_t frames = 0;
  std::uint64_t markers = 0;
  std::uint64_t cross_references = 0;
  std::uint64_t variables = 0;
  std::uint64_t text_insets = 0;
  std::uint64_t hidden_blocks = 0;
};

DocumentInfo CountContent(const Document& document);

// The version that a MIF document or book says it is written in ("7.00", "2019"), as it stands there; empty
// for XML.
std::string_view VersionText(const Document& document);

std::string_view FlowKindName(FlowKind kind);

}  // namespace qelm::embedded::model
