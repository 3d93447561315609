#include "messages/dialog.h"

#include <utility>

namespace qelm::messages {

Dialog::Dialog(Messenger& messenger, std::string_view name, std::int32_t items, std::string_view section)
    : messenger_(messenger), dialogs_(messenger.HostDialogs()), name_(name) {
  if (dialogs_ == nullptr) return;
  id_ = dialogs_->OpenDialog(name_);
  if (id_ == host::kNone) return;
  if (dialogs_->ItemCount(id_) >= items) {
    Translate(section);
  } else {
    dialogs_->CloseDialog(std::exchange(id_, host::kNone));
  }
}

Dialog::~Dialog() {
  if (Opened()) dialogs_->CloseDialog(id_);
}

void Dialog::ReportMissing() const {
  constexpr std::string_view kId = "QELM_MSG_DIALOG_1";
  messenger_.AlertFormatted(kId, messenger_.Format(kId, name_));
}

void Dialog::Translate(std::string_view section) {
  const std::int32_t count = dialogs_->ItemCount(id_);
  for (std::int32_t item = host::kDialogTitle; item < count; ++item) {
    const std::string english = dialogs_->LabelOf(id_, item);
    if (!english.empty()) SetLabel(item, messenger_.Translated(section, english));
  }
}

std::int32_t Dialog::Run(std::int32_t number, DialogHandler handler) {
  return messenger_.Open().Run(*dialogs_, id_, number, std::move(handler));
}

}  // namespace qelm::messages
