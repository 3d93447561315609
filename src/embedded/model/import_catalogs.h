// Taking catalogs over from another document: formats, element definitions, colors, conditions, variables.
//
// In MIF each entry of the other document's catalogs is put into the target's bytes: in place of the entry of
// the same name, or at the end of the catalog, which is made where the file has none. Entries that the target
// alone has, and everything outside its catalogs, stay byte for byte. Two things the target keeps: reserved
// colors, which are the same everywhere, and whether a condition is shown, as that says where its text lies.
//
// A target in XML takes colors and conditions as it does when they are created, and knows the definitions by
// name for as long as it is open. It has no place for formats and variables.
#pragma once

#include <cstdint>
#include <string>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// What is taken over. Values combine.
enum CatalogBit : std::uint32_t {
  kParagraphFormatCatalog = 1U << 0,
  kCharacterFormatCatalog = 1U << 1,
  kVariableCatalog = 1U << 2,
  kDefinitionCatalog = 1U << 3,
  kColorCatalog = 1U << 4,
  kConditionCatalog = 1U << 5,
};

// Brings in what was added to the target on the way; ids stay what they were, text positions become stale.
// False when a source in XML should give a MIF document its catalogs, and when the result could not be read;
// `why` then says so, and the target is as it was. `left_out` gets the bits for which the target's format has
// no place.
bool ImportCatalogs(Document* target, const Document& source, std::uint32_t catalogs, std::uint32_t* left_out,
                    std::string* why);

}  // namespace qelm::embedded::model
