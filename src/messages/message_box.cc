#include "messages/message_box.h"

#include <algorithm>
#include <array>

#include "common/utf8.h"
#include "host/interface/entry_points.h"
#include "messages/wrap.h"

namespace qelm::messages {
namespace {

constexpr std::size_t kTextWidth = 80;
constexpr std::size_t kCheckBoxWidth = 70;
// What is kept of a second line of the check box that has a third one behind it.
constexpr std::size_t kCutCheckBoxLine = 24;
constexpr std::string_view kCheckBoxCut = " <-- WARNING, TRUNCATED!";
constexpr std::string_view kTextCut =
    "<-- WARNING! This message was too long and has been partially truncated! -->";
constexpr std::string_view kDefaultTitle = "Brenwick Plugin Alert";
// What stands in lines that the text does not reach.
constexpr std::string_view kBlankLine = " ";

// The dialogs from the smallest to the largest. Behind the lines of text each has two for the check box and
// two buttons.
struct Size {
  std::int32_t lines;
  std::string_view dialog;
};
constexpr std::array<Size, 4> kSizes = {{
    {5, "bw_Dialog_Msg_5_Lines_wChkBox"},
    {12, "bw_Dialog_Msg_12_Lines_wChkBox"},
    {20, "bw_Dialog_Msg_20_Lines_wChkBox"},
    {30, "bw_Dialog_Msg_30_Lines_wChkBox"},
}};
constexpr std::int32_t kOtherItems = 4;

struct Labels {
  std::string_view first;
  std::string_view second;
};

Labels LabelsOf(BoxButtons buttons) {
  switch (buttons) {
    case BoxButtons::kOkCancel:
    case BoxButtons::kOkCancelToo:
    case BoxButtons::kOk:
      return {"OK", "Cancel"};
    default:
      return {"Yes", "No"};
  }
}

const Size& SizeFor(std::size_t lines) {
  const auto fits = [lines](const Size& size) { return lines <= static_cast<std::size_t>(size.lines); };
  const auto found = std::find_if(kSizes.begin(), kSizes.end(), fits);
  return found == kSizes.end() ? kSizes.back() : *found;
}

class Box {
 public:
  Box(Messenger& messenger, const MessageBoxText& text, std::vector<std::string> lines)
      : messenger_(messenger),
        box_(text),
        lines_(std::move(lines)),
        size_(SizeFor(lines_.size())),
        dialog_(messenger, size_.dialog, size_.lines + kOtherItems, text.section) {}

  bool Opened() const { return dialog_.Opened(); }
  std::int32_t Run(bool* checked);

 private:
  void FillText();
  void FillCheckBox();
  void FillButtons();

  std::int32_t CheckBox() const { return size_.lines; }
  std::int32_t CheckBoxLine() const { return size_.lines + 1; }
  std::int32_t FirstButton() const { return size_.lines + 2; }
  std::int32_t SecondButton() const { return size_.lines + 3; }

  Messenger& messenger_;
  const MessageBoxText& box_;
  std::vector<std::string> lines_;
  const Size& size_;
  Dialog dialog_;
};

void Box::FillText() {
  const auto room = static_cast<std::size_t>(size_.lines);
  if (lines_.size() > room) {
    lines_.resize(room);
    lines_.back() = kTextCut;
  }
  lines_.resize(room, std::string(kBlankLine));
  for (std::size_t line = 0; line < room; ++line) {
    dialog_.SetLabel(static_cast<std::int32_t>(line), lines_[line]);
  }
}

void Box::FillCheckBox() {
  const bool shown = !box_.check_box.empty();
  dialog_.Show(CheckBox(), shown);
  dialog_.Show(CheckBoxLine(), shown);
  if (!shown) return;
  std::vector<std::string> lines = WrapLines(box_.check_box, kCheckBoxWidth);
  const bool cut = lines.size() > 2;
  lines.resize(2, std::string(kBlankLine));
  if (cut) lines[1] = common::Bounded(lines[1], kCutCheckBoxLine).append(kCheckBoxCut);
  dialog_.SetLabel(CheckBox(), lines[0]);
  dialog_.SetLabel(CheckBoxLine(), lines[1]);
  dialog_.SetValue(CheckBox(), 0);
}

void Box::FillButtons() {
  const Labels labels = LabelsOf(box_.buttons);
  dialog_.SetLabel(FirstButton(), messenger_.Translated(box_.section, labels.first));
  dialog_.SetLabel(SecondButton(), messenger_.Translated(box_.section, labels.second));
  dialog_.Show(SecondButton(), box_.buttons != BoxButtons::kOk);
}

std::int32_t Box::Run(bool* checked) {
  FillText();
  FillCheckBox();
  FillButtons();
  const std::string_view title = box_.title.empty() ? kDefaultTitle : box_.title;
  dialog_.SetTitle(messenger_.Translated(box_.section, title));
  const std::int32_t pressed = dialog_.Run(kMessageBoxNumber, [this](std::int32_t item) {
    return item == FirstButton() || item == SecondButton() ? 0 : host::kDialogStaysOpen;
  });
  if (checked != nullptr) *checked = dialog_.Value(CheckBox()) != 0;
  return pressed == FirstButton() ? 1 : 0;
}

// The host's question answers 0 for yes.
std::int32_t AskHost(host::UserInterface& user, const MessageBoxText& box) {
  if (box.buttons != BoxButtons::kOk) return user.Question(box.text) == 0 ? 1 : 0;
  user.Note(box.text);
  return 1;
}

}  // namespace

std::int32_t MessageBox(Messenger& messenger, const MessageBoxText& box, bool* checked) {
  Box dialog(messenger, box, WrapLines(box.text, kTextWidth));
  if (dialog.Opened()) return dialog.Run(checked);
  if (checked != nullptr) *checked = false;
  return AskHost(messenger.User(), box);
}

}  // namespace qelm::messages
