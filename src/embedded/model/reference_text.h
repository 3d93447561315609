// The text that a cross-reference shows: its format, expanded with what its target says.
//
// A format is text with building blocks in it: `<$paratext> on page <$pagenum>`. A block may name a paragraph
// format or an element (`<$paranum[Heading]>`, `<$attribute[No:Chapter]>`): it then speaks of the nearest one
// that the target lies in or that comes before it. `<Emphasis>` switches the character format. Page numbers
// are those of the last layout, as the file records them.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/model/links.h"
#include "embedded/model/numbering.h"

namespace qelm::embedded::model {

struct StyledRun {
  std::string text;
  std::optional<std::string> format;  // a character format, "" for none; missing: as around
  friend bool operator==(const StyledRun&, const StyledRun&) = default;
};

// Whether a name in brackets ends the character format before it ("Default Para Font").
bool EndsCharacterFormat(std::string_view name);

struct ReferenceText {
  std::vector<StyledRun> runs;
  std::string problem;     // why there is no text; empty when there is
  bool no_target = false;  // that is why

  std::string Plain() const;
};

// The cross-reference formats of a document, by name.
std::unordered_map<std::string, std::string> ReferenceFormats(const Document& document);

// One document as the target of references. Refers to both for as long as it is used.
class ReferenceTargets {
 public:
  ReferenceTargets(const Document& document, const std::vector<ParagraphNumber>& numbers,
                   const PlaceNumbers& places);

  // A place in the text from which on it stands on another page. Ordinal 0: on none.
  struct PageStart {
    std::uint32_t item = 0;
    std::int32_t ordinal = 0;  // among the body pages, from 1
    std::string number;
  };
  // Pages as they are found otherwise, by item, instead of those that the document has on record: asked for
  // when a page number is needed.
  using FindPages = std::function<std::vector<PageStart>()>;
  void SetPages(FindPages find) { find_pages_ = std::move(find); }

  // What a reference of that format to a target shows.
  ReferenceText Expand(std::string_view format, const std::string& target);
  // The same with a paragraph as the target.
  ReferenceText ExpandParagraph(std::string_view format, std::uint32_t paragraph);
  // The same with a place in the text, such as that of a marker, whose page is asked for.
  ReferenceText ExpandAtItem(std::string_view format, std::uint32_t item);
  // The body page on which an item is, counted from 1; -1 where none is recorded.
  std::int32_t PageOfItem(std::uint32_t item);

 private:
  struct Place {
    Id element = 0;  // 0: a marker in a paragraph
    std::uint32_t item = 0;
    std::uint32_t paragraph = 0;
  };
  ReferenceText ExpandAt(std::string_view format, const Place& place);
  bool Block(std::string_view block, const Place& target, std::string* text, std::string* problem);
  bool ElementBlock(std::string_view name, const Place& place, std::string* text);
  bool ParagraphBlock(std::string_view name, std::uint32_t paragraph, std::string* text);
  bool Attribute(std::string_view argument, const Place& target, std::string* text);
  Place PlaceOf(Id element) const;
  Place NearestElement(std::string_view tag, const Place& from);
  std::uint32_t NearestParagraph(std::string_view tag, const Place& from);
  std::string ParagraphText(std::uint32_t paragraph, bool generated) const;
  std::string ElementText(Id element, bool generated) const;
  const PageStart* PageAt(std::uint32_t item);
  void ReadPages();

  const Document& document_;
  const std::vector<ParagraphNumber>& numbers_;
  PlaceNumbers places_;
  std::unordered_map<std::string, LinkTarget> targets_;
  std::vector<std::uint32_t> paragraph_of_;  // by item
  std::vector<std::uint32_t> begins_;        // by paragraph: its first item
  FindPages find_pages_;
  std::optional<std::vector<PageStart>> pages_;
  // Elements of a definition, and paragraphs of a format, in the order of the text; made when first asked
  // for.
  std::unordered_map<Id, std::vector<Id>> by_definition_;
  std::unordered_map<std::string, std::vector<std::uint32_t>> by_format_;
};

// Whether the text of a reference is nothing but text, which can be replaced.
bool IsPlainReference(const Document& document, std::uint32_t item);

// Replaces the text of a plain reference, whose statement is that item, where it shows another one. False
// when it shows that already.
bool SetReferenceText(Document* document, std::uint32_t item, const ReferenceText& text);

// What a reference shows now.
std::string ShownText(const Document& document, std::uint32_t item);

}  // namespace qelm::embedded::model
