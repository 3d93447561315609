// The text of a document as one array of items in logical order: element boundaries, text, anchors, paragraph
// boundaries, and the statements that set the running state of the text.
//
// What an anchor stands for follows it: after a table's anchor come its parts, each between kPartBegin and
// kPartEnd with the text of titles and cells inside, and after a footnote's anchor the footnote. Hidden text
// stands where its marker is. So every element is one range of items, a position in the text is an index, and
// walking or searching a document in reading order is a loop over an array.
#pragma once

#include <cstdint>
#include <type_traits>

#include "embedded/model/ids.h"

namespace qelm::embedded::model {

enum class ItemKind : std::uint8_t {
  kOther,           // anything else: carried through
  kParagraphBegin,  // ref: paragraph
  kParagraphEnd,    // ref: paragraph; its conditions are those of the paragraph's mark
  kLine,            // a layout line begins; the range is the whole line
  kElementBegin,    // ref: element
  kElementEnd,      // ref: element
  kString,          // text
  kCharacter,       // one character that is written by its name
  kTableAnchor,     // ref: part of the table, or 0 when the table is missing
  kFrameAnchor,     // ref: frame
  kNoteAnchor,      // ref: part of the footnote
  kPartBegin,       // ref: part
  kPartEnd,         // ref: part
  kMarker,          // ref: element or 0
  kVariable,        // ref: element or 0
  kReferenceBegin,  // a cross-reference; ref: element or 0
  kReferenceEnd,
  kInsetBegin,  // ref: inset
  kInsetEnd,
  kPrefixEnd,    // text of an element before this is generated
  kSuffixBegin,  // text of an element after this is generated
  kTextFrame,    // the text enters another text frame; ref: its number
  kFont,         // sets the character state; `font` is the state that it sets
  kConditional,  // sets the condition state; `conditions` is the state that it sets
  kHiddenPlace,  // a hidden block belongs here; ref: block
  kHiddenBegin,  // the block's own marks around its text; ref: block
  kHiddenEnd,
};

enum ItemFlag : std::uint8_t {
  kDeleted = 1U << 0,
  kTouched = 1U << 1,    // its state or its text was changed
  kEscaped = 1U << 2,    // the text has escapes, or lies in the arena
  kGenerated = 1U << 3,  // text that the element definitions generate
  kInBlock = 1U << 4,    // belongs to a hidden block
};

// Trivial, so that arrays of items are copied as the bytes that they are: one is made as `Item{}`.
struct Item {
  std::uint32_t begin;  // the statement in the source
  std::uint32_t end;
  std::uint32_t ref;
  std::uint32_t font;        // character state in force, an index into Document::fonts
  std::uint16_t conditions;  // condition set in force, an index into Document::condition_sets
  ItemKind kind;
  std::uint8_t flags;

  bool Is(ItemFlag flag) const { return (flags & flag) != 0; }
};
static_assert(std::is_trivial_v<Item>);

// Whether the item is something that a reader sees or that takes a place in the text.
constexpr bool IsContent(ItemKind kind) {
  switch (kind) {
    case ItemKind::kString:
    case ItemKind::kCharacter:
    case ItemKind::kTableAnchor:
    case ItemKind::kFrameAnchor:
    case ItemKind::kNoteAnchor:
    case ItemKind::kMarker:
    case ItemKind::kVariable:
    case ItemKind::kReferenceBegin:
    case ItemKind::kReferenceEnd:
    case ItemKind::kInsetBegin:
    case ItemKind::kInsetEnd:
      return true;
    default:
      return false;
  }
}

// Whether the item stands under conditions. The others only describe the file's layout or set a state.
constexpr bool HasConditions(ItemKind kind) {
  switch (kind) {
    case ItemKind::kParagraphBegin:
    case ItemKind::kLine:
    case ItemKind::kPartBegin:
    case ItemKind::kPartEnd:
    case ItemKind::kTextFrame:
    case ItemKind::kFont:
    case ItemKind::kConditional:
      return false;
    default:
      return true;
  }
}

}  // namespace qelm::embedded::model
