// A dialog at a terminal, driven by the keyboard alone: its fields are numbered, its buttons have a letter
// each.
//
//   Filter Document
//     1 (*) Duplicate file filter
//     2 ( ) Source file filter, restore first
//     3 [x] Save files first
//     4 Output folder: out
//   f = Filter (Enter), c = Cancel, ? = help
//   >
//
// A number switches a box or button, or asks for a text or for a line of a list, which may also stand behind
// the number ("4 /tmp/out"); a letter, or the beginning of what stands on it, presses a button.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/adapter/dialog_state.h"

namespace qelm::embedded::adapter {

class DialogPrompt {
 public:
  DialogPrompt(std::istream& in, std::ostream& out) : in_(in), out_(out) {}

  // Shows the dialog and reads until an item was used: a field, which is set then, or a button. Returns the
  // item; nothing when the input ends.
  std::optional<std::int32_t> Use(DialogState& dialog);

 private:
  void Show(const DialogState& dialog);
  void ShowField(const DialogState& dialog, std::size_t number, const ItemState& field);
  void ShowButtons(const DialogState& dialog);
  bool ReadLine(std::string_view prompt, std::string* line);
  bool UseField(DialogState& dialog, std::int32_t item, std::string value);
  std::optional<std::int32_t> UseWords(DialogState& dialog, std::string_view words);

  std::istream& in_;
  std::ostream& out_;
};

}  // namespace qelm::embedded::adapter
