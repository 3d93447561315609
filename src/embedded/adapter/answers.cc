#include "embedded/adapter/answers.h"

#include <algorithm>

namespace qelm::embedded::adapter {
std::optional<Answers> Answers::Parse(std::string_view text, std::string* error) {
  Answers answers;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (!answers.Add(text.substr(0, end), number, error)) {
      *error = "line " + std::to_string(number) + ": " + *error;
      return std::nullopt;
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return answers;
}

bool Answers::Add(std::string_view line, std::size_t number, std::string* error) {
  line = Trimmed(line);
  if (line.empty() || line.front() == '#') return true;
  try {
    if (DialogAnswers::IsMeant(line)) return dialogs_.Add(line, number, error);
    const std::size_t arrow = line.rfind("->");
    const std::string_view answer = arrow == std::string_view::npos ? "" : Trimmed(line.substr(arrow + 2));
    const std::string_view pattern = Trimmed(line.substr(0, std::min(arrow, line.size())));
    if (!pattern.empty() && (answer == "yes" || answer == "no")) {
      lines_.push_back({AnswerPattern(pattern), answer == "yes"});
      return true;
    }
    *error = "expected PATTERN -> yes or PATTERN -> no";
  } catch (const std::regex_error& problem) {
    *error = std::string("not a regular expression: ") + problem.what();
  }
  return false;
}

std::optional<bool> Answers::Find(std::string_view question) const {
  for (const Line& line : lines_) {
    if (line.pattern.Fits(question)) return line.yes;
  }
  return std::nullopt;
}

}  // namespace qelm::embedded::adapter
