#include "xpath/set_values.h"

#include <algorithm>

#include "common/numbers.h"
#include "common/utf8.h"

namespace qelm::xpath {
namespace {

// Up to so many nodes inside each element, on the average, its whole text is little more than what counts of
// it.
constexpr std::size_t kMostInside = 16;

// Whether a value matches, decided once for each distinct one.
class DistinctMatches {
 public:
  DistinctMatches(const AttributeIndex& attributes, const OtherOperand& other)
      : distinct_(attributes.Distinct()), other_(other), known_(distinct_.size(), kUnknown) {
    const bool is_equality = other.test == Test::kEqual || other.test == Test::kNotEqual;
    if (!is_equality || other.values->Size() != 1 || common::IsInteger((*other.values)[0], nullptr)) return;
    // Text is equal to nothing but itself.
    single_ = true;
    wanted_ = attributes.Find((*other.values)[0]);
  }

  bool Matches(std::uint32_t value) {
    if (single_) return value == wanted_;
    if (known_[value] == kUnknown) known_[value] = other_.Matches(distinct_[value]) ? kYes : kNo;
    return known_[value] == kYes;
  }
  bool IsEmpty(std::uint32_t value) const { return distinct_[value].empty(); }

 private:
  enum Answer : std::uint8_t { kUnknown, kYes, kNo };
  std::span<const std::string_view> distinct_;
  const OtherOperand& other_;
  std::vector<Answer> known_;
  bool single_ = false;
  std::uint32_t wanted_ = AttributeIndex::kNoValue;
};

}  // namespace

ValuedElements CompareAttributes(const SetScope& scope, const AttributeIndex& attributes,
                                 const OtherOperand& other) {
  ValuedElements elements;
  const std::span<const std::uint32_t> ranks = attributes.Ranks();
  const std::span<const std::uint32_t> within = scope.Within(ranks);
  elements.all.assign(within.begin(), within.end());
  DistinctMatches matches(attributes, other);
  const bool compares = !other.values->IsEmpty();
  auto place = static_cast<std::size_t>(within.begin() - ranks.begin());
  for (const std::uint32_t rank : within) {
    const std::span<const std::uint32_t> values = attributes.ValuesAt(place++);
    if (matches.IsEmpty(values.front())) {
      elements.empty.push_back(rank);
    } else if (compares && std::any_of(values.begin(), values.end(),
                                       [&](std::uint32_t value) { return matches.Matches(value); })) {
      elements.matching.push_back(rank);
    }
  }
  return elements;
}

TextReader::TextReader(Environment& environment, const SetScope& scope, std::span<const std::uint32_t> ranks,
                       bool rising)
    : environment_(environment), scope_(scope), ranks_(ranks) {
  const DocumentIndex& index = *scope.index;
  if (!rising) return;
  std::size_t inside = 0;
  std::uint32_t covered = 0;
  std::vector<host::Id> elements;
  elements.reserve(ranks.size());
  for (const std::uint32_t rank : ranks) {
    elements.push_back(index.ElementAt(rank));
    if (rank < covered) continue;
    covered = index.EndOf(rank);
    inside += covered - rank;
  }
  at_once_ = inside <= kMostInside * ranks.size() &&
             environment.Host().elements.ReadTexts(
                 environment.TreeOf({host::kNone, Node::kElement, scope.tree}).Document(), elements, &texts_);
}

std::string_view TextReader::Read(std::size_t place) {
  if (!at_once_) {
    const Node node{scope_.index->ElementAt(ranks_[place]), Node::kElement, scope_.tree};
    return environment_.SingleValue(node, kComparedCharacters);
  }
  const std::uint32_t begin = texts_.begins[place];
  const std::string_view text = std::string_view(texts_.text).substr(begin, texts_.ends[place] - begin);
  return text.size() <= kComparedCharacters ? text : common::FirstCharacters(text, kComparedCharacters);
}

ValuedElements CompareTexts(Environment& environment, const SetScope& scope, RankList ranks,
                            const OtherOperand& other) {
  ValuedElements elements;
  TextReader reader(environment, scope, ranks, true);
  const bool compares = !other.values->IsEmpty();
  for (std::size_t place = 0; place < ranks.size(); ++place) {
    const std::uint32_t rank = ranks[place];
    const std::string_view text = reader.Read(place);
    if (text.empty()) {
      elements.empty.push_back(rank);
    } else if (compares && other.Matches(text)) {
      elements.matching.push_back(rank);
    }
  }
  elements.all = std::move(ranks);
  return elements;
}

void GatherAttributes(const AttributeIndex& attributes, std::span<const std::uint32_t> ranks,
                      ValueSet* values) {
  std::vector<bool> added(attributes.Distinct().size());
  const RankList& owners = attributes.Ranks();
  for (const std::uint32_t rank : ranks) {
    const auto owner = std::lower_bound(owners.begin(), owners.end(), rank);
    if (owner == owners.end() || *owner != rank) continue;
    for (const std::uint32_t value : attributes.ValuesAt(static_cast<std::size_t>(owner - owners.begin()))) {
      if (added[value]) continue;
      added[value] = true;
      values->Add(attributes.Distinct()[value]);
    }
  }
}

void GatherTexts(Environment& environment, const SetScope& scope, std::span<const std::uint32_t> ranks,
                 bool rising, ValueSet* values) {
  TextReader reader(environment, scope, ranks, rising);
  for (std::size_t place = 0; place < ranks.size(); ++place) values->Add(reader.Read(place));
}

}  // namespace qelm::xpath
