#include "xpath/attribute_index.h"

#include <algorithm>

#include "xpath/document_index.h"
#include "xpath/values.h"

namespace qelm::xpath {
namespace {

using host::Id;
using host::kNone;

// Which definitions give the attribute values of their own.
std::vector<bool> WithDefault(host::Host& host, Id document, std::string_view name) {
  std::vector<bool> with_default;
  for (Id definition = host.definitions.FirstDefinition(document); definition != kNone;
       definition = host.definitions.NextDefinition(document, definition)) {
    for (const host::AttributeDefinition& attribute :
         host.definitions.AttributeDefinitions(document, definition)) {
      if (attribute.name != name || HasNoValue(attribute.defaults)) continue;
      if (definition >= with_default.size()) with_default.resize(std::size_t{definition} + 1);
      with_default[definition] = true;
    }
  }
  return with_default;
}

// The ranks of the elements of these definitions, rising.
RankList RanksOf(DocumentIndex& index, const std::vector<bool>& definitions) {
  RankList ranks;
  for (Id definition = 1; definition < definitions.size(); ++definition) {
    if (!definitions[definition]) continue;
    const auto more = index.OfDefinition(definition);
    ranks.insert(ranks.end(), more.begin(), more.end());
  }
  std::sort(ranks.begin(), ranks.end());
  return ranks;
}

}  // namespace

// What has defaults is read element by element, as only there it is known where a default stands.
AttributeIndex::AttributeIndex(host::Host& host, Id document, DocumentIndex& index, std::string_view name,
                               bool with_defaults) {
  std::vector<bool> with_default;
  if (with_defaults) with_default = WithDefault(host, document, name);
  const RankList single = RanksOf(index, with_default);
  AttributeSource source(host.elements, host.definitions, true);
  auto next = single.begin();
  const auto add_single = [&](std::uint32_t end) {
    for (; next != single.end() && *next < end; ++next) {
      source.Load(document, index.ElementAt(*next));
      for (std::size_t attribute = 0; attribute < source.Count(); ++attribute) {
        if (source.Name(attribute) == name)
          Add(*next, static_cast<std::uint32_t>(attribute), source.Values(attribute));
      }
    }
  };

  host::AttributeColumn column;
  host.definitions.ReadAttributeColumn(document, index.Elements(), name, &column);
  ranks_.reserve(column.entries.size());
  indexes_.reserve(column.entries.size());
  begins_.reserve(column.entries.size() + 1);
  values_.reserve(column.values.size());
  for (const host::AttributeColumn::Entry& entry : column.entries) {
    const Id definition = index.DefinitionAt(entry.place);
    if (definition == kNone || (definition < with_default.size() && with_default[definition])) continue;
    add_single(entry.place);
    Add(entry.place, entry.index, std::span(column.values).subspan(entry.first_value, entry.value_count));
  }
  add_single(index.Size());
}

void AttributeIndex::Add(std::uint32_t rank, std::uint32_t index, std::span<const std::string_view> values) {
  regular_ = regular_ && (ranks_.empty() || ranks_.back() < rank);
  ranks_.push_back(rank);
  indexes_.push_back(index);
  if (values.empty()) AddValue({});
  for (const std::string_view value : values) AddValue(value);
  begins_.push_back(static_cast<std::uint32_t>(values_.size()));
}

void AttributeIndex::AddValue(std::string_view value) {
  const auto [found, is_new] = numbers_.try_emplace(value, static_cast<std::uint32_t>(distinct_.size()));
  if (is_new) distinct_.push_back(value);
  values_.push_back(found->second);
}

}  // namespace qelm::xpath
