#include "messages/messenger.h"

#include <algorithm>
#include <array>

#include "common/paths.h"
#include "messages/message_box.h"

namespace qelm::messages {
namespace {

constexpr std::array<std::string_view, 3> kIdMarkers = {"QELM_MSG", "QELM_ERR", "XPATH_ERR"};
constexpr std::string_view kHeaderId = "QELM_MSG_HEADER_1";
constexpr std::string_view kPlainHeader = "--> QELM message <--\n\n";
constexpr std::string_view kHeaderEnd = "\n\n";
constexpr std::string_view kMissingText =
    "MESSAGING ERROR: A message that should have appeared here could not be retrieved. See your User Guide "
    "and/or contact Brenwick for assistance. Message ID:";
constexpr std::string_view kIdNote = "\n\n--> MSG ID:";
constexpr std::string_view kAlertTitle = "QELM Alert";
// What the host answers to a question for yes.
constexpr std::int32_t kHostYes = 0;

}  // namespace

bool IsMessageId(std::string_view text) {
  return std::any_of(kIdMarkers.begin(), kIdMarkers.end(),
                     [text](std::string_view marker) { return text.starts_with(marker); });
}

std::string Messenger::LanguageFile() const { return common::JoinPath(folder_, name_ + ".po"); }

bool Messenger::LoadLanguage(const std::string& folder, std::string_view name) {
  const std::string path = common::JoinPath(folder, std::string(name) + ".po");
  const std::optional<std::string> content = platform_.ReadFile(path);
  LanguageProblem problem;
  if (!content) {
    problem_ = path + ": cannot be read";
    return false;
  }
  if (!language_.Read(*content, &problem)) {
    problem_ = path + ":" + std::to_string(problem.line) + ": " + problem.text;
    return false;
  }
  problem_.clear();
  folder_ = folder;
  name_ = name;
  active_ = true;
  return true;
}

std::optional<std::string_view> Messenger::Find(std::string_view id) {
  if (!active_) return std::nullopt;
  if (const auto text = language_.Find(kGeneralStrings, id)) return text;
  const std::optional<std::string> content = platform_.ReadFile(LanguageFile());
  if (!content || !language_.ReadSection(*content, kGeneralStrings, nullptr)) return std::nullopt;
  return language_.Find(kGeneralStrings, id);
}

const std::string& Messenger::Get(std::string_view id) {
  if (const auto text = Find(id)) {
    slot_ = *text;
    // gettext's tools take no text that ends with a line end when its id does not, so the blank line between
    // the header and what follows is put in here.
    if (id == kHeaderId && !slot_.ends_with('\n')) slot_ += kHeaderEnd;
  } else {
    slot_ = std::string(kMissingText).append(id);
  }
  return slot_;
}

void Messenger::ShowStatus(const host::Status& status) {
  user_.ShowStatus({Translated(kStatusTexts, status.title), Translated(kStatusTexts, status.line1),
                    Translated(kStatusTexts, status.line2), Translated(kStatusTexts, status.line3)});
}

std::string Messenger::Compose(std::string_view id, std::string_view body) {
  std::string text = Find(kHeaderId) ? Get(kHeaderId) : std::string(kPlainHeader);
  text.append(body);
  if (debug_prompts_) text.append(kIdNote).append(id);
  return text;
}

std::string Messenger::Translated(std::string_view section, std::string_view english) const {
  return std::string(language_.Find(section, english).value_or(english));
}

void Messenger::AlertFormatted(std::string_view id, std::string_view text) {
  const std::string composed = Compose(id, text);
  if (alternate_alerts_) {
    MessageBox(*this, {kAlertTitle, composed, "", BoxButtons::kOk});
  } else {
    user_.Note(composed);
  }
}

bool Messenger::AskFormatted(std::string_view id, std::string_view text) {
  const std::string composed = Compose(id, text);
  if (alternate_alerts_) return MessageBox(*this, {kAlertTitle, composed, "", BoxButtons::kYesNo}) == 1;
  return user_.Question(composed) == kHostYes;
}

void Messenger::Alert(std::string_view id_or_text) {
  AlertFormatted(id_or_text,
                 IsMessageId(id_or_text) ? std::string(Get(id_or_text)) : std::string(id_or_text));
}

bool Messenger::Ask(std::string_view id_or_text) {
  return AskFormatted(id_or_text,
                      IsMessageId(id_or_text) ? std::string(Get(id_or_text)) : std::string(id_or_text));
}

}  // namespace qelm::messages
