// Marks of nested elements, written so that each piece of text is written once.
//
// An inner element's mark lies over the outer one's. Writing the outer one first and the inner ones over it
// would write the text of an element as often as there are colored elements around it, which in a document
// that is nested deeply never ends. So a mark is kept open until the walk leaves its element, and is then
// written where no inner mark was: an inner one has all that the outer ones set, with its own on top. What
// the host refuses to an inner element is left to the outer one.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "coloring/rule_colors.h"
#include "coloring/text_marks.h"
#include "host/interface/host.h"

namespace qelm::coloring {

class MarkStack {
 public:
  // `done` is told of each mark, once it was written or refused, with the rule that it was begun with.
  MarkStack(host::Host& host, host::Id document, std::function<void(std::int32_t rule, bool written)> done)
      : host_(host), document_(document), done_(std::move(done)) {}

  // The walk has come to an element: writes the marks of those that it has left.
  void Visit(std::size_t depth, host::ElementKind kind) {
    CloseFrom(depth);
    while (!barriers_.empty() && barriers_.back() >= depth) barriers_.pop_back();
    if (BeginsTextOfItsOwn(kind) || kind == host::ElementKind::kFootnote) barriers_.push_back(depth);
  }
  // The element that was visited last has a mark.
  void Begin(std::size_t depth, host::Id element, host::ElementKind kind, const RuleMark& mark,
             std::int32_t rule);
  // Writes what is open. What lies behind where the walk ended is marked as far as open elements reach.
  void End() { CloseFrom(0); }

 private:
  struct Open {
    std::size_t depth = 0;
    std::size_t barriers = 0;  // how many there were: what is in other text than this is not in its mark
    std::int32_t rule = 0;
    host::Id element = host::kNone;
    host::Id last_inside = host::kNone;  // the last element inside whose mark was written
    bool written = true;
    host::TextProperties properties;  // with those of the marks around it
    host::TextRange whole;
    host::TextLocation unwritten;  // from here on nothing is written yet
    std::size_t located = 0;       // after how many edits these places were found
  };

  // Finds the places of an open mark again, where an edit made them stale.
  void Locate(Open* open);
  void CloseFrom(std::size_t depth) {
    while (!open_.empty() && open_.back().depth >= depth) Close();
  }
  void Close();
  // The innermost open mark, when it is in the text behind so many barriers; else null.
  const Open* Around(std::size_t barriers) const;
  bool Write(const host::TextLocation& begin, const host::TextLocation& end,
             const host::TextProperties& properties);

  host::Host& host_;
  host::Id document_;
  std::function<void(std::int32_t, bool)> done_;
  std::vector<Open> open_;
  std::size_t edits_ = 0;              // that made places stale
  std::vector<std::size_t> barriers_;  // depths of the elements around here whose text stands elsewhere
};

}  // namespace qelm::coloring
