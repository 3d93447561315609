#include "common/text.h"

#include <algorithm>

#include "common/icu.h"
#include "common/utf8.h"

namespace qelm::common {
namespace {

constexpr std::string_view kNoBreakSpace = "\xC2\xA0";

bool IsWhiteSpace(char byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }

char LowerAscii(char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte; }

// Where the first line of the text ends. Each of the two ends is looked for in a piece at a time: there may
// be few of the one.
std::size_t EndOfLine(std::string_view text) {
  constexpr std::size_t kPiece = 128;
  for (std::size_t begin = 0; begin < text.size(); begin += kPiece) {
    std::string_view piece = text.substr(begin, kPiece);
    piece = piece.substr(0, piece.find('\n'));
    piece = piece.substr(0, piece.find('\r'));
    if (begin + piece.size() < text.size() && piece.size() < kPiece) return begin + piece.size();
  }
  return text.size();
}

}  // namespace

std::string_view Trim(std::string_view text) {
  while (!text.empty()) {
    if (IsWhiteSpace(text.front())) {
      text.remove_prefix(1);
    } else if (text.starts_with(kNoBreakSpace)) {
      text.remove_prefix(kNoBreakSpace.size());
    } else {
      break;
    }
  }
  while (!text.empty()) {
    if (IsWhiteSpace(text.back())) {
      text.remove_suffix(1);
    } else if (text.ends_with(kNoBreakSpace)) {
      text.remove_suffix(kNoBreakSpace.size());
    } else {
      break;
    }
  }
  return text;
}

void SplitAtSpaces(std::string_view text, std::vector<std::string_view>* pieces) {
  std::size_t begin = text.find_first_not_of(' ');
  while (begin != text.npos) {
    const std::size_t end = std::min(text.find(' ', begin), text.size());
    pieces->push_back(text.substr(begin, end - begin));
    begin = text.find_first_not_of(' ', end);
  }
}

std::string WithReason(std::string_view what, std::string_view why) {
  std::string text(what);
  if (!why.empty()) text.append(" (").append(why).append(")");
  return text;
}

std::string_view LineCutter::Take() {
  const std::size_t end = has_returns_ ? EndOfLine(rest_) : std::min(rest_.find('\n'), rest_.size());
  const std::string_view line = rest_.substr(0, end);
  const bool both = has_returns_ && rest_.substr(end).starts_with("\r\n");
  rest_.remove_prefix(std::min(end + (both ? 2 : 1), rest_.size()));
  return line;
}

std::vector<std::string_view> SplitLines(std::string_view text) {
  std::vector<std::string_view> lines;
  for (LineCutter cutter(text); !cutter.Rest().empty();) lines.push_back(cutter.Take());
  return lines;
}

std::string FoldCase(std::string_view text) {
  if (IsAscii(text)) return AsciiLower(text);
  const Icu& icu = TheIcu();
  std::string result;
  result.reserve(text.size());
  for (std::size_t offset = 0; offset < text.size();) {
    const std::size_t begin = offset;
    const char32_t code_point = DecodeCharacter(text, &offset);
    if (code_point == kReplacementCharacter) {
      // Damaged bytes stay as they are: two different ones must not become equal.
      result.append(text.substr(begin, offset - begin));
    } else {
      AppendCharacter(
          static_cast<char32_t>(icu.fold_case(static_cast<UChar32>(code_point), U_FOLD_CASE_DEFAULT)),
          &result);
    }
  }
  return result;
}

std::string AsciiLower(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), LowerAscii);
  return result;
}

bool ContainsIgnoreCase(std::string_view text, std::string_view part) {
  if (IsAscii(text) && IsAscii(part)) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [](char left, char right) { return LowerAscii(left) == LowerAscii(right); }) !=
               text.end() ||
           part.empty();
  }
  return FoldCase(text).find(FoldCase(part)) != std::string::npos;
}

std::string ReplaceAll(std::string_view text, std::string_view what, std::string_view with) {
  if (what.empty()) return std::string(text);
  std::string result;
  std::size_t begin = 0;
  for (std::size_t at = text.find(what); at != text.npos; at = text.find(what, begin)) {
    result.append(text.substr(begin, at - begin)).append(with);
    begin = at + what.size();
  }
  return result.append(text.substr(begin));
}

SwitchWord ReadSwitchWord(std::string_view text) {
  switch (text.empty() ? '\0' : LowerAscii(text.front())) {
    case 't':
    case 'y':
    case '1':
      return SwitchWord::kTrue;
    case 'f':
    case 'n':
    case '0':
      return SwitchWord::kFalse;
    default:
      return SwitchWord::kUnclear;
  }
}

}  // namespace qelm::common
