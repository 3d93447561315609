// Changing a book: the texts and files of its components, and taking components out. The attributes of its
// own elements are changed as those of a document (edit.h).
//
// The edits are kept beside the source until the book is written: what no edit concerns is then copied as it
// stands. Elements name components by their place in the book, so that a removal also changes the numbers in
// the elements behind it.
#pragma once

#include <cstddef>
#include <string_view>

#include "embedded/model/book.h"
#include "embedded/model/pieces.h"

namespace qelm::embedded::model {

void SetEntryText(Book* book, std::size_t component, std::string_view text);

// Lets a component be another file, given as a path of the platform's form, relative to the book or absolute.
// The cross-references that the book keeps to the old file follow it.
void SetComponentFile(Book* book, std::size_t component, std::string_view path);

// Takes a component and its element out of the book. An element that holds others stays, without a component.
// False for one that holds other components.
bool RemoveComponent(Book* book, std::size_t component);

// The bytes to write. They refer to the book, which must outlive them.
Pieces BookPieces(const Book& book);

}  // namespace qelm::embedded::model
