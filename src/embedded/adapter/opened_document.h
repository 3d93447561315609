// A document that is open for as long as this is there: one that was not open before is closed then.
#pragma once

#include <string>

#include "embedded/adapter/workspace.h"
#include "host/interface/documents.h"

namespace qelm::embedded::adapter {

class OpenedDocument {
 public:
  OpenedDocument(Workspace& workspace, host::Documents& documents, const std::string& path)
      : workspace_(workspace), documents_(documents) {
    host::OpenOptions options;
    options.visible = false;
    options.suppress_alerts = true;
    host::OpenStatus status = host::OpenStatus::kUnreadable;
    id_ = documents.Open(path, options, &status);
    was_open_ = status == host::OpenStatus::kAlreadyOpen;
  }
  ~OpenedDocument() {
    if (id_ != host::kNone && !was_open_) documents_.Close(id_, true);
  }
  OpenedDocument(const OpenedDocument&) = delete;
  OpenedDocument& operator=(const OpenedDocument&) = delete;

  // Null for what cannot be opened or is a book; Why() then says so.
  OpenFile* File() { return id_ == host::kNone ? nullptr : workspace_.DocumentFile(id_); }
  std::string Why() {
    if (id_ == host::kNone || workspace_.Book(id_) == nullptr) return std::string(documents_.LastError());
    return workspace_.File(id_)->path + ": this is a book, which is updated on its own.";
  }

  // What was changed: text that moves other text, or only the numbers and titles that references show, for
  // which the document's record of its pages still holds.
  enum class Change : std::uint8_t { kText, kReferences };
  // Writes the document, or brings the changes into it when it stays open.
  bool Finish(Change change) {
    OpenFile* file = File();
    const std::uint64_t layout = file->layout;
    MarkEdited(file);
    if (change == Change::kReferences) file->layout = layout;
    return was_open_ ? SettleDocument(file) : documents_.Save(id_, {});
  }

 private:
  Workspace& workspace_;
  host::Documents& documents_;
  Id id_ = host::kNone;
  bool was_open_ = false;
};

}  // namespace qelm::embedded::adapter
