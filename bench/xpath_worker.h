// What the three programs of `scripts/bench xpath` have in common. Each opens one document, says what that
// took, and then evaluates the expressions that it is sent, one a line, and answers each with a line of JSON:
//
//   {"load":0.41,"kilobytes":183204}
//   {"count":60211,"nodes":"93bf1c0a77e2d514","first":0.0213,"seconds":0.0017,"runs":51,"kilobytes":18330}
//   {"timeout":true}
//
// An expression is evaluated in a child process, which has the document as it was opened and nothing that an
// earlier expression left behind; one that takes too long dies with its child. Times are processor time of
// the child: `first` of its first evaluation, `seconds` the median of those after it (of the first, where
// there was no time for a second). `nodes` stands for the set of nodes, whatever their order. `kilobytes` is
// what the child's memory grew by.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qelm::bench {

class XPathWorker {
 public:
  virtual ~XPathWorker() = default;

  // Opens the document. False, with a line on standard error, when that fails.
  virtual bool Load(const char* path) = 0;
  // Numbers the elements, for `Nodes`; not part of what is measured.
  virtual void Number() = 0;
  // Evaluates, and keeps the result. False when the expression is refused.
  virtual bool Evaluate(const std::string& expression) = 0;
  // Of the result: how many nodes there are, and the sum of NodeKey over them.
  virtual std::uint64_t Count() = 0;
  virtual std::uint64_t Nodes() = 0;
};

// A number for an element by its place in document order, from 1, or for its attribute of a name.
std::uint64_t NodeKey(std::uint64_t element, std::string_view attribute);

// The program: FILE and the most seconds for one expression are its arguments.
int Serve(XPathWorker& worker, int argc, char** argv);

}  // namespace qelm::bench
