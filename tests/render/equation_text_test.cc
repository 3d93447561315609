#include "embedded/render/design/equation_text.h"

#include <gtest/gtest.h>

namespace qelm::embedded::render {
namespace {

TEST(EquationText, FormsReadInOneLine) {
  const struct {
    std::string_view form;
    std::string_view text;
  } rows[] = {
      {"equal[char[V],times[id[over[char[pi],num[4.0000000000000000,\"4\"]]],sum[times[indexes[\n0,1,char[a],"
       "char[i]],indexes[1,0,char[b],num[2.0,\"2\"]]],equal[\nchar[i],num[1.0,\"1\"]],char[(*t-382b*)n]]]]",
       "V = (π/4) ∑[i = 1 … n] a_i b^2"},
      {"over[plus[char[a],minus[char[b]]],times[char[m],char[e],char[a],char[n]]]", "(a + −b)/mean"},
      {"sqrt[power[id[plus[char[x],num[1.0,\"1\"]]],num[2.0,\"2\"]]]", "√((x + 1)^2)"},
      {"matrix[2,1,char[x],string[\"at rest\"]]", "matrix(2, 1, x, at rest)"},
      {"equal[char[x],num[1.0,\"1\"", ""},
      {"]char[x]", ""},
      {"char[(*never closed", ""},
  };
  for (const auto& row : rows) EXPECT_EQ(EquationText(row.form), row.text) << row.form;
  std::string deep;
  for (int i = 0; i < 400; ++i) deep += "over[";
  EXPECT_EQ(EquationText(deep), "");
}

}  // namespace
}  // namespace qelm::embedded::render
