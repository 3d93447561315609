// What the user sees and answers: alerts, questions, the status dialog, the console, menus, commands,
// dialogs. Whether a person, a policy or a script answers is the host's affair; nothing is answered silently.
#pragma once

#include "host/interface/types.h"

namespace qelm::host {

// Lines of the status dialog. An empty line shows nothing.
struct Status {
  std::string title;
  std::string line1;
  std::string line2;
  std::string line3;
};

class UserInterface {
 public:
  virtual ~UserInterface() = default;

  // A note with one button.
  virtual void Note(std::string_view text) = 0;
  // A question with Yes and No. Returns 0 for yes and 1 for no, as the host does.
  virtual std::int32_t Question(std::string_view text) = 0;

  // Shows or changes the status dialog, and takes it away.
  virtual void ShowStatus(const Status& status) = 0;
  virtual void HideStatus() = 0;

  // Whether the user has pressed Esc since the last call. Asking forgets it.
  virtual bool EscPressed() = 0;

  // Prints a text on the host's console, as it stands (line ends are part of it).
  virtual void Print(std::string_view text) = 0;

  // Defines a menu, or a command with its number (1 to 39 come back through the command entry), and adds one
  // to a menu of the host or of the plug-in. The ids hold for the session. 0 on failure.
  virtual Id DefineMenu(std::string_view name, std::string_view label) = 0;
  virtual Id DefineCommand(std::int32_t number, std::string_view name, std::string_view label,
                           std::string_view shortcut) = 0;
  virtual bool AddToMenu(std::string_view menu, Id menu_or_command) = 0;
  virtual bool AddSeparator(std::string_view menu) = 0;
  virtual bool EnableCommand(Id command, bool enabled) = 0;
};

// Stands for a dialog's title where the label of an item is meant.
inline constexpr std::int32_t kDialogTitle = -1;

// How items of an open dialog are set and read. Items are numbered from 0 in the order of the resource; a
// call for an item that a dialog does not have changes nothing and reads as empty, 0 or -1.
class Dialogs {
 public:
  virtual ~Dialogs() = default;

  // Opens a dialog resource by name, not yet shown. 0 when there is none of that name.
  virtual Id OpenDialog(std::string_view name) = 0;
  virtual void CloseDialog(Id dialog) = 0;

  // Runs the dialog under that number until it is closed; its events come to the dialog-event entry, where a
  // result of -10000 keeps it open. Returns the item that closed it.
  virtual std::int32_t RunDialog(Id dialog, std::int32_t number) = 0;

  // How many items the dialog has.
  virtual std::int32_t ItemCount(Id dialog) = 0;

  // The text that stands on or beside an item. A line of plain text is the label of its item.
  virtual void SetLabel(Id dialog, std::int32_t item, std::string_view text) = 0;
  virtual std::string LabelOf(Id dialog, std::int32_t item) = 0;
  // The text in an edit field.
  virtual void SetText(Id dialog, std::int32_t item, std::string_view text) = 0;
  virtual std::string TextOf(Id dialog, std::int32_t item) = 0;
  // A check box or radio button: 0 or 1. A list: the index of the selected line, -1 for none.
  virtual void SetValue(Id dialog, std::int32_t item, std::int32_t value) = 0;
  virtual std::int32_t ValueOf(Id dialog, std::int32_t item) = 0;
  virtual void SetList(Id dialog, std::int32_t item, const std::vector<std::string>& lines) = 0;
  virtual void ShowItem(Id dialog, std::int32_t item, bool shown) = 0;

  // Lets the user choose a file that exists, beginning at `start` (a file or a folder; empty: the host's own
  // choice). Returns its absolute path, empty when the user chose none.
  virtual std::string ChooseFile(std::string_view title, const std::string& start) = 0;
  // The same for a folder. A host without a way to choose one chooses none.
  virtual std::string ChooseFolder(std::string_view, const std::string&) { return {}; }
};

// Other clients of the host.
class Clients {
 public:
  virtual ~Clients() = default;

  // Sends a text to the client of that name. False when there is no such client.
  virtual bool Send(std::string_view client, std::string_view text) = 0;
  // The integer that the call under way returns to its caller.
  virtual void Return(std::int32_t value) = 0;
};

}  // namespace qelm::host
