// The dialogs role over resource files: dialogs are read by name from the folder "dialogs" of the plug-in's
// folder and answered without a window.
//
// A dialog is answered, in this order, by the lines of the answers file that fit it, each once while it is
// shown; by "yes" (its default button) or "no" (its cancel button) for all; by a person where the session is
// interactive; and else with its cancel button, which is then said aloud. One that stays open though it was
// pressed goes on to the next of these, and is closed by its cancel button when there is none left, so that
// no dialog can hang. A message box is an alert or a question: without a line of its own it is answered as
// those are.
//
// Everything is recorded: the event "dialog" is what was shown, "dialog answer" what was set, which button
// was pressed, and by whom.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "embedded/adapter/dialog_state.h"
#include "embedded/adapter/user_interface.h"
#include "host/interface/platform.h"

namespace qelm::embedded::adapter {

class ResourceDialogs : public host::Dialogs {
 public:
  // The plug-in's entry for dialog events: number of the dialog, item, modifiers.
  using EventEntry = std::function<std::int32_t(std::int32_t, std::int32_t, std::int32_t)>;

  ResourceDialogs(ScriptedUserInterface& user, host::Platform& platform, EventLog& events)
      : user_(user), platform_(platform), events_(events) {}

  // Where the resources are, and where the events go. Until they are set there are no dialogs, and every
  // button closes its dialog.
  void SetFolder(std::string folder) { folder_ = std::move(folder); }
  void SetEventEntry(EventEntry entry) { entry_ = std::move(entry); }

  host::Id OpenDialog(std::string_view name) override;
  void CloseDialog(host::Id dialog) override;
  std::int32_t RunDialog(host::Id dialog, std::int32_t number) override;
  std::int32_t ItemCount(host::Id dialog) override;
  void SetLabel(host::Id dialog, std::int32_t item, std::string_view text) override;
  std::string LabelOf(host::Id dialog, std::int32_t item) override;
  void SetText(host::Id dialog, std::int32_t item, std::string_view text) override;
  std::string TextOf(host::Id dialog, std::int32_t item) override;
  void SetValue(host::Id dialog, std::int32_t item, std::int32_t value) override;
  std::int32_t ValueOf(host::Id dialog, std::int32_t item) override;
  void SetList(host::Id dialog, std::int32_t item, const std::vector<std::string>& lines) override;
  void ShowItem(host::Id dialog, std::int32_t item, bool shown) override;
  std::string ChooseFile(std::string_view title, const std::string& start) override;
  std::string ChooseFolder(std::string_view title, const std::string& start) override;

 private:
  // A button that was pressed, and who did it.
  struct Press {
    std::int32_t button = -1;
    std::string_view by;
  };
  // One showing of a dialog.
  struct Showing {
    DialogState& state;
    std::set<const DialogAnswer*> used_lines = {};
    bool for_all_used = false;
    nlohmann::ordered_json set = nlohmann::ordered_json::object();  // since the last press
  };

  const DialogResource* Resource(const std::string& name);
  void Refuse(const std::string& name, const std::string& problem);
  DialogState* Find(host::Id dialog);
  ItemState* FindItem(host::Id dialog, std::int32_t item);

  const DialogAnswer* NextLine(Showing& showing);
  Press NextPress(Showing& showing);
  Press PressByLine(Showing& showing, const DialogAnswer& line);
  Press PressForMessage(Showing& showing);
  Press PressByPerson(Showing& showing);
  Press PressNothing(Showing& showing);
  void Remember(Showing& showing, std::int32_t item);
  void RecordAnswer(Showing& showing, const Press& press, bool stays_open);
  std::int32_t SendEvent(const DialogState& dialog, std::int32_t item);
  std::string Choose(std::string_view what, std::string_view title, const std::string& start);
  std::string ChosenPath(std::string_view what, std::string_view title, const std::string& start,
                         std::string_view* by);

  ScriptedUserInterface& user_;
  host::Platform& platform_;
  EventLog& events_;
  EventEntry entry_;
  std::string folder_;
  std::map<std::string, std::unique_ptr<DialogResource>> resources_;  // null: damaged or missing
  std::map<host::Id, std::shared_ptr<DialogState>> open_;
  host::Id last_id_ = host::kNone;
};

}  // namespace qelm::embedded::adapter
