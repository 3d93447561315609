#include "xpath/components.h"

#include "common/strings.h"

namespace qelm::xpath {
namespace {

// By how many components the table grows when it is full.
constexpr std::size_t kGrowth = 100;
constexpr std::int32_t kMostChildren = 1000;

}  // namespace

std::int32_t FmPropertyCode(std::string_view name) {
  for (std::size_t index = 0; index < kFmProperties.size(); ++index) {
    if (common::EqualsIgnoreCase(kFmProperties[index], name)) return static_cast<std::int32_t>(index) + 1;
  }
  return kNoProperty;
}

Index ComponentTable::AddFirst(Kind kind, Index parent) {
  if (static_cast<std::size_t>(next_free_) >= components_.size()) {
    components_.resize(components_.size() + kGrowth);
  }
  const Index index = next_free_++;
  Component& component = (*this)[index];
  component = Component();
  component.kind = kind;
  component.parent = parent;
  if (parent != 0) {
    Component& holder = (*this)[parent];
    component.next_sibling = holder.first_child;
    holder.first_child = index;
    if (holder.last_child == 0) holder.last_child = index;
  }
  return index;
}

Index ComponentTable::Add(Kind kind, Index parent) {
  const Index before = parent == 0 ? 0 : (*this)[parent].last_child;
  if (before == 0) return AddFirst(kind, parent);
  const Index index = AddFirst(kind, 0);
  (*this)[index].parent = parent;
  (*this)[before].next_sibling = index;
  (*this)[parent].last_child = index;
  return index;
}

std::int32_t ComponentTable::ChildCount(Index index) const {
  std::int32_t count = 0;
  for (Index child = (*this)[index].first_child; child != 0 && count < kMostChildren;
       child = (*this)[child].next_sibling) {
    ++count;
  }
  return count;
}

bool ComponentTable::IsExpression(Index sequence) const {
  if (sequence < 1 || sequence >= next_free_) return false;
  const Component& root = (*this)[sequence];
  return root.kind == Kind::kSequence && root.parent == 0 && !root.expression.empty();
}

void ComponentTable::Remember(Index root, std::string_view text) {
  (*this)[root].expression = text;
  roots_.insert_or_assign(std::string(text), root);
}

Index ComponentTable::Find(std::string_view text) const {
  const auto found = roots_.find(text);
  return found == roots_.end() ? 0 : found->second;
}

void ComponentTable::Clear() {
  components_.clear();
  components_.resize(kGrowth);
  next_free_ = 1;
  roots_.clear();
}

}  // namespace qelm::xpath
