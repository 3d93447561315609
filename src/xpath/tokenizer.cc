#include "xpath/tokenizer.h"

#include <algorithm>
#include <array>

#include "common/numbers.h"

namespace qelm::xpath {
namespace {

constexpr std::string_view kNameEnds = " /[](),=<>!@*:'\"";

struct FixedText {
  std::string_view text;
  TokenKind kind;
  Operator comparison = Operator::kNone;
  Kind function = Kind::kSequence;
};

// In the order in which they are tried.
constexpr std::array<FixedText, 12> kPunctuation = {{
    {"//", TokenKind::kDoubleSlash},
    {"/", TokenKind::kSlash},
    {"..", TokenKind::kParentStep},
    {".", TokenKind::kSelfStep},
    {"(", TokenKind::kLeftParenthesis},
    {")", TokenKind::kRightParenthesis},
    {",", TokenKind::kComma},
    {"*", TokenKind::kNodeTest},
    {"node()", TokenKind::kNodeTest},
    {"text()", TokenKind::kNodeTest},
    {"[", TokenKind::kPredicateStart},
    {"]", TokenKind::kPredicateEnd},
}};

constexpr std::array<FixedText, 2> kAfterAxes = {{{"@", TokenKind::kAttribute}, {" ", TokenKind::kBlank}}};

constexpr std::array<FixedText, 2> kLogic = {{{"or ", TokenKind::kOr}, {"and ", TokenKind::kAnd}}};

constexpr std::array<FixedText, 14> kOperatorsAndFunctions = {{
    {"<=", TokenKind::kOperator, Operator::kLessOrEqual},
    {">=", TokenKind::kOperator, Operator::kGreaterOrEqual},
    {">", TokenKind::kOperator, Operator::kGreater},
    {"<", TokenKind::kOperator, Operator::kLess},
    {"=", TokenKind::kOperator, Operator::kEqual},
    {"!=", TokenKind::kOperator, Operator::kNotEqual},
    {"position()", TokenKind::kPosition},
    {"last()", TokenKind::kLast},
    {"contains(", TokenKind::kFunction, Operator::kNone, Kind::kContains},
    {"contains-ci(", TokenKind::kFunction, Operator::kNone, Kind::kContainsCi},
    {"starts-with(", TokenKind::kFunction, Operator::kNone, Kind::kStartsWith},
    {"starts-with-ci(", TokenKind::kFunction, Operator::kNone, Kind::kStartsWithCi},
    {"not(", TokenKind::kFunction, Operator::kNone, Kind::kNot},
    {":", TokenKind::kColon},
}};

template <typename Texts>
bool Match(std::string_view rest, const Texts& texts, Token* token) {
  const auto found = std::find_if(texts.begin(), texts.end(),
                                  [rest](const FixedText& entry) { return rest.starts_with(entry.text); });
  if (found == texts.end()) return false;
  token->kind = found->kind;
  token->text = token->content = rest.substr(0, found->text.size());
  token->comparison = found->comparison;
  token->function = found->function;
  return true;
}

bool MatchAxis(std::string_view rest, Token* token) {
  const auto found = std::find_if(kAxes.begin() + 1, kAxes.end(),
                                  [rest](const AxisEntry& entry) { return rest.starts_with(entry.written); });
  if (found == kAxes.end()) return false;
  token->kind = TokenKind::kAxis;
  token->text = token->content = rest.substr(0, found->written.size());
  token->axis = found->axis;
  return true;
}

// Where a step must begin, "or" and "and" are element names.
bool StepMustBegin(TokenKind previous) {
  switch (previous) {
    case TokenKind::kStart:
    case TokenKind::kSlash:
    case TokenKind::kDoubleSlash:
    case TokenKind::kPredicateStart:
    case TokenKind::kAxis:
    case TokenKind::kAttribute:
    case TokenKind::kFunction:
      return true;
    default:
      return false;
  }
}

Token LiteralToken(std::string_view rest, const Token& previous) {
  Token token;
  const std::size_t closing = rest.find(rest.front(), 1);
  if (closing == rest.npos) {
    token.kind = TokenKind::kUnterminated;
    token.text = token.content = rest;
    return token;
  }
  const bool is_path = previous.kind == TokenKind::kAxis && previous.axis == Axis::kFmFile;
  token.kind = is_path ? TokenKind::kName : TokenKind::kLiteral;
  token.text = rest.substr(0, closing + 1);
  token.content = rest.substr(1, closing - 1);
  return token;
}

Token NameToken(std::string_view rest, const Token& previous) {
  Token token;
  const std::size_t end = std::min(rest.find_first_of(kNameEnds), rest.size());
  // One that is not allowed to stand anywhere is still one character long, so that it can be pointed at.
  token.text = token.content = rest.substr(0, std::max<std::size_t>(end, 1));
  if (end == 0) {
    token.kind = TokenKind::kUnknown;
  } else if (common::IsInteger(token.text, nullptr)) {
    token.kind = TokenKind::kNumber;
  } else if (previous.kind == TokenKind::kOperator && token.text.front() == '$') {
    token.kind = TokenKind::kLiteral;
  } else {
    token.kind = TokenKind::kName;
  }
  return token;
}

}  // namespace

Token NextToken(std::string_view rest, const Token& previous) {
  Token token;
  if (Match(rest, kPunctuation, &token) || MatchAxis(rest, &token) || Match(rest, kAfterAxes, &token)) {
    return token;
  }
  if (!StepMustBegin(previous.kind) && Match(rest, kLogic, &token)) return token;
  if (Match(rest, kOperatorsAndFunctions, &token)) return token;
  if (rest.front() == '\'' || rest.front() == '"') return LiteralToken(rest, previous);
  return NameToken(rest, previous);
}

}  // namespace qelm::xpath
