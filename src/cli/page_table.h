// The pages that a document has a record of: `qelm info --pages`.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "embedded/model/document.h"

namespace qelm::cli {

// {"pages": [...], "masters": [...], "double_sided": ..., "first_page": ..., "page_style": ...}
nlohmann::ordered_json PagesJson(const embedded::model::Document& document);

// The same as lines of text; neighbors that look the same share one.
std::string PagesText(const nlohmann::ordered_json& pages);

}  // namespace qelm::cli
