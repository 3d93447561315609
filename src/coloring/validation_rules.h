// The four rules of validation for one element after the other, on a walk from an element down.
//
// Rules 2 and 3 compare an attribute with that of the nearest ancestor that has it. Nothing is searched for
// that: the walk enters elements in document order, and the attributes that the scheme names are kept on a
// stack, so that the nearest value of each is always at hand. Every element's attributes are read once.
//
//   ElementRules rules(host, document, scheme, run);
//   rules.EnterAncestors(start);
//   rules.Enter(element, &violations);   // then all that it holds
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "coloring/validation_run.h"
#include "host/interface/host.h"
#include "schemes/attribute_values.h"
#include "schemes/comparable_text.h"
#include "schemes/scheme.h"

namespace qelm::coloring {

struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};
using TextSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;

// The attributes that a scheme names, with what it lists for each. An attribute that is named twice has both
// lists.
class AllowedValues {
 public:
  explicit AllowedValues(const schemes::Scheme& scheme);

  std::size_t Count() const { return attributes_.size(); }
  // The attribute's index, -1 for one that the scheme does not name.
  std::int32_t Find(std::string_view name);
  bool Allows(std::int32_t attribute, std::string_view value) const;
  bool AllowsNoValue(std::int32_t attribute) const { return At(attribute).no_value; }

  // How texts of this scheme are compared.
  const schemes::TextComparison& comparison() const { return comparison_; }

 private:
  struct Attribute {
    TextSet values;  // comparable
    bool no_value = false;
    bool any_value = false;
  };
  const Attribute& At(std::int32_t index) const { return attributes_[static_cast<std::size_t>(index)]; }

  schemes::TextComparison comparison_;
  std::vector<Attribute> attributes_;
  std::unordered_map<std::string, std::int32_t> by_comparable_name_;
  // By the names as elements write them: there are few, and each is made comparable once.
  std::unordered_map<std::string, std::int32_t, TextHash, std::equal_to<>> by_name_;
};

class ElementRules {
 public:
  // Texts of the document are held by reference between calls: it must not be edited meanwhile.
  ElementRules(host::Host& host, host::Id document, const schemes::Scheme& scheme, const ValidationRun& run);

  // Takes in the attributes of the elements above `start`, where the walk begins, unchecked.
  void EnterAncestors(host::Id start);

  // Checks an element and appends its violations in order: attribute by attribute, and rule by rule for each.
  // Of the elements that were entered, those that are less deep and came last are its ancestors.
  void Enter(const host::WalkedNode& element, std::vector<Violation>* violations);

 private:
  using Values = std::span<const std::string_view>;

  // An attribute of the element at hand that the scheme names.
  struct Named {
    std::int32_t attribute = 0;
    std::string_view name;
    Values values;
  };
  // An entered element that has some.
  struct Level {
    std::size_t depth = 0;  // from the topmost ancestor
    std::size_t first_carried = 0;
  };

  // An attribute of an entered element. Its values are values_[first_value ...].
  struct Carried {
    std::int32_t attribute = 0;
    std::int32_t covered = -1;  // the index of the one farther up, -1 for none
    std::size_t first_value = 0;
    std::size_t value_count = 0;
    std::unique_ptr<TextSet> index;  // of long lists, made when first asked for
  };
  // Without `violations` the element is not checked.
  void Take(host::Id element, std::size_t depth, const host::AttributeBuffer& attributes,
            std::vector<Violation>* violations);
  void LeaveLevel();
  void Check(host::Id element, const Named& named, std::vector<Violation>* violations);
  bool Holds(Carried& carried, std::string_view value);
  void Carry(std::int32_t attribute, Values values);
  Carried* Nearest(std::int32_t attribute);

  host::Host& host_;
  host::Id document_;
  const ValidationRun& run_;
  AllowedValues allowed_;
  schemes::AttributeReader reader_;
  std::vector<std::int32_t> nearest_;  // by attribute: an index into carried_, -1 for none
  std::vector<Carried> carried_;
  std::vector<std::string_view> values_;
  std::size_t start_depth_ = 0;  // how many ancestors the start has
  std::vector<Level> levels_;
  std::vector<Named> named_;
  std::string buffer_;
};

}  // namespace qelm::coloring
