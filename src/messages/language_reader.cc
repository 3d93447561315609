#include "messages/language_reader.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "common/text.h"
#include "common/utf8.h"
#include "messages/language_file.h"

namespace qelm::messages {
namespace {

constexpr std::string_view kObsolete = "#~";

// One entry as it is read, and where it began.
struct Entry {
  std::optional<std::string_view> context;
  std::optional<std::string_view> id;
  std::optional<std::string_view> text;
  std::size_t line = 0;
  bool fuzzy = false;
  bool obsolete = false;
  bool to_translate = false;

  bool Empty() const { return !context && !id && !text; }
};

int HexDigit(char byte) {
  if (byte >= '0' && byte <= '9') return byte - '0';
  if (byte >= 'a' && byte <= 'f') return byte - 'a' + 10;
  if (byte >= 'A' && byte <= 'F') return byte - 'A' + 10;
  return -1;
}

// The first place from `at` on that does not stand for itself in a string. Each of the two bytes that do not
// is looked for in a piece at a time: there may be many of the one.
std::size_t EndOfPlain(std::string_view line, std::size_t at) {
  constexpr std::size_t kPiece = 256;
  for (; at < line.size(); at += kPiece) {
    const std::string_view piece = line.substr(at, kPiece);
    const std::size_t end = std::min(piece.find('"'), piece.find('\\'));
    if (end != piece.npos) return at + end;
  }
  return line.size();
}

bool EndsKeyword(char byte) { return byte == ' ' || byte == '"' || byte == '\t'; }

// Reads a PO file line by line and cuts it into entries.
class Reader {
 public:
  Reader(std::string_view content, ReadLanguage* read, LanguageProblem* problem)
      : content_(content), read_(*read), problem_(problem) {}

  bool Read() {
    constexpr std::size_t kBytesOfEntry = 80;  // about
    read_.entries.reserve(content_.size() / kBytesOfEntry);
    read_.index.reserve(content_.size() / kBytesOfEntry);
    read_.joined.Reserve(content_.size());  // no byte of a file makes more than one
    for (common::LineCutter lines(content_); !lines.Rest().empty();) {
      const std::string_view line = lines.Take();
      ++line_;
      line_end_ = content_.size() - lines.Rest().size();
      if (!ReadLine(common::Trim(line))) return false;
    }
    if (!Finish()) return false;
    read_.tail = content_.substr(piece_);
    return true;
  }

 private:
  bool Fail(std::string text) { return FailAt(line_, std::move(text)); }
  bool FailAt(std::size_t line, std::string text) {
    if (problem_ != nullptr) *problem_ = {line, std::move(text)};
    return false;
  }

  bool ReadLine(std::string_view line) {
    if (line.empty()) return true;
    if (line.starts_with(kObsolete)) return ReadObsolete(common::Trim(line.substr(kObsolete.size())));
    if (line.front() == '#') return ReadComment(line);
    if (entry_.obsolete && !Finish()) return false;
    return ReadContent(line);
  }

  // A line of an entry itself.
  bool ReadContent(std::string_view line) {
    if (line.front() != '"') {
      if (!ReadKeyword(line)) return false;
    } else if (current_ == nullptr) {
      return Fail("a text without a keyword before it");
    } else if (!ReadString(line, current_)) {
      return false;
    }
    entry_end_ = line_end_;
    return true;
  }

  // Comments matter where they begin an entry: a flag before "msgid" belongs to what follows.
  bool ReadComment(std::string_view line) {
    if ((entry_.text || entry_.obsolete) && !Finish()) return false;
    if (line.starts_with("#,") && line.find("fuzzy") != line.npos) entry_.fuzzy = true;
    if (line.starts_with(kNotTranslatedYet)) entry_.to_translate = true;
    return true;
  }

  // What is commented out is read as an entry when it is one; nothing in it makes the file a damaged one.
  bool ReadObsolete(std::string_view line) {
    if (!entry_.obsolete && entry_.text && !Finish()) return false;
    if (!entry_.obsolete && !entry_.Empty()) return true;
    if (line.empty() || line.front() == '|') return true;
    LanguageProblem* const problem = std::exchange(problem_, nullptr);
    const bool understood = ReadContent(line);
    problem_ = problem;
    if (understood) {
      entry_.obsolete = true;
    } else {
      Forget();
    }
    return true;
  }

  bool ReadKeyword(std::string_view line) {
    const auto end =
        static_cast<std::size_t>(std::find_if(line.begin(), line.end(), EndsKeyword) - line.begin());
    const std::string_view keyword = line.substr(0, end);
    if ((keyword == "msgctxt" || keyword == "msgid") && entry_.text && !Finish()) return false;
    if (entry_.Empty()) entry_.line = line_;
    if (keyword == "msgctxt") {
      if (entry_.context || entry_.id) return Fail("\"msgctxt\" must be the first of an entry, once");
      current_ = &entry_.context.emplace();
    } else if (keyword == "msgid") {
      if (entry_.id) return Fail("\"msgid\" twice in one entry, \"msgstr\" is missing");
      current_ = &entry_.id.emplace();
    } else if (keyword == "msgid_plural" || (keyword.starts_with("msgstr[") && entry_.text)) {
      if (!entry_.id) return Fail("\"" + std::string(keyword) + "\" without a \"msgid\" before it");
      current_ = &ignored_.emplace();
    } else if (keyword == "msgstr" || keyword == "msgstr[0]") {
      if (!entry_.id) return Fail("\"msgstr\" without a \"msgid\" before it");
      if (entry_.text) return Fail("\"msgstr\" twice in one entry");
      current_ = &entry_.text.emplace();
    } else {
      return Fail("\"" + std::string(keyword) + "\" is no keyword of a language file");
    }
    return ReadString(common::Trim(line.substr(end)), current_);
  }

  // Appends the quoted text, which is all of `line`, to `target`.
  bool ReadString(std::string_view line, std::string_view* target) {
    if (line.empty() || line.front() != '"') return Fail("a text in quotation marks is missing");
    line.remove_prefix(1);
    std::size_t at = EndOfPlain(line, 0);
    if (target->empty() && at + 1 == line.size() && line[at] == '"') {
      *target = line.substr(0, at);
      return true;
    }
    read_.joined.Append(line.substr(0, at), target);
    while (at < line.size() && line[at] != '"') {
      char byte = 0;
      if (!ReadEscape(line, &at, &byte)) return false;
      read_.joined.Append({&byte, 1}, target);
      const std::size_t end = EndOfPlain(line, at);
      read_.joined.Append(line.substr(at, end - at), target);
      at = end;
    }
    if (at >= line.size()) return Fail("the text does not end with a quotation mark");
    return at + 1 == line.size() || Fail("something follows the text");
  }

  bool ReadEscape(std::string_view line, std::size_t* at, char* byte) {
    static constexpr std::string_view kLetters = "ntrabfv\"\\'?";
    static constexpr std::string_view kMeanings = "\n\t\r\a\b\f\v\"\\'?";
    if (*at + 1 >= line.size()) return Fail("the text ends with a backslash");
    const char letter = line[*at + 1];
    *at += 2;
    if (const std::size_t index = kLetters.find(letter); index != kLetters.npos) {
      *byte = kMeanings[index];
      return true;
    }
    const bool hex = letter == 'x';
    if (!hex && (letter < '0' || letter > '7')) {
      return Fail(std::string("\"\\") + letter + "\" is no escape");
    }
    if (!hex) --*at;
    const int base = hex ? 16 : 8;
    const std::size_t limit = *at + (hex ? 2 : 3);
    int value = 0;
    std::size_t digits = 0;
    for (; *at < line.size() && *at < limit; ++*at, ++digits) {
      const int digit = HexDigit(line[*at]);
      if (digit < 0 || digit >= base) break;
      value = value * base + digit;
    }
    if (digits == 0 || value > 0xFF) return Fail("an escape that is no byte");
    *byte = static_cast<char>(value);
    return true;
  }

  // Forgets the entry under way: its lines belong to what follows.
  void Forget() {
    entry_ = Entry{};
    current_ = nullptr;
  }

  // Keeps the entry that was read and begins the next.
  bool Finish() {
    const Entry entry = entry_;
    Forget();
    if (entry.Empty()) return true;
    const bool complete = entry.id && entry.text;
    if (!complete && entry.obsolete) return true;
    if (!entry.id) return FailAt(entry.line, "an entry without \"msgid\"");
    if (!entry.text) return FailAt(entry.line, "an entry without \"msgstr\"");
    const LanguageKey key(entry.context.value_or(std::string_view()), *entry.id);
    if (!entry.obsolete && !read_.index.emplace(key, read_.entries.size()).second) {
      return FailAt(entry.line, "\"" + std::string(key.second) + "\" is there twice");
    }
    if (!entry.obsolete && !common::IsWellFormed(*entry.text)) {
      return FailAt(entry.line, "the text of \"" + std::string(key.second) + "\" is not UTF-8");
    }
    read_.entries.push_back({.key = key,
                             .text = *entry.text,
                             .source = content_.substr(piece_, entry_end_ - piece_),
                             .line = entry.line,
                             .fuzzy = entry.fuzzy,
                             .obsolete = entry.obsolete,
                             .to_translate = entry.to_translate});
    piece_ = entry_end_;
    return true;
  }

  std::string_view content_;
  ReadLanguage& read_;
  LanguageProblem* problem_;
  std::size_t line_ = 0;
  std::size_t line_end_ = 0;   // where the line after this one begins
  std::size_t piece_ = 0;      // where the piece of the entry under way begins
  std::size_t entry_end_ = 0;  // where its last line ends
  Entry entry_;
  std::string_view* current_ = nullptr;
  std::optional<std::string_view> ignored_;
};

}  // namespace

void JoinedTexts::Reserve(std::size_t bytes) {
  memory_ = std::make_unique_for_overwrite<char[]>(bytes);
  end_ = memory_.get();
}

void JoinedTexts::Append(std::string_view piece, std::string_view* text) {
  const bool is_last = !text->empty() && text->data() + text->size() == end_;
  const char* const begin = is_last ? text->data() : end_;
  if (!is_last) Put(*text);
  Put(piece);
  *text = {begin, static_cast<std::size_t>(end_ - begin)};
}

void JoinedTexts::Put(std::string_view piece) { end_ = std::copy(piece.begin(), piece.end(), end_); }

bool ReadEntries(std::string_view content, ReadLanguage* read, LanguageProblem* problem) {
  return Reader(content, read, problem).Read();
}

}  // namespace qelm::messages
