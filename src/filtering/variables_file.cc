#include "filtering/variables_file.h"

#include <algorithm>

#include "common/paths.h"
#include "common/strings.h"
#include "common/text.h"
#include "filtering/batch_names.h"
#include "filtering/metadata_packet.h"

namespace qelm::filtering {
namespace {

using host::Id;
using host::kNone;

constexpr std::string_view kDocumentExtensions[] = {".mif", ".fm", ".xml"};

std::vector<std::vector<std::string>> RowsOf(host::Tables& tables, Id document, Id table) {
  std::vector<std::vector<std::string>> rows;
  for (Id row = tables.FirstRow(document, table); row != kNone; row = tables.NextRow(document, row)) {
    rows.push_back(tables.CellTexts(document, row));
  }
  return rows;
}

// The field that a cell names, "Author" for "Author="; empty for other cells.
std::string_view FieldOf(std::string_view cell) {
  const std::string_view text = common::Trim(cell);
  if (!text.ends_with('=')) return {};
  const std::string_view name = common::Trim(text.substr(0, text.size() - 1));
  const auto* field = std::find(kMetadataFields.begin(), kMetadataFields.end(), name);
  return field == kMetadataFields.end() ? std::string_view() : *field;
}

bool NamesField(const std::vector<std::vector<std::string>>& rows) {
  return std::any_of(rows.begin(), rows.end(), [](const std::vector<std::string>& cells) {
    return std::any_of(cells.begin(), cells.end(),
                       [](const std::string& cell) { return !FieldOf(cell).empty(); });
  });
}

bool IsDocumentName(std::string_view name) {
  const std::string lower = common::AsciiLower(name);
  return std::any_of(std::begin(kDocumentExtensions), std::end(kDocumentExtensions),
                     [&](std::string_view extension) { return lower.ends_with(extension); });
}

bool IsMeant(host::Tables& tables, Id document, Id table, std::string_view identifier,
             const std::vector<std::vector<std::string>>& rows) {
  if (identifier.empty()) return NamesField(rows);
  if (tables.TitleText(document, table).find(identifier) != std::string::npos) return true;
  return !rows.empty() && !rows.front().empty() && rows.front().front().find(identifier) != std::string::npos;
}

}  // namespace

std::optional<std::string> FindVariablesFile(host::Platform& platform, const config::LocalSettings& settings,
                                             const std::string& folder, std::string_view scheme) {
  const std::vector<std::string>& from_scheme = settings.bf_post_process_var_import_filter_strings_to_remove;
  const std::vector<std::string>& from_file = settings.bf_post_process_var_import_file_strings_to_remove;
  const std::string wanted = WithoutStrings(scheme, from_scheme);
  const std::string as_file = SafeName(wanted);
  const std::optional<std::vector<std::string>> names = platform.ReadFolder(folder);
  if (!names) return std::nullopt;
  for (const std::string& name : *names) {
    if (!IsDocumentName(name)) continue;
    const std::string own = WithoutStrings(NameWithoutExtension(name), from_file);
    if (!common::EqualsIgnoreCase(own, wanted) && !common::EqualsIgnoreCase(own, as_file)) continue;
    const std::string path = common::JoinPath(folder, name);
    if (!platform.FolderExists(path)) return path;
  }
  return std::string();
}

std::optional<MetadataEntries> ReadMetadata(host::Tables& tables, Id document, std::string_view identifier) {
  for (Id table = tables.FirstTable(document); table != kNone; table = tables.NextTable(document, table)) {
    const std::vector<std::vector<std::string>> rows = RowsOf(tables, document, table);
    if (!IsMeant(tables, document, table, identifier, rows)) continue;
    MetadataEntries entries;
    for (const std::vector<std::string>& cells : rows) {
      for (std::size_t i = 0; i + 1 < cells.size(); ++i) {
        const std::string_view field = FieldOf(cells[i]);
        const std::string value(common::Trim(cells[i + 1]));
        if (!field.empty() && !value.empty()) entries.emplace_back(field, value);
      }
    }
    return entries;
  }
  return std::nullopt;
}

}  // namespace qelm::filtering
