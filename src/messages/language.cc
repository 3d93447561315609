#include "messages/language.h"

#include <functional>
#include <optional>
#include <set>
#include <vector>

#include "common/text.h"
#include "common/utf8.h"

namespace qelm::messages {
namespace {

// One entry as it is read, and where it began.
struct Entry {
  std::optional<std::string> context;
  std::optional<std::string> id;
  std::optional<std::string> text;
  std::size_t line = 0;
  bool fuzzy = false;

  bool Empty() const { return !context && !id && !text; }
};

int HexDigit(char byte) {
  if (byte >= '0' && byte <= '9') return byte - '0';
  if (byte >= 'a' && byte <= 'f') return byte - 'a' + 10;
  if (byte >= 'A' && byte <= 'F') return byte - 'A' + 10;
  return -1;
}

// Reads a PO file line by line and hands on every entry that is complete.
class Reader {
 public:
  using Sink = std::function<void(const std::string& context, const std::string& id, std::string text)>;

  Reader(const Sink& sink, LanguageProblem* problem) : sink_(sink), problem_(problem) {}

  bool Read(std::string_view content) {
    for (const std::string_view line : common::SplitLines(content)) {
      ++line_;
      if (!ReadLine(common::Trim(line))) return false;
    }
    return Finish();
  }

 private:
  bool Fail(std::string text) { return FailAt(line_, std::move(text)); }
  bool FailAt(std::size_t line, std::string text) {
    if (problem_ != nullptr) *problem_ = {line, std::move(text)};
    return false;
  }

  bool ReadLine(std::string_view line) {
    if (line.empty()) return true;
    if (line.front() == '#') return ReadComment(line);
    if (line.front() == '"') {
      if (current_ == nullptr) return Fail("a text without a keyword before it");
      return ReadString(line, current_);
    }
    return ReadKeyword(line);
  }

  // Comments matter where they begin an entry: a flag before "msgid" belongs to what follows.
  bool ReadComment(std::string_view line) {
    if (entry_.text && !Finish()) return false;
    if (line.starts_with("#,") && line.find("fuzzy") != line.npos) entry_.fuzzy = true;
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
        target->push_back(line[at++]);
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

  // Hands on the entry that was read and begins the next.
  bool Finish() {
    Entry entry = std::move(entry_);
    entry_ = Entry{};
    current_ = nullptr;
    ignored_.clear();
    if (entry.Empty()) return true;
    if (!entry.id) return FailAt(entry.line, "an entry without \"msgid\"");
    if (!entry.text) return FailAt(entry.line, "an entry without \"msgstr\"");
    const std::string context = entry.context.value_or("");
    if (!seen_.emplace(context, *entry.id).second) {
      return FailAt(entry.line, "\"" + *entry.id + "\" is there twice");
    }
    if (!common::IsWellFormed(*entry.text)) {
      return FailAt(entry.line, "the text of \"" + *entry.id + "\" is not UTF-8");
    }
    if (entry.fuzzy || entry.text->empty() || entry.id->empty()) return true;
    sink_(context, *entry.id, std::move(*entry.text));
    return true;
  }

  const Sink& sink_;
  LanguageProblem* problem_;
  std::size_t line_ = 0;
  Entry entry_;
  std::string* current_ = nullptr;
  std::vector<std::string> ignored_;
  std::set<std::pair<std::string, std::string>> seen_;
};

}  // namespace

bool Language::Read(std::string_view content, LanguageProblem* problem) {
  decltype(texts_) texts;
  const Reader::Sink keep = [&texts](const std::string& context, const std::string& id, std::string text) {
    texts.emplace(Key(context, id), std::move(text));
  };
  if (!Reader(keep, problem).Read(common::DecodeTextFile(content))) return false;
  texts_.swap(texts);
  return true;
}

bool Language::ReadSection(std::string_view content, std::string_view section, LanguageProblem* problem) {
  Language all;
  if (!all.Read(content, problem)) return false;
  std::erase_if(texts_, [section](const auto& entry) { return entry.first.first == section; });
  for (auto& [key, text] : all.texts_) {
    if (key.first == section) texts_.emplace(key, std::move(text));
  }
  return true;
}

const std::string* Language::Find(std::string_view section, std::string_view id) const {
  const auto found = texts_.find(KeyView(section, id));
  return found == texts_.end() ? nullptr : &found->second;
}

}  // namespace qelm::messages
