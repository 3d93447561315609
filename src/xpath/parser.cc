#include "xpath/parser.h"

#include <algorithm>
#include <vector>

#include "xpath/finishing.h"
#include "xpath/succession.h"
#include "xpath/tokenizer.h"

namespace qelm::xpath {
namespace {

// The loop guard: no expression that is meant comes near this many tokens.
constexpr int kMostRounds = 2000;
// How deep predicates may be nested.
constexpr std::size_t kMostPending = 20;

constexpr std::string_view kAnyNode = "node()";

// The offset of the "]" that belongs to the "[" before `from`; npos when there is none.
std::size_t FindClosingBracket(std::string_view text, std::size_t from) {
  int depth = 1;
  for (std::size_t at = from; at < text.size(); ++at) {
    const char byte = text[at];
    if (byte == '\'' || byte == '"') {
      at = text.find(byte, at + 1);
      if (at == text.npos) return at;
    } else if (byte == '[') {
      ++depth;
    } else if (byte == ']' && --depth == 0) {
      return at;
    }
  }
  return text.npos;
}

class Parser {
 public:
  Parser(std::string_view text, ComponentTable* table) : text_(text), table_(*table), end_(text.size()) {}

  Parsing Run();

 private:
  // What is parsed once the text between two brackets is used up.
  struct Pending {
    std::size_t end;
    Index step;
  };

  bool Round();
  bool Apply(const Token& token);
  bool EndOfText();

  bool ApplySlash(const Token& token);
  bool ApplyPeriod(const Token& token);
  bool ApplyNodeTest(const Token& token);
  bool ApplyName(const Token& token);
  bool ApplyPredicateStart(const Token& token);
  bool ApplyLogic(const Token& token);
  bool ApplyOperator(const Token& token);
  bool ApplyLiteral(const Token& token);
  bool ApplyFunction(const Token& token);
  bool ApplyComma(const Token& token);
  bool ApplyRightParenthesis(const Token& token);

  bool Step(const Token& token, Axis axis, std::string_view node_test);
  void OpenPath();

  bool InStep() const { return table_[cursor_].kind == Kind::kNodeHandler; }
  bool InOperand() const {
    return table_[cursor_].kind == Kind::kPredicate || table_[cursor_].kind == Kind::kTerm;
  }
  bool StepHasTest() const { return InStep() && !table_[cursor_].node_test.empty(); }
  Index EnclosingArgument() const;
  Index Enclosing(Kind kind) const;
  Index OpenStep() const;

  bool Reject(ErrorCode code, std::size_t offset) {
    parsing_.rejection = {code, offset};
    return false;
  }
  bool Reject(ErrorCode code, const Token& token) { return Reject(code, OffsetOf(token)); }
  std::size_t OffsetOf(const Token& token) const {
    return static_cast<std::size_t>(token.text.data() - text_.data());
  }

  std::string_view text_;
  ComponentTable& table_;
  Parsing parsing_;
  Index cursor_ = 0;
  std::size_t position_ = 0;
  std::size_t end_;
  Token previous_;
  Axis next_axis_ = Axis::kChild;
  std::vector<Pending> pending_;
  bool consumed_ = true;
};

Parsing Parser::Run() {
  parsing_.sequence = table_.Add(Kind::kSequence, 0);
  const Index path = table_.Add(Kind::kNodeHandlers, parsing_.sequence);
  cursor_ = table_.Add(Kind::kNodeHandler, path);
  for (int round = 1; position_ < end_ || !pending_.empty(); ++round) {
    if (round > kMostRounds) return Parsing();
    if (!Round()) return parsing_;
  }
  if (EndOfText()) FinishComponents(parsing_.sequence, &table_);
  return parsing_;
}

bool Parser::Round() {
  if (position_ == end_) return EndOfText();
  const Token token = NextToken(text_.substr(position_, end_ - position_), previous_);
  consumed_ = true;
  if (!Apply(token)) return false;
  if (!consumed_) return true;
  position_ += token.text.size();
  if (token.kind != TokenKind::kBlank) previous_ = token;
  return true;
}

// A text may end only where something is complete. The end of a bracket's text leads back to its step.
bool Parser::EndOfText() {
  switch (previous_.kind) {
    case TokenKind::kStart:
      return Reject(kMissingNodeTest, 0);
    case TokenKind::kPredicateStart:
      return Reject(kEmptyPredicate, OffsetOf(previous_) + 1);
    case TokenKind::kSlash:
    case TokenKind::kDoubleSlash:
    case TokenKind::kAxis:
    case TokenKind::kAttribute:
      return Reject(kMissingNodeTest, previous_);
    case TokenKind::kOperator:
    case TokenKind::kAnd:
    case TokenKind::kOr:
      return Reject(kMissingLogicalTestSecondTerm, previous_);
    default:
      break;
  }
  if (pending_.empty()) return true;
  cursor_ = pending_.back().step;
  table_[cursor_].predicate_open = false;
  previous_ = Token();
  previous_.kind = TokenKind::kPredicateEnd;
  previous_.text = text_.substr(position_, 1);
  ++position_;
  end_ = pending_.back().end;
  pending_.pop_back();
  return true;
}

bool Parser::Apply(const Token& token) {
  // These two are no tokens that could stand behind another: what they are wrong for comes first.
  if (token.kind == TokenKind::kUnterminated) return Reject(kUnterminatedStringLiteral, token);
  if (token.kind == TokenKind::kColon) return Reject(kColonInElementName, token);
  if (const ErrorCode code = CheckSuccession(previous_.kind, token.kind); code != kNoError) {
    return Reject(code, OffsetOf(token) - (code == kBadArgAfterSlash ? 1 : 0));
  }
  switch (token.kind) {
    case TokenKind::kSlash:
    case TokenKind::kDoubleSlash:
      return ApplySlash(token);
    case TokenKind::kSelfStep:
    case TokenKind::kParentStep:
      return ApplyPeriod(token);
    case TokenKind::kAxis:
      next_axis_ = token.axis;
      return true;
    case TokenKind::kAttribute:
      next_axis_ = Axis::kAttribute;
      return true;
    case TokenKind::kNodeTest:
      return ApplyNodeTest(token);
    case TokenKind::kName:
      return ApplyName(token);
    case TokenKind::kPredicateStart:
      return ApplyPredicateStart(token);
    case TokenKind::kAnd:
    case TokenKind::kOr:
      return ApplyLogic(token);
    case TokenKind::kOperator:
      return ApplyOperator(token);
    case TokenKind::kLiteral:
    case TokenKind::kNumber:
      return ApplyLiteral(token);
    case TokenKind::kPosition:
    case TokenKind::kLast:
    case TokenKind::kFunction:
      return ApplyFunction(token);
    case TokenKind::kComma:
      return ApplyComma(token);
    case TokenKind::kRightParenthesis:
      return ApplyRightParenthesis(token);
    case TokenKind::kLeftParenthesis:
      return Reject(kBadLeftParenthesis, token);
    case TokenKind::kBlank:
      return true;
    default:
      return Reject(kMissingNodeTest, token);
  }
}

bool Parser::ApplySlash(const Token& token) {
  if (!StepHasTest()) {
    if (previous_.kind == TokenKind::kAxis || previous_.kind == TokenKind::kAttribute) {
      return Reject(kMissingNodeTest, token);
    }
    // A path begins: the slash first makes the root step, and is then met again behind it.
    consumed_ = false;
    return Step(token, Axis::kRoot, kAnyNode);
  }
  next_axis_ = token.kind == TokenKind::kDoubleSlash ? Axis::kDescendantOrSelf : Axis::kChild;
  return true;
}

bool Parser::ApplyPeriod(const Token& token) {
  if (previous_.kind == TokenKind::kAxis || previous_.kind == TokenKind::kAttribute) {
    return Reject(kMisplacedPeriod, token);
  }
  // Both have an axis of their own: the step that "//" makes stays, and this one starts from its nodes.
  if (previous_.kind == TokenKind::kDoubleSlash && !Step(token, Axis::kDescendantOrSelf, kAnyNode))
    return false;
  return Step(token, token.kind == TokenKind::kSelfStep ? Axis::kSelf : Axis::kParent, kAnyNode);
}

bool Parser::ApplyNodeTest(const Token& token) {
  if (next_axis_ == Axis::kFmProperty) return Reject(kUnknownFmProp, token);
  return Step(token, next_axis_, token.content);
}

bool Parser::ApplyName(const Token& token) {
  if (next_axis_ == Axis::kFmProperty && FmPropertyCode(token.content) == kNoProperty) {
    return Reject(kUnknownFmProp, token);
  }
  if (token.content.empty()) return Reject(kMissingNodeTest, token);
  if (next_axis_ == Axis::kFmFile) {
    std::string path(token.content);
    std::replace(path.begin(), path.end(), '/', '\\');
    return Step(token, next_axis_, path);
  }
  if (token.content == "$") return Reject(kCouldNotParseParamEval, token);
  if (token.content.find('%') != token.content.npos) return Reject(kPercentInElementName, token);
  return Step(token, next_axis_, token.content);
}

// Completes the step at the cursor, or makes a new one, with the axis and node test.
bool Parser::Step(const Token& token, Axis axis, std::string_view node_test) {
  if (!InStep()) {
    OpenPath();
  } else if (StepHasTest()) {
    const Axis last = table_[cursor_].axis;
    if (last == Axis::kAttribute) return Reject(kAxisFollowingAttributeAxis, token);
    if (last == Axis::kFmProperty) return Reject(kAxisFollowingFmPropAxis, token);
    cursor_ = table_.Add(Kind::kNodeHandler, table_[cursor_].parent);
  }
  table_[cursor_].axis = axis;
  table_[cursor_].node_test = node_test;
  next_axis_ = Axis::kChild;
  return true;
}

// Opens a path under the predicate or argument at the cursor.
void Parser::OpenPath() {
  if (table_[cursor_].kind == Kind::kPredicate) cursor_ = table_.Add(Kind::kTerm, cursor_);
  cursor_ = table_.Add(Kind::kNodeHandlers, cursor_);
  cursor_ = table_.Add(Kind::kNodeHandler, cursor_);
}

bool Parser::ApplyPredicateStart(const Token& token) {
  if (!StepHasTest()) return Reject(kNoInitialSlash, token);
  if (table_[cursor_].logic == Logic::kOr) return Reject(kMixedAndAndOr, token);
  const std::size_t closing = FindClosingBracket(text_, OffsetOf(token) + 1);
  if (closing == text_.npos || pending_.size() == kMostPending) {
    return Reject(kCriticalErrorExtractingPredicate, token);
  }
  const Index step = cursor_;
  pending_.push_back({end_, step});
  end_ = closing;
  cursor_ = table_.Add(Kind::kPredicate, step);
  table_[step].predicate_open = true;
  if (table_.ChildCount(step) > 1 && table_[step].logic == Logic::kNone) table_[step].logic = Logic::kAnd;
  return true;
}

bool Parser::ApplyLogic(const Token& token) {
  const Index step = OpenStep();
  if (step == 0) return Reject(kBadArgAfterNodeName, token);
  const Logic logic = token.kind == TokenKind::kAnd ? Logic::kAnd : Logic::kOr;
  if (table_[step].logic != Logic::kNone && table_[step].logic != logic) return Reject(kMixedAndAndOr, token);
  table_[step].logic = logic;
  cursor_ = table_.Add(Kind::kPredicate, step);
  return true;
}

bool Parser::ApplyOperator(const Token& token) {
  const Index predicate = Enclosing(Kind::kPredicate);
  if (EnclosingArgument() != 0) return Reject(kOperatorInFuncTerm, token);
  if (predicate == 0) return Reject(kBadArgAfterNodeName, token);
  if (table_[predicate].comparison != Operator::kNone) return Reject(kMultipleOperators, token);
  table_[predicate].comparison = token.comparison;
  cursor_ = predicate;
  return true;
}

bool Parser::ApplyLiteral(const Token& token) {
  if (!InOperand()) return Reject(kMisplacedLiteral, token);
  const bool is_bare_parameter = token.kind == TokenKind::kLiteral && token.text.front() == '$';
  if (is_bare_parameter && token.text == "$") return Reject(kCouldNotParseParamEval, token);
  const bool is_number = token.kind == TokenKind::kNumber;
  cursor_ = table_.Add(is_number ? Kind::kLiteralInteger : Kind::kLiteralString, cursor_);
  table_[cursor_].value = token.content;
  return true;
}

bool Parser::ApplyFunction(const Token& token) {
  if (!InOperand()) return Reject(kMisplacedFunction, token);
  if (token.kind == TokenKind::kFunction) {
    cursor_ = table_.Add(Kind::kTerm, table_.Add(token.function, cursor_));
  } else {
    cursor_ = table_.Add(token.kind == TokenKind::kPosition ? Kind::kPosition : Kind::kLast, cursor_);
  }
  return true;
}

bool Parser::ApplyComma(const Token& token) {
  const Index argument = EnclosingArgument();
  if (argument == 0) return Reject(kMisplacedComma, token);
  const Index function = table_[argument].parent;
  if (table_[function].kind == Kind::kNot) return Reject(kNotFuncHasMultipleArgs, token);
  if (table_.ChildCount(function) > 1) return Reject(kFunctionMoreThanTwoArgs, token);
  if (table_[argument].first_child == 0) return Reject(kMissingNodeTest, token);
  cursor_ = table_.Add(Kind::kTerm, function);
  return true;
}

bool Parser::ApplyRightParenthesis(const Token& token) {
  const Index argument = EnclosingArgument();
  if (argument == 0) return Reject(kMisplacedRightParen, token);
  const Index function = table_[argument].parent;
  if (table_[argument].first_child == 0) return Reject(kMissingNodeTest, token);
  if (table_[function].kind != Kind::kNot && table_.ChildCount(function) < 2) {
    return Reject(kMissingLogicalTestSecondTerm, token);
  }
  cursor_ = function;
  return true;
}

// The argument of a function in which the cursor is. A bracket hides the functions around it.
Index Parser::EnclosingArgument() const {
  for (Index index = cursor_; index != 0 && table_[index].kind != Kind::kPredicate;
       index = table_[index].parent) {
    if (table_[index].kind == Kind::kTerm && IsFunctionWithTerms(table_[table_[index].parent].kind))
      return index;
  }
  return 0;
}

Index Parser::Enclosing(Kind kind) const {
  Index index = cursor_;
  while (index != 0 && table_[index].kind != kind) index = table_[index].parent;
  return index;
}

Index Parser::OpenStep() const {
  Index index = cursor_;
  while (index != 0 && !table_[index].predicate_open) index = table_[index].parent;
  return index;
}

}  // namespace

Parsing Parse(std::string_view text, ComponentTable* table) { return Parser(text, table).Run(); }

}  // namespace qelm::xpath
