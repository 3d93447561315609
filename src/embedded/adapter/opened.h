// A document that is open for as long as an object is there.
#pragma once

#include <string>

#include "embedded/adapter/workspace.h"
#include "host/interface/documents.h"

namespace qelm::embedded::adapter {

// One that was not open before is closed in the end, and saved when it was changed.
class Opened {
 public:
  Opened(Workspace& workspace, host::Documents& documents, const std::string& path)
      : workspace_(workspace), documents_(documents) {
    host::OpenOptions options;
    options.visible = false;
    options.suppress_alerts = true;
    host::OpenStatus status = host::OpenStatus::kUnreadable;
    id_ = documents.Open(path, options, &status);
    was_open_ = status == host::OpenStatus::kAlreadyOpen;
  }
  ~Opened() {
    if (id_ != host::kNone && !was_open_) documents_.Close(id_, true);
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;

  // Null when it could not be opened; Documents::LastError says why.
  OpenFile* File() { return id_ == host::kNone ? nullptr : workspace_.DocumentFile(id_); }

  // Brings the changes into the document, and writes it unless it was open.
  bool Finish() {
    OpenFile* file = File();
    MarkEdited(file);
    if (!SettleDocument(file)) return false;
    return was_open_ || documents_.Save(id_, {});
  }

 private:
  Workspace& workspace_;
  host::Documents& documents_;
  Id id_ = host::kNone;
  bool was_open_ = false;
};

}  // namespace qelm::embedded::adapter
