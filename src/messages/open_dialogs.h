// Which of the plug-in's dialogs are open, and who takes their events. The host names a dialog by a number
// only, and some numbers are shared: of several open dialogs with one number the last one opened is meant.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "host/interface/user_interface.h"

namespace qelm::messages {

// Takes the use of an item. Returns host::kDialogStaysOpen when the dialog is not to close.
using DialogHandler = std::function<std::int32_t(std::int32_t item)>;

class OpenDialogs {
 public:
  // Runs the dialog under that number; while it is open its events come to `handler`. Without one every
  // button closes it. Returns the item that closed it.
  std::int32_t Run(host::Dialogs& dialogs, host::Id dialog, std::int32_t number, DialogHandler handler);

  // Hands an event to the open dialog of that number. Returns what its handler returns; 0 when no such dialog
  // is open.
  std::int32_t Route(std::int32_t number, std::int32_t item) const;

 private:
  std::vector<std::pair<std::int32_t, DialogHandler>> open_;
};

}  // namespace qelm::messages
