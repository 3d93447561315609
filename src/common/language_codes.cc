#include "common/language_codes.h"

#include <array>

#include "common/icu.h"
#include "common/text.h"

namespace qelm::common {
namespace {

// Empty when the language has no English name.
std::string EnglishName(const Icu& icu, const char* code) {
  std::array<UChar, 128> wide;
  std::array<char, 3 * wide.size()> name;
  UErrorCode error = U_ZERO_ERROR;
  const std::int32_t count = icu.display_language(code, "en", wide.data(), wide.size(), &error);
  std::int32_t size = 0;
  icu.to_utf8(name.data(), name.size(), &size, wide.data(), count, &error);
  return U_SUCCESS(error) ? std::string(name.data(), static_cast<std::size_t>(size)) : std::string();
}

}  // namespace

std::string LanguageCode(std::string_view english_name) {
  const Icu& icu = TheIcu();
  const std::string wanted = FoldCase(english_name);
  for (const char* const* code = icu.languages(); *code != nullptr; ++code) {
    if (FoldCase(EnglishName(icu, *code)) == wanted) return *code;
  }
  return {};
}

}  // namespace qelm::common
