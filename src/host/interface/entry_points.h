// The plug-in as its host calls it: four entry points, each on the host's one user-interface thread. None
// lets an exception pass, and none waits for another.
#pragma once

#include "host/interface/types.h"

namespace qelm::host {

// What a dialog event returns when it was handled and the dialog is to stay open.
inline constexpr std::int32_t kDialogStaysOpen = -10000;

class EntryPoints {
 public:
  virtual ~EntryPoints() = default;

  // The start, once a session. `kind` is the host's kind of initialization.
  virtual void Initialize(std::int32_t kind) = 0;

  // The user chose the command of that number. Numbers without a command do nothing.
  virtual void Command(std::int32_t number) = 0;

  // Something happened that the plug-in asked to be told of (Session::RequestNotification). 0 for no document
  // or book. A call from another client is notification 13; its result goes to Clients::Return.
  virtual void Notify(std::int32_t notification, Id document_or_book, std::string_view text,
                      std::int32_t value) = 0;

  // An item of an open dialog was used. Returns kDialogStaysOpen when the dialog is not to close.
  virtual std::int32_t DialogEvent(std::int32_t dialog, std::int32_t item, std::int32_t modifiers) = 0;
};

}  // namespace qelm::host
