// Everything the plug-in says to its user, by message id: looking texts up in the current language, alerts
// and yes/no questions.
//
// A text that begins with "QELM_MSG", "QELM_ERR" or "XPATH_ERR" is an id and is replaced by its text in the
// section "General Strings" of the language file; any other text is shown as it stands. A missing text is
// never silent: a text that says so, with the id, takes its place.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "host/interface/platform.h"
#include "host/interface/user_interface.h"
#include "messages/format_text.h"
#include "messages/language.h"
#include "messages/open_dialogs.h"
#include "messages/placeholders.h"

namespace qelm::messages {

// Whether a text is a message id.
bool IsMessageId(std::string_view text);

class Messenger {
 public:
  // Without dialogs every alert and question is the host's own, whatever the settings say.
  Messenger(host::UserInterface& user, host::Platform& platform, host::Dialogs* dialogs = nullptr)
      : user_(user), platform_(platform), dialogs_(dialogs) {}

  // Makes `name` ("English") the current language, from the file `name`.po in `folder`. False when that file
  // cannot be read or is damaged; the language before stays.
  bool LoadLanguage(const std::string& folder, std::string_view name);
  bool LanguageActive() const { return active_; }
  // The name of the current language, and its file; and why the last LoadLanguage failed, with file and line.
  const std::string& LanguageName() const { return name_; }
  std::string LanguageFile() const;
  const std::string& LanguageProblemText() const { return problem_; }

  // The text of the id. The result is the one shared slot that the next call replaces: copy it or use it at
  // once.
  const std::string& Get(std::string_view id);

  // A visible text of the program, such as the label of a button, in the current language: what the section
  // has for the English text, and else the English text itself.
  std::string Translated(std::string_view section, std::string_view english) const;

  // The text of the id with its printf placeholders filled. A text whose placeholders do not fit the
  // arguments is returned as it stands.
  template <typename... Arguments>
  std::string Format(std::string_view id, const Arguments&... arguments) {
    return FormatText(Get(id), arguments...);
  }
  template <typename... Arguments>
  static std::string FormatText(std::string text, const Arguments&... arguments) {
    const std::array<FormatArgument, sizeof...(Arguments)> values{AsArgument(arguments)...};
    return FillPlaceholders(std::move(text), values);
  }

  // Shows or changes the status dialog, with each line translated through the section "Status".
  void ShowStatus(const host::Status& status);

  // Shows an id's text or a literal text as an alert, or asks it: Ask returns true for yes.
  void Alert(std::string_view id_or_text);
  bool Ask(std::string_view id_or_text);
  // The same for a text that was formatted from the message `id`, so that the id can still be shown with it.
  void AlertFormatted(std::string_view id, std::string_view text);
  bool AskFormatted(std::string_view id, std::string_view text);

  // From the local settings: debug prompts append the id to every text; alternate alerts use the plug-in's
  // own message box (message_box.h).
  void SetDebugPrompts(bool on) { debug_prompts_ = on; }
  void SetAlternateAlerts(bool on) { alternate_alerts_ = on; }
  bool DebugPrompts() const { return debug_prompts_; }

  host::UserInterface& User() { return user_; }
  // The host's dialogs, null where it has none, and those of the plug-in that are open.
  host::Dialogs* HostDialogs() { return dialogs_; }
  OpenDialogs& Open() { return open_; }
  host::Platform& Platform() { return platform_; }

 private:
  // The text of an id; when the current language lacks it, its file is read once more. Nothing when there is
  // none.
  std::optional<std::string_view> Find(std::string_view id);
  std::string Compose(std::string_view id, std::string_view body);

  host::UserInterface& user_;
  host::Platform& platform_;
  host::Dialogs* dialogs_;
  OpenDialogs open_;
  Language language_;
  std::string folder_;
  std::string name_;
  std::string problem_;
  std::string slot_;
  bool active_ = false;
  bool debug_prompts_ = false;
  bool alternate_alerts_ = false;
};

}  // namespace qelm::messages
