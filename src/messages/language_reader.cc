#include "messages/language_reader.h"

#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>

#include "common/text.h"
#include "common/utf8.h"
#include "messages/language_file.h"

namespace qelm::messages {
namespace {

constexpr std::string_view kObsolete = "#~";

// A text that is read piece by piece.
struct Text {
  std::string_view view;
  std::string* joined = nullptr;  // its pieces, where there are several
};

// One entry as it is read, and where it began.
struct Entry {
  std::optional<Text> context;
  std::optional<Text> id;
  std::optional<Text> text;
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

constexpr std::uint64_t kEachByte = 0x0101010101010101U;

// Whether one of the eight bytes is this one: it alone makes a byte zero that borrows when one is taken away.
bool HasByte(std::uint64_t word, char byte) {
  word ^= kEachByte * static_cast<unsigned char>(byte);
  return ((word - kEachByte) & ~word & (kEachByte << 7)) != 0;
}

// The first place from `at` on that does not stand for itself in a string. Texts are most of the file, so it
// takes eight bytes at a time.
std::size_t EndOfPlain(std::string_view line, std::size_t at) {
  for (std::uint64_t word = 0; at + sizeof word <= line.size(); at += sizeof word) {
    std::memcpy(&word, line.data() + at, sizeof word);
    if (HasByte(word, '"') || HasByte(word, '\\')) break;
  }
  while (at < line.size() && line[at] != '"' && line[at] != '\\') ++at;
  return at;
}

// Reads a PO file line by line and cuts it into entries.
class Reader {
 public:
  Reader(std::string_view content, ReadLanguage* read, LanguageProblem* problem)
      : content_(content), read_(*read), problem_(problem) {}

  bool Read() {
    constexpr std::size_t kBytesOfEntry = 80;  // about
    read_.entries.reserve(content_.size() / kBytesOfEntry);
    read_.index.reserve(content_.size() / kBytesOfEntry);
    for (std::string_view rest = content_; !rest.empty();) {
      const std::string_view line = common::TakeLine(&rest);
      ++line_;
      line_end_ = content_.size() - rest.size();
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
    const std::size_t end = line.find_first_of(" \t\"");
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
    if (end == line.npos) return Fail("a text in quotation marks is missing");
    return ReadString(common::Trim(line.substr(end)), current_);
  }

  // Appends the quoted text, which is all of `line`, to `target`.
  bool ReadString(std::string_view line, Text* target) {
    if (line.empty() || line.front() != '"') return Fail("a text in quotation marks is missing");
    line.remove_prefix(1);
    std::size_t at = EndOfPlain(line, 0);
    if (at + 1 == line.size() && line[at] == '"') {
      Append(line.substr(0, at), target);
      return true;
    }
    std::string text(line.substr(0, at));
    while (at < line.size() && line[at] != '"') {
      if (!ReadEscape(line, &at, &text)) return false;
      const std::size_t end = EndOfPlain(line, at);
      text.append(line, at, end - at);
      at = end;
    }
    if (at >= line.size()) return Fail("the text does not end with a quotation mark");
    if (at + 1 != line.size()) return Fail("something follows the text");
    Append(read_.joined.emplace_back(std::move(text)), target);
    return true;
  }

  // Appends a piece, which stays where it is.
  void Append(std::string_view piece, Text* target) {
    if (target->view.empty()) {
      target->view = piece;
    } else if (!piece.empty()) {
      if (target->joined == nullptr) target->joined = &read_.joined.emplace_back(target->view);
      target->view = target->joined->append(piece);
    }
  }

  bool ReadEscape(std::string_view line, std::size_t* at, std::string* target) {
    static constexpr std::string_view kLetters = "ntrabfv\"\\'?";
    static constexpr std::string_view kMeanings = "\n\t\r\a\b\f\v\"\\'?";
    if (*at + 1 >= line.size()) return Fail("the text ends with a backslash");
    const char letter = line[*at + 1];
    *at += 2;
    if (const std::size_t index = kLetters.find(letter); index != kLetters.npos) {
      target->push_back(kMeanings[index]);
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
    target->push_back(static_cast<char>(value));
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
    const LanguageKey key(entry.context ? entry.context->view : std::string_view(), entry.id->view);
    const std::string_view text = entry.text->view;
    if (!entry.obsolete && !read_.index.emplace(key, read_.entries.size()).second) {
      return FailAt(entry.line, "\"" + std::string(key.second) + "\" is there twice");
    }
    if (!entry.obsolete && !common::IsWellFormed(text)) {
      return FailAt(entry.line, "the text of \"" + std::string(key.second) + "\" is not UTF-8");
    }
    read_.entries.push_back({.key = key,
                             .text = text,
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
  Text* current_ = nullptr;
  std::optional<Text> ignored_;
};

}  // namespace

bool ReadEntries(std::string_view content, ReadLanguage* read, LanguageProblem* problem) {
  return Reader(content, read, problem).Read();
}

}  // namespace qelm::messages
