// Metadata of a PDF: its XMP packet, and the entries of its document information that say the same.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qelm::embedded::render {

// The PDF with `packet` as its metadata stream and the information entries Title, Author, Subject and
// Keywords set from it; other entries, the dates among them, stay. An empty packet leaves the PDF as it is.
// The same PDF and packet always give the same bytes. Of a packet that is not well-formed XML the fields are
// put in escaped, with a warning. Nothing, with `why`, when the PDF cannot be processed.
std::optional<std::string> PutMetadata(std::string bytes, std::string_view packet, std::string* warning,
                                       std::string* why);

}  // namespace qelm::embedded::render
