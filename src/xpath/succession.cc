#include "xpath/succession.h"

#include <algorithm>
#include <array>
#include <initializer_list>

namespace qelm::xpath {
namespace {

using enum TokenKind;

using TokenSet = std::uint32_t;
static_assert(static_cast<int>(kCount) <= 32);

constexpr TokenSet SetOf(std::initializer_list<TokenKind> kinds) {
  TokenSet set = 0;
  for (const TokenKind kind : kinds) set |= TokenSet{1} << static_cast<unsigned>(kind);
  return set;
}

struct Row {
  TokenSet previous;
  TokenSet allowed;
  ErrorCode otherwise;
};

constexpr TokenSet kStepBegins = SetOf({kName, kNodeTest, kSelfStep, kParentStep, kSlash, kDoubleSlash});
constexpr TokenSet kTestGoesOn = SetOf({kOperator, kAnd, kOr, kComma, kRightParenthesis, kBlank});
constexpr TokenSet kPathGoesOn = kTestGoesOn | SetOf({kSlash, kDoubleSlash, kPredicateStart});
constexpr TokenSet kOperandBegins = ~SetOf({kAnd, kOr, kOperator, kPredicateStart});

constexpr std::array<Row, 9> kRows = {{
    {SetOf({kAxis, kDoubleSlash, kAttribute}), kStepBegins, kBadArgAfterAxis},
    {SetOf({kName, kNodeTest, kSelfStep, kParentStep}), kPathGoesOn, kBadArgAfterNodeName},
    {SetOf({kRightParenthesis, kPosition, kLast}), kTestGoesOn, kBadArgAfterFunction},
    {SetOf({kComma, kPredicateStart, kFunction}), kOperandBegins, kBadArgAfterPredicateStart},
    {SetOf({kSlash}), kStepBegins | SetOf({kAxis, kAttribute}), kBadArgAfterSlash},
    {SetOf({kPredicateEnd}), kPathGoesOn, kBadArgAfterPredicateEnd},
    {SetOf({kLiteral, kNumber}), kTestGoesOn, kBadArgAfterLiteral},
    {SetOf({kOperator}), kOperandBegins, kBadArgAfterOperator},
    {SetOf({kAnd, kOr}), kOperandBegins, kMissingLogicalTestSecondTerm},
}};

}  // namespace

ErrorCode CheckSuccession(TokenKind previous, TokenKind next) {
  const auto row = std::find_if(kRows.begin(), kRows.end(), [previous](const Row& candidate) {
    return (candidate.previous & SetOf({previous})) != 0;
  });
  if (row == kRows.end() || (row->allowed & SetOf({next})) != 0) return kNoError;
  return row->otherwise;
}

}  // namespace qelm::xpath
