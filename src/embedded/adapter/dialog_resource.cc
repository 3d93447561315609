#include "embedded/adapter/dialog_resource.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace qelm::embedded::adapter {
namespace {

using nlohmann::json;

constexpr std::array<std::pair<std::string_view, ItemKind>, 8> kKinds = {{
    {"label", ItemKind::kLabel},
    {"text", ItemKind::kText},
    {"edit", ItemKind::kEdit},
    {"button", ItemKind::kButton},
    {"check box", ItemKind::kCheckBox},
    {"radio", ItemKind::kRadio},
    {"list", ItemKind::kList},
    {"drop-down", ItemKind::kDropDown},
}};
constexpr std::array<std::pair<std::string_view, ButtonRole>, 3> kRoles = {{
    {"", ButtonRole::kNone},
    {"default", ButtonRole::kDefault},
    {"cancel", ButtonRole::kCancel},
}};

// What is wrong; the place is put before it on the way out.
[[noreturn]] void Refuse(const std::string& what) { throw std::runtime_error(what); }

const json& Member(const json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end()) Refuse(std::string("\"") + key + "\" is missing");
  return *found;
}

std::string TextMember(const json& object, const char* key, bool required) {
  const auto found = object.find(key);
  if (found == object.end() && !required) return {};
  const json& value = Member(object, key);
  if (!value.is_string()) Refuse(std::string("\"") + key + "\" is not a string");
  return value.get<std::string>();
}

Extent ExtentMember(const json& object, const char* key) {
  const json& value = Member(object, key);
  if (!value.is_array() || value.size() != 2 || !value[0].is_number() || !value[1].is_number()) {
    Refuse(std::string("\"") + key + "\" is not a pair of numbers");
  }
  return {value[0].get<double>(), value[1].get<double>()};
}

template <typename Table>
auto WordMember(const json& object, const char* key, bool required, const Table& table) {
  const std::string word = TextMember(object, key, required);
  const auto row =
      std::find_if(table.begin(), table.end(), [&](const auto& known) { return known.first == word; });
  if (row == table.end()) Refuse(std::string("\"") + key + "\": there is no \"" + word + "\"");
  return row->second;
}

DialogItem ReadItem(const json& object) {
  if (!object.is_object()) Refuse("not an object");
  DialogItem item;
  item.name = TextMember(object, "name", true);
  if (item.name.empty()) Refuse("\"name\" is empty");
  item.kind = WordMember(object, "kind", true, kKinds);
  item.label = TextMember(object, "label", false);
  item.group = TextMember(object, "group", false);
  item.role = WordMember(object, "role", false, kRoles);
  if (item.role != ButtonRole::kNone && item.kind != ItemKind::kButton)
    Refuse("only a button has a \"role\"");
  item.position = ExtentMember(object, "position");
  item.size = ExtentMember(object, "size");
  return item;
}

std::vector<DialogItem> ReadItems(const json& list) {
  if (!list.is_array() || list.empty()) Refuse("\"items\" is not a list of items");
  std::vector<DialogItem> items;
  for (std::size_t index = 0; index < list.size(); ++index) {
    try {
      items.push_back(ReadItem(list[index]));
      const auto same = [&](const DialogItem& other) { return other.name == items.back().name; };
      if (std::find_if(items.begin(), items.end(), same) != items.end() - 1) {
        Refuse("\"" + items.back().name + "\" is the name of an item before it");
      }
    } catch (const std::runtime_error& problem) {
      Refuse("item " + std::to_string(index) + ": " + problem.what());
    }
  }
  return items;
}

// A dialog with buttons has to say what Enter does.
void CheckButtons(const std::vector<DialogItem>& items) {
  const auto count = [&](auto is) { return std::count_if(items.begin(), items.end(), is); };
  const auto buttons = count([](const DialogItem& item) { return item.kind == ItemKind::kButton; });
  const auto defaults = count([](const DialogItem& item) { return item.role == ButtonRole::kDefault; });
  const auto cancels = count([](const DialogItem& item) { return item.role == ButtonRole::kCancel; });
  if (buttons > 0 && defaults != 1) Refuse("not one button has the role \"default\"");
  if (cancels > 1) Refuse("more than one button has the role \"cancel\"");
}

DialogResource ReadDialog(const json& object) {
  if (!object.is_object()) Refuse("not an object");
  DialogResource dialog;
  dialog.title = TextMember(object, "title", true);
  const std::string kind = TextMember(object, "kind", false);
  if (!kind.empty() && kind != "message") Refuse("\"kind\": there is no \"" + kind + "\"");
  dialog.is_message = !kind.empty();
  dialog.size = ExtentMember(object, "size");
  dialog.items = ReadItems(Member(object, "items"));
  CheckButtons(dialog.items);
  return dialog;
}

std::string PlaceOfByte(std::string_view content, std::size_t byte) {
  const std::string_view before = content.substr(0, byte == 0 ? 0 : byte - 1);
  const std::size_t start = before.rfind('\n');
  const std::size_t column = start == std::string_view::npos ? before.size() : before.size() - start - 1;
  return "line " + std::to_string(std::count(before.begin(), before.end(), '\n') + 1) + ", column " +
         std::to_string(column + 1);
}

}  // namespace

std::string_view KindWord(ItemKind kind) { return kKinds[static_cast<std::size_t>(kind)].first; }

std::optional<DialogResource> ParseDialogResource(std::string_view name, std::string_view content,
                                                  std::string* error) {
  try {
    DialogResource dialog = ReadDialog(json::parse(content));
    dialog.name = name;
    return dialog;
  } catch (const json::parse_error& problem) {
    *error = PlaceOfByte(content, problem.byte) + ": the text is not JSON from here on";
  } catch (const std::exception& problem) {
    *error = problem.what();
  }
  return std::nullopt;
}

}  // namespace qelm::embedded::adapter
