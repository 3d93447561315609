// What is kept of a document to answer questions about many of its elements at once: the elements in document
// order as columns, lists of them by definition, and, from the first question on, the values of an
// attribute as columns. It is made from a few calls of the host, kept between searches, and thrown away with
// the first edit of the document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/interface/host.h"
#include "xpath/attribute_index.h"
#include "xpath/id_sets.h"
#include "xpath/rank_set.h"

namespace qelm::xpath {

// The elements of all flows of one document. A rank is a place in their order.
class DocumentIndex {
 public:
  static constexpr std::uint32_t kNoRank = host::ElementColumns::kNoPlace;

  // Null when the document's links run in circles.
  static std::shared_ptr<DocumentIndex> Make(host::Host& host, host::Id document);

  std::uint32_t Size() const { return static_cast<std::uint32_t>(columns_.elements.size()); }
  // kNoRank for an element that is in no flow.
  std::uint32_t RankOf(host::Id element) const {
    if (!ranks_.empty()) return element < ranks_.size() ? ranks_[element] - 1 : kNoRank;
    return element >= first_id_ && element - first_id_ < Size() ? element - first_id_ : kNoRank;
  }

  std::span<const host::Id> Elements() const { return columns_.elements; }
  host::Id ElementAt(std::uint32_t rank) const { return columns_.elements[rank]; }
  host::Id DefinitionAt(std::uint32_t rank) const { return columns_.definitions[rank]; }
  // The rank of the parent; kNoRank for a root element.
  std::uint32_t ParentOf(std::uint32_t rank) const { return columns_.parents[rank]; }
  // One more than the last rank inside the element.
  std::uint32_t EndOf(std::uint32_t rank) const { return columns_.ends[rank]; }
  // The rank of the root element above.
  std::uint32_t RootOf(std::uint32_t rank) const;
  // The rank of the sibling behind, kNoRank for the last one.
  std::uint32_t NextOf(std::uint32_t rank) const {
    const std::uint32_t parent = ParentOf(rank);
    return parent != kNoRank && EndOf(rank) < EndOf(parent) ? EndOf(rank) : kNoRank;
  }
  // The rank of the sibling before, kNoRank for the first one; by rank, made at the first call.
  const RankList& Previous();

  // The ranks of the elements of one definition (kNone: of the text nodes), of all that have a definition,
  // and of all, rising. Each list is made when it is asked for first.
  std::span<const std::uint32_t> OfDefinition(host::Id definition);
  std::span<const std::uint32_t> Named();
  std::span<const std::uint32_t> All();

  // The values of the attributes of one name; null when they do not fit into one column.
  const AttributeIndex* Attributes(host::Host& host, std::string_view name, bool with_defaults);

 private:
  DocumentIndex() = default;
  bool NumberElements(host::Id limit);
  template <typename Wanted>
  RankList List(Wanted&& wanted) const;

  host::Id document_ = host::kNone;
  host::ElementColumns columns_;
  RankList roots_;
  // Ids that follow each other without a gap need no table: the rank is the distance from the first.
  host::Id first_id_ = host::kNone;
  RankList ranks_;  // by id, plus 1, so that 0 is none
  RankList previous_;
  std::optional<RankList> all_;
  std::optional<RankList> named_;
  std::unordered_map<host::Id, RankList> by_definition_;
  std::map<std::pair<std::string, bool>, std::optional<AttributeIndex>, std::less<>> attributes_;
};

// The indexes of the documents that were searched last.
class DocumentIndexes {
 public:
  // The index of a document, made when there is none that is still right. Null when it cannot be made. Where
  // the host does not count edits it holds for this search only.
  std::shared_ptr<DocumentIndex> Get(host::Host& host, host::Id document);
  // Whether Get would find it made.
  bool Has(host::Host& host, host::Id document) const;

  // How many more elements searches may move over one by one until an index pays: all searches since the last
  // edit together. AddSteps says how many one has moved over.
  std::uint64_t StepsLeft(host::Host& host, host::Id document) const;
  void AddSteps(host::Host& host, host::Id document, std::uint64_t steps);

 private:
  static constexpr std::size_t kMost = 4;
  struct Kept {
    host::Id document;
    std::uint64_t revision;
    std::shared_ptr<DocumentIndex> index;
  };
  std::vector<Kept> kept_;  // the one that was asked for last at the end
  // The document that was walked over last, and how far.
  host::Id walked_document_ = host::kNone;
  std::uint64_t walked_revision_ = 0;
  std::uint64_t steps_ = 0;
};

}  // namespace qelm::xpath
