#include "messages/component_document.h"

namespace qelm::messages {

using host::Id;
using host::kNone;

OpenedComponent OpenComponent(host::Host& host, Id book, Id component, bool suppress_alerts) {
  OpenedComponent result;
  result.path = host.books.ComponentPath(book, component);
  result.document = host.books.ComponentDocument(book, component);
  if (result.document != kNone) return result;
  host::OpenOptions options;
  options.suppress_alerts = suppress_alerts;
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  result.document = host.documents.Open(result.path, options, &status);
  if (result.document == kNone) {
    result.why = host.documents.LastError();
    if (result.why.find(result.path) == std::string::npos) result.why = result.path + ": " + result.why;
    return result;
  }
  result.opened = status != host::OpenStatus::kAlreadyOpen;
  if (!host.books.IsBook(result.document)) return result;
  if (result.opened) host.documents.Close(result.document, true);
  result.document = kNone;
  result.opened = false;
  result.why = result.path + ": this is a book, and its documents are not those of the book that names it.";
  return result;
}

}  // namespace qelm::messages
