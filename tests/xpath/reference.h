// A second evaluator, slow and obvious, that the engine is compared with. It works from an expression tree of
// its own, which writes itself as text for the engine: nothing of the engine's stages is used here.
#pragma once

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/tree_host.h"

namespace qelm::xpath {

struct ReferencePath;

// An operand: a path, a literal, or a function of its name.
struct ReferenceOperand {
  enum class Kind { kPath, kText, kInteger, kPosition, kLast, kFunction };
  Kind kind = Kind::kPath;
  std::shared_ptr<ReferencePath> path;
  std::string text;  // of a literal, or the name of a function
  std::vector<ReferenceOperand> arguments;
};

struct ReferencePredicate {
  ReferenceOperand left;
  std::string comparison;  // empty: `left` alone
  ReferenceOperand right;
};

struct ReferenceStep {
  std::string axis;
  std::string test;
  std::vector<ReferencePredicate> predicates;
  bool any = false;  // joined by "or"
};

struct ReferencePath {
  bool absolute = false;
  std::vector<ReferenceStep> steps;
};

// An element by its id, an attribute by its index as well.
struct ReferenceNode {
  host::Id id = 0;
  int attribute = -1;  // -2: the point above the root
  friend bool operator==(const ReferenceNode&, const ReferenceNode&) = default;
};

// A random path, and its text; `variant` chooses between short and long forms.
ReferencePath RandomPath(std::mt19937& random);
std::string Write(const ReferencePath& path, std::mt19937& variant);

// A random tree as the flow "Main".
void RandomTree(std::mt19937& random, testing::TreeDocument* document);

// What the path selects from a context, in order.
std::vector<ReferenceNode> Evaluate(const testing::TreeDocument& document, const ReferencePath& path,
                                    host::Id context);

}  // namespace qelm::xpath
