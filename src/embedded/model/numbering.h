// The numbers of paragraphs, as the formats say (MIF reference, "Numbering properties").
//
// A number format is text with counters in it: `S:<n+>.<a=1>` counts in the series S, its first counter goes
// up by one, its second one begins at 1. A series has its counters by their place in the format; one that
// only stands between blanks (`< >`) keeps its value and is not shown, `< =0>` and `< 0>` set it. Formats
// without a label count in a series of their own. Numbers run through a document, and through a book where
// its components continue; text that is hidden takes part in no number.
//
// The file holds each number as text. Numbering compares and replaces the texts that are no longer right.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// What formats may show besides counters, as it reads ("iv").
struct PlaceNumbers {
  std::string volume = "1";
  std::string chapter = "1";
  std::string section = "1";
  std::string subsection = "1";
};

// The values of all counters: goes on from component to component.
struct Counters {
  std::map<std::string, std::vector<std::int64_t>, std::less<>> series;  // by label; "" for no label
};

struct ParagraphNumber {
  bool numbered = false;
  std::string text;  // as it stands before or behind the paragraph's text
  std::string only;  // from the first counter that is shown to the last one, with letters behind it
};

// A number in a style ("iv", "d"): Arabic, LCRoman, UCRoman, LCAlpha, UCAlpha as MIF names them, or n, r, R,
// a, A as formats do.
std::string NumberIn(std::string_view style, std::int64_t value);

// The numbers by paragraph. Counters go on from `counters` and are left as the document leaves them.
std::vector<ParagraphNumber> NumberParagraphs(const Document& document, const PlaceNumbers& places,
                                              Counters* counters);

// Puts the numbers into the document where it has others. Returns how many changed. Paragraphs that are not
// numbered keep what they have.
std::size_t SetNumbers(Document* document, const std::vector<ParagraphNumber>& numbers);

// Appends what the escape at the beginning of `rest`, which follows a "\\" of a format string, stands for.
// Returns its length; 0 for one that is not known.
std::size_t AppendFormatEscape(std::string_view rest, std::string* text);

// The text of a paragraph's number in the source.
std::string StoredNumber(const Document& document, const Paragraph& paragraph);

}  // namespace qelm::embedded::model
