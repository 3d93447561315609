// JSON written as text, for results that are too many to be held as objects first.
#pragma once

#include <string>
#include <string_view>

namespace qelm::cli {

// Appends the text as a JSON string with its quotation marks. Bytes that are no UTF-8 become U+FFFD.
void AppendJson(std::string_view text, std::string* json);

}  // namespace qelm::cli
