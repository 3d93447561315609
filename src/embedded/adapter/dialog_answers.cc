#include "embedded/adapter/dialog_answers.h"

namespace qelm::embedded::adapter {
namespace {

constexpr std::string_view kDialogForm = "expected dialog PATTERN: ITEM = VALUE, ..., press BUTTON";
constexpr std::string_view kFileForm = "expected file PATTERN -> PATH";
constexpr std::string_view kDialog = "dialog ";
constexpr std::string_view kFile = "file ";
constexpr std::string_view kOnce = "once ";
constexpr std::string_view kPress = "press ";
constexpr std::string_view kArrow = "->";

// Takes the word from the start of the text. False when the text does not begin with it.
bool Take(std::string_view word, std::string_view* text) {
  if (!text->starts_with(word)) return false;
  *text = Trimmed(text->substr(word.size()));
  return true;
}

// Takes the part up to the next comma that is not inside quotation marks.
std::string_view TakePart(std::string_view* text) {
  bool quoted = false;
  std::size_t end = 0;
  for (; end < text->size() && (quoted || (*text)[end] != ','); ++end) {
    if ((*text)[end] == '"') quoted = !quoted;
  }
  const std::string_view part = Trimmed(text->substr(0, end));
  *text = text->substr(std::min(end + 1, text->size()));
  return part;
}

// A value without its quotation marks. Nothing when they are not closed.
std::optional<std::string> Unquoted(std::string_view text) {
  if (!text.starts_with('"')) return std::string(text);
  if (text.size() < 2 || !text.ends_with('"')) return std::nullopt;
  std::string value;
  text = text.substr(1, text.size() - 2);
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '"' && (++at == text.size() || text[at] != '"')) return std::nullopt;
    value += text[at];
  }
  return value;
}

// The items and the button. False when they are not well-formed.
bool ParseUse(std::string_view text, DialogAnswer* answer) {
  while (!Trimmed(text).empty()) {
    std::string_view part = TakePart(&text);
    if (Take(kPress, &part)) {
      answer->button = part;
      return !part.empty() && Trimmed(text).empty();
    }
    const std::size_t equals = part.find('=');
    if (equals == std::string_view::npos || equals == 0) return false;
    std::optional<std::string> value = Unquoted(Trimmed(part.substr(equals + 1)));
    if (!value) return false;
    answer->values.emplace_back(Trimmed(part.substr(0, equals)), std::move(*value));
  }
  return false;
}

}  // namespace

// A question may begin with the same words; its line ends with an answer to a question.
bool DialogAnswers::IsMeant(std::string_view line) {
  Take(kOnce, &line);
  if (!line.starts_with(kDialog) && !line.starts_with(kFile)) return false;
  const std::size_t arrow = line.rfind(kArrow);
  if (arrow == std::string_view::npos) return true;
  const std::string_view answer = Trimmed(line.substr(arrow + kArrow.size()));
  return answer != "yes" && answer != "no";
}

bool DialogAnswers::Add(std::string_view line, std::size_t number, std::string* error) {
  const bool once = Take(kOnce, &line);
  if (Take(kDialog, &line)) {
    *error = kDialogForm;
    const std::size_t colon = line.find(": ");
    const std::string_view pattern = Trimmed(line.substr(0, colon));
    DialogAnswer answer{.line = number};
    if (colon == std::string_view::npos || pattern.empty() || !ParseUse(line.substr(colon + 1), &answer))
      return false;
    dialogs_.push_back({std::string(pattern), AnswerPattern(pattern), once, false, std::move(answer)});
    return true;
  }
  Take(kFile, &line);
  *error = kFileForm;
  const std::size_t arrow = line.rfind(kArrow);
  if (arrow == std::string_view::npos) return false;
  const std::string_view pattern = Trimmed(line.substr(0, arrow));
  const std::string_view path = Trimmed(line.substr(arrow + kArrow.size()));
  if (pattern.empty() || path.empty()) return false;
  files_.push_back({AnswerPattern(pattern), std::string(path), once, false});
  return true;
}

const DialogAnswer* DialogAnswers::Next(std::string_view name, std::string_view title, std::string_view words,
                                        std::set<const DialogAnswer*>* used) {
  for (ForDialog& line : dialogs_) {
    if (line.spent || used->contains(&line.answer)) continue;
    if (line.pattern_text != name && !line.pattern.Fits(title) && !line.pattern.Fits(words)) continue;
    line.spent = line.once;
    used->insert(&line.answer);
    return &line.answer;
  }
  return nullptr;
}

std::optional<std::string> DialogAnswers::NextFile(std::string_view title) {
  for (ForFile& line : files_) {
    if (line.spent || !line.pattern.Fits(title)) continue;
    line.spent = line.once;
    return line.path;
  }
  return std::nullopt;
}

}  // namespace qelm::embedded::adapter
