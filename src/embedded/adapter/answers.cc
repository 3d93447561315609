#include "embedded/adapter/answers.h"

#include <algorithm>

namespace qelm::embedded::adapter {
namespace {

// The matcher of the standard library needs stack in proportion to the text; questions are short, but names
// of a document's making stand in them.
constexpr std::size_t kLongestText = 2000;

std::string_view Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t\r");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

// "/pattern/" and "/pattern/i". Nothing when the text is not written so.
std::optional<std::regex> ParseRegex(std::string_view text) {
  const std::size_t end = text.rfind('/');
  if (text.size() < 2 || text.front() != '/' || end == 0) return std::nullopt;
  const std::string_view flags = text.substr(end + 1);
  if (!flags.empty() && flags != "i") return std::nullopt;
  auto syntax = std::regex::ECMAScript | std::regex::nosubs;
  if (!flags.empty()) syntax |= std::regex::icase;
  std::regex result;
  result.imbue(std::locale::classic());
  result.assign(std::string(text.substr(1, end - 1)), syntax);
  return result;
}

}  // namespace

std::optional<Answers> Answers::Parse(std::string_view text, std::string* error) {
  Answers answers;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = Trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.empty() || line.front() == '#') continue;
    const std::size_t arrow = line.rfind("->");
    const std::string_view answer = arrow == std::string_view::npos ? "" : Trimmed(line.substr(arrow + 2));
    const std::string_view pattern = Trimmed(line.substr(0, std::min(arrow, line.size())));
    if (pattern.empty() || (answer != "yes" && answer != "no")) {
      *error = "line " + std::to_string(number) + ": expected PATTERN -> yes or PATTERN -> no";
      return std::nullopt;
    }
    try {
      Line parsed{pattern == "*" ? std::string() : std::string(pattern), ParseRegex(pattern),
                  answer == "yes"};
      answers.lines_.push_back(std::move(parsed));
    } catch (const std::regex_error& problem) {
      *error = "line " + std::to_string(number) + ": not a regular expression: " + problem.what();
      return std::nullopt;
    }
  }
  return answers;
}

std::optional<bool> Answers::Find(std::string_view question) const {
  for (const Line& line : lines_) {
    if (line.regex) {
      const std::string_view start = question.substr(0, kLongestText);
      try {
        if (std::regex_search(start.begin(), start.end(), *line.regex)) return line.yes;
      } catch (const std::regex_error&) {  // gave up on a pattern that is too much work: it does not fit
      }
    } else if (question.find(line.text) != std::string_view::npos) {
      return line.yes;
    }
  }
  return std::nullopt;
}

}  // namespace qelm::embedded::adapter
