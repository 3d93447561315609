#include "edits.h"

#include <cstdio>
#include <cstdlib>

#include "embedded/model/character_edit.h"
#include "embedded/model/edit.h"
#include "embedded/model/text_access.h"
#include "support/normal_form.h"

namespace qelm::fuzz {

using namespace embedded::model;

void Check(bool holds, const char* what, const std::string& details) {
  if (holds) return;
  std::fprintf(stderr, "%s\n%s\n", what, details.c_str());
  std::abort();
}

namespace {

constexpr int kMostEdits = 4;

void Hide(Document* document, const Element& element) {
  const Id hidden = CreateCondition(document, "Hidden");
  SetConditionShown(document, hidden, false);
  const std::uint16_t set = document->InternConditions({hidden});
  if (element.kind == ElementKind::kTableRow) {
    SetRowConditions(document, document->PartOf(element), set);
  } else {
    SetConditions(document, element.first_item, element.end_item, set);
  }
}

void Mark(Document* document, const Element& element) {
  CharacterProperties properties;
  properties.known = kColorBit | kStrikethroughBit;
  properties.strikethrough = true;
  properties.color = document->InternColor("Red");
  KeepSourceFonts(document);
  SetCharacterProperties(document, element.first_item, element.end_item, properties,
                         ParagraphsOfItems(*document));
}

void Delete(Document* document, Id id) {
  const Element& element = document->elements[id];
  if (element.kind == ElementKind::kTableRow) {
    DeleteRow(document, document->PartOf(element));
  } else {
    DeleteElement(document, id);
  }
}

}  // namespace

void EditAtRandom(Document* document, FuzzedDataProvider* bytes) {
  const auto limit = static_cast<Id>(document->elements.size());
  if (limit < 2) return;
  const int edits = bytes->ConsumeIntegralInRange(0, kMostEdits);
  for (int i = 0; i < edits; ++i) {
    const Id id = bytes->ConsumeIntegralInRange<Id>(1, limit - 1);
    const Element& element = document->elements[id];
    const int edit = bytes->ConsumeIntegralInRange(0, 3);
    if (element.deleted || element.is_virtual) continue;
    if (edit == 0) Hide(document, element);
    if (edit == 1) Mark(document, element);
    if (edit == 2) Delete(document, id);
    // XML has one value where nothing is declared, and no attribute without one.
    if (edit == 3 && document->format == Format::kXml) SetAttributes(document, id, {{"x", {"a b<'>"}}});
    if (edit == 3 && document->format == Format::kMif)
      SetAttributes(document, id, {{"x", {"a", "b<'>"}}, {"y", {}}});
  }
}

void CheckUntouched(const Document& document) {
  Check(Save(document).Joined() == document.source, "saving changed a document that nobody edited");
}

void CheckSaved(const Document& document) {
  const std::string saved = Save(document).Joined();
  std::string error;
  const bool is_xml = document.format == Format::kXml;
  const std::unique_ptr<Document> again = is_xml ? BuildXml(saved, &error) : BuildMif(saved, &error);
  // XML cannot be without an element.
  const bool has_root = document.main_flow != 0 && document.flows[document.main_flow].root != 0 &&
                        !document.elements[document.flows[document.main_flow].root].deleted;
  if (is_xml && !has_root) return;
  Check(again != nullptr, "what was saved cannot be read", error + "\n" + saved);
  Check(Save(*again).Joined() == saved, "what was saved is not kept", saved);
  const std::string difference = test::FirstDifference(test::NormalForm(*again), test::NormalForm(document));
  Check(difference.empty(), "what was saved reads otherwise", difference + "\n" + saved);
}

}  // namespace qelm::fuzz
