#include "embedded/adapter/answer_pattern.h"

#include <algorithm>

namespace qelm::embedded::adapter {
namespace {

// The matcher of the standard library needs stack in proportion to the text; questions are short, but names
// of a document's making stand in them.
constexpr std::size_t kLongestText = 2000;

// "/pattern/" and "/pattern/i". Nothing when the text is not written so.
std::optional<std::regex> ParseRegex(std::string_view text) {
  const std::size_t end = text.rfind('/');
  if (text.size() < 2 || text.front() != '/' || end == 0) return std::nullopt;
  const std::string_view flags = text.substr(end + 1);
  if (!flags.empty() && flags != "i") return std::nullopt;
  auto syntax = std::regex::ECMAScript | std::regex::nosubs;
#ifdef __GLIBCXX__
  // Never tries the same place twice, so no pattern can keep a run from ending; back references are refused.
  syntax |= std::regex_constants::__polynomial;
#endif
  if (!flags.empty()) syntax |= std::regex::icase;
  std::regex result;
  result.imbue(std::locale::classic());
  result.assign(std::string(text.substr(1, end - 1)), syntax);
  return result;
}

}  // namespace

std::string_view Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t\r");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

AnswerPattern::AnswerPattern(std::string_view text)
    : text_(text == "*" ? std::string_view() : text), regex_(ParseRegex(text)) {}

bool AnswerPattern::Fits(std::string_view text) const {
  if (Contained(text)) return true;
  if (text.find('\n') == std::string_view::npos) return false;
  std::string line(text);
  std::replace(line.begin(), line.end(), '\n', ' ');
  return Contained(line);
}

bool AnswerPattern::Contained(std::string_view text) const {
  if (!regex_) return text.find(text_) != std::string_view::npos;
  const std::string_view start = text.substr(0, kLongestText);
  try {
    return std::regex_search(start.begin(), start.end(), *regex_);
  } catch (const std::regex_error&) {  // gave up on a pattern that is too much work: it does not fit
    return false;
  }
}

}  // namespace qelm::embedded::adapter
