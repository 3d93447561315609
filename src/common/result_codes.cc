#include "common/result_codes.h"

#include <array>
#include <utility>

namespace qelm::common {
namespace {

constexpr std::array<std::pair<std::int32_t, std::string_view>, 10> kTexts = {{
    {kDone, "done"},
    {kSchemeNotFound, "scheme not found"},
    {kInvalidSchemeNames, "invalid scheme names"},
    {kNoDocument, "no document"},
    {kNoElementSelected, "no element selected"},
    {kNoActiveScheme, "no active scheme"},
    {kNoFlowOrRoot, "no flow or no root element"},
    {kCopyFailed, "copying failed"},
    {kOutputIsSource, "the output folder is the source folder"},
    {kCancelled, "cancelled by the user"},
}};

}  // namespace

std::string_view ResultText(std::int32_t code) {
  for (const auto& [known, text] : kTexts) {
    if (known == code) return text;
  }
  return {};
}

}  // namespace qelm::common
