#include "embedded/adapter/user_interface.h"

#include <istream>
#include <ostream>
#include <utility>

namespace qelm::embedded::adapter {
namespace {

constexpr std::string_view kClearLine = "\r\033[K";

// The lines of a status dialog as one line of text.
std::string OneLine(const host::Status& status) {
  std::string line;
  for (const std::string* part : {&status.title, &status.line1, &status.line2, &status.line3}) {
    if (part->find_first_not_of(" .") == std::string::npos) continue;
    if (!line.empty()) line += " - ";
    line += *part;
  }
  for (char& character : line) {
    if (character == '\n' || character == '\r') character = ' ';
  }
  return line;
}

}  // namespace

std::string_view ScriptedUserInterface::WithoutHeader(std::string_view text) const {
  if (!header_.empty() && text.starts_with(header_)) text.remove_prefix(header_.size());
  return text;
}

void ScriptedUserInterface::Note(std::string_view text) {
  text = WithoutHeader(text);
  alerts_.emplace_back(text);
  options_.events.Write("alert", {{"text", text}});
  if (options_.quiet) return;
  ClearLine();
  options_.messages << text << std::endl;
}

std::int32_t ScriptedUserInterface::Question(std::string_view text) {
  text = WithoutHeader(text);
  const Answer answer = Decide(text);
  const std::string_view word = answer.yes ? "yes" : "no";
  options_.events.Write("question", {{"text", text}, {"answer", word}, {"by", answer.by}});
  if (answer.by == "default" && !silent_) {
    ClearLine();
    options_.messages
        << "Nobody was there to answer this question; it was answered \"no\" (see --yes, --no and "
           "--answers):\n"
        << text << std::endl;
  }
  return answer.yes ? 0 : 1;
}

std::optional<bool> ScriptedUserInterface::Prepared(std::string_view text) const {
  if (const std::optional<bool> found = first_answers_.Find(text)) return found;
  return answers_.Find(text);
}

ScriptedUserInterface::Answer ScriptedUserInterface::Decide(std::string_view text) {
  const bool after_esc = std::exchange(esc_asked_, false);
  if (const std::optional<bool> found = Prepared(text)) return {*found, "file"};
  if (after_esc && (options_.answer || !options_.interactive)) return {true, "esc"};
  if (options_.answer) return {*options_.answer, "policy"};
  if (options_.interactive) {
    if (const std::optional<bool> answer = AskPerson(text)) return {*answer, "person"};
  }
  return {false, "default"};
}

bool ScriptedUserInterface::WouldAskPerson(std::string_view text) const {
  return options_.interactive && !options_.answer && !Prepared(WithoutHeader(text));
}

std::ostream& ScriptedUserInterface::Messages() {
  ClearLine();
  return options_.messages;
}

// Asks until the answer begins with y or n. Nothing when the input ends.
std::optional<bool> ScriptedUserInterface::AskPerson(std::string_view text) {
  ClearLine();
  options_.messages << text << '\n';
  std::string line;
  for (;;) {
    options_.messages << "[yes/no] " << std::flush;
    if (!std::getline(options_.in, line)) return std::nullopt;
    const std::size_t start = line.find_first_not_of(" \t");
    const char first = start == std::string::npos ? ' ' : line[start];
    if (first == 'y' || first == 'Y') return true;
    if (first == 'n' || first == 'N') return false;
  }
}

void ScriptedUserInterface::ShowStatus(const host::Status& status) {
  options_.events.Write("status",
                        {{"title", status.title}, {"lines", {status.line1, status.line2, status.line3}}});
  if (options_.progress != Progress::kNever) ShowLine(OneLine(status));
}

void ScriptedUserInterface::HideStatus() {
  ClearLine();
  status_line_.clear();
}

// A status is often set again with the same text; repeated lines would only fill the log of a build.
void ScriptedUserInterface::ShowLine(const std::string& line) {
  if (line == status_line_) return;
  status_line_ = line;
  if (options_.progress == Progress::kTerminal) {
    options_.messages << kClearLine << line << std::flush;
  } else if (!line.empty()) {
    options_.messages << line << std::endl;
  }
}

void ScriptedUserInterface::ClearLine() {
  if (options_.progress != Progress::kTerminal || status_line_.empty()) return;
  options_.messages << kClearLine << std::flush;
  status_line_.clear();
}

bool ScriptedUserInterface::EscPressed() {
  const bool pressed = options_.esc && options_.esc();
  if (pressed) {
    esc_asked_ = true;
    options_.events.Write("esc", nlohmann::ordered_json::object());
  }
  return pressed;
}

void ScriptedUserInterface::Print(std::string_view text) {
  options_.events.Write("console", {{"text", text}});
  if (silent_) return;
  ClearLine();
  std::ostream& stream = console_ != nullptr ? *console_ : options_.messages;
  stream << text << std::flush;
}

host::Id ScriptedUserInterface::DefineMenu(std::string_view name, std::string_view label) {
  items_.push_back({0, std::string(name), std::string(label), {}, true});
  return static_cast<host::Id>(items_.size());
}

host::Id ScriptedUserInterface::DefineCommand(std::int32_t number, std::string_view name,
                                              std::string_view label, std::string_view shortcut) {
  items_.push_back({number, std::string(name), std::string(label), std::string(shortcut), true});
  return static_cast<host::Id>(items_.size());
}

bool ScriptedUserInterface::AddToMenu(std::string_view menu, host::Id menu_or_command) {
  if (Item(menu_or_command) == nullptr) return false;
  entries_.push_back({std::string(menu), menu_or_command});
  return true;
}

bool ScriptedUserInterface::AddSeparator(std::string_view menu) {
  entries_.push_back({std::string(menu), host::kNone});
  return true;
}

bool ScriptedUserInterface::EnableCommand(host::Id command, bool enabled) {
  MenuItem* item = Item(command);
  if (item != nullptr) item->enabled = enabled;
  return item != nullptr;
}

MenuItem* ScriptedUserInterface::Item(host::Id id) {
  return id > 0 && id <= items_.size() ? &items_[id - 1] : nullptr;
}

}  // namespace qelm::embedded::adapter
