#include "schemes/styles.h"

#include <algorithm>
#include <utility>

#include "common/numbers.h"
#include "common/text.h"
#include "common/utf8.h"

namespace qelm::schemes {
namespace {

constexpr std::array<std::pair<std::string_view, Style>, 4> kLongNames = {{
    {"Double Underline", kStyleDoubleUnderline},
    {"Numeric Underline", kStyleNumericUnderline},
    {"Numeric Underline / Change Bar", kStyleNumericUnderlineChangeBar},
    {"Numeric Underline/Change Bar", kStyleNumericUnderlineChangeBar},
}};

// How much of a Style element's text is looked at.
constexpr std::size_t kStyleCharacters = 4;

}  // namespace

std::string_view StyleName(std::int32_t style) {
  return style >= kStyleNone && style <= kStyleNoneAgain ? kStyleNames[static_cast<std::size_t>(style)]
                                                         : kStyleNames.front();
}

std::int32_t StyleByName(std::string_view name) {
  const auto found = std::find(kStyleNames.begin(), kStyleNames.end(), name);
  if (found != kStyleNames.end()) return static_cast<std::int32_t>(found - kStyleNames.begin());
  for (const auto& [long_name, style] : kLongNames) {
    if (long_name == name) return style;
  }
  return -1;
}

std::int32_t ReadStyle(std::string_view text) {
  const std::int64_t style =
      common::ReadInteger(common::FirstCharacters(common::Trim(text), kStyleCharacters));
  return style >= kStyleNone && style <= kStyleNoneAgain ? static_cast<std::int32_t>(style) : kStyleNone;
}

}  // namespace qelm::schemes
