#include "messages/language_file.h"

#include <optional>
#include <unordered_set>
#include <utility>

#include "common/text.h"
#include "common/utf8.h"

namespace qelm::messages {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kObsolete = "#~";

// One entry as it is read, and where it began.
struct Entry {
  std::optional<std::string> context;
  std::optional<std::string> id;
  std::optional<std::string> text;
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

// Reads a PO file line by line and cuts it into entries.
class Reader {
 public:
  Reader(std::string_view content, LanguageProblem* problem) : content_(content), problem_(problem) {}

  bool Read() {
    const std::vector<std::string_view> lines = common::SplitLines(content_);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      line_ = i + 1;
      line_end_ = i + 1 < lines.size() ? Offset(lines[i + 1]) : content_.size();
      if (!ReadLine(common::Trim(lines[i]))) return false;
    }
    return Finish();
  }

  std::vector<LanguageEntry> TakeEntries() { return std::move(entries_); }
  std::string_view Tail() const { return content_.substr(piece_); }

 private:
  std::size_t Offset(std::string_view line) const {
    return static_cast<std::size_t>(line.data() - content_.data());
  }
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
      current_ = &ignored_.emplace_back();
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
  bool ReadString(std::string_view line, std::string* target) {
    if (line.empty() || line.front() != '"') return Fail("a text in quotation marks is missing");
    std::size_t at = 1;
    while (at < line.size() && line[at] != '"') {
      if (line[at] != '\\') {
        const std::size_t begin = at;
        while (at < line.size() && line[at] != '"' && line[at] != '\\') ++at;
        target->append(line, begin, at - begin);
      } else if (!ReadEscape(line, &at, target)) {
        return false;
      }
    }
    if (at >= line.size()) return Fail("the text does not end with a quotation mark");
    if (at + 1 != line.size()) return Fail("something follows the text");
    return true;
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
    ignored_.clear();
  }

  // Keeps the entry that was read and begins the next.
  bool Finish() {
    Entry entry = std::move(entry_);
    Forget();
    if (entry.Empty()) return true;
    const bool complete = entry.id && entry.text;
    if (!complete && entry.obsolete) return true;
    if (!entry.id) return FailAt(entry.line, "an entry without \"msgid\"");
    if (!entry.text) return FailAt(entry.line, "an entry without \"msgstr\"");
    const std::string section = entry.context.value_or("");
    if (!entry.obsolete && !seen_.insert(section + '\0' + *entry.id).second) {
      return FailAt(entry.line, "\"" + *entry.id + "\" is there twice");
    }
    if (!entry.obsolete && !common::IsWellFormed(*entry.text)) {
      return FailAt(entry.line, "the text of \"" + *entry.id + "\" is not UTF-8");
    }
    entries_.push_back({.section = section,
                        .id = std::move(*entry.id),
                        .text = std::move(*entry.text),
                        .source = std::string(content_.substr(piece_, entry_end_ - piece_)),
                        .line = entry.line,
                        .fuzzy = entry.fuzzy,
                        .obsolete = entry.obsolete,
                        .to_translate = entry.to_translate});
    piece_ = entry_end_;
    return true;
  }

  std::string_view content_;
  LanguageProblem* problem_;
  std::size_t line_ = 0;
  std::size_t line_end_ = 0;   // where the line after this one begins
  std::size_t piece_ = 0;      // where the piece of the entry under way begins
  std::size_t entry_end_ = 0;  // where its last line ends
  Entry entry_;
  std::string* current_ = nullptr;
  std::vector<std::string> ignored_;
  std::unordered_set<std::string> seen_;  // sections and ids
  std::vector<LanguageEntry> entries_;
};

}  // namespace

bool LanguageFile::Read(std::string_view content, LanguageProblem* problem) {
  const std::string_view mark = content.starts_with(kByteOrderMark) ? kByteOrderMark : std::string_view();
  content.remove_prefix(mark.size());
  Reader reader(content, problem);
  if (!reader.Read()) return false;
  mark_ = mark;
  entries_ = reader.TakeEntries();
  tail_ = reader.Tail();
  const std::size_t end = content.find('\n');
  crlf_ = end != content.npos && end > 0 && content[end - 1] == '\r';
  return true;
}

std::string LanguageFile::Write() const {
  std::string content = mark_;
  for (const LanguageEntry& entry : entries_) {
    content += entry.source;
    const bool last = &entry == &entries_.back() && tail_.empty();
    if (!last && !content.empty() && content.back() != '\n' && content.back() != '\r') {
      content += LineEnd();
    }
  }
  return content + tail_;
}

LanguageIndex LanguageFile::Index(bool obsolete) const {
  LanguageIndex index;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (entries_[i].obsolete == obsolete) index.emplace(entries_[i].Key(), i);
  }
  return index;
}

std::vector<std::string_view> SourceLines(const LanguageEntry& entry) {
  return common::SplitLines(entry.source);
}

}  // namespace qelm::messages
