// Reading text insets again: their text in the document is replaced by what their sources say now.
//
// What an inset shows stands between its two marks. The first paragraph of its source goes on with the
// paragraph in which it begins, the others are paragraphs of their own, and the end mark begins one more
// where there was a paragraph end in between. Insets inside an inset are what its source has there.
#pragma once

#include <string>
#include <vector>

#include "embedded/model/inset_content.h"

namespace qelm::embedded::model {

// The items with which the insets begin that lie in no other one and are left.
std::vector<std::uint32_t> OutermostInsets(const Document& document);

// The format of the paragraph in which the inset begins, as statements.
std::vector<std::string> FormatAround(const Document& document, std::uint32_t inset);

// Puts the content in place of what the inset holds; objects that were in it go. False when it holds that
// already, and with `problem` set when it cannot be done. The change is in the document when it is settled.
bool SetInsetContent(Document* document, std::uint32_t inset, const InsetContent& content,
                     std::string* problem);

}  // namespace qelm::embedded::model
