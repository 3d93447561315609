#include "host/list_editor.h"

#include <algorithm>
#include <optional>

#include "common/text.h"
#include "host/dialog_events.h"
#include "host/interface/entry_points.h"
#include "messages/dialog.h"

namespace qelm {
namespace {

// The items of the list editor, and of the dialogs for one item.
enum Item : std::int32_t { kList, kNew, kEdit, kDelete, kUp, kDown, kOk, kCancel, kItemCount };
enum TextItem : std::int32_t { kText, kAccept, kClose, kTextItemCount };

class ListEditor {
 public:
  ListEditor(messages::Messenger& messenger, std::string_view title, std::vector<std::string> items)
      : messenger_(messenger),
        items_(std::move(items)),
        dialog_(messenger, "bw_Dialog_ListEditor", kItemCount) {
    if (!dialog_.Opened()) return;
    dialog_.SetTitle(title);
    Show(items_.empty() ? -1 : 0);
  }

  bool Run();
  std::vector<std::string>& items() { return items_; }

 private:
  std::int32_t Used(std::int32_t item);
  void Show(std::int32_t selected);
  void Add(std::int32_t selected);
  void Change(std::int32_t selected);
  void Delete(std::int32_t selected);
  void Move(std::int32_t selected, std::int32_t by);
  std::optional<std::string> AskText(std::string_view dialog, std::int32_t number, const std::string& text);

  std::string& At(std::int32_t index) { return items_[static_cast<std::size_t>(index)]; }
  std::int32_t Count() const { return static_cast<std::int32_t>(items_.size()); }

  messages::Messenger& messenger_;
  std::vector<std::string> items_;
  messages::Dialog dialog_;
};

bool ListEditor::Run() {
  if (!dialog_.Opened()) {
    dialog_.ReportMissing();
    return false;
  }
  return dialog_.Run(kListEditorNumber, [this](std::int32_t item) { return Used(item); }) == kOk;
}

std::int32_t ListEditor::Used(std::int32_t item) {
  if (item == kOk || item == kCancel) return 0;
  std::int32_t selected = dialog_.Value(kList);
  if (selected >= Count()) selected = -1;
  if (item == kNew) {
    Add(selected);
  } else if (item != kList && selected < 0) {
    messenger_.Alert("QELM_MSG_DIALOG_7");
  } else if (item == kEdit) {
    Change(selected);
  } else if (item == kDelete) {
    Delete(selected);
  } else if (item == kUp || item == kDown) {
    Move(selected, item == kUp ? -1 : 1);
  }
  return host::kDialogStaysOpen;
}

void ListEditor::Show(std::int32_t selected) {
  dialog_.SetList(kList, items_);
  dialog_.SetValue(kList, selected);
}

// A new item comes behind the selected one.
void ListEditor::Add(std::int32_t selected) {
  std::optional<std::string> text = AskText("bw_Dialog_ItemEntry", kItemEntryNumber, "");
  if (!text) return;
  const std::int32_t place = selected < 0 ? Count() : selected + 1;
  items_.insert(items_.begin() + place, std::move(*text));
  Show(place);
}

void ListEditor::Change(std::int32_t selected) {
  std::optional<std::string> text = AskText("bw_Dialog_ItemEdit", kItemEditNumber, At(selected));
  if (!text) return;
  At(selected) = std::move(*text);
  Show(selected);
}

void ListEditor::Delete(std::int32_t selected) {
  items_.erase(items_.begin() + selected);
  Show(std::min(selected, Count() - 1));
}

void ListEditor::Move(std::int32_t selected, std::int32_t by) {
  const std::int32_t target = selected + by;
  if (target < 0 || target >= Count()) return;
  std::swap(At(selected), At(target));
  Show(target);
}

std::optional<std::string> ListEditor::AskText(std::string_view name, std::int32_t number,
                                               const std::string& text) {
  messages::Dialog dialog(messenger_, name, kTextItemCount);
  if (!dialog.Opened()) {
    dialog.ReportMissing();
    return std::nullopt;
  }
  dialog.SetText(kText, text);
  std::string accepted;
  const std::int32_t pressed = dialog.Run(number, [&](std::int32_t item) {
    if (item == kClose) return 0;
    if (item != kAccept) return host::kDialogStaysOpen;
    accepted = common::Trim(dialog.Text(kText));
    if (!accepted.empty()) return 0;
    messenger_.Alert("QELM_MSG_DIALOG_8");
    return host::kDialogStaysOpen;
  });
  if (pressed != kAccept || accepted.empty()) return std::nullopt;
  return accepted;
}

}  // namespace

bool EditList(messages::Messenger& messenger, std::string_view title, std::vector<std::string>* items) {
  ListEditor editor(messenger, title, *items);
  if (!editor.Run()) return false;
  *items = std::move(editor.items());
  return true;
}

}  // namespace qelm
