// The dialogs role of a host that has no dialog resources: none can be opened, and each attempt is recorded,
// so that a caller falls back to what it does without the dialog and the record says why.
#pragma once

#include "embedded/adapter/events.h"
#include "host/interface/user_interface.h"

namespace qelm::embedded::adapter {

class NoDialogs : public host::Dialogs {
 public:
  explicit NoDialogs(EventLog& events) : events_(events) {}

  host::Id OpenDialog(std::string_view name) override {
    events_.Write("dialog", {{"name", name}, {"opened", false}});
    return host::kNone;
  }
  void CloseDialog(host::Id) override {}
  std::int32_t RunDialog(host::Id, std::int32_t) override { return 0; }
  std::int32_t ItemCount(host::Id) override { return 0; }
  void SetLabel(host::Id, std::int32_t, std::string_view) override {}
  std::string LabelOf(host::Id, std::int32_t) override { return {}; }
  void SetText(host::Id, std::int32_t, std::string_view) override {}
  std::string TextOf(host::Id, std::int32_t) override { return {}; }
  void SetValue(host::Id, std::int32_t, std::int32_t) override {}
  std::int32_t ValueOf(host::Id, std::int32_t) override { return 0; }
  void SetList(host::Id, std::int32_t, const std::vector<std::string>&) override {}
  void ShowItem(host::Id, std::int32_t, bool) override {}
  std::string ChooseFile(std::string_view title, const std::string&) override {
    events_.Write("file", {{"title", title}, {"chosen", nullptr}});
    return {};
  }

 private:
  EventLog& events_;
};

}  // namespace qelm::embedded::adapter
