// The user interface role without a window: alerts and progress are lines, questions are answered by a policy
// or at a terminal, menus and commands are remembered. Everything shown and answered also goes into the event
// log.
//
// A question is answered, in this order, by the answers file; by "yes" or "no" for all; by a person where the
// session is interactive; and else with "no", which is then said aloud, as a run must not decide in silence.
// One question is different: the one that follows a press of Esc asks whether that was meant. Without a
// person or a prepared answer it was, or nobody could stop an unattended run.
#pragma once

#include <array>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "embedded/adapter/answers.h"
#include "embedded/adapter/events.h"
#include "host/interface/user_interface.h"

namespace qelm::embedded::adapter {

// One line of the plug-in's menus.
struct MenuEntry {
  std::string menu;             // the menu that it was added to
  host::Id item = host::kNone;  // a menu or a command; none for a separator
};

struct MenuItem {
  std::int32_t number = 0;  // 0 for a menu
  std::string name;
  std::string label;
  std::string shortcut;
  bool enabled = true;
};

class ScriptedUserInterface : public host::UserInterface {
 public:
  enum class Progress : std::uint8_t { kNever, kLines, kTerminal };

  struct Options {
    std::istream& in;
    std::ostream& messages;  // alerts, questions and progress
    EventLog& events;
    Progress progress = Progress::kNever;  // kTerminal writes one line over and over
    bool interactive = false;              // a person sits at `in` and `messages`
    bool quiet = false;                    // alerts are collected but not shown
    std::optional<bool> answer = {};       // answers every question
    std::function<bool()> esc = {};        // whether Esc was pressed since the last call
  };

  explicit ScriptedUserInterface(Options options) : options_(std::move(options)) {}

  void Note(std::string_view text) override;
  std::int32_t Question(std::string_view text) override;
  void ShowStatus(const host::Status& status) override;
  void HideStatus() override;
  bool EscPressed() override;
  void Print(std::string_view text) override;
  host::Id DefineMenu(std::string_view name, std::string_view label) override;
  host::Id DefineCommand(std::int32_t number, std::string_view name, std::string_view label,
                         std::string_view shortcut) override;
  bool AddToMenu(std::string_view menu, host::Id menu_or_command) override;
  bool AddSeparator(std::string_view menu) override;
  bool EnableCommand(host::Id command, bool enabled) override;

  // Prepared answers, and such that come before them for a while. Those for dialogs and files are used by the
  // dialogs role.
  void SetAnswers(Answers answers) { answers_ = std::move(answers); }
  void SetFirstAnswers(Answers answers) { first_answers_ = std::move(answers); }
  std::array<DialogAnswers*, 2> PreparedForDialogs() {
    return {&first_answers_.dialogs(), &answers_.dialogs()};
  }

  // What the dialogs role shares: whether a person is there, whether the person would be asked this question,
  // the answer for everything, and the streams. What is written begins on a line of its own.
  bool Interactive() const { return options_.interactive; }
  bool WouldAskPerson(std::string_view text) const;
  std::optional<bool> AnswerForAll() const { return options_.answer; }
  std::istream& In() { return options_.in; }
  std::ostream& Messages();
  // A text at the start of every alert and question that is not repeated when they are shown or collected.
  void SetHeader(std::string header) { header_ = std::move(header); }
  // Tells from now on whether Esc was pressed.
  void SetEsc(std::function<bool()> esc) { options_.esc = std::move(esc); }
  // Nobody is asked any more, also where a terminal is at hand.
  void SetUnattended() { options_.interactive = false; }
  // Nothing at all is written for people to see: whoever drives the session takes alerts and events. A stream
  // that nobody reads would bring everything to a halt.
  void SetSilent() { options_.quiet = silent_ = true; }
  // Alerts are collected, and from now on not shown, or shown again.
  void SetQuiet(bool quiet) { options_.quiet = quiet; }
  // Where console text goes; without a stream it is shown among the messages.
  void SetConsole(std::ostream* console) { console_ = console; }

  // The texts of all alerts so far, oldest first.
  const std::vector<std::string>& Alerts() const { return alerts_; }
  // The same; they are forgotten.
  std::vector<std::string> TakeAlerts() { return std::exchange(alerts_, {}); }
  // Menus and commands by id - 1, and where they were put, in the order in which they came.
  const std::vector<MenuItem>& Items() const { return items_; }
  const std::vector<MenuEntry>& Entries() const { return entries_; }

 private:
  struct Answer {
    bool yes;
    std::string_view by;
  };

  std::string_view WithoutHeader(std::string_view text) const;
  std::optional<bool> Prepared(std::string_view text) const;
  Answer Decide(std::string_view text);
  std::optional<bool> AskPerson(std::string_view text);
  void ShowLine(const std::string& line);
  void ClearLine();
  MenuItem* Item(host::Id id);

  Options options_;
  Answers first_answers_;
  Answers answers_;
  std::string header_;
  std::ostream* console_ = nullptr;
  std::vector<std::string> alerts_;
  std::vector<MenuItem> items_;
  std::vector<MenuEntry> entries_;
  std::string status_line_;
  bool esc_asked_ = false;
  bool silent_ = false;
};

}  // namespace qelm::embedded::adapter
