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
  index->ranks_.resize(host.elements.IdLimit(document));
  std::size_t flows = 0;
  for (Id flow = host.elements.FirstFlow(document); flow != kNone;
       flow = host.elements.NextFlow(document, flow)) {
    const Id root = host.elements.Root(document, flow);
    const std::uint32_t first = index->Size();
    if (root == kNone || index->RankOf(root) != kNoRank) continue;
    // No document has more flows than elements and some.
    if (!host.elements.ReadTree(document, root, &columns) || ++flows > index->ranks_.size()) return nullptr;
    index->roots_.push_back(first);
    for (std::uint32_t rank = first; rank < index->Size(); ++rank) {
      const Id element = columns.elements[rank];
      if (element >= index->ranks_.size() || index->ranks_[element] != 0) return nullptr;
      index->ranks_[element] = rank + 1;
    }
  }
  index->ListDefinitions();
  return index;
}

// Sorts the ranks by definition; those of one definition stay in their order.
void DocumentIndex::ListDefinitions() {
  const std::vector<Id>& definitions = columns_.definitions;
  const Id most = definitions.empty() ? 0 : *std::max_element(definitions.begin(), definitions.end());
  definition_begins_.assign(std::size_t{most} + 2, 0);
  for (const Id definition : definitions) ++definition_begins_[definition + 1];
  std::partial_sum(definition_begins_.begin(), definition_begins_.end(), definition_begins_.begin());
  by_definition_.resize(Size());
  RankList next(definition_begins_);
  for (std::uint32_t rank = 0; rank < Size(); ++rank) by_definition_[next[definitions[rank]]++] = rank;
  all_.resize(Size());
  std::iota(all_.begin(), all_.end(), 0U);
  if (OfDefinition(kNone).empty()) return;
  named_.reserve(Size() - OfDefinition(kNone).size());
  std::copy_if(all_.begin(), all_.end(), std::back_inserter(named_),
               [&](std::uint32_t rank) { return definitions[rank] != kNone; });
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

std::span<const std::uint32_t> DocumentIndex::OfDefinition(Id definition) const {
  if (std::size_t{definition} + 1 >= definition_begins_.size()) return {};
  const std::uint32_t begin = definition_begins_[definition];
  return std::span(by_definition_).subspan(begin, definition_begins_[definition + 1] - begin);
}

std::span<const std::uint32_t> DocumentIndex::Named() const {
  return OfDefinition(kNone).empty() ? std::span<const std::uint32_t>(all_) : named_;
}

const AttributeIndex* DocumentIndex::Attributes(host::Host& host, std::string_view name, bool with_defaults) {
  const auto [found, is_new] = attributes_.try_emplace({std::string(name), with_defaults});
  if (is_new) {
    found->second.emplace(host, document_, *this, name, with_defaults);
    if (!found->second->IsRegular()) found->second.reset();
  }
  return found->second ? &*found->second : nullptr;
}

const host::TextColumn* DocumentIndex::Texts(host::Host& host) {
  if (!texts_known_) {
    texts_known_ = true;
    texts_.emplace();
    if (!host.elements.ReadTexts(document_, columns_.elements, &*texts_)) texts_.reset();
  }
  return texts_ ? &*texts_ : nullptr;
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

}  // namespace qelm::xpath
