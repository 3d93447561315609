// The links of a document or a book, and whether each resolves: `qelm info --links`, and the references that
// a filter left without their target.
//
// Every file is opened once: those of a book one after the other, then the ones that links point to. What is
// kept of a file that was closed again are its links and the names that are in it to point to.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "filtering/dangling.h"
#include "host/interface/host.h"

namespace qelm::cli {

// {"links": [...], "counts": {...}, "unread": [...]} of an open document or book.
nlohmann::ordered_json LinksJson(host::Host& host, host::Id target);

// The same as lines of text.
std::string LinksText(const nlohmann::ordered_json& links);

// References to what a filter took away, as JSON and as lines of text.
nlohmann::ordered_json DanglingJson(const std::vector<filtering::DanglingReference>& references);
std::string DanglingText(const std::vector<filtering::DanglingReference>& references);

}  // namespace qelm::cli
