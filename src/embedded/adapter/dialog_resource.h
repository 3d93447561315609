// A dialog as its resource describes it: a JSON file with title, size and items. Lengths are in points, as
// FrameMaker counts them, from the upper left corner of the dialog.
//
//   { "title": "New Item", "size": [384, 100],
//     "items": [
//       {"name": "item", "kind": "edit", "label": "Item", "position": [12, 16], "size": [360, 32]},
//       {"name": "ok", "kind": "button", "label": "OK", "role": "default", ...} ] }
//
// Items are numbered from 0 in their order. A dialog whose "kind" is "message" is an alert or a question.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qelm::embedded::adapter {

enum class ItemKind : std::uint8_t {
  kLabel,  // fixed words
  kText,   // words that the plug-in puts there
  kEdit,
  kButton,
  kCheckBox,
  kRadio,
  kList,
  kDropDown,
};

// What a button does without being named: Enter presses the default one, and a dialog that nobody answers is
// closed by the cancel one.
enum class ButtonRole : std::uint8_t { kNone, kDefault, kCancel };

struct Extent {
  double x = 0;  // or the width
  double y = 0;  // or the height
};

struct DialogItem {
  std::string name;  // for answers; no two items of a dialog have the same
  ItemKind kind = ItemKind::kText;
  std::string label;  // in English
  std::string group;  // radio buttons: of those with the same group only one is on
  ButtonRole role = ButtonRole::kNone;
  Extent position;
  Extent size;
};

struct DialogResource {
  std::string name;
  std::string title;
  bool is_message = false;
  Extent size;
  std::vector<DialogItem> items;
};

// The word of the resource for a kind.
std::string_view KindWord(ItemKind kind);

// Reads a resource. Nothing, with `error` saying where and what, when it is damaged.
std::optional<DialogResource> ParseDialogResource(std::string_view name, std::string_view content,
                                                  std::string* error);

}  // namespace qelm::embedded::adapter
