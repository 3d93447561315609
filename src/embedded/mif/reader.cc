#include "embedded/mif/reader.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace qelm::embedded::mif {
namespace {

constexpr std::array<bool, 256> MakeBlanks() {
  std::array<bool, 256> blanks{};
  for (const char c : {' ', '\n', '\r', '\t', '\f', '\v'}) blanks[static_cast<unsigned char>(c)] = true;
  return blanks;
}
constexpr std::array<bool, 256> kBlanks = MakeBlanks();

bool IsBlank(char c) { return kBlanks[static_cast<unsigned char>(c)]; }

// What ends a statement's name.
constexpr std::array<bool, 256> MakeNameEnds() {
  std::array<bool, 256> ends{};
  for (const char c : {' ', '\n', '\r', '\t', '\f', '\v', '<', '>', '`', '\'', '#'}) {
    ends[static_cast<unsigned char>(c)] = true;
  }
  return ends;
}
constexpr std::array<bool, 256> kNameEnds = MakeNameEnds();

bool StartsAt(std::string_view bytes, std::size_t at, std::string_view word) {
  return bytes.substr(at, word.size()) == word;
}

}  // namespace

// Where a statement that only stands at the top level was seen inside a group, a bracket went missing before
// it, and that is the place to name, wherever reading then came to grief.
bool Reader::Fail(const char* message, std::uint32_t offset) {
  error_.message = message;
  error_.offset = offset;
  if (suspicion_.message != nullptr) error_ = suspicion_;
  at_ = bytes_.size();
  return false;
}

bool Reader::FailOpen() {
  error_.opened_at = open_.back().begin;
  error_.opened = open_.back().token;
  return Fail("expected '>' before the end of the file", static_cast<std::uint32_t>(bytes_.size()));
}

void Reader::NoteTopLevel() {
  if (open_.empty() || suspicion_.message != nullptr || !IsTopLevelOnly(token_)) return;
  if (begin_ == 0 || bytes_[begin_ - 1] != '\n') return;
  suspicion_ = {"expected '>' before a statement of the top level", begin_, open_.back().begin,
                open_.back().token, token_};
}

// Passes over blanks, comments and image data. False at the end of the bytes.
bool Reader::SkipBlank() {
  const char* const data = bytes_.data();
  const std::size_t size = bytes_.size();
  // A third of a file are the blanks that indent it.
  for (std::size_t at = at_;;) {
    while (at < size && IsBlank(data[at])) ++at;
    at_ = at;
    if (at == size) return false;
    const char c = data[at];
    if (c == '<' || c == '>') return true;
    const bool line_start = at == 0 || data[at - 1] == '\n' || data[at - 1] == '\r';
    if (c != '#' && !(line_start && (c == '=' || c == '&'))) return true;
    const void* const end = std::memchr(data + at, '\n', size - at);
    at = end == nullptr ? size : static_cast<std::size_t>(static_cast<const char*>(end) - data) + 1;
  }
}

// At a backtick: goes behind the closing apostrophe.
bool Reader::SkipString() {
  const void* const end = std::memchr(bytes_.data() + at_, '\'', bytes_.size() - at_);
  if (end == nullptr) {
    error_.opened_at = static_cast<std::uint32_t>(at_);
    return Fail("expected an apostrophe that ends the string", static_cast<std::uint32_t>(bytes_.size()));
  }
  at_ = static_cast<std::size_t>(static_cast<const char*>(end) - bytes_.data()) + 1;
  return true;
}

// Goes to the `>` that closes a leaf. A statement nested behind other data belongs to the data.
bool Reader::SkipLeafData() {
  std::size_t nested = 0;
  while (at_ < bytes_.size()) {
    const char c = bytes_[at_];
    if (c == '>') {
      if (nested == 0) return true;
      --nested;
      ++at_;
    } else if (c == '`' && token_ != Token::kComment) {
      if (!SkipString()) return false;
    } else if (c == '<') {
      ++nested;
      ++at_;
    } else if (c == '#') {
      const std::size_t end = bytes_.find('\n', at_);
      at_ = end == std::string_view::npos ? bytes_.size() : end;
    } else {
      ++at_;
    }
  }
  error_.opened_at = begin_;
  error_.opened = token_;
  return Fail("expected '>' before the end of the file", static_cast<std::uint32_t>(bytes_.size()));
}

// `define (Name, replacement)` and `include (path)`: the only things outside brackets.
bool Reader::ReadDirective() {
  const std::size_t start = at_;
  const bool is_define = StartsAt(bytes_, at_, "define");
  if (!is_define && !StartsAt(bytes_, at_, "include")) {
    if (open_.empty()) {
      // Bytes between top-level statements mean nothing: files end in a stray dot, in zeros, in Ctrl-Z.
      ++at_;
      return true;
    }
    return Fail("expected a statement that begins with '<'", static_cast<std::uint32_t>(at_));
  }
  at_ += is_define ? 6 : 7;
  while (at_ < bytes_.size() && IsBlank(bytes_[at_])) ++at_;
  if (at_ >= bytes_.size() || bytes_[at_] != '(') {
    return Fail("expected '(' after a directive", static_cast<std::uint32_t>(at_));
  }
  const std::size_t inside = ++at_;
  std::size_t nested = 0;
  for (; at_ < bytes_.size(); ++at_) {
    const char c = bytes_[at_];
    if (c == '`') {
      if (!SkipString()) return false;
      --at_;
    } else if (c == '(') {
      ++nested;
    } else if (c == ')') {
      if (nested == 0) break;
      --nested;
    }
  }
  if (at_ >= bytes_.size()) {
    error_.opened_at = static_cast<std::uint32_t>(start);
    return Fail("expected ')' that ends a directive", static_cast<std::uint32_t>(at_));
  }
  const std::string_view body = bytes_.substr(inside, at_ - inside);
  ++at_;
  const std::size_t comma = body.find(',');
  if (is_define && comma != std::string_view::npos) {
    std::string_view name = body.substr(0, comma);
    while (!name.empty() && IsBlank(name.front())) name.remove_prefix(1);
    while (!name.empty() && IsBlank(name.back())) name.remove_suffix(1);
    macros_.push_back({name, body.substr(comma + 1)});
  }
  return true;
}

bool Reader::NextOfAnyForm() {
  for (;;) {
    if (!SkipBlank()) {
      if (!open_.empty() && !Failed()) return FailOpen();
      return false;
    }
    const char c = bytes_[at_];
    if (c == '<') break;
    if (c == '>') {
      if (open_.empty()) {
        return Fail("expected the end of the file or '<'; nothing is open here",
                    static_cast<std::uint32_t>(at_));
      }
      EndGroup(static_cast<std::uint32_t>(at_));
      return true;
    }
    if (!ReadDirective()) return false;
  }

  begin_ = static_cast<std::uint32_t>(at_);
  ++at_;
  while (at_ < bytes_.size() && IsBlank(bytes_[at_])) ++at_;
  const std::size_t name_begin = at_;
  while (at_ < bytes_.size() && !kNameEnds[static_cast<unsigned char>(bytes_[at_])]) ++at_;
  name_ = bytes_.substr(name_begin, at_ - name_begin);
  token_ = FindToken(name_);
  if (name_.empty()) {
    return Fail("expected the name of a statement after '<'", static_cast<std::uint32_t>(at_));
  }
  const std::size_t name_end = at_;
  while (at_ < bytes_.size() && (bytes_[at_] == ' ' || bytes_[at_] == '\t')) ++at_;
  std::size_t data_begin = at_;
  if (token_ == Token::kComment) {
    // Its body is no MIF: brackets are counted and nothing else.
    if (!SkipLeafData()) return false;
  } else {
    if (!SkipBlank()) {
      error_.opened_at = begin_;
      error_.opened = token_;
      return Fail("expected '>' before the end of the file", static_cast<std::uint32_t>(bytes_.size()));
    }
    if (bytes_[at_] == '<') {
      NoteTopLevel();
      kind_ = Piece::kGroup;
      end_ = static_cast<std::uint32_t>(name_end);
      data_ = {};
      open_.push_back({begin_, token_, name_});
      return true;
    }
    // A comment before the data is passed over with the blanks.
    data_begin = at_;
    if (!SkipLeafData()) return false;
  }
  std::size_t data_end = at_;
  while (data_end > data_begin && IsBlank(bytes_[data_end - 1])) --data_end;
  std::size_t first = data_begin;
  while (first < data_end && IsBlank(bytes_[first])) ++first;
  data_ = bytes_.substr(first, data_end - first);
  ++at_;
  NoteTopLevel();
  kind_ = Piece::kLeaf;
  end_ = static_cast<std::uint32_t>(at_);
  return true;
}

bool Reader::Skip() {
  if (kind_ != Piece::kGroup) return true;
  const std::size_t outside = open_.size() - 1;
  while (Next()) {
    if (kind_ == Piece::kGroupEnd && open_.size() == outside) return true;
  }
  return false;
}

bool Reader::PassRest(std::string_view rest) {
  if (open_.empty() || rest.empty() || !StartsAt(bytes_, at_, rest)) return false;
  EndGroup(static_cast<std::uint32_t>(at_ + rest.size()) - 1);
  return true;
}

void Reader::ReturnTo(const Mark& mark) {
  at_ = mark.at;
  open_.push_back({mark.begin, mark.token, mark.name});
  kind_ = Piece::kGroup;
  token_ = mark.token;
  name_ = mark.name;
  begin_ = mark.begin;
  end_ = static_cast<std::uint32_t>(mark.at);
}

Place PlaceOf(std::string_view bytes, std::uint32_t offset) {
  const std::string_view before = bytes.substr(0, offset);
  Place place;
  place.line = static_cast<std::uint32_t>(std::count(before.begin(), before.end(), '\n')) + 1;
  const std::size_t line_start = before.rfind('\n');
  const std::size_t first = line_start == std::string_view::npos ? 0 : line_start + 1;
  place.column = static_cast<std::uint32_t>(before.size() - first) + 1;
  return place;
}

namespace {

// What was opened, for a message: a statement by its name, or a string or directive as such.
std::string OpenedName(std::string_view bytes, std::uint32_t at) {
  if (at >= bytes.size() || bytes[at] != '<')
    return at < bytes.size() && bytes[at] == '`' ? "the string" : "it";
  std::string name = "<";
  for (std::size_t i = at + 1; i < bytes.size() && !kNameEnds[static_cast<unsigned char>(bytes[i])]; ++i) {
    name.push_back(bytes[i]);
  }
  return name + ">";
}

}  // namespace

std::string Describe(std::string_view bytes, const ReadError& error) {
  const Place place = PlaceOf(bytes, error.offset);
  std::string text = "line " + std::to_string(place.line) + ", offset " + std::to_string(error.offset) +
                     ": " + error.message;
  if (error.seen != Token::kUnknown) text += " (<" + std::string(TokenName(error.seen)) + ">)";
  if (error.opened != Token::kUnknown || error.opened_at != 0) {
    text += "; ";
    text += OpenedName(bytes, error.opened_at);
    text += " began in line " + std::to_string(PlaceOf(bytes, error.opened_at).line);
  }
  return text;
}

}  // namespace qelm::embedded::mif
