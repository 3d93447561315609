// The first of two passes over a MIF document: reads the bytes once, in file order, and gathers catalogs,
// pages, tables, frames, notes and flows, with the text as raw items in the order of the file.
//
// In MIF the file order is not the reading order: tables, footnotes and frames are written before the text
// that anchors them, and hidden text lies in a flow of its own. The second pass (tree_builder.h) brings the
// raw items into reading order and builds the element tree. What only file order tells - the running
// paragraph format and the condition state - is resolved here.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "embedded/mif/reader.h"
#include "embedded/model/document.h"

namespace qelm::embedded::model {

// An element statement as it was read, before the element has its place in the tree.
struct RawElement {
  Id definition = 0;
  std::uint32_t first_attribute = 0;
  std::uint16_t attribute_count = 0;
  std::uint32_t source = 0;
};

// A range of raw items.
struct RawRange {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
};

struct RawFlow {
  Flow flow;
  RawRange items;
  std::uint32_t top_elements = 0;  // elements that lie in no other
};

// What the first pass leaves for the second. In raw items, `ref` of an element or inline object is an index
// into `elements` (0: it has none), and of an anchor the number that it names.
struct Scan {
  SharedArray<Item> items;
  std::vector<RawElement> elements{1};
  std::vector<RawFlow> flows;
  std::vector<RawRange> part_items{1};                      // by part
  std::vector<std::uint32_t> part_elements{1};              // by part: its raw element
  std::vector<std::uint32_t> frame_elements{1};             // by frame
  std::unordered_map<std::uint32_t, std::uint32_t> tables;  // TblID to part
  std::unordered_map<std::uint32_t, std::uint32_t> notes;   // ID to part
  std::unordered_map<std::uint32_t, std::uint32_t> frames;  // ID to frame
};

// Reads document->source. False, with `error` set, when it is damaged.
bool ScanMif(Document* document, Scan* scan, std::string* error);

// Catalogs: each is called just after the group was entered, and reads to its end.
void ScanColors(mif::Reader* reader, Document* document);
void ScanConditions(mif::Reader* reader, Document* document);
void ScanElementDefinitions(mif::Reader* reader, Document* document);
void ScanCharacterFormats(mif::Reader* reader, Document* document);
void ScanParagraphFormats(mif::Reader* reader, Document* document);
void ScanVariables(mif::Reader* reader, Document* document);
// The children of a Font or PgfFont group, for the properties that the model keeps; `each`, where given,
// takes every child's name and whole statement.
void ScanFont(mif::Reader* reader, Document* document, CharacterProperties* properties, std::string_view* tag,
              std::vector<FontState::Override>* overrides);

// Calls `child` for each piece of the group that was just entered, up to its end. A group that `child` does
// not read is passed over.
template <typename Function>
void Children(mif::Reader* reader, Function&& child) {
  const std::size_t inside = reader->depth();
  while (reader->Next()) {
    if (reader->kind() == mif::Piece::kGroupEnd) {
      if (reader->depth() < inside) return;
      continue;
    }
    child();
    if (reader->depth() > inside) {
      // A group was entered and left unread.
      while (reader->depth() > inside && reader->Next()) {
      }
    }
  }
}

// A leaf's data as text that outlives the reader: the source itself where it has no escapes.
std::string_view StringData(const mif::Reader& reader, Document* document);
std::uint32_t NumberData(const mif::Reader& reader);

}  // namespace qelm::embedded::model
