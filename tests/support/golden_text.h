// A document's flow in the notation of mif_files.h, as the model has it: what a filter or a coloring did can
// be read and compared at a glance.
//
//   <Doc><P Audience="admin">one {Hidden}two{}</P>
//   <P>{Red,Underline}three{}</P></Doc>
//
// A line is a paragraph. Properties that are plain are not shown; a row's own conditions, and those of the
// character that anchors an object, stand in its tag. What was deleted, and text that the element definitions
// generate, is left out.
#pragma once

#include <string>

#include "embedded/model/document.h"

namespace qelm::testing {

// The text of the main flow.
std::string Golden(const embedded::model::Document& document);

// "{Hidden}" and the like for one item, "{}" when all its properties are plain.
std::string GoldenStyle(const embedded::model::Document& document, std::uint32_t item);

}  // namespace qelm::testing
