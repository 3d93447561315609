#include "filtering/classic_rules.h"

#include <gtest/gtest.h>

#include "filtering/filter_session.h"

namespace qelm::filtering {
namespace {

using schemes::Condition;
using testing::Classic;

struct Case {
  const char* situation;
  std::vector<Condition> rules;
  bool ignore_case;
  std::vector<Condition> element;  // the attributes of the element
  bool fails;
};

// An element fails by the first rule that it fails; the special values speak of whether there is a value.
const Case kCases[] = {
    {"no attributes at all", {{"a", {}}}, false, {}, false},
    {"another attribute", {{"a", {"x"}}}, false, {{"b", {"y"}}}, false},
    {"a rule without values", {{"a", {}}}, false, {{"a", {"x"}}}, true},
    {"a rule without values, attribute empty", {{"a", {}}}, false, {{"a", {}}}, true},
    {"listed value", {{"a", {"x", "y"}}}, false, {{"a", {"y"}}}, false},
    {"other value", {{"a", {"x", "y"}}}, false, {{"a", {"z"}}}, true},
    {"one of several values", {{"a", {"x"}}}, false, {{"a", {"p", "x"}}}, false},
    {"none of several values", {{"a", {"x"}}}, false, {{"a", {"p", "q"}}}, true},
    {"no value, not allowed", {{"a", {"x"}}}, false, {{"a", {}}}, true},
    {"empty value, not allowed", {{"a", {"<any value>"}}}, false, {{"a", {""}}}, true},
    {"no value, allowed", {{"a", {"<no value>"}}}, false, {{"a", {}}}, false},
    {"empty value, allowed", {{"a", {"x", "<no value>"}}}, false, {{"a", {""}}}, false},
    {"value where only none is allowed", {{"a", {"<no value>"}}}, false, {{"a", {"x"}}}, true},
    {"any value", {{"a", {"<any value>"}}}, false, {{"a", {"x"}}}, false},
    {"an empty value among others is a value", {{"a", {"<any value>"}}}, false, {{"a", {"", ""}}}, false},
    {"second rule fails", {{"a", {"x"}}, {"b", {"y"}}}, false, {{"a", {"x"}}, {"b", {"z"}}}, true},
    {"both rules pass", {{"a", {"x"}}, {"b", {"y"}}}, false, {{"b", {"y"}}, {"a", {"x"}}}, false},
    {"case of the value counts", {{"a", {"x"}}}, false, {{"a", {"X"}}}, true},
    {"case of the name counts", {{"a", {"x"}}}, false, {{"A", {"z"}}}, false},
    {"case of the value ignored", {{"a", {"eXpert"}}}, true, {{"a", {"ExperT"}}}, false},
    {"case of the name ignored", {{"Audience", {"x"}}}, true, {{"AUDIENCE", {"z"}}}, true},
    {"case beyond ASCII ignored",
     {{"a",
       {"\xC3\x9C"
        "BUNG"}}},
     true,
     {{"a",
       {"\xC3\xBC"
        "bung"}}},
     false},
    {"same length, other text", {{"a", {"abc"}}}, true, {{"a", {"abd"}}}, true},
};

TEST(ClassicRules, FollowTheTableOfValues) {
  for (const Case& row : kCases) {
    schemes::Scheme scheme = Classic(row.rules);
    scheme.ignore_case = row.ignore_case;
    host::AttributeBuffer attributes;
    for (const Condition& attribute : row.element) {
      attributes.attributes.push_back({attribute.attribute,
                                       static_cast<std::uint32_t>(attributes.values.size()),
                                       static_cast<std::uint32_t>(attribute.values.size())});
      attributes.values.insert(attributes.values.end(), attribute.values.begin(), attribute.values.end());
    }
    EXPECT_EQ(ClassicRules(scheme).Fails(attributes), row.fails) << row.situation;
  }
}

}  // namespace
}  // namespace qelm::filtering
