#include "embedded/model/document.h"

namespace qelm::embedded::model {
namespace {

// Finds or makes the entry of a name in a catalog with an index beside it.
template <typename Entry>
Id InternNamed(Document* document, std::string_view name, std::vector<Entry>* entries,
               std::unordered_map<std::string_view, Id>* index) {
  const auto found = index->find(name);
  if (found != index->end()) return found->second;
  const auto id = static_cast<Id>(entries->size());
  entries->emplace_back();
  entries->back().name = document->KeepName(name);
  index->emplace(entries->back().name, id);
  return id;
}

// The names alone: what is said of them is read anew.
template <typename Entry>
void CopyNames(const std::vector<Entry>& from, std::vector<Entry>* to,
               std::unordered_map<std::string_view, Id>* index) {
  for (std::size_t id = to->size(); id < from.size(); ++id) {
    to->emplace_back();
    to->back().name = from[id].name;
    index->emplace(from[id].name, static_cast<Id>(id));
  }
}

}  // namespace

std::size_t FontEdits::ChangeHash::operator()(const Change& change) const {
  const std::uint64_t flags = static_cast<std::uint64_t>(change.known) |
                              static_cast<std::uint64_t>(change.underlining) << 8U |
                              (change.overline ? 1ULL << 16U : 0) | (change.strikethrough ? 1ULL << 17U : 0) |
                              (change.change_bar ? 1ULL << 18U : 0) | (change.reset ? 1ULL << 19U : 0);
  std::uint64_t hash = flags;
  for (const std::uint64_t part : {change.font, change.paragraph_state, change.color, change.background}) {
    hash = (hash ^ part) * 0x9E3779B97F4A7C15ULL;
    hash ^= hash >> 29U;
  }
  return static_cast<std::size_t>(hash);
}

void CharacterProperties::Take(const CharacterProperties& from) {
  if ((from.known & kColorBit) != 0) color = from.color;
  if ((from.known & kUnderliningBit) != 0) underlining = from.underlining;
  if ((from.known & kOverlineBit) != 0) overline = from.overline;
  if ((from.known & kStrikethroughBit) != 0) strikethrough = from.strikethrough;
  if ((from.known & kChangeBarBit) != 0) change_bar = from.change_bar;
  if ((from.known & kBackgroundBit) != 0) background = from.background;
  known |= from.known;
}

std::string_view Document::KeepBeside(std::string_view text) {
  constexpr std::size_t kLong = 64;
  constexpr std::size_t kChunk = 65536;
  if (text.size() > kLong) return text;
  if (beside_.empty() || beside_.back().capacity() - beside_.back().size() < text.size()) {
    beside_.emplace_back().reserve(kChunk);
  }
  std::string& chunk = beside_.back();
  chunk.append(text);
  return std::string_view(chunk).substr(chunk.size() - text.size());
}

std::uint32_t Document::InternName(std::string_view name) {
  const auto [found, is_new] = name_index.try_emplace(name, static_cast<std::uint32_t>(names.size()));
  if (is_new) names.push_back(name);
  return found->second;
}

Id Document::InternDefinition(std::string_view name) {
  return InternNamed(this, name, &definitions, &definition_index);
}

Id Document::InternCondition(std::string_view name) {
  return InternNamed(this, name, &conditions, &condition_index);
}

Id Document::InternColor(std::string_view name) { return InternNamed(this, name, &colors, &color_index); }

void Document::TakeNamesFrom(Document* other) {
  origin = other->origin;
  lasting_.splice(lasting_.end(), other->lasting_);
  CopyNames(other->definitions, &definitions, &definition_index);
  CopyNames(other->conditions, &conditions, &condition_index);
  CopyNames(other->colors, &colors, &color_index);
}

Document CopyOf(const std::shared_ptr<const Document>& origin) {
  Document copy(*origin);
  copy.origin = origin;
  return copy;
}

std::uint16_t Document::InternConditions(const std::vector<Id>& set) {
  if (set.empty()) return 0;
  std::string key(reinterpret_cast<const char*>(set.data()), set.size() * sizeof(Id));
  const auto found = condition_set_index.find(key);
  if (found != condition_set_index.end()) return found->second;
  // One more would not fit the items' field; no document comes near. What cannot be told apart stays plain.
  if (condition_sets.size() > 0xFFFF) return 0;
  const auto index = static_cast<std::uint16_t>(condition_sets.size());
  condition_sets.push_back(set);
  condition_set_index.emplace(Keep(std::move(key)), index);
  return index;
}

}  // namespace qelm::embedded::model
