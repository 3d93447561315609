// Positions on long axes. A step whose predicates ask for positions must know, for each context by itself,
// the nodes that its axis gives in order; walking there for every context would cost the square of the
// document's size. When that begins to show, the nodes that pass the step's node test are listed once in
// document order: those of most axes are then a stretch of a list, found by two binary searches.
//
//   descendant, following    a stretch of the list of the whole document
//   siblings                 a stretch of the list of one parent's children; all these lists lie in one
//   preceding                the list backwards from the context, ancestors left out
//   ancestor                 a chain from each node to the nearest ancestor that passes
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "xpath/document_index.h"
#include "xpath/plan.h"

namespace qelm::xpath {

// The nodes of one step's axis that pass its node test, for any context of one document.
class Candidates {
 public:
  // Whether the axis is one of these.
  static bool Serves(Axis axis);

  // `list` is what passes the node test, rising; it is the index's own and lives as long.
  Candidates(const DocumentIndex& index, std::span<const std::uint32_t> list, Axis axis);

  // Makes the element of this rank the one whose axis is asked about.
  void Select(std::uint32_t context);
  // How many nodes there are.
  std::int64_t Count() const { return count_; }
  // Goes to the position `first` (from 1); Next gives the ranks from there up to the position `last`, then
  // kNoRank.
  void Seek(std::int64_t first, std::int64_t last);
  std::uint32_t Next();
  // The node that Next gave last is not wanted again, from whatever context. Next may pass over it.
  void Drop();
  // All nodes are wanted again.
  void Restore();

  // Whether the axis leads up: then what is behind a node is behind it from every context.
  bool IsChain() const { return axis_ == Axis::kAncestor || axis_ == Axis::kAncestorOrSelf; }

 private:
  bool IsBackward() const { return axis_ == Axis::kPreceding || axis_ == Axis::kPrecedingSibling; }

  void GroupByParent();
  void LinkAncestors();
  void SelectStretch();
  void SeekUp(std::int64_t first);
  void SeekBefore(std::int64_t first);
  bool IsAncestor(std::uint32_t place) const { return index_.EndOf(list_[place]) > context_; }
  std::uint32_t PlaceOf(std::uint32_t rank, std::uint32_t from, std::uint32_t to) const;
  std::uint32_t Wanted(std::uint32_t slot);

  const DocumentIndex& index_;
  Axis axis_;
  RankSet passes_;                        // chain and preceding
  std::span<const std::uint32_t> list_;   // the ranks that pass
  std::vector<std::uint32_t> by_parent_;  // siblings: these are the list then
  std::vector<std::uint32_t> group_;      // siblings: by the parent's rank, where its children begin in list_

  // By rank, of the ancestors that pass: the nearest, the one farthest up, and how many there are.
  std::vector<std::uint32_t> nearest_;
  std::vector<std::uint32_t> farthest_;
  std::vector<std::uint32_t> depth_;

  // By place in list_ plus 1: itself, or where to look on for one that was not dropped.
  std::vector<std::uint32_t> wanted_;
  std::vector<std::uint32_t> dropped_;

  std::uint32_t context_ = 0;
  std::int64_t count_ = 0;
  std::uint32_t begin_ = 0;  // the stretch of list_
  std::uint32_t end_ = 0;
  std::int64_t left_ = 0;   // chain and preceding: how many Next may still give
  bool to_end_ = false;     // preceding: up to the last one, so that dropped ones need not be counted
  std::uint32_t slot_ = 0;  // where Next looks: a place plus 1, or a rank of the chain
  std::uint32_t stop_ = 0;  // the slot behind the last one
  std::uint32_t given_ = 0;
};

}  // namespace qelm::xpath
