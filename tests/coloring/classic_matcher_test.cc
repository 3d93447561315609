// Classic rules against a second reading of them, over every combination of conditions and attributes.
#include "coloring/classic_matcher.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace qelm::coloring {
namespace {

using schemes::Condition;
using schemes::Rule;

using Values = std::vector<std::string>;
// An element's attributes by name; one that is not there is missing.
using Attributes = std::vector<std::pair<std::string, Values>>;
// The element and its ancestors, the element first.
using Chain = std::vector<Attributes>;

schemes::Scheme SchemeOf(std::vector<Rule> rules) {
  schemes::Scheme scheme;
  scheme.name = "x";
  scheme.rules = std::move(rules);
  return scheme;
}

std::int32_t Find(const schemes::Scheme& scheme, const Chain& chain, bool inherits) {
  ClassicMatcher matcher(scheme);
  for (std::size_t depth = 0; depth < chain.size(); ++depth) {
    host::AttributeBuffer buffer;
    for (const auto& [name, values] : chain[chain.size() - 1 - depth]) {
      buffer.attributes.push_back({name, static_cast<std::uint32_t>(buffer.values.size()),
                                   static_cast<std::uint32_t>(values.size())});
      buffer.values.insert(buffer.values.end(), values.begin(), values.end());
    }
    matcher.Enter(depth, buffer);
  }
  return matcher.FindRule(inherits);
}

// The second reading: what one condition sees of an element, and what follows from it, said case by case.
struct Seen {
  bool anywhere = false;
  Values values;
};

Seen See(const Chain& chain, const std::string& name, bool inherits) {
  Seen seen;
  for (std::size_t level = 0; level < chain.size(); ++level) {
    const auto found = std::find_if(chain[level].begin(), chain[level].end(),
                                    [&](const auto& attribute) { return attribute.first == name; });
    if (found == chain[level].end()) {
      if (level == 0 && !inherits) return seen;
      continue;
    }
    seen.anywhere = true;
    if (found->second.empty() || found->second == Values{""}) continue;
    seen.values = found->second;
    return seen;
  }
  return seen;
}

bool Lists(const Condition& condition, std::string_view value) {
  return std::find(condition.values.begin(), condition.values.end(), value) != condition.values.end();
}

// True: good for the rule; false: not; nothing: the words contradict each other.
std::optional<bool> IsGood(const Condition& condition, const Seen& seen, bool match_all) {
  if (!seen.anywhere) return false;
  const bool no = Lists(condition, "<no value>");
  const bool any = Lists(condition, "<any value>");
  if (no && any) return std::nullopt;
  if (seen.values.empty()) return no;
  if (any) return true;
  std::size_t found = 0;
  for (const std::string& wanted : condition.values) {
    const bool there = std::find(seen.values.begin(), seen.values.end(), wanted) != seen.values.end();
    if (wanted == "<no value>" || there) ++found;
  }
  return match_all ? found == condition.values.size() : found > 0;
}

bool Expected(const Rule& rule, const Chain& chain, bool inherits) {
  std::size_t good = 0;
  for (const Condition& condition : rule.conditions) {
    const std::optional<bool> one =
        IsGood(condition, See(chain, condition.attribute, inherits), rule.match_all);
    if (!rule.match_all && one.value_or(true)) return true;
    if (rule.match_all && !one.value_or(false)) return false;
    ++good;
  }
  return rule.match_all && good > 0;
}

const std::vector<Values> kLists = {{},
                                    {"x"},
                                    {"x", "y"},
                                    {"<no value>"},
                                    {"<any value>"},
                                    {"<no value>", "<any value>"},
                                    {"x", "<no value>"},
                                    {"<any value>", "x"}};
// What an element has of an attribute; nothing: it is missing.
const std::vector<std::optional<Values>> kStates = {std::nullopt, Values{},    Values{""},
                                                    Values{"x"},  Values{"z"}, Values{"y", "x"}};

std::string Describe(const Rule& rule, const Chain& chain, bool inherits) {
  std::string text = rule.match_all ? "match all" : "match one";
  if (inherits) text += ", inherits";
  for (const Condition& condition : rule.conditions) {
    text += "; " + condition.attribute + " in";
    for (const std::string& value : condition.values) text += " " + value;
  }
  for (const Attributes& attributes : chain) {
    text += " |";
    for (const auto& [name, values] : attributes) {
      text += " " + name + "=(";
      for (const std::string& value : values) text += value + ",";
      text += ")";
    }
  }
  return text;
}

void Compare(const Rule& rule, const Chain& chain) {
  for (const bool inherits : {false, true}) {
    const bool found = Find(SchemeOf({rule}), chain, inherits) == 0;
    ASSERT_EQ(found, Expected(rule, chain, inherits)) << Describe(rule, chain, inherits);
  }
}

TEST(ClassicMatcher, OneConditionAgreesWithTheSecondReading) {
  for (const Values& list : kLists) {
    for (const bool match_all : {false, true}) {
      const Rule rule{"Red", 0, "None", match_all, false, {{"a", list}}};
      for (const auto& own : kStates) {
        for (const auto& parent : kStates) {
          for (const auto& above : kStates) {
            Chain chain(3);
            if (own) chain[0].emplace_back("a", *own);
            if (parent) chain[1].emplace_back("a", *parent);
            if (above) chain[2].emplace_back("a", *above);
            ASSERT_NO_FATAL_FAILURE(Compare(rule, chain));
          }
        }
      }
    }
  }
}

TEST(ClassicMatcher, TwoConditionsAgreeWithTheSecondReading) {
  for (const Values& first : kLists) {
    for (const Values& second : kLists) {
      for (const bool match_all : {false, true}) {
        const Rule rule{"Red", 0, "None", match_all, false, {{"a", first}, {"b", second}}};
        for (const auto& a : kStates) {
          for (const auto& b : kStates) {
            Chain chain(2);
            if (b) chain[0].emplace_back("b", *b);
            if (a) chain[0].emplace_back("a", *a);
            chain[1].emplace_back("a", Values{"y"});
            ASSERT_NO_FATAL_FAILURE(Compare(rule, chain));
          }
        }
      }
    }
  }
}

// What the second reading could have got wrong in the same way, as rows.
struct Row {
  const char* situation;
  bool match_all;
  std::vector<Condition> conditions;
  Chain chain;
  bool matches;
};
const Row kRows[] = {
    {"no conditions", false, {}, {{{"a", {"x"}}}}, false},
    {"no conditions, all of them", true, {}, {{{"a", {"x"}}}}, false},
    {"a value that is listed nowhere, under <no value>",
     false,
     {{"a", {"<no value>"}}},
     {{{"a", {"q"}}}},
     true},
    {"the same where all must hold", true, {{"a", {"<no value>"}}}, {{{"a", {"q"}}}}, true},
    {"both words", false, {{"a", {"<no value>", "<any value>"}}}, {{{"a", {}}}}, true},
    {"both words where all must hold", true, {{"a", {"<no value>", "<any value>"}}}, {{{"a", {"x"}}}}, false},
    {"missing, <no value>", false, {{"a", {"<no value>"}}}, {{{"b", {"x"}}}}, false},
    {"missing, though the parent has it", false, {{"a", {"x"}}}, {{}, {{"a", {"x"}}}}, false},
    {"empty, and the parent has it", false, {{"a", {"x"}}}, {{{"a", {}}}, {{"a", {"x"}}}}, true},
    {"empty, the nearest value counts",
     false,
     {{"a", {"x"}}},
     {{{"a", {}}}, {{"a", {"z"}}}, {{"a", {"x"}}}},
     false},
    {"empty up to the top", true, {{"a", {"<no value>"}}}, {{{"a", {}}}, {{"a", {""}}}}, true},
    {"all listed values must be there", true, {{"a", {"x", "y"}}}, {{{"a", {"x"}}}}, false},
    {"more values than listed", true, {{"a", {"x"}}}, {{{"a", {"x", "y"}}}}, true},
    {"second of two", false, {{"a", {"x"}}, {"b", {"x"}}}, {{{"b", {"x"}}}}, true},
    {"only the second of two that must hold", true, {{"a", {"x"}}, {"b", {"x"}}}, {{{"b", {"x"}}}}, false},
};

TEST(ClassicMatcher, FollowsTheRows) {
  for (const Row& row : kRows) {
    const Rule rule{"Red", 0, "None", row.match_all, false, row.conditions};
    EXPECT_EQ(Find(SchemeOf({rule}), row.chain, false) == 0, row.matches) << row.situation;
  }
}

TEST(ClassicMatcher, FirstOfTwoRulesWins) {
  const Rule late{"Red", 0, "None", false, false, {{"b", {"x"}}}};
  const Rule early{"Blue", 0, "None", false, false, {{"a", {"x"}}}};
  EXPECT_EQ(Find(SchemeOf({early, late}), {{{"b", {"x"}}, {"a", {"x"}}}}, false), 0);
  EXPECT_EQ(Find(SchemeOf({early, late}), {{{"b", {"x"}}}}, false), 1);
}

TEST(ClassicMatcher, OfNamesThatDifferInLetterCaseTheFirstCounts) {
  const Rule rule{"Red", 0, "None", false, false, {{"Audience", {"Expert"}}}};
  schemes::Scheme scheme = SchemeOf({rule});
  const Chain chain = {{{"AUDIENCE", {"admin"}}, {"audience", {"expert"}}}};
  EXPECT_EQ(Find(scheme, chain, false), kNoRule);
  scheme.ignore_case = true;
  EXPECT_EQ(Find(scheme, chain, false), kNoRule);
  EXPECT_EQ(Find(scheme, {{{"audience", {"EXPERT"}}}}, false), 0);
}

}  // namespace
}  // namespace qelm::coloring
