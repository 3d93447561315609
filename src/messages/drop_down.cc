#include "messages/drop_down.h"

#include "host/interface/entry_points.h"
#include "messages/dialog.h"

namespace qelm::messages {
namespace {

// The items of the dialog.
enum Item : std::int32_t { kEntries, kOk, kCancel, kItemCount };

}  // namespace

std::int32_t ChooseEntry(Messenger& messenger, std::string_view title,
                         const std::vector<std::string>& entries, std::int32_t selected) {
  if (entries.empty()) return -1;
  Dialog dialog(messenger, "bw_Dialog_DropDown", kItemCount);
  if (!dialog.Opened()) {
    dialog.ReportMissing();
    return -1;
  }
  dialog.SetTitle(title);
  dialog.SetList(kEntries, entries);
  dialog.SetValue(kEntries, selected);
  const std::int32_t pressed = dialog.Run(kDropDownNumber, [](std::int32_t item) {
    return item == kOk || item == kCancel ? 0 : host::kDialogStaysOpen;
  });
  const std::int32_t chosen = dialog.Value(kEntries);
  const bool is_entry = chosen >= 0 && chosen < static_cast<std::int32_t>(entries.size());
  return pressed == kOk && is_entry ? chosen : -1;
}

}  // namespace qelm::messages
