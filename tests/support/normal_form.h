// A document as lines that say what a reader and the plug-in can tell of it: elements with attributes, text
// with the paragraph's tag, the conditions and the character state. Two documents with the same lines mean
// the same, whatever their bytes.
#pragma once

#include <string>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::test {

std::vector<std::string> NormalForm(const embedded::model::Document& document);

// The first line in which two forms differ, with the one before it; empty when they are the same.
std::string FirstDifference(const std::vector<std::string>& actual, const std::vector<std::string>& expected);

// All text of the documents' flows, one after the other.
std::string AllText(const embedded::model::Document& document);

}  // namespace qelm::test
