// The tokenizer: the token at the start of a text. The longest of the texts that fit is taken where one
// begins with another ("//" before "/"); what is none of the fixed texts is a literal, a number or a name.
//
// What a text means can depend on the token before it: "or" and "and" are names where a step must begin, and
// a quoted literal behind "fmfile::" is a name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "xpath/components.h"

namespace qelm::xpath {

enum class TokenKind : std::uint8_t {
  kStart,  // stands before the first token
  kDoubleSlash,
  kSlash,
  kParentStep,
  kSelfStep,
  kLeftParenthesis,
  kRightParenthesis,
  kComma,
  kNodeTest,  // "*", "node()", "text()"
  kPredicateStart,
  kPredicateEnd,
  kAxis,
  kAttribute,  // "@"
  kBlank,
  kAnd,
  kOr,
  kOperator,
  kPosition,
  kLast,
  kFunction,  // a function's name with its parenthesis
  kLiteral,
  kNumber,
  kName,
  kColon,         // inside a name
  kUnterminated,  // a literal without its closing mark
  kUnknown,       // nothing that an expression may hold: "!" alone
  kCount,
};

struct Token {
  TokenKind kind = TokenKind::kStart;
  std::string_view text;     // as it is written
  std::string_view content;  // a literal or file path without its quotation marks, else as `text`
  Axis axis = Axis::kNone;
  Operator comparison = Operator::kNone;
  Kind function = Kind::kSequence;
};

// The token at the start of `rest`, which is not empty. `previous` is the last token that was no blank.
Token NextToken(std::string_view rest, const Token& previous);

}  // namespace qelm::xpath
