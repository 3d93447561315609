// The numbers of the body pages of a book: as the book says of each component, over the pages that its file
// has recorded.
//
// A component's pages begin anew, or go on from those of the component before; the book says it, or leaves it
// to the file. Pages are not laid out here: how many there are is what the file says.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// The number of the last page so far; nothing before the first component.
struct PageCounter {
  bool any = false;
  std::int64_t last = 0;
};

// The number of a component's first page, and the style of all of them.
struct PageRun {
  std::int64_t first = 1;
  std::string_view style = "Arabic";  // in the book's bytes, or the document's
};
PageRun PagesOf(const Document& book, Span component, const Document& document, const PageCounter& counter);

// Whether a statement, of a component or of a document, has pages go on from those before; nothing when it
// leaves that to another: the component's to its file's.
std::optional<bool> PagesGoOn(std::string_view statement);

// Goes on to a component, whose statement in the book is `component`. Returns the numbers by page of the
// document, empty for pages that keep theirs. Documents with numbers such as "12.1" keep all.
std::vector<std::string> NextPages(const Document& book, Span component, const Document& document,
                                   PageCounter* counter);

// Goes past a component whose pages are not known: as many as the book remembers.
void SkipPages(const Document& book, Span component, PageCounter* counter);

// Gives pages other numbers, where they have others. Returns how many changed.
std::size_t SetPageNumbers(Document* document, const std::vector<std::string>& numbers);

}  // namespace qelm::embedded::model
