#include "common/strings.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "common/text.h"
#include "common/utf8.h"

namespace qelm::common {
namespace {

constexpr int kGuardSteps = 10000;

void Tell(const GuardSink& guard, std::string_view text) {
  if (guard) guard(text);
}

// Walks from occurrence to occurrence of marks in one text. It moves forward only and counts the characters
// that it passes, so that a whole scan costs one pass over the text, however many occurrences there are.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  // Moves to the byte offset, which is not before the last one, and returns the index of the character there.
  std::int32_t CharacterAt(std::size_t offset) {
    character_ += CountCharacters(text_.substr(offset_, offset - offset_));
    offset_ = offset;
    return static_cast<std::int32_t>(character_);
  }

 private:
  std::string_view text_;
  std::size_t offset_ = 0;
  std::size_t character_ = 0;
};

std::size_t NextCharacter(std::string_view text, std::size_t offset) {
  do {
    ++offset;
  } while (offset < text.size() && IsContinuation(text[offset]));
  return offset;
}

std::int32_t IndexOfExact(std::string_view text, std::string_view needle, std::int32_t start) {
  const auto first = static_cast<std::size_t>(std::max(start, 0));
  const std::size_t from = OffsetOfCharacter(text, first);
  // Past the end, OffsetOfCharacter stops at the end: tell that from a start that is the end itself.
  if (from == text.size() && first > CountCharacters(text)) return kNotFound;
  const std::size_t at = text.find(needle, from);
  if (at == text.npos) return kNotFound;
  return static_cast<std::int32_t>(first + CountCharacters(text.substr(from, at - from)));
}

std::int32_t LastIndexOfExact(std::string_view text, std::string_view needle, std::int32_t last,
                              const GuardSink& guard) {
  Scanner scanner(text);
  std::int32_t found = kNotFound;
  std::size_t from = 0;
  for (int steps = 0;; ++steps) {
    if (steps == kGuardSteps) {
      Tell(guard, "Endless loop in bw_StrRIndexOf! This is a critical error. Please contact Brenwick.");
      return kNotFound;
    }
    const std::size_t at = from > text.size() ? text.npos : text.find(needle, from);
    if (at == text.npos) return found;
    const std::int32_t position = scanner.CharacterAt(at);
    if (last > 0 && position > last) return found;
    found = position;
    from = NextCharacter(text, at);
  }
}

// The open marks of a scan and what it finally comes to.
class Clauses {
 public:
  void Open(std::int32_t position) { open_.push_back(position); }
  // False when there is nothing to close.
  bool Close() {
    if (open_.empty()) return false;
    open_.pop_back();
    return true;
  }
  void Toggle(std::int32_t position) {
    if (!Close()) Open(position);
  }
  std::int32_t Outermost() const { return open_.empty() ? kNotFound : open_.front(); }

 private:
  std::vector<std::int32_t> open_;
};

}  // namespace

bool EqualsIgnoreCase(std::string_view left, std::string_view right) {
  if (left == right) return true;
  if (IsAscii(left) && IsAscii(right)) {
    return left.size() == right.size() && AsciiLower(left) == AsciiLower(right);
  }
  return FoldCase(left) == FoldCase(right);
}

std::int32_t IndexOf(std::string_view text, std::string_view needle, std::int32_t start,
                     bool case_sensitive) {
  if (case_sensitive) return IndexOfExact(text, needle, start);
  return IndexOfExact(FoldCase(text), FoldCase(needle), start);
}

std::int32_t bw_StrRIndexOf(std::string_view text, std::string_view needle, std::int32_t last,
                            bool case_sensitive, const GuardSink& guard) {
  if (case_sensitive) return LastIndexOfExact(text, needle, last, guard);
  return LastIndexOfExact(FoldCase(text), FoldCase(needle), last, guard);
}

bool StartsWith(std::string_view text, std::string_view prefix, bool case_sensitive) {
  if (text.empty() || prefix.empty()) return false;
  if (case_sensitive) return text.starts_with(prefix);
  return EqualsIgnoreCase(FirstCharacters(text, CountCharacters(prefix)), prefix);
}

std::int32_t ClausesAreTerminated(std::string_view text, std::string_view opening, std::string_view closing,
                                  const GuardSink& guard) {
  if (text.empty() || opening.empty() || closing.empty()) return kNotFound;
  const bool same = opening == closing;
  Scanner scanner(text);
  Clauses clauses;
  std::size_t open_at = text.find(opening);
  std::size_t close_at = same ? text.npos : text.find(closing);
  for (int steps = 0; open_at != text.npos || close_at != text.npos; ++steps) {
    const bool opens = open_at < close_at;
    const std::size_t at = opens ? open_at : close_at;
    const std::int32_t position = scanner.CharacterAt(at);
    if (steps == kGuardSteps) {
      Tell(
          guard,
          "Brenwick plugin error:\n\nEndless loop in bw_StrClausesAreTerminated()... This is critical error, "
          "please contact Brenwick");
      return position;
    }
    if (same) {
      clauses.Toggle(position);
    } else if (opens) {
      clauses.Open(position);
    } else if (!clauses.Close()) {
      return position;
    }
    const std::size_t from = at + (opens ? opening.size() : closing.size());
    if (open_at < from) open_at = text.find(opening, from);
    if (close_at < from) close_at = text.find(closing, from);
  }
  return clauses.Outermost();
}

void Truncate(std::string& text, std::int32_t keep, std::int32_t cut_from_end) {
  if (cut_from_end >= 0) {
    keep = static_cast<std::int32_t>(CountCharacters(text)) - cut_from_end;
  }
  Bound(text, static_cast<std::size_t>(std::max(keep, 0)));
}

void RemoveFirst(std::string& text, std::int32_t count) {
  if (count > 0) text.erase(0, OffsetOfCharacter(text, static_cast<std::size_t>(count)));
}

void bw_XOutLiterals(std::string& text, std::string_view filler, bool single_quotes, bool double_quotes,
                     const GuardSink& guard) {
  if ((!single_quotes && !double_quotes) || CountCharacters(filler) != 1) return;
  const std::string_view marks = single_quotes && double_quotes ? "'\"" : single_quotes ? "'" : "\"";
  std::string result;
  result.reserve(text.size());
  std::size_t done = 0;
  for (int literals = 0;; ++literals) {
    const std::size_t opening = text.find_first_of(marks, done);
    if (opening == text.npos) break;
    if (literals == kGuardSteps) {
      Tell(guard,
           "Endless loop in bw_XOutLiterals()! This is a critical error... Please report it to Brenwick.");
      break;
    }
    // In damaged text, stray bytes behind a mark belong to the mark's character.
    const std::size_t begin = NextCharacter(text, opening);
    const std::size_t closing = std::min(text.find(text[opening], begin), text.size());
    result.append(text, done, begin - done);
    const std::string_view inside = std::string_view(text).substr(begin, closing - begin);
    for (std::size_t left = CountCharacters(inside); left > 0; --left) result.append(filler);
    if (closing < text.size()) result.push_back(text[closing]);
    done = std::min(closing + 1, text.size());
  }
  text = result.append(text, done);
}

std::string_view QuoteCharacter(std::int32_t code) {
  switch (code) {
    case 1:
      return "\u201C";
    case 2:
      return "\u201D";
    case 3:
      return "\u2018";
    case 4:
      return "\u2019";
    case 5:
      return "\"";
    case 6:
      return "'";
    default:
      return {};
  }
}

}  // namespace qelm::common
