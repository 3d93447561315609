// Changing the character properties of text, and giving it its defined ones again.
//
// A character state is a character format with overrides on top. A property that is set to what paragraph
// format and character format say already needs no override: one that stands there goes, so that setting a
// property and setting it back leaves the file as it was. States are kept once each, and so is what a change
// makes of a state, so that coloring a hundred thousand elements makes a handful of states.
#pragma once

#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// The paragraph of each item, 0 for none (text_access.h).
using ItemParagraphs = std::vector<std::uint32_t>;

// What formats and element definitions define of text; change bars tell of changes and are left alone.
inline constexpr std::uint8_t kDefinedBits =
    kColorBit | kUnderliningBit | kOverlineBit | kStrikethroughBit | kBackgroundBit;

// Whether the document's version can hold background colors in its text.
bool HasBackgrounds(const Document& document);

// Sets the character properties that `properties.known` names for items [begin, end). A table or footnote
// counts as its anchor. Background colors are left out where the document cannot hold them. Whether there was
// text that did not have them already.
bool SetCharacterProperties(Document* document, std::uint32_t begin, std::uint32_t end,
                            const CharacterProperties& properties, const ItemParagraphs& paragraphs);

// Changes the properties of items one after the other. What a change makes of a state is looked up once for
// neighbors that are alike, as those are that one edit goes over.
class ItemChanges {
 public:
  // Both must outlive this.
  ItemChanges(Document* document, const ItemParagraphs& paragraphs);

  // Sets the properties that `properties.known` names. Whether the item did not have them already.
  bool Set(std::uint32_t item, const CharacterProperties& properties) {
    return Change(item, false, properties);
  }
  // Gives the item the properties that its formats define, with those that `rules` knows on top: color,
  // underlining, overline, strikethrough and background. Other overrides and change bars stay.
  void Reset(std::uint32_t item, const CharacterProperties& rules);

 private:
  bool Change(std::uint32_t item, bool reset, const CharacterProperties& wanted);

  Document& document_;
  const ItemParagraphs& paragraphs_;
  // The change that was looked up last and the state that it made. To begin with it is one that changes
  // nothing of the first state.
  FontEdits::Change last_;
  std::uint32_t last_font_ = 0;
};

}  // namespace qelm::embedded::model
