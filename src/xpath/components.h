// The component table: every parsed expression as a tree of components. It is the only thing that the parser,
// the evaluator and the dump share.
//
// Components are numbered from 1; 0 means none. Those of one expression follow each other, its root first,
// and the root's number is the expression's sequence number. `//a[@x='1']` is
//
//   SEQUENCE
//     NODE HANDLERS
//       NODE HANDLER  root, node()
//       NODE HANDLER  descendant-or-self, a
//         PREDICATE  =
//           TERM
//             NODE HANDLERS
//               NODE HANDLER  attribute, x
//           LITERAL STRING  1
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qelm::xpath {

enum class Kind : std::uint32_t {
  kSequence = 1,
  kNodeHandlers,
  kNodeHandler,
  kPredicate,
  kContains,
  kContainsCi,
  kStartsWith,
  kStartsWithCi,
  kPosition,
  kLast,
  kNot,
  kTerm,
  kLiteralInteger,
  kLiteralString,
};

enum class Axis : std::int32_t {
  kNone = 0,
  kRoot = 1,
  kSelf,
  kChild,
  kDescendant,
  kParent,
  kAncestor,
  kAncestorOrSelf,
  kDescendantOrSelf,
  kPreceding,
  kPrecedingSibling,
  kFollowing,
  kFollowingSibling,
  kAttribute,
  kFmProperty,
  kFmBook,
  kFmComponent,
  kFmChapter,
  kFmFile,
  kAnyFlow,
  kBodyFlow,
  kMasterFlow,
  kReferenceFlow,
};

enum class Operator : std::uint8_t {
  kNone,
  kEqual,
  kNotEqual,
  kGreater,
  kLess,
  kGreaterOrEqual,
  kLessOrEqual
};

enum class Logic : std::uint8_t { kNone = 0, kAnd = 50, kOr = 51 };

// An axis as it is written, and as the dump names it.
struct AxisEntry {
  Axis axis;
  std::string_view written;
  std::string_view dumped;
};

// All axes by their code. The root step has no name of its own.
inline constexpr std::array<AxisEntry, 22> kAxes = {{
    {Axis::kRoot, "", "To root"},
    {Axis::kSelf, "self::", "To self"},
    {Axis::kChild, "child::", "To child"},
    {Axis::kDescendant, "descendant::", "To descendant"},
    {Axis::kParent, "parent::", "To parent"},
    {Axis::kAncestor, "ancestor::", "To ancestor"},
    {Axis::kAncestorOrSelf, "ancestor-or-self::", "To ancestor-or-self"},
    {Axis::kDescendantOrSelf, "descendant-or-self::", "To descendant-or-self"},
    {Axis::kPreceding, "preceding::", "To preceding"},
    {Axis::kPrecedingSibling, "preceding-sibling::", "To preceding-sibling"},
    {Axis::kFollowing, "following::", "To following"},
    {Axis::kFollowingSibling, "following-sibling::", "To following-sibling"},
    {Axis::kAttribute, "attribute::", "To attribute"},
    {Axis::kFmProperty, "fmprop::", "To FM property"},
    {Axis::kFmBook, "fmbook::", "To FM book"},
    {Axis::kFmComponent, "fmcomp::", "To FM book component"},
    {Axis::kFmChapter, "fmchap::", "To FM book chapter"},
    {Axis::kFmFile, "fmfile::", "To FM file"},
    {Axis::kAnyFlow, "flow-any::", "To any flow"},
    {Axis::kBodyFlow, "flow-body::", "To body page flow"},
    {Axis::kMasterFlow, "flow-master::", "To master page flow"},
    {Axis::kReferenceFlow, "flow-ref::", "To reference page flow"},
}};

// The FrameMaker properties; the code of one is its place here, counted from 1.
inline constexpr std::array<std::string_view, 11> kFmProperties = {
    "ImportObFile", "PgfTag",    "TblTag", "FChangeBar", "XRefName",  "XRefSrcText",
    "XRefSrcFile",  "MTypeName", "MText",  "PageNumInt", "PageNumStr"};
inline constexpr std::int32_t kNoProperty = -1;

// The code of a FrameMaker property by its name, letter case ignored; kNoProperty for any other name.
std::int32_t FmPropertyCode(std::string_view name);

constexpr bool IsFunctionWithTerms(Kind kind) {
  return kind == Kind::kContains || kind == Kind::kContainsCi || kind == Kind::kStartsWith ||
         kind == Kind::kStartsWithCi || kind == Kind::kNot;
}

using Index = std::int32_t;

struct Component {
  Kind kind = Kind::kSequence;
  Index parent = 0;
  Index first_child = 0;
  Index last_child = 0;
  Index next_sibling = 0;
  std::string expression;                 // roots: the text that was parsed, the key of the cache
  std::string node_test;                  // node handlers
  std::string value;                      // literals
  std::string parameter;                  // node handlers and literals: "$name"
  Axis axis = Axis::kNone;                // node handlers
  Logic logic = Logic::kNone;             // node handlers: how their predicates combine
  std::int32_t property = kNoProperty;    // what holds an "fmprop::" step: the code of the property
  Operator comparison = Operator::kNone;  // predicates
  bool predicate_open = false;            // node handlers: the parser is between their "[" and "]"
};

class ComponentTable {
 public:
  ComponentTable() { Clear(); }

  // A new component, the last child of `parent` (0: a root). References into the table become invalid.
  Index Add(Kind kind, Index parent);
  // The same, as the first child.
  Index AddFirst(Kind kind, Index parent);

  Component& operator[](Index index) { return components_[static_cast<std::size_t>(index)]; }
  const Component& operator[](Index index) const { return components_[static_cast<std::size_t>(index)]; }

  // The number that the next component gets.
  Index NextFree() const { return next_free_; }

  // The children of a component, counted up to 1000.
  std::int32_t ChildCount(Index index) const;

  // Whether the number is that of a successfully parsed expression.
  bool IsExpression(Index sequence) const;

  // Enters the expression text of a root, and finds the root by it (0: none).
  void Remember(Index root, std::string_view text);
  Index Find(std::string_view text) const;

  void Clear();

 private:
  std::vector<Component> components_;
  Index next_free_ = 1;
  std::map<std::string, Index, std::less<>> roots_;
};

}  // namespace qelm::xpath
