// Reads MIF as a stream of statements with their source ranges.
//
// A statement is `<Token data>`. One whose first content is another statement is a group: it comes as kGroup,
// its content follows, and kGroupEnd closes it. All others, empty ones included, come as kLeaf in one piece.
// Between statements the reader passes over white space, comments (`#` to the end of the line), image data
// (lines of an ImportObject that begin with `=` or `&` in column 1) and the directives `define` and
// `include`. Strings may hold brackets, `#` and line ends; a quotation mark inside one is always written as
// an escape (MIF reference, "MIF syntax").
//
//   Reader reader(bytes);
//   while (reader.Next()) {
//     if (reader.kind() == Piece::kGroup && reader.token() != Token::kColorCatalog) reader.Skip();
//   }
//   if (reader.error().message) ...
//
// The reader copies nothing; the bytes must outlive it. It never recurses.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/mif/tokens.h"

namespace qelm::embedded::mif {

enum class Piece : std::uint8_t { kLeaf, kGroup, kGroupEnd };
constexpr std::size_t kPieceCount = 3;

// Where and why reading stopped. `message` is null while all is well.
struct ReadError {
  const char* message = nullptr;  // what was expected
  std::uint32_t offset = 0;
  std::uint32_t opened_at = 0;  // the offset at which what is unfinished began
  Token opened = Token::kUnknown;
  Token seen = Token::kUnknown;  // the statement that showed it
};

class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  // Goes to the next piece. False at the end of the bytes and at damage; error() tells which.
  bool Next() { return NextPlain() || NextOfAnyForm(); }

  // Just after a kGroup: goes to behind its end, without a piece for what is in it. After other pieces
  // nothing happens. False at damage.
  bool Skip();

  // Just after a kGroup: a mark by which the reader can come back to here once the group was read to its end.
  struct Mark {
    std::size_t at;
    std::uint32_t begin;
    Token token;
    std::string_view name;
  };
  Mark MarkGroup() const { return {at_, open_.back().begin, open_.back().token, open_.back().name}; }
  void ReturnTo(const Mark& mark);

  // Where the next piece is looked for.
  std::size_t Position() const { return at_; }
  // In a group: when what comes next are these bytes, goes behind them, to the end of the group, which is
  // what reading them came to when they were read before, in a group of the same name. False, and nothing
  // changes, when they are not.
  bool PassRest(std::string_view rest);

  // While this is on, leaves without a token and numbers of objects may be passed over without a piece.
  bool PassesUnknown() const { return passes_; }
  void SetPassesUnknown(bool passes) { passes_ = passes; }

  Piece kind() const { return kind_; }
  Token token() const { return token_; }
  // The name as written; for kGroupEnd that of the group.
  std::string_view name() const { return name_; }
  // A leaf's data, without blanks around it: a number list, a keyword, or a string with its marks.
  std::string_view data() const { return data_; }
  // A leaf: the whole statement. A group: from `<` to behind the name. A group's end: its `>`.
  std::uint32_t begin() const { return begin_; }
  std::uint32_t end() const { return end_; }
  // For kGroupEnd: where the group began.
  std::uint32_t group_begin() const { return group_begin_; }
  std::size_t depth() const { return open_.size(); }

  const ReadError& error() const { return error_; }
  bool Failed() const { return error_.message != nullptr; }

  // `define` directives by name, when the file has any; "" otherwise.
  struct Macro {
    std::string_view name;
    std::string_view replacement;
  };
  const std::vector<Macro>& macros() const { return macros_; }

 private:
  struct Open {
    std::uint32_t begin;
    Token token;
    std::string_view name;
  };

  // What has the plain form (reader_plain.cc). False, and nothing changes, for all else.
  bool NextPlain();
  std::size_t PlainName(const char* at, std::size_t before, Token* token);
  void Expect(std::string_view name, std::size_t before, Token token);
  bool NextOfAnyForm();
  bool SkipBlank();
  bool SkipString();
  bool SkipLeafData();
  bool ReadDirective();
  // Ends the innermost group with the `>` there.
  void EndGroup(std::uint32_t close) {
    const Open& open = open_.back();
    kind_ = Piece::kGroupEnd;
    token_ = open.token;
    name_ = open.name;
    group_begin_ = open.begin;
    begin_ = close;
    end_ = close + 1;
    at_ = end_;
    open_.pop_back();
  }
  bool Fail(const char* message, std::uint32_t offset);
  bool FailOpen();
  void NoteTopLevel();

  std::string_view bytes_;
  std::size_t at_ = 0;
  Piece kind_ = Piece::kLeaf;
  Token token_ = Token::kUnknown;
  std::string_view name_;
  std::string_view data_;
  std::uint32_t begin_ = 0;
  std::uint32_t end_ = 0;
  std::uint32_t group_begin_ = 0;
  bool passes_ = false;
  std::vector<Open> open_;
  // By the piece before, once so much was read that it is worth it: the name that came last behind such a
  // one, which in most places is the one that comes.
  struct Expected {
    std::array<char, 16> name{};  // with the blank behind it
    // One for each byte that must be the same; before a name came also such beyond the sixteen, so that
    // nothing fits.
    unsigned bits = ~0U;
    Token token = Token::kUnknown;
    std::uint8_t size = 0;
  };
  std::vector<Expected> expected_;
  std::vector<Macro> macros_;
  ReadError error_;
  ReadError suspicion_;  // a top-level statement seen inside a group, kept in case the file does not balance
};

// The line (from 1) of an offset, and the column (from 1, in bytes).
struct Place {
  std::uint32_t line = 1;
  std::uint32_t column = 1;
};
Place PlaceOf(std::string_view bytes, std::uint32_t offset);

// The error in words: what was expected, where, and what was open.
std::string Describe(std::string_view bytes, const ReadError& error);

}  // namespace qelm::embedded::mif
