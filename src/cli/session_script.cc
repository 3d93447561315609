#include "cli/session_script.h"

#include <array>
#include <limits>

#include "cli/did_you_mean.h"
#include "common/text.h"

namespace qelm::cli {
namespace {

constexpr std::size_t kAny = std::numeric_limits<std::size_t>::max();

constexpr std::array kForms = {
    StepForm{"set", StepKind::kSet, 1, 1, true, "KEY=VALUE"},
    StepForm{"answer", StepKind::kAnswer, 1, 1, true, "LINE OF AN ANSWERS FILE"},
    StepForm{"copy", StepKind::kCopy, 2, 2, false, "FROM TO"},
    StepForm{"start", StepKind::kStart, 0, 0, false, ""},
    StepForm{"open", StepKind::kOpen, 1, 1, false, "FILE"},
    StepForm{"activate", StepKind::kActivate, 1, 1, false, "FILE"},
    StepForm{"select", StepKind::kSelect, 1, 1, true, "XPATH"},
    StepForm{"command", StepKind::kCommand, 1, 1, false, "NUMBER|NAME"},
    StepForm{"call", StepKind::kCall, 1, 1, true, "CALL STRING"},
    StepForm{"notify", StepKind::kNotify, 1, 3, false, "NUMBER [VALUE [TEXT]]"},
    StepForm{"set-attribute", StepKind::kSetAttribute, 1, kAny, false, "NAME [VALUE...]"},
    StepForm{"remove-attribute", StepKind::kRemoveAttribute, 1, 1, false, "NAME"},
    StepForm{"insert", StepKind::kInsert, 1, 1, false, "TAG"},
    StepForm{"retag", StepKind::kRetag, 1, 1, false, "TAG"},
    StepForm{"text", StepKind::kText, 1, 1, true, "TEXT"},
    StepForm{"delete", StepKind::kDelete, 0, 0, false, ""},
    StepForm{"edit-settings", StepKind::kEditSettings, 1, 1, true, "KEY=VALUE"},
    StepForm{"save", StepKind::kSave, 0, 1, false, "[FILE]"},
    StepForm{"close", StepKind::kClose, 0, 0, false, ""},
    StepForm{"end", StepKind::kEnd, 0, 0, false, ""},
    StepForm{"expect alert", StepKind::kExpectAlert, 1, 1, true, "TEXT"},
    StepForm{"expect no alert", StepKind::kExpectNoAlert, 0, 0, false, ""},
    StepForm{"expect question", StepKind::kExpectQuestion, 1, 1, true, "TEXT"},
    StepForm{"expect no question", StepKind::kExpectNoQuestion, 0, 0, false, ""},
    StepForm{"expect dialog", StepKind::kExpectDialog, 1, 1, true, "TEXT"},
    StepForm{"expect console", StepKind::kExpectConsole, 1, 1, true, "TEXT"},
    StepForm{"expect result", StepKind::kExpectResult, 1, 1, false, "NUMBER"},
    StepForm{"expect active", StepKind::kExpectActive, 1, 1, false, "FILE"},
    StepForm{"expect count", StepKind::kExpectCount, 2, 2, true, "NUMBER XPATH"},
    StepForm{"expect file", StepKind::kExpectFile, 1, 1, false, "FILE"},
    StepForm{"expect no file", StepKind::kExpectNoFile, 1, 1, false, "FILE"},
    StepForm{"expect text", StepKind::kExpectText, 2, 2, true, "FILE TEXT"},
};

bool IsBlank(char character) { return character == ' ' || character == '\t'; }

// What follows the words of a form, without blanks around; nothing when the line does not begin with them.
std::optional<std::string_view> BehindWords(std::string_view line, std::string_view words) {
  while (!words.empty()) {
    const std::size_t end = std::min(words.find(' '), words.size());
    if (!line.starts_with(words.substr(0, end))) return std::nullopt;
    line.remove_prefix(end);
    if (!line.empty() && !IsBlank(line.front())) return std::nullopt;
    line = common::Trim(line);
    words.remove_prefix(std::min(end + 1, words.size()));
  }
  return line;
}

// Takes one argument off the line. False when a quotation mark has no end.
bool TakeArgument(std::string_view* line, std::string* argument) {
  argument->clear();
  std::size_t at = 0;
  if (line->front() != '"') {
    while (at < line->size() && !IsBlank((*line)[at])) ++at;
    *argument = line->substr(0, at);
  } else {
    for (at = 1; at < line->size() && (*line)[at] != '"'; ++at) {
      if ((*line)[at] == '\\' && at + 1 < line->size()) ++at;
      argument->push_back((*line)[at]);
    }
    if (at >= line->size()) return false;
    ++at;
  }
  *line = common::Trim(line->substr(at));
  return true;
}

bool ParseArguments(std::string_view line, Step* step) {
  const StepForm& form = *step->form;
  std::string argument;
  while (!line.empty()) {
    if (form.rest_of_line && step->arguments.size() + 1 == form.most) {
      step->arguments.emplace_back(line);
      break;
    }
    if (!TakeArgument(&line, &argument)) return false;
    step->arguments.push_back(argument);
  }
  return step->arguments.size() >= form.least && step->arguments.size() <= form.most;
}

std::string UnknownStep(std::string_view line) {
  std::vector<std::string_view> words;
  for (const StepForm& form : kForms) words.push_back(form.words);
  const std::size_t end = line.find_first_of(" \t");
  const std::string_view word = line.substr(0, end);
  if (word == "expect") return "\"" + std::string(line) + "\" is nothing that can be expected";
  return "there is no step \"" + std::string(word) + "\"" +
         DidYouMean(word, std::span<const std::string_view>(words));
}

// False with `error` set when the line is no step.
bool ParseLine(std::string_view line, Step* step, std::string* error) {
  for (const StepForm& form : kForms) {
    const std::optional<std::string_view> rest = BehindWords(line, form.words);
    if (!rest) continue;
    step->form = &form;
    if (ParseArguments(*rest, step)) return true;
    *error = "expected: " + std::string(form.words);
    if (!form.usage.empty()) error->append(" ").append(form.usage);
    return false;
  }
  *error = UnknownStep(line);
  return false;
}

}  // namespace

std::optional<std::vector<Step>> ParseScript(std::string_view text, std::string* error) {
  std::vector<Step> steps;
  std::size_t number = 0;
  for (const std::string_view whole : common::SplitLines(text)) {
    ++number;
    const std::string_view line = common::Trim(whole);
    if (line.empty() || line.front() == '#') continue;
    Step step;
    step.line = number;
    step.text = line;
    if (!ParseLine(line, &step, error)) {
      *error = std::to_string(number) + ": " + *error;
      return std::nullopt;
    }
    steps.push_back(std::move(step));
  }
  return steps;
}

}  // namespace qelm::cli
