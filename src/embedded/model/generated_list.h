// Lists that a book generates: of paragraphs, such as tables of contents, and of markers. Indexes, which are
// lists of markers of another kind, are in index_list.h.
//
// The book names the paragraph formats or marker types that are listed; the file of the list says on a
// reference page, in a flow that is called like the file's suffix, how an entry reads: a paragraph of the
// format `HeadingTOC` with the text `<$paratext>, <$pagenum>` is how a paragraph `Heading` is listed. What
// stands in the file before the first entry, such as a title, stays.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/model/reference_text.h"

namespace qelm::embedded::model {

// What the statement of a book's component says of its list.
struct ListSettings {
  std::string type;               // "TOC", "LOF", "LOT", "IDX", ...
  std::string suffix;             // of the file's name, and of its formats
  std::vector<std::string> tags;  // the formats that are listed
  bool links = false;             // entries are links
};
ListSettings ReadListSettings(std::string_view component, mif::Encoding encoding);

enum class ListKind : unsigned char { kUnknown, kParagraphs, kMarkers, kIndex };
ListKind KindOf(const ListSettings& settings);

struct ListEntry {
  std::string format;  // the paragraph format of the entry
  std::vector<StyledRun> runs;
  std::string link;                                            // a hypertext command; empty: none
  std::vector<std::pair<std::size_t, std::string>> run_links;  // commands before a run, in order
};

// How the paragraphs of each listed format read, by that format.
std::unordered_map<std::string, std::string> EntryFormats(const Document& list, const ListSettings& settings);

// Calls `found` with the text of each paragraph that says how the list reads, and the name of its format
// without the suffix.
void ForEachFormatParagraph(const Document& list, std::string_view suffix,
                            const std::function<void(const std::string& name, std::string text)>& found);

// A marker that a reader of the document would find.
struct ListedMarker {
  std::string type;
  std::string text;
  std::uint32_t item = 0;
  Id element = 0;  // that it stands in
};
void ForEachMarker(const Document& document, const std::function<void(const ListedMarker&)>& found);

// The command of a link to the element, or to one that begins behind the item; empty where there is none.
std::string LinkToElement(const Document& document, const std::string& file, std::uint32_t item, Id element);

// Adds what a document has to list. The commands of links begin with `file`, its path from the list.
void CollectEntries(const Document& document, ReferenceTargets* targets, const ListSettings& settings,
                    const std::unordered_map<std::string, std::string>& formats, const std::string& file,
                    std::vector<ListEntry>* entries);

// Puts the entries of an alphabetic list in their order.
void SortEntries(const ListSettings& settings, std::vector<ListEntry>* entries);

// Puts the entries in the place of those that are there. False when it has these already; `problem` says why
// when it cannot be done.
bool SetEntries(Document* list, const ListSettings& settings, const std::vector<ListEntry>& entries,
                std::string* problem);

}  // namespace qelm::embedded::model
