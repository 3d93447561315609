// What stands around the text of the benchmark's MIF document: catalogs, document settings and pages.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace qelm::bench {

struct ElementDefinition {
  std::string_view tag;
  std::string_view object;      // EDObject
  std::string_view rule;        // EDGeneralRule
  std::string_view format;      // the paragraph format of its text
  std::string_view attributes;  // letters: i id, a audience, p product, l level, r linkend, t term
};

inline constexpr std::array<ElementDefinition, 17> kDefinitions = {{
    {"manual", "EDContainer", "(chapter | para)*", "Body", ""},
    {"chapter", "EDContainer", "title, section*", "Body", ""},
    {"section", "EDContainer", "title, (para | note | list | table | section)*", "Body", "iapl"},
    {"title", "EDContainer", "<TEXT\\>", "Heading", ""},
    {"para", "EDContainer", "(<TEXT\\> | em | ref | index)*", "Body", "apl"},
    {"note", "EDContainer", "(<TEXT\\> | em | ref | index)*", "Note", "apl"},
    {"list", "EDContainer", "item+", "Bulleted", "apl"},
    {"item", "EDContainer", "<TEXT\\>", "Bulleted", "apl"},
    {"em", "EDContainer", "<TEXT\\>", "", "apl"},
    {"ref", "EDXRef", "", "", "r"},
    {"index", "EDMarker", "", "", "t"},
    {"table", "EDTable", "tabletitle, head, body", "", "apl"},
    {"tabletitle", "EDTblTitle", "<TEXT\\>", "TableTitle", ""},
    {"head", "EDTblHeading", "row+", "CellHeading", ""},
    {"body", "EDTblBody", "row+", "CellBody", ""},
    {"row", "EDTblRow", "cell+", "CellBody", "apl"},
    {"cell", "EDTblCell", "<TEXT\\>", "CellBody", ""},
}};

// Everything up to the anchored frames; `next_unique` is the first unique number that is free.
std::string MifHead(std::uint64_t next_unique);

// A master page, the body page with text frame 10, and with `hidden` the hidden page with text frame 11.
std::string MifPages(bool hidden);

}  // namespace qelm::bench
