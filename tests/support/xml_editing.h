// Opening, changing and saving XML documents in a line each.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "embedded/model/edit.h"
#include "embedded/model/files.h"

namespace qelm::test {

inline std::unique_ptr<embedded::model::Document> OpenXml(std::string_view bytes) {
  std::string error;
  auto document = embedded::model::BuildXml(std::string(bytes), &error);
  EXPECT_NE(document, nullptr) << error << "\n" << bytes;
  return document;
}

// The n-th element (from 0) of the name, in document order.
inline embedded::model::Id Find(const embedded::model::Document& document, std::string_view name, int n = 0) {
  for (embedded::model::Id id = 1; id < document.elements.size(); ++id) {
    const embedded::model::Element& element = document.elements[id];
    if (element.deleted || document.definitions[element.definition].name != name) continue;
    if (n-- == 0) return id;
  }
  ADD_FAILURE() << "no element " << name;
  return 0;
}

inline std::uint16_t ConditionSet(embedded::model::Document* document, std::string_view condition) {
  return document->InternConditions({embedded::model::CreateCondition(document, condition)});
}

// As a filter does it: a row takes the condition itself, every other element with all that is in it.
inline void Hide(embedded::model::Document* document, embedded::model::Id id) {
  const embedded::model::Element& element = document->elements[id];
  const std::uint16_t set = ConditionSet(document, "Hidden");
  if (element.kind == embedded::model::ElementKind::kTableRow) {
    embedded::model::SetRowConditions(document, document->PartOf(element), set);
  } else {
    embedded::model::SetConditions(document, element.first_item, element.end_item, set);
  }
}

// Takes all conditions away again.
inline void ShowAll(embedded::model::Document* document) {
  const auto count = static_cast<std::uint32_t>(document->items.size());
  for (std::uint32_t i = 0; i < count; ++i) embedded::model::SetConditions(document, i, i + 1, 0);
  for (std::uint32_t i = 1; i < document->parts.size(); ++i) {
    if (document->parts[i].kind == embedded::model::ElementKind::kTableRow) {
      embedded::model::SetRowConditions(document, i, 0);
    }
  }
}

}  // namespace qelm::test
