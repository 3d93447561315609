// Applying master pages: which of them the body pages of a document have, as its own table says.
//
// The table stands on a reference page and has the format `UnstructMasterPageMaps` or `StructMasterPageMaps`.
// Each row names a paragraph format or an element, the master pages for right and left pages, and how far
// they reach: the one page, all pages that the paragraph or element spans, or on to the next page for which a
// row says something. In structured documents a row may ask for the value of an attribute and for the
// elements around. What comes first on a page decides.
//
// Where pages begin is what the file records of its last layout.
#pragma once

#include <string>
#include <vector>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

enum class MasterPageReach : unsigned char { kPage, kSpan, kUntilChanged };

struct MasterPageRule {
  std::string tag;
  std::string right;
  std::string left;  // empty: as right
  std::string attribute;
  std::string value;
  std::vector<std::string> around;  // the elements around, the nearest first; "*" for any number of them
  MasterPageReach reach = MasterPageReach::kPage;
  bool of_elements = false;  // elements too, and not only paragraphs
};

// The rows of the document's tables, in their order; empty where it has none.
std::vector<MasterPageRule> ReadMasterPageRules(const Document& document);

// Gives the body pages their master pages; how many changed. A page of which the rules say nothing, and which
// has a master page that some rule names, goes back to the default one. Master pages that are not there are
// added to `problems`.
std::size_t ApplyMasterPages(Document* document, const std::vector<MasterPageRule>& rules,
                             std::vector<std::string>* problems);

}  // namespace qelm::embedded::model
