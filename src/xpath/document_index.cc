#include "xpath/document_index.h"

#include <algorithm>
#include <numeric>

namespace qelm::xpath {

using host::Id;
using host::kNone;

std::shared_ptr<DocumentIndex> DocumentIndex::Make(host::Host& host, Id document) {
  std::shared_ptr<DocumentIndex> index(new DocumentIndex());
  index->document_ = document;
  host::ElementColumns& columns = index->columns_;
  const Id limit = host.elements.IdLimit(document);
  for (Id flow = host.elements.FirstFlow(document); flow != kNone;
       flow = host.elements.NextFlow(document, flow)) {
    const Id root = host.elements.Root(document, flow);
    const bool is_known = std::any_of(index->roots_.begin(), index->roots_.end(),
                                      [&](std::uint32_t rank) { return columns.elements[rank] == root; });
    if (root == kNone || is_known) continue;
    const std::uint32_t first = index->Size();
    // No document has more flows than elements.
    if (!host.elements.ReadTree(document, root, &columns) || index->roots_.size() > limit) return nullptr;
    if (first < index->Size()) index->roots_.push_back(first);
  }
  if (!index->NumberElements(limit)) return nullptr;
  return index;
}

// False when an element is in several trees, or twice in one.
bool DocumentIndex::NumberElements(Id limit) {
  const std::vector<Id>& elements = columns_.elements;
  first_id_ = elements.empty() ? 0 : elements.front();
  std::uint32_t gaps = 0;
  for (std::uint32_t rank = 0; rank < Size(); ++rank) gaps |= elements[rank] ^ (first_id_ + rank);
  if (gaps == 0) return true;
  ranks_.resize(limit);
  for (std::uint32_t rank = 0; rank < Size(); ++rank) {
    if (elements[rank] >= limit || ranks_[elements[rank]] != 0) return false;
    ranks_[elements[rank]] = rank + 1;
  }
  return true;
}

template <typename Wanted>
RankList DocumentIndex::List(Wanted&& wanted) const {
  const std::vector<Id>& definitions = columns_.definitions;
  RankList ranks(static_cast<std::size_t>(std::count_if(definitions.begin(), definitions.end(), wanted)) + 1);
  std::size_t count = 0;
  for (std::uint32_t rank = 0; rank < Size(); ++rank) {
    ranks[count] = rank;
    if (wanted(definitions[rank])) ++count;
  }
  ranks.pop_back();
  return ranks;
}

std::uint32_t DocumentIndex::RootOf(std::uint32_t rank) const {
  return *(std::upper_bound(roots_.begin(), roots_.end(), rank) - 1);
}

const RankList& DocumentIndex::Previous() {
  if (!previous_.empty() || Size() == 0) return previous_;
  previous_.assign(Size(), kNoRank);
  for (std::uint32_t rank = 0; rank < Size(); ++rank) {
    const std::uint32_t next = NextOf(rank);
    if (next != kNoRank) previous_[next] = rank;
  }
  return previous_;
}

std::span<const std::uint32_t> DocumentIndex::OfDefinition(Id definition) {
  const auto [found, is_new] = by_definition_.try_emplace(definition);
  if (is_new) found->second = List([definition](Id other) { return other == definition; });
  return found->second;
}

std::span<const std::uint32_t> DocumentIndex::Named() {
  if (!named_) named_ = List([](Id definition) { return definition != kNone; });
  return *named_;
}

std::span<const std::uint32_t> DocumentIndex::All() {
  if (!all_) {
    all_.emplace(Size());
    std::iota(all_->begin(), all_->end(), 0U);
  }
  return *all_;
}

const AttributeIndex* DocumentIndex::Attributes(host::Host& host, std::string_view name, bool with_defaults) {
  const auto [found, is_new] = attributes_.try_emplace({std::string(name), with_defaults});
  if (is_new) {
    found->second.emplace(host, document_, *this, name, with_defaults);
    if (!found->second->IsRegular()) found->second.reset();
  }
  return found->second ? &*found->second : nullptr;
}

bool DocumentIndexes::Has(host::Host& host, Id document) const {
  const std::uint64_t revision = host.elements.Revision(document);
  return revision != 0 && std::any_of(kept_.begin(), kept_.end(), [&](const Kept& kept) {
           return kept.document == document && kept.revision == revision;
         });
}

std::shared_ptr<DocumentIndex> DocumentIndexes::Get(host::Host& host, Id document) {
  std::erase_if(kept_,
                [&](const Kept& kept) { return host.elements.Revision(kept.document) != kept.revision; });
  const auto found =
      std::find_if(kept_.begin(), kept_.end(), [&](const Kept& kept) { return kept.document == document; });
  if (found != kept_.end()) {
    std::rotate(found, found + 1, kept_.end());
    return kept_.back().index;
  }
  std::shared_ptr<DocumentIndex> index = DocumentIndex::Make(host, document);
  const std::uint64_t revision = host.elements.Revision(document);
  if (index == nullptr || revision == 0) return index;
  if (kept_.size() == kMost) kept_.erase(kept_.begin());
  kept_.push_back({document, revision, index});
  return index;
}

std::uint64_t DocumentIndexes::StepsLeft(host::Host& host, Id document) const {
  // An index costs about as much as walking over this part of the document.
  constexpr std::uint64_t kPart = 16;
  constexpr std::uint64_t kFew = 1000;
  const std::uint64_t steps = kFew + host.elements.IdLimit(document) / kPart;
  const bool was_walked = document == walked_document_ && walked_revision_ != 0 &&
                          host.elements.Revision(document) == walked_revision_;
  return was_walked ? steps - std::min(steps, steps_) : steps;
}

void DocumentIndexes::AddSteps(host::Host& host, Id document, std::uint64_t steps) {
  const std::uint64_t revision = host.elements.Revision(document);
  if (document != walked_document_ || revision != walked_revision_) steps_ = 0;
  walked_document_ = document;
  walked_revision_ = revision;
  steps_ += steps;
}

}  // namespace qelm::xpath
