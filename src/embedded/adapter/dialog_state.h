// A dialog that is open: its items with what they show at the moment.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/adapter/dialog_resource.h"
#include "host/interface/types.h"

namespace qelm::embedded::adapter {

struct ItemState {
  const DialogItem* resource = nullptr;
  std::string label = {};
  std::string text = {};   // of an edit field
  std::int32_t value = 0;  // check box, radio button: 0 or 1; list, drop-down: the line selected, -1 for none
  std::vector<std::string> lines = {};
  bool shown = true;

  ItemKind kind() const { return resource->kind; }
  bool IsList() const { return kind() == ItemKind::kList || kind() == ItemKind::kDropDown; }
  // Whether a user can set it.
  bool IsField() const { return kind() >= ItemKind::kEdit && kind() != ItemKind::kButton; }
  // Words without anything in them.
  bool IsBlank() const {
    return kind() <= ItemKind::kText && label.find_first_not_of(' ') == std::string::npos;
  }
};

class DialogState {
 public:
  explicit DialogState(const DialogResource& resource);

  const DialogResource& resource() const { return resource_; }
  std::string title;
  std::int32_t number = 0;

  // The item of that index, null when there is none.
  ItemState* Item(std::int32_t item);
  const std::vector<ItemState>& items() const { return items_; }

  // Selects a line of a list, or switches a check box or radio button, the others of its group off.
  void SetValue(std::int32_t item, std::int32_t value);

  // The buttons for Enter and for closing without an answer; -1 in a dialog without buttons. Where the cancel
  // button is missing or hidden it is the default one.
  std::int32_t DefaultButton() const;
  std::int32_t CancelButton() const;
  // The buttons that are shown.
  std::vector<std::int32_t> Buttons() const;

  // The words that the plug-in put into the dialog, a line each, without the blank ones at the end.
  std::string Words() const;

  // What a user sees of the dialog, for the record.
  nlohmann::ordered_json Describe() const;
  // The value of an item as a user would name it.
  nlohmann::ordered_json ValueForRecord(const ItemState& item) const;

 private:
  const DialogResource& resource_;
  std::vector<ItemState> items_;
};

}  // namespace qelm::embedded::adapter
