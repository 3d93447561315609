// What a step selects, all of it, in the order in which it is found.
#pragma once

#include <span>
#include <utility>
#include <vector>

#include "xpath/rank_set.h"
#include "xpath/tree.h"

namespace qelm::xpath {

// Elements of one flow by their ranks, or nodes of any kind.
class Selection {
 public:
  Selection() = default;
  explicit Selection(std::vector<Node> nodes) : nodes_(std::move(nodes)), by_rank_(false) {}
  // `rising`: in document order.
  Selection(RankList ranks, bool rising) : own_(std::move(ranks)), rising_(rising) {}
  // A part of the index's own lists, which is not copied.
  explicit Selection(std::span<const std::uint32_t> part) : part_(part), is_part_(true) {}

  bool IsByRank() const { return by_rank_; }
  bool IsRising() const { return rising_; }
  std::span<const std::uint32_t> Ranks() const { return is_part_ ? part_ : std::span(own_); }
  const std::vector<Node>& Nodes() const { return nodes_; }
  std::size_t Size() const { return by_rank_ ? Ranks().size() : nodes_.size(); }

 private:
  RankList own_;
  std::span<const std::uint32_t> part_;
  std::vector<Node> nodes_;
  bool is_part_ = false;
  bool by_rank_ = true;
  bool rising_ = true;
};

}  // namespace qelm::xpath
