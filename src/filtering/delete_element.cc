#include "filtering/delete_element.h"

#include "schemes/flows.h"

namespace qelm::filtering {
namespace {

using host::ElementKind;
using host::Id;
using host::kNone;

constexpr std::int32_t kRefusedKind = -3;
constexpr std::int32_t kHostRefused = -1;
constexpr std::int32_t kMissingArgument = 200;
constexpr std::int32_t kTableCell = 221;
constexpr std::int32_t kHostRefusedInternal = 222;

std::string_view LogLine(bool text_node, ElementKind kind) {
  if (text_node) return "Preparing to delete text node (bw_DeleteElement)";
  switch (kind) {
    case ElementKind::kTableTitle:
      return "Preparing to delete table title (bw_DeleteElement)";
    case ElementKind::kTableHeading:
    case ElementKind::kTableFooting:
      return "Preparing to delete table heading (bw_DeleteElement)";
    case ElementKind::kTableBody:
      return "Preparing to delete table body (bw_DeleteElement)";
    case ElementKind::kTableRow:
      return "Preparing to delete table row (bw_DeleteElement)";
    case ElementKind::kTableCell:
      return {};
    default:
      return "Preparing to delete container element (bw_DeleteElement)";
  }
}

bool DeleteAllRows(host::Host& host, Id document, Id part, Id table) {
  const Id first = host.elements.FirstChild(document, part);
  std::int32_t count = 0;
  for (Id row = first; row != kNone; row = host.elements.NextSibling(document, row)) ++count;
  return count == 0 || host.editing.DeleteRows(document, table, first, count);
}

bool DeleteRow(host::Host& host, Id document, Id row, Id table) {
  host::Elements& elements = host.elements;
  const Id part = elements.Parent(document, row);
  const bool only_row = elements.Kind(document, part) == ElementKind::kTableBody &&
                        elements.FirstChild(document, part) == row &&
                        elements.NextSibling(document, row) == kNone;
  if (only_row) return host.editing.DeleteElement(document, table);
  return host.editing.DeleteRows(document, table, row, 1);
}

bool DeleteByKind(host::Host& host, Id document, Id element, bool text_node, ElementKind kind) {
  if (text_node) {
    const host::TextRange range = host.text.ElementRange(document, element);
    return !range.Empty() && host.editing.ClearText(document, range);
  }
  switch (kind) {
    case ElementKind::kTableTitle:
      return host.editing.RemoveTitle(document, TableOfPart(host, document, element));
    case ElementKind::kTableHeading:
    case ElementKind::kTableFooting:
      return DeleteAllRows(host, document, element, TableOfPart(host, document, element));
    case ElementKind::kTableBody:
      return host.editing.DeleteElement(document, TableOfPart(host, document, element));
    case ElementKind::kTableRow:
      return DeleteRow(host, document, element, TableOfPart(host, document, element));
    default:
      return host.editing.DeleteElement(document, element);
  }
}

}  // namespace

Id TableOfPart(host::Host& host, Id document, Id element) {
  switch (host.elements.Kind(document, element)) {
    case ElementKind::kTableTitle:
    case ElementKind::kTableHeading:
    case ElementKind::kTableBody:
    case ElementKind::kTableFooting:
      return host.elements.Parent(document, element);
    case ElementKind::kTableRow:
      return host.elements.Parent(document, host.elements.Parent(document, element));
    default:
      return kNone;
  }
}

std::int32_t bw_DeleteElement(host::Host& host, Id document, Id element, DeleteOutcome* outcome,
                              const RunLog& log) {
  DeleteOutcome unused;
  DeleteOutcome& result = outcome == nullptr ? unused : *outcome;
  result = {};
  if (document == kNone || element == kNone) {
    result.internal = kMissingArgument;
    return 0;
  }
  const bool text_node = schemes::IsTextNode(host, document, element);
  const ElementKind kind = host.elements.Kind(document, element);
  const std::string_view line = LogLine(text_node, kind);
  if (!line.empty()) log(document, element, line);
  if (!text_node && kind == ElementKind::kTableCell) {
    result = {kRefusedKind, kTableCell};
  } else if (!DeleteByKind(host, document, element, text_node, kind)) {
    result = {kHostRefused, kHostRefusedInternal};
  }
  log(document, kNone, "Done deleting element (bw_DeleteElement)");
  return result.error == 0 ? 1 : 0;
}

}  // namespace qelm::filtering
