// One dialog of the plug-in from opening to closing: opened by the name of its resource, its title and labels
// translated, closed when it goes out of scope.
//
//   Dialog dialog(messenger, "bw_Dialog_DropDown", kItemCount);
//   if (!dialog.Opened()) return -1;
//   dialog.SetList(kEntries, entries);
//   if (dialog.Run(1226) != kOk) return -1;
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "messages/messenger.h"

namespace qelm::messages {

// The section of the language file with the labels of dialogs.
inline constexpr std::string_view kDialogStrings = "Dialogs";

class Dialog {
 public:
  // Opens the resource, which must have at least that many items, and translates its labels by the section.
  Dialog(Messenger& messenger, std::string_view name, std::int32_t items,
         std::string_view section = kDialogStrings);
  ~Dialog();
  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;

  bool Opened() const { return id_ != host::kNone; }
  // Tells the user that the dialog could not be opened and so nothing was done.
  void ReportMissing() const;

  // Runs the dialog until it is closed. Returns the item that closed it.
  std::int32_t Run(std::int32_t number, DialogHandler handler = {});

  void SetTitle(std::string_view text) { SetLabel(host::kDialogTitle, text); }
  void SetLabel(std::int32_t item, std::string_view text) { dialogs_->SetLabel(id_, item, text); }
  void SetText(std::int32_t item, std::string_view text) { dialogs_->SetText(id_, item, text); }
  std::string Text(std::int32_t item) const { return dialogs_->TextOf(id_, item); }
  void SetValue(std::int32_t item, std::int32_t value) { dialogs_->SetValue(id_, item, value); }
  std::int32_t Value(std::int32_t item) const { return dialogs_->ValueOf(id_, item); }
  void SetList(std::int32_t item, const std::vector<std::string>& lines) {
    dialogs_->SetList(id_, item, lines);
  }
  void Show(std::int32_t item, bool shown) { dialogs_->ShowItem(id_, item, shown); }

 private:
  void Translate(std::string_view section);

  Messenger& messenger_;
  host::Dialogs* dialogs_;
  std::string name_;
  host::Id id_ = host::kNone;
};

}  // namespace qelm::messages
