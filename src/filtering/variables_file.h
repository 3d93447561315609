// The variables file of a scheme: a document with the variables, and a table with the PDF metadata, of what
// is made by that scheme.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "config/local_settings.h"
#include "host/interface/catalogs.h"
#include "host/interface/platform.h"

namespace qelm::filtering {

// The file of the folder that belongs to the scheme: its name without extension, less the strings that the
// settings remove from files, is the scheme's name less those that they remove from schemes, letter case
// ignored. The first one in byte order; empty when there is none; nothing, with LastError(), when the folder
// cannot be read.
std::optional<std::string> FindVariablesFile(host::Platform& platform, const config::LocalSettings& settings,
                                             const std::string& folder, std::string_view scheme);

using MetadataEntries = std::vector<std::pair<std::string, std::string>>;  // field and value

// The fields that the metadata table of the document gives a value. The table is the first one whose title or
// first cell holds the identifier; without an identifier, the first one that names a field. In each row a
// cell "Author=" names the field, and the cell behind it is the value. Nothing when there is no such table.
std::optional<MetadataEntries> ReadMetadata(host::Tables& tables, host::Id document,
                                            std::string_view identifier);

}  // namespace qelm::filtering
