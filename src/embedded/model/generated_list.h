// Lists that a book generates: tables of contents, lists of figures and tables.
//
// The book names the paragraph formats that are listed; the file of the list says on a reference page, in a
// flow that is called like the file's suffix, how an entry reads: a paragraph of the format `HeadingTOC` with
// the text `<$paratext>, <$pagenum>` is how a paragraph `Heading` is listed. What stands in the file before
// the first entry, such as a title, stays.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
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

// Whether the list is one of paragraphs in their order, which is what can be made here.
bool IsParagraphList(const ListSettings& settings);

struct ListEntry {
  std::string format;  // the paragraph format of the entry
  std::vector<TextRun> runs;
  std::string link;  // a hypertext command; empty: none
};

// How the paragraphs of each listed format read, by that format.
std::unordered_map<std::string, std::string> EntryFormats(const Document& list, const ListSettings& settings);

// Adds what a document has to list. The commands of links begin with `file`, its path from the list.
void CollectEntries(const Document& document, ReferenceTargets* targets, const ListSettings& settings,
                    const std::unordered_map<std::string, std::string>& formats, const std::string& file,
                    std::vector<ListEntry>* entries);

// Puts the entries in the place of those that are there. False when it has these already; `problem` says why
// when it cannot be done.
bool SetEntries(Document* list, const ListSettings& settings, const std::vector<ListEntry>& entries,
                std::string* problem);

}  // namespace qelm::embedded::model
