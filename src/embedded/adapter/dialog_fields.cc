#include "embedded/adapter/dialog_fields.h"

#include <algorithm>
#include <charconv>

namespace qelm::embedded::adapter {
namespace {

constexpr std::string_view kOn[] = {"on", "yes", "true", "1"};
constexpr std::string_view kOff[] = {"off", "no", "false", "0"};

// Words as they are compared.
std::string Plain(std::string_view words) {
  words = words.substr(0, words.find_last_not_of(" .:") + 1);
  std::string plain(words);
  for (char& letter : plain) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return plain;
}

template <typename Wanted>
std::int32_t Find(const DialogState& dialog, std::string_view words, const Wanted& wanted) {
  const std::string plain = Plain(words);
  if (plain.empty()) return -1;
  for (std::size_t index = 0; index < dialog.items().size(); ++index) {
    const ItemState& item = dialog.items()[index];
    if (!item.shown || !wanted(item)) continue;
    if (Plain(item.resource->name) == plain || Plain(item.label) == plain ||
        Plain(item.resource->label) == plain) {
      return static_cast<std::int32_t>(index);
    }
  }
  return -1;
}

bool SetSwitch(DialogState& dialog, std::int32_t item, std::string_view value, std::string* error) {
  const std::string word = Plain(value);
  const bool on = std::find(std::begin(kOn), std::end(kOn), word) != std::end(kOn);
  if (!on && std::find(std::begin(kOff), std::end(kOff), word) == std::end(kOff)) {
    *error = "is either on or off, not \"" + std::string(value) + "\"";
    return false;
  }
  dialog.SetValue(item, on ? 1 : 0);
  return true;
}

bool SelectLine(DialogState& dialog, std::int32_t item, std::string_view value, std::string* error) {
  const std::vector<std::string>& lines = dialog.Item(item)->lines;
  const auto found = std::find(lines.begin(), lines.end(), value);
  std::size_t number = 0;
  if (found != lines.end()) {
    number = static_cast<std::size_t>(found - lines.begin()) + 1;
  } else if (value.starts_with('#')) {
    const char* end = value.data() + value.size();
    const auto read = std::from_chars(value.data() + 1, end, number);
    if (read.ec != std::errc() || read.ptr != end) number = 0;
  }
  if (number == 0 || number > lines.size()) {
    *error = "has no line \"" + std::string(value) + "\"";
    return false;
  }
  dialog.SetValue(item, static_cast<std::int32_t>(number) - 1);
  return true;
}

}  // namespace

std::int32_t FindButton(const DialogState& dialog, std::string_view words) {
  return Find(dialog, words, [](const ItemState& item) { return item.kind() == ItemKind::kButton; });
}

std::int32_t FindField(const DialogState& dialog, std::string_view words) {
  return Find(dialog, words, [](const ItemState& item) { return item.IsField(); });
}

bool SetField(DialogState& dialog, std::int32_t item, std::string_view value, std::string* error) {
  ItemState* field = dialog.Item(item);
  if (field->IsList()) return SelectLine(dialog, item, value, error);
  if (field->kind() != ItemKind::kEdit) return SetSwitch(dialog, item, value, error);
  field->text = value;
  return true;
}

}  // namespace qelm::embedded::adapter
