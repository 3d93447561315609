// What a search does, worked out once from the components of an expression: its paths, their steps and
// predicates as plain data, with parameters replaced by their values and with everything known that does not
// depend on a document.
//
// Paths and comparisons are numbered within the plan; path 0 is the expression itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "xpath/comparison.h"
#include "xpath/components.h"

namespace qelm::xpath {

using ParameterMap = std::map<std::string, std::string, std::less<>>;

enum class OperandKind : std::uint8_t {
  kNothing,
  kConstant,
  kPath,
  kComparison,  // a function that compares: contains() and its like
  kNot,
  kPosition,
  kLast,
};

struct Operand {
  OperandKind kind = OperandKind::kNothing;
  std::size_t number = 0;  // of the path, the comparison, or the operand that is negated
  std::string constant;
};

struct ComparisonPlan {
  Test test = Test::kEqual;
  Operand left;
  Operand right;
  bool is_truth = false;  // the left side is a function, of which only "true" is asked
};

// A path is an existence test; everything else is a comparison.
struct PredicatePlan {
  bool is_existence = false;
  std::size_t number = 0;   // of the path or comparison
  bool positional = false;  // whether it reads position() or last() of its own step
  bool uses_last = false;
  Index component = 0;
};

// A comparison of position() or last() with an integer or with each other. A step whose predicates must all
// hold looks only at the positions that these leave.
struct PositionBound {
  enum class Side : std::uint8_t { kPosition, kLast };
  Side side = Side::kPosition;
  Test test = Test::kEqual;
  bool against_last = false;
  std::int64_t number = 0;
};

enum class NodeTest : std::uint8_t { kAny, kNamed, kText, kName };

struct StepPlan {
  std::size_t number = 0;  // among all steps of the plan
  Index component = 0;
  Axis axis = Axis::kChild;
  NodeTest test = NodeTest::kAny;
  std::string name;
  std::int32_t property = kNoProperty;
  bool is_attribute = false;  // an attribute's name and nothing else
  bool any_holds = false;     // one predicate is enough
  std::vector<PredicatePlan> predicates;
  std::vector<PositionBound> bounds;
  bool positional = false;  // whether what it selects depends on positions
  bool uses_last = false;
  bool rest_positional = false;  // whether `predicates` still do, besides `bounds`
  bool unique = false;           // whether no node can come twice, given that its contexts do not
};

struct PathPlan {
  std::vector<StepPlan> steps;
  bool absolute = false;      // it does not depend on the node where it is evaluated, only on the flow
  bool local = false;         // it stays in the tree of that node
  bool is_attribute = false;  // it is one step, an attribute's name
  bool direct = false;        // it only looks at the node, its attributes and a fixed number of levels below
};

struct Plan {
  std::vector<PathPlan> paths;
  std::vector<ComparisonPlan> comparisons;
  std::vector<Operand> negated;
  std::size_t step_count = 0;
};

// Why components could not be made into a plan: the table holds something that the parser never builds.
enum class PlanProblem : std::uint8_t { kNone, kPredicate, kPosition, kLast };

PlanProblem MakePlan(const ComponentTable& table, Index sequence, const ParameterMap& parameters, Plan* plan);

// Whether the axis goes to the root elements of flows, and so is evaluated flow after flow.
bool IsFlowAxis(Axis axis);

}  // namespace qelm::xpath
