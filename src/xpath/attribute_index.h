// All attributes of one name in a document, as columns: who carries one, and which of the distinct values it
// has. A comparison is decided once for each distinct value, however many elements have it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/interface/host.h"
#include "xpath/rank_set.h"

namespace qelm::xpath {

class DocumentIndex;

class AttributeIndex {
 public:
  AttributeIndex(host::Host& host, host::Id document, DocumentIndex& index, std::string_view name,
                 bool with_defaults);

  // False when an element carries the attribute twice. Nothing else may be asked then.
  bool IsRegular() const { return regular_; }

  // The elements that have the attribute, rising; what is said of one is found by its place in this list.
  const RankList& Ranks() const { return ranks_; }
  // Which attribute of the element it is.
  std::uint32_t IndexAt(std::size_t place) const { return indexes_[place]; }
  // The values as numbers of distinct values. Never empty: no value is one empty one.
  std::span<const std::uint32_t> ValuesAt(std::size_t place) const {
    return std::span(values_).subspan(begins_[place], begins_[place + 1] - begins_[place]);
  }

  // The distinct values by their number, and the number of one; kNoValue when nothing has it.
  static constexpr std::uint32_t kNoValue = 0xFFFFFFFFU;
  std::span<const std::string_view> Distinct() const { return distinct_; }
  std::uint32_t Find(std::string_view value) const {
    const auto found = numbers_.find(value);
    return found == numbers_.end() ? kNoValue : found->second;
  }

 private:
  void Add(std::uint32_t rank, std::uint32_t index, std::span<const std::string_view> values);
  void AddValue(std::string_view value);

  bool regular_ = true;
  RankList ranks_;
  std::vector<std::uint32_t> indexes_;
  std::vector<std::uint32_t> begins_{0};
  std::vector<std::uint32_t> values_;
  std::vector<std::string_view> distinct_;
  std::unordered_map<std::string_view, std::uint32_t> numbers_;
};

}  // namespace qelm::xpath
