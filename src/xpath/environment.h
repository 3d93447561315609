// What all parts of one search share: the host, the documents it walks through, the attributes being read,
// and whether something went wrong for good.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/interface/host.h"
#include "xpath/document_index.h"
#include "xpath/tree.h"
#include "xpath/values.h"

namespace qelm::xpath {

// Why a search ended before its time.
// kLong: it took more steps than it was given, and is to be done in another way.
// kWork: it took more steps than any evaluation may.
enum class Failure : std::uint8_t { kNone, kPredicate, kPosition, kLast, kEndless, kLong, kWork };

// How many elements one evaluation may move over: some minutes of work. What is evaluated in the way that it
// should be takes less, also over a document of many million elements.
inline constexpr std::uint64_t kMostSteps = 20'000'000'000;

class Environment {
 public:
  // `indexes` are those that the session keeps.
  Environment(host::Host& host, DocumentIndexes& indexes, host::Id document, bool with_defaults)
      : host_(host),
        indexes_(indexes),
        with_defaults_(with_defaults),
        attributes_(host.elements, host.definitions, with_defaults) {
    TreeOfDocument(document);
  }

  host::Host& Host() { return host_; }
  // The document that is searched.
  host::Id Document() { return trees_.front()->Document(); }

  Tree& TreeOf(const Node& node) { return *trees_[node.tree]; }
  // The number of the tree of a document, for Node::tree.
  std::uint32_t TreeOfDocument(host::Id document);

  // The index of a tree's document, made when it is asked for first. Null when it cannot be made.
  DocumentIndex* Index(std::uint32_t tree);
  // Whether it costs nothing to ask for it.
  bool HasIndex(std::uint32_t tree) const;
  // Whether attributes have the defaults of their definitions.
  bool WithDefaults() const { return with_defaults_; }

  // Counts an element that a walk moves over; the search fails at the limit (0: none but `most` of all).
  void CountStep() {
    if (++steps_ == stop_) Fail(stop_ == most_steps_ ? Failure::kWork : Failure::kLong);
  }
  void LimitSteps(std::uint64_t limit) {
    stop_ = limit > steps_ && limit < most_steps_ ? limit : most_steps_;
  }
  void LimitWork(std::uint64_t most) { stop_ = most_steps_ = most; }
  // How many more pay for a tree, by all searches together, and telling those of this search.
  std::uint64_t StepsLeft(std::uint32_t tree) const {
    return indexes_.StepsLeft(host_, trees_[tree]->Document());
  }
  void TellSteps(std::uint32_t tree) { indexes_.AddSteps(host_, trees_[tree]->Document(), steps_); }
  // Forgets that the limit was reached.
  void LiftLimit() {
    stop_ = most_steps_;
    if (failure_ == Failure::kLong) failure_ = Failure::kNone;
  }

  // The attributes of the node's element.
  AttributeSource& AttributesOf(const Node& node) {
    attributes_.Load(TreeOf(node).Document(), node.element);
    return attributes_;
  }
  // Turns an element into its attribute of that name; false when it has none.
  bool FindAttribute(std::string_view name, Node* node);
  void ForgetAttributes() { attributes_.Forget(); }

  // Calls `use` with each value of the node until it returns true. Returns whether it did.
  template <typename Use>
  bool AnyValue(const Node& node, Use&& use) {
    if (node.IsAttribute()) {
      const AttributeSource& attributes = AttributesOf(node);
      for (const std::string_view value : attributes.Values(static_cast<std::size_t>(node.part))) {
        if (use(value)) return true;
      }
      return false;
    }
    return use(SingleValue(node, kComparedCharacters));
  }

  // The value of a node that is no attribute.
  std::string_view SingleValue(const Node& node, std::size_t most_characters);

  void Fail(Failure failure) {
    if (failure_ == Failure::kNone) failure_ = failure;
  }
  // Names the purpose of a walk that did not end.
  void Explain(Failure failure) {
    if (failure_ == Failure::kEndless) failure_ = failure;
  }
  Failure Why() const { return failure_; }
  bool Failed() const { return failure_ != Failure::kNone; }

 private:
  host::Host& host_;
  DocumentIndexes& indexes_;
  bool with_defaults_;
  AttributeSource attributes_;
  std::vector<std::unique_ptr<Tree>> trees_;
  std::vector<std::shared_ptr<DocumentIndex>> used_indexes_;  // by tree
  std::string buffer_;
  std::uint64_t steps_ = 0;
  std::uint64_t most_steps_ = kMostSteps;
  std::uint64_t stop_ = kMostSteps;
  Failure failure_ = Failure::kNone;
};

}  // namespace qelm::xpath
