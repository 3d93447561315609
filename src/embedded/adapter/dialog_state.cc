#include "embedded/adapter/dialog_state.h"

#include <algorithm>

namespace qelm::embedded::adapter {
namespace {

using nlohmann::ordered_json;

// An event must not grow with a list that a document fills.
constexpr std::size_t kRecordedLines = 100;

}  // namespace

DialogState::DialogState(const DialogResource& resource) : title(resource.title), resource_(resource) {
  items_.reserve(resource.items.size());
  for (const DialogItem& item : resource.items) {
    items_.push_back({.resource = &item, .label = item.label});
    if (items_.back().IsList()) items_.back().value = -1;
  }
}

ItemState* DialogState::Item(std::int32_t item) {
  const auto index = static_cast<std::size_t>(item);
  return item >= 0 && index < items_.size() ? &items_[index] : nullptr;
}

void DialogState::SetValue(std::int32_t item, std::int32_t value) {
  ItemState* state = Item(item);
  if (state == nullptr) return;
  if (state->kind() == ItemKind::kRadio && value != 0) {
    for (ItemState& other : items_) {
      if (other.kind() == ItemKind::kRadio && other.resource->group == state->resource->group)
        other.value = 0;
    }
  }
  state->value = state->IsList() ? value : static_cast<std::int32_t>(value != 0);
}

std::int32_t DialogState::DefaultButton() const {
  for (std::size_t item = 0; item < items_.size(); ++item) {
    if (items_[item].resource->role == ButtonRole::kDefault) return static_cast<std::int32_t>(item);
  }
  return -1;
}

std::int32_t DialogState::CancelButton() const {
  for (std::size_t item = 0; item < items_.size(); ++item) {
    if (items_[item].resource->role == ButtonRole::kCancel && items_[item].shown) {
      return static_cast<std::int32_t>(item);
    }
  }
  return DefaultButton();
}

std::vector<std::int32_t> DialogState::Buttons() const {
  std::vector<std::int32_t> buttons;
  for (std::size_t item = 0; item < items_.size(); ++item) {
    if (items_[item].kind() == ItemKind::kButton && items_[item].shown) {
      buttons.push_back(static_cast<std::int32_t>(item));
    }
  }
  return buttons;
}

std::string DialogState::Words() const {
  std::string words;
  for (const ItemState& item : items_) {
    if (item.kind() != ItemKind::kText || !item.shown) continue;
    words += item.IsBlank() ? "" : item.label;
    words += '\n';
  }
  while (words.ends_with('\n')) words.pop_back();
  return words;
}

ordered_json DialogState::ValueForRecord(const ItemState& item) const {
  if (item.kind() == ItemKind::kEdit) return item.text;
  if (!item.IsList()) return item.value != 0;
  if (item.value < 0 || static_cast<std::size_t>(item.value) >= item.lines.size()) return nullptr;
  return item.lines[static_cast<std::size_t>(item.value)];
}

ordered_json DialogState::Describe() const {
  ordered_json items = ordered_json::array();
  ordered_json buttons = ordered_json::array();
  for (const ItemState& item : items_) {
    if (!item.shown) continue;
    if (item.kind() == ItemKind::kButton) buttons.push_back(item.label);
    if (!item.IsField()) continue;
    ordered_json entry{{"item", item.resource->name}, {"kind", KindWord(item.kind())}, {"label", item.label}};
    if (item.IsList()) {
      const std::size_t count = std::min(item.lines.size(), kRecordedLines);
      entry["lines"] = std::vector<std::string>(item.lines.begin(),
                                                item.lines.begin() + static_cast<std::ptrdiff_t>(count));
      if (count < item.lines.size()) entry["more_lines"] = item.lines.size() - count;
    }
    entry["value"] = ValueForRecord(item);
    items.push_back(std::move(entry));
  }
  return {{"name", resource_.name}, {"number", number},          {"title", title},
          {"text", Words()},        {"items", std::move(items)}, {"buttons", std::move(buttons)}};
}

}  // namespace qelm::embedded::adapter
