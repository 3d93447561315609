// What a run switches and must put back on every way out: screen updates, text insets.
#pragma once

#include <vector>

#include "host/interface/host.h"

namespace qelm::filtering {

// Screen updates are off while this lives, if they are to be; then they come back and the document is drawn.
class ScreenUpdatesOff {
 public:
  ScreenUpdatesOff(host::Session& session, host::Id document, bool wanted)
      : session_(session), document_(document), off_(wanted) {
    if (off_) session_.SetScreenUpdates(false);
  }
  ~ScreenUpdatesOff() { PutBack(); }
  ScreenUpdatesOff(const ScreenUpdatesOff&) = delete;
  ScreenUpdatesOff& operator=(const ScreenUpdatesOff&) = delete;

  void PutBack() {
    if (!off_) return;
    off_ = false;
    session_.SetScreenUpdates(true);
    session_.Redisplay(document_);
  }

 private:
  host::Session& session_;
  host::Id document_;
  bool off_;
};

// The text insets of a document that were locked, unlocked until the end.
class UnlockedInsets {
 public:
  UnlockedInsets(host::Tables& tables, host::Id document) : tables_(tables), document_(document) {}
  ~UnlockedInsets() {
    Relock();
    Relock();
  }
  UnlockedInsets(const UnlockedInsets&) = delete;
  UnlockedInsets& operator=(const UnlockedInsets&) = delete;

  void Unlock();
  // Locks them again. Those that the host refused are kept for the next try; the end tries twice.
  void Relock();
  bool Any() const { return !unlocked_.empty(); }

 private:
  host::Tables& tables_;
  host::Id document_;
  std::vector<host::Id> unlocked_;  // in the host's order
};

}  // namespace qelm::filtering
