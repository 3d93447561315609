// Dialogs whose user is a function of the test.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support/null_roles.h"

namespace qelm::testing {

class TestDialogs : public NullDialogs {
 public:
  struct Dialog {
    std::string name = {};
    std::int32_t number = 0;
    std::string title = {};
    std::vector<std::string> labels = {};
    std::map<std::int32_t, bool> shown = {};
    std::map<std::int32_t, std::int32_t> values = {};
    std::vector<std::string> lines = {};
  };

  std::map<std::string, std::vector<std::string>, std::less<>> resources;  // the labels of the items
  std::function<std::int32_t(Dialog&)> user;                               // returns the item that it uses
  std::vector<Dialog> dialogs;                                             // by id - 1
  int open = 0;

  host::Id OpenDialog(std::string_view name) override {
    const auto found = resources.find(name);
    if (found == resources.end()) return 0;
    dialogs.push_back({.name = std::string(name), .labels = found->second});
    ++open;
    return static_cast<host::Id>(dialogs.size());
  }
  void CloseDialog(host::Id) override { --open; }
  std::int32_t RunDialog(host::Id id, std::int32_t number) override {
    dialogs[id - 1].number = number;
    return user(dialogs[id - 1]);
  }
  std::int32_t ItemCount(host::Id id) override {
    return static_cast<std::int32_t>(dialogs[id - 1].labels.size());
  }
  void SetLabel(host::Id id, std::int32_t item, std::string_view text) override { Label(id, item) = text; }
  std::string LabelOf(host::Id id, std::int32_t item) override { return Label(id, item); }
  void SetValue(host::Id id, std::int32_t item, std::int32_t value) override {
    dialogs[id - 1].values[item] = value;
  }
  std::int32_t ValueOf(host::Id id, std::int32_t item) override { return dialogs[id - 1].values[item]; }
  void SetList(host::Id id, std::int32_t, const std::vector<std::string>& lines) override {
    dialogs[id - 1].lines = lines;
  }
  void ShowItem(host::Id id, std::int32_t item, bool shown) override { dialogs[id - 1].shown[item] = shown; }

 private:
  std::string& Label(host::Id id, std::int32_t item) {
    Dialog& dialog = dialogs[id - 1];
    return item == host::kDialogTitle ? dialog.title : dialog.labels[static_cast<std::size_t>(item)];
  }
};

}  // namespace qelm::testing
