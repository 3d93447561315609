#include "xpath/set_axes.h"

#include <algorithm>

namespace qelm::xpath {
namespace {

using Ranks = std::span<const std::uint32_t>;
constexpr std::uint32_t kNoRank = DocumentIndex::kNoRank;

class Follower {
 public:
  Follower(const SetScope& scope, const ElementTest& passes, Ranks contexts, RankList* found)
      : scope_(scope), index_(*scope.index), passes_(passes), contexts_(contexts), found_(*found) {}

  void Self() {
    for (const std::uint32_t context : contexts_) Take(context);
  }

  void Children() {
    for (const std::uint32_t context : contexts_) {
      const std::uint32_t end = index_.EndOf(context);
      for (std::uint32_t child = context + 1; child < end; child = index_.EndOf(child)) Take(child);
    }
  }

  // In document order, a context inside the one before leads to nothing new.
  void DescendantsRising(bool with_self) {
    const Ranks list = passes_.All();
    auto from = list.begin();
    std::uint32_t covered = 0;
    for (const std::uint32_t context : contexts_) {
      if (context < covered) continue;
      covered = index_.EndOf(context);
      from = AtLeast(from, list.end(), with_self ? context : context + 1);
      const auto to = AtLeast(from, list.end(), covered);
      found_.insert(found_.end(), from, to);
      from = to;
    }
  }

  // What was found before was found inside another context, with everything inside it.
  void Descendants(bool with_self) {
    RankSet seen(index_.Size());
    RankSet entered(index_.Size());
    for (const std::uint32_t context : contexts_) {
      if (seen.Contains(context)) continue;
      entered.Insert(context);
      if (with_self && seen.Add(context)) Take(context);
      const std::uint32_t end = index_.EndOf(context);
      for (std::uint32_t rank = context + 1; rank < end;) {
        if (seen.Add(rank)) Take(rank);
        rank = entered.Contains(rank) ? index_.EndOf(rank) : rank + 1;
      }
    }
  }

  void Parents() {
    RankSet seen(index_.Size());
    for (const std::uint32_t context : contexts_) {
      const std::uint32_t parent = index_.ParentOf(context);
      if (parent != kNoRank && seen.Add(parent)) Take(parent);
    }
  }

  // Goes on from `first` of each context by `next`, up to where an earlier one has been.
  template <typename First, typename Next>
  void Chains(First&& first, Next&& next) {
    RankSet seen(index_.Size());
    for (const std::uint32_t context : contexts_) {
      for (std::uint32_t rank = first(context); rank != kNoRank && seen.Add(rank); rank = next(rank)) {
        Take(rank);
      }
    }
  }

  // All together are the tail behind the context that ends first; each finds what lies before the tails found
  // so far.
  void Following() {
    const Ranks list = passes_.All();
    std::uint32_t stop = scope_.end;
    auto to = list.end();
    for (const std::uint32_t context : contexts_) {
      const std::uint32_t begin = index_.EndOf(context);
      if (begin >= stop) continue;
      const auto from = std::lower_bound(list.begin(), to, begin);
      found_.insert(found_.end(), from, to);
      stop = begin;
      to = from;
    }
  }

  // Backwards from each context to the one before. What was left out there, because it was an ancestor, is
  // found from the first context behind its end; these are a chain, the innermost last.
  void Preceding() {
    const Ranks list = passes_.All();
    RankList left_out;
    RankList around;
    std::uint32_t reached = scope_.begin;
    auto from = list.begin();
    for (const std::uint32_t context : contexts_) {
      if (context <= reached) continue;
      const auto to = AtLeast(from, list.end(), context);
      around.clear();
      for (auto at = to; at != from;) {
        const std::uint32_t rank = *--at;
        (index_.EndOf(rank) > context ? around : found_).push_back(rank);
      }
      for (; !left_out.empty() && index_.EndOf(left_out.back()) <= context; left_out.pop_back()) {
        found_.push_back(left_out.back());
      }
      left_out.insert(left_out.end(), around.rbegin(), around.rend());
      reached = context;
      from = to;
    }
  }

 private:
  using Place = Ranks::iterator;

  void Take(std::uint32_t rank) {
    if (passes_(rank)) found_.push_back(rank);
  }

  // The first place from `from` on with a rank not below `rank`: doubling steps, then halving, as the next
  // one is mostly near.
  static Place AtLeast(Place from, Place end, std::uint32_t rank) {
    std::ptrdiff_t step = 1;
    while (end - from > step && from[step] < rank) {
      from += step;
      step *= 2;
    }
    return std::lower_bound(from, end - from > step ? from + step + 1 : end, rank);
  }

  const SetScope& scope_;
  DocumentIndex& index_;
  const ElementTest& passes_;
  Ranks contexts_;
  RankList& found_;
};

}  // namespace

Ranks SetScope::Within(Ranks ranks) const {
  const auto from = std::lower_bound(ranks.begin(), ranks.end(), begin);
  return {from, std::lower_bound(from, ranks.end(), end)};
}

Ranks ElementTest::All() const {
  switch (test_) {
    case NodeTest::kAny:
      return scope_.Within(scope_.index->All());
    case NodeTest::kNamed:
      return scope_.Within(scope_.index->Named());
    case NodeTest::kText:
      return scope_.Within(scope_.index->OfDefinition(host::kNone));
    case NodeTest::kName:
      break;
  }
  return definition_ == host::kNone ? Ranks() : scope_.Within(scope_.index->OfDefinition(definition_));
}

void FollowAxis(const SetScope& scope, Axis axis, const ElementTest& passes, Ranks contexts, bool rising,
                RankList* found) {
  Follower follower(scope, passes, contexts, found);
  DocumentIndex& index = *scope.index;
  const auto parent = [&](std::uint32_t rank) { return index.ParentOf(rank); };
  switch (axis) {
    case Axis::kSelf:
      return follower.Self();
    case Axis::kChild:
      return follower.Children();
    case Axis::kDescendant:
    case Axis::kDescendantOrSelf: {
      const bool with_self = axis == Axis::kDescendantOrSelf;
      return rising ? follower.DescendantsRising(with_self) : follower.Descendants(with_self);
    }
    case Axis::kParent:
      return follower.Parents();
    case Axis::kAncestor:
      return follower.Chains(parent, parent);
    case Axis::kAncestorOrSelf:
      return follower.Chains([](std::uint32_t rank) { return rank; }, parent);
    case Axis::kFollowingSibling: {
      const auto next = [&](std::uint32_t rank) { return index.NextOf(rank); };
      return follower.Chains(next, next);
    }
    case Axis::kPrecedingSibling: {
      const RankList& previous = index.Previous();
      const auto before = [&](std::uint32_t rank) { return previous[rank]; };
      return follower.Chains(before, before);
    }
    case Axis::kFollowing:
      return follower.Following();
    case Axis::kPreceding:
      return follower.Preceding();
    default:
      return;
  }
}

}  // namespace qelm::xpath
