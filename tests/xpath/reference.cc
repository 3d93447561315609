#include "reference.h"

#include <algorithm>
#include <cctype>

namespace qelm::xpath {
namespace {

using testing::TreeDocument;
using Nodes = std::vector<ReferenceNode>;
using Strings = std::vector<std::string>;
using Kind = ReferenceOperand::Kind;

constexpr int kAbove = -2;

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char byte) { return std::tolower(byte); });
  return text;
}

bool IsInteger(const std::string& text) {
  const std::string digits = text.substr(text.starts_with("-") ? 1 : 0);
  return !digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos;
}

template <typename Value>
bool Relation(const std::string& name, const Value& left, const Value& right) {
  if (name == "=") return left == right;
  if (name == "<") return left < right;
  if (name == ">") return left > right;
  return name == "<=" ? left <= right : left >= right;
}

bool Pair(const std::string& name, const std::string& left, const std::string& right) {
  if (name == "contains") return left.find(right) != std::string::npos;
  if (name == "contains-ci") return Lower(left).find(Lower(right)) != std::string::npos;
  if (name == "starts-with") return !right.empty() && left.starts_with(right);
  if (name == "starts-with-ci") return !right.empty() && Lower(left).starts_with(Lower(right));
  if (IsInteger(left) && IsInteger(right)) return Relation(name, std::stoll(left), std::stoll(right));
  return Relation(name, left, right);
}

bool Test(const std::string& name, const Strings& left, const Strings& right) {
  const bool no_left = left.empty() || left[0].empty();
  const bool no_right = right.empty() || right[0].empty();
  if (no_left || no_right) {
    if (name == "!=") return !(no_left && no_right);
    if (name == "=" || name == ">=" || name == "<=") {
      if (no_left && no_right) return true;
    }
    if (name == ">" || name == ">=") return !no_left && no_right;
    if (name == "<" || name == "<=") return no_left && !no_right;
    return false;
  }
  bool any = false;
  for (const std::string& one : left) {
    for (const std::string& other : right) any = any || Pair(name == "!=" ? "=" : name, one, other);
  }
  return any != (name == "!=");
}

class Evaluator {
 public:
  explicit Evaluator(const TreeDocument& document) : document_(document), ranks_(document.elements.size()) {
    Collect(1);
  }

  Nodes Select(const ReferencePath& path, const ReferenceNode& context) {
    Nodes nodes = {path.absolute ? ReferenceNode{1, kAbove} : context};
    for (const ReferenceStep& step : path.steps) {
      Nodes next;
      for (const ReferenceNode& node : nodes) {
        for (const ReferenceNode& found : Follow(step, node)) {
          if (std::find(next.begin(), next.end(), found) == next.end()) next.push_back(found);
        }
      }
      nodes = next;
    }
    return nodes;
  }

 private:
  struct Place {
    ReferenceNode node;
    std::size_t position;
    std::size_t last;
  };

  const TreeDocument::Element& At(host::Id id) const { return document_.elements[id]; }

  // All ids in document order.
  void Collect(host::Id id) {
    ranks_[id] = order_.size();
    order_.push_back(id);
    for (host::Id child = At(id).first_child; child != 0; child = At(child).next) Collect(child);
  }

  bool IsAbove(host::Id ancestor, host::Id id) const {
    for (id = At(id).parent; id != 0; id = At(id).parent) {
      if (id == ancestor) return true;
    }
    return false;
  }

  // Whether `id` is on an axis of the element.
  bool IsOn(const std::string& axis, host::Id context, host::Id id) const {
    const bool same_parent = id != context && At(context).parent != 0 && At(id).parent == At(context).parent;
    const bool before = ranks_[id] < ranks_[context];
    if (axis == "self") return id == context;
    if (axis == "child") return At(id).parent == context;
    if (axis == "parent") return At(context).parent == id;
    if (axis == "descendant") return IsAbove(context, id);
    if (axis == "descendant-or-self") return id == context || IsAbove(context, id);
    if (axis == "ancestor") return IsAbove(id, context);
    if (axis == "ancestor-or-self") return id == context || IsAbove(id, context);
    if (axis == "following-sibling") return same_parent && !before;
    if (axis == "preceding-sibling") return same_parent && before;
    if (axis == "following") return id != context && !before && !IsAbove(context, id);
    if (axis == "preceding") return before && !IsAbove(id, context);
    return false;
  }

  Nodes AxisOf(const std::string& axis, const ReferenceNode& node) const {
    Nodes nodes;
    const bool reverse = axis.starts_with("preceding") || axis.starts_with("ancestor");
    if (node.attribute == kAbove) {
      if (axis == "self") return {node};
      if (axis == "child") return {{1, -1}};
      if (axis.starts_with("descendant")) return AxisOf("descendant-or-self", {1, -1});
      return {};
    }
    if (node.attribute >= 0) {
      // Seen from an attribute, its element is the parent.
      if (axis == "parent") nodes = {{node.id, -1}};
      if (axis.starts_with("ancestor")) nodes = AxisOf("ancestor-or-self", {node.id, -1});
      if (axis == "self" || axis == "ancestor-or-self") nodes.insert(nodes.begin(), node);
      return nodes;
    }
    if (axis == "attribute") {
      for (std::size_t index = 0; index < Attributes(node.id).size(); ++index) {
        nodes.push_back({node.id, static_cast<int>(index)});
      }
      return nodes;
    }
    for (const host::Id id : order_) {
      if (IsOn(axis, node.id, id)) nodes.push_back({id, -1});
    }
    if (reverse) std::reverse(nodes.begin(), nodes.end());
    return nodes;
  }

  // With the defaults of the definition, the way that coloring and filtering read them.
  std::vector<TreeDocument::Attribute> Attributes(host::Id id) const {
    std::vector<TreeDocument::Attribute> attributes = At(id).attributes;
    for (TreeDocument::Attribute& attribute : attributes) {
      if (attribute.values.empty()) attribute.values.emplace_back();
    }
    const auto declared = document_.declared.find(At(id).definition);
    if (declared == document_.declared.end() || At(id).definition == 0) return attributes;
    for (const host::AttributeDefinition& definition : declared->second) {
      auto own = std::find_if(attributes.begin(), attributes.end(),
                              [&](const auto& attribute) { return attribute.name == definition.name; });
      if (own == attributes.end()) {
        attributes.push_back({std::string(definition.name), {""}});
        own = attributes.end() - 1;
      }
      if (own->values == Strings{""})
        own->values.assign(definition.defaults.begin(), definition.defaults.end());
    }
    return attributes;
  }

  bool Passes(const std::string& axis, const std::string& test, const ReferenceNode& node) const {
    if (test == "node()") return true;
    if (node.attribute == kAbove) return false;
    if (node.attribute >= 0) {
      if (axis != "attribute" || test == "text()") return false;
      return test == "*" || Attributes(node.id)[static_cast<std::size_t>(node.attribute)].name == test;
    }
    const host::Id definition = At(node.id).definition;
    if (test == "text()") return definition == 0;
    return definition != 0 && (test == "*" || document_.names[definition - 1] == test);
  }

  Nodes Follow(const ReferenceStep& step, const ReferenceNode& context) {
    Nodes passing;
    for (const ReferenceNode& node : AxisOf(step.axis, context)) {
      if (Passes(step.axis, step.test, node)) passing.push_back(node);
    }
    Nodes nodes;
    for (std::size_t index = 0; index < passing.size(); ++index) {
      const Place place{passing[index], index + 1, passing.size()};
      bool holds = !step.any || step.predicates.empty();
      for (const ReferencePredicate& predicate : step.predicates) {
        const bool one = Holds(predicate, place);
        holds = step.any ? holds || one : holds && one;
      }
      if (holds) nodes.push_back(place.node);
    }
    return nodes;
  }

  bool Holds(const ReferencePredicate& predicate, const Place& place) {
    if (!predicate.comparison.empty()) {
      return Test(predicate.comparison, Values(predicate.left, place), Values(predicate.right, place));
    }
    switch (predicate.left.kind) {
      case Kind::kPath:
        return !Select(*predicate.left.path, place.node).empty();
      case Kind::kInteger:
        return std::stoul(predicate.left.text) == place.position;
      case Kind::kPosition:
        return true;
      case Kind::kLast:
        return place.position == place.last;
      case Kind::kText:
        return Test("=", {predicate.left.text}, {});
      case Kind::kFunction:
        break;
    }
    return Function(predicate.left, place);
  }

  bool Function(const ReferenceOperand& function, const Place& place) {
    const ReferenceOperand& first = function.arguments[0];
    if (function.text != "not") {
      return Test(function.text, Values(first, place), Values(function.arguments[1], place));
    }
    if (first.kind == Kind::kPath) return Select(*first.path, place.node).empty();
    if (first.kind == Kind::kFunction) return !Function(first, place);
    return Values(first, place)[0].empty();
  }

  Strings Values(const ReferenceOperand& operand, const Place& place) {
    switch (operand.kind) {
      case Kind::kText:
      case Kind::kInteger:
        return {operand.text};
      case Kind::kPosition:
        return {std::to_string(place.position)};
      case Kind::kLast:
        return {std::to_string(place.last)};
      case Kind::kFunction:
        return {Function(operand, place) ? "true" : "false"};
      case Kind::kPath:
        break;
    }
    Strings values;
    for (const ReferenceNode& node : Select(*operand.path, place.node)) {
      if (node.attribute < 0) {
        values.push_back(Text(node.id));
        continue;
      }
      const Strings attribute = Attributes(node.id)[static_cast<std::size_t>(node.attribute)].values;
      values.insert(values.end(), attribute.begin(), attribute.end());
    }
    return values;
  }

  std::string Text(host::Id id) const {
    std::string text = At(id).text;
    for (host::Id child = At(id).first_child; child != 0; child = At(child).next) text += Text(child);
    return text.substr(0, 255);
  }

  const TreeDocument& document_;
  std::vector<host::Id> order_;
  std::vector<std::size_t> ranks_;
};

}  // namespace

std::vector<ReferenceNode> Evaluate(const TreeDocument& document, const ReferencePath& path,
                                    host::Id context) {
  Nodes nodes = Evaluator(document).Select(path, {context, -1});
  std::erase_if(nodes, [](const ReferenceNode& node) { return node.attribute == kAbove; });
  return nodes;
}

}  // namespace qelm::xpath
