// Why an expression can be rejected: the numbers that bw_ParseXPath returns and the message ids that belong
// to them. The texts are in the language files, under the ids.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qelm::xpath {

enum ErrorCode : std::int32_t {
  kNoError = 0,
  kBadArgAfterSlash = 50105,
  kEmptyPredicate = 50109,
  kNoTermBracketForSubexp = 50115,
  kUnknownFunction = 50122,
  kUnknownFmProp = 50123,
  kCriticalErrorExtractingPredicate = 50126,
  kMixedAndAndOr = 50128,
  kBadArgAfterAxis = 50129,
  kAxisFollowingAttributeAxis = 50130,
  kAxisFollowingFmPropAxis = 50131,
  kMisplacedPeriod = 50132,
  kColonInElementName = 50134,
  kPercentInElementName = 50135,
  kIllegalBackslash = 50137,
  kUnterminatedStringLiteral = 50141,
  kMissingNodeTest = 50143,
  kMissingLogicalTestSecondTerm = 50150,
  kTooDamnedLong = 50151,
  kSingleSlashExpression = 50152,
  kUnknownAxis = 50156,
  kBadArgAfterNodeName = 50157,
  kBadArgAfterPredicateStart = 50158,
  kBadArgAfterPredicateEnd = 50159,
  kBadArgAfterOperator = 50160,
  kMisplacedLiteral = 50161,
  kMultipleOperators = 50162,
  kBadArgAfterLiteral = 50163,
  kMisplacedFunction = 50164,
  kFunctionMoreThanTwoArgs = 50166,
  kMisplacedComma = 50167,
  kMisplacedRightParen = 50168,
  kBadParentheticalPhrase = 50169,
  kTooManySlashes = 50170,
  kOperatorInFuncTerm = 50171,
  kBadArgAfterFunction = 50172,
  kNotFuncHasMultipleArgs = 50174,
  kBadLeftParenthesis = 50175,
  kCouldNotParseParamEval = 50177,
  kNoInitialSlash = 50178,
};

struct ErrorEntry {
  ErrorCode code;
  std::string_view id;
};

// Every error, by rising number.
inline constexpr std::array<ErrorEntry, 39> kErrors = {{
    {kBadArgAfterSlash, "XPATH_ERR_BAD_ARG_AFTER_SLASH"},
    {kEmptyPredicate, "XPATH_ERR_EMPTY_PREDICATE"},
    {kNoTermBracketForSubexp, "XPATH_ERR_NO_TERM_BRACKET_FOR_SUBEXP"},
    {kUnknownFunction, "XPATH_ERR_UNKNOWN_FUNCTION"},
    {kUnknownFmProp, "XPATH_ERR_UNKNOWN_FM_PROP"},
    {kCriticalErrorExtractingPredicate, "XPATH_ERR_CRITICAL_ERROR_EXTRACTING_PREDICATE"},
    {kMixedAndAndOr, "XPATH_ERR_MIXED_AND_AND_OR"},
    {kBadArgAfterAxis, "XPATH_ERR_BAD_ARG_AFTER_AXIS"},
    {kAxisFollowingAttributeAxis, "XPATH_ERR_AXIS_FOLLOWING_ATTRIBUTE_AXIS"},
    {kAxisFollowingFmPropAxis, "XPATH_ERR_AXIS_FOLLOWING_FM_PROP_AXIS"},
    {kMisplacedPeriod, "XPATH_ERR_MISPLACED_PERIOD"},
    {kColonInElementName, "XPATH_ERR_COLON_IN_ELEMENT_NAME"},
    {kPercentInElementName, "XPATH_ERR_PERCENT_IN_ELEMENT_NAME"},
    {kIllegalBackslash, "XPATH_ERR_ILLEGAL_BACKSLASH"},
    {kUnterminatedStringLiteral, "XPATH_ERR_UNTERMINATED_STRING_LITERAL"},
    {kMissingNodeTest, "XPATH_ERR_MISSING_NODE_TEST"},
    {kMissingLogicalTestSecondTerm, "XPATH_ERR_MISSING_LOGICAL_TEST_SECOND_TERM"},
    {kTooDamnedLong, "XPATH_ERR_TOO_DAMNED_LONG"},
    {kSingleSlashExpression, "XPATH_ERR_SINGLE_SLASH_EXPRESSION"},
    {kUnknownAxis, "XPATH_ERR_UNKNOWN_AXIS"},
    {kBadArgAfterNodeName, "XPATH_ERR_BAD_ARG_AFTER_NODE_NAME"},
    {kBadArgAfterPredicateStart, "XPATH_ERR_BAD_ARG_AFTER_PREDICATE_START"},
    {kBadArgAfterPredicateEnd, "XPATH_ERR_BAD_ARG_AFTER_PREDICATE_END"},
    {kBadArgAfterOperator, "XPATH_ERR_BAD_ARG_AFTER_OPERATOR"},
    {kMisplacedLiteral, "XPATH_ERR_MISPLACED_LITERAL"},
    {kMultipleOperators, "XPATH_ERR_MULTIPLE_OPERATORS"},
    {kBadArgAfterLiteral, "XPATH_ERR_BAD_ARG_AFTER_LITERAL"},
    {kMisplacedFunction, "XPATH_ERR_MISPLACED_FUNCTION"},
    {kFunctionMoreThanTwoArgs, "XPATH_ERR_FUNCTION_MORE_THAN_TWO_ARGS"},
    {kMisplacedComma, "XPATH_ERR_MISPLACED_COMMA"},
    {kMisplacedRightParen, "XPATH_ERR_MISPLACED_RIGHT_PAREN"},
    {kBadParentheticalPhrase, "XPATH_ERR_BAD_PARENTHETICAL_PHRASE"},
    {kTooManySlashes, "XPATH_ERR_TOO_MANY_SLASHES"},
    {kOperatorInFuncTerm, "XPATH_ERR_OPERATOR_IN_FUNC_TERM"},
    {kBadArgAfterFunction, "XPATH_ERR_BAD_ARG_AFTER_FUNCTION"},
    {kNotFuncHasMultipleArgs, "XPATH_ERR_NOT_FUNC_HAS_MULTIPLE_ARGS"},
    {kBadLeftParenthesis, "XPATH_ERR_BAD_LEFT_PARENTHESIS"},
    {kCouldNotParseParamEval, "XPATH_ERR_COULD_NOT_PARSE_PARAM_EVAL"},
    {kNoInitialSlash, "XPATH_ERR_NO_INITIAL_SLASH"},
}};

// The message id of an error code; empty for a number that is none.
constexpr std::string_view ErrorId(std::int32_t code) {
  for (const ErrorEntry& entry : kErrors) {
    if (entry.code == code) return entry.id;
  }
  return {};
}

// The code of a message id; kNoError for a text that is none.
constexpr std::int32_t ErrorCodeOf(std::string_view id) {
  for (const ErrorEntry& entry : kErrors) {
    if (entry.id == id) return entry.code;
  }
  return kNoError;
}

// A rejection as the stages of parsing hand it on: the position is a byte offset or a character index, as the
// function says that returns it.
struct Rejection {
  ErrorCode code = kNoError;
  std::size_t position = 0;
  explicit operator bool() const { return code != kNoError; }
};

}  // namespace qelm::xpath
