// Documents in another format than their own: converted, so that they can come back, and delivered as XML to
// readers who need nothing to come back.
#pragma once

#include <string>

#include "embedded/adapter/workspace.h"
#include "host/interface/books.h"
#include "host/interface/documents.h"

namespace qelm::embedded::adapter {

// The document in the other format.
std::string Converted(const model::Document& tree, model::Format format);

// The document as XML for the file `path`, without what is hidden (model/delivered_xml.h).
std::string DeliveredDocument(const model::Document& tree, const std::string& path);

// The book as one XML file: its own elements, with the documents of its components in their places.
// Components without elements are left out. Empty, with `why` set, when one cannot be opened.
std::string DeliveredBook(Workspace& workspace, host::Documents& documents, Id book, const std::string& path,
                          std::string* why);

}  // namespace qelm::embedded::adapter
