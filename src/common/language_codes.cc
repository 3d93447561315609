#include "common/language_codes.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include "common/text.h"

namespace qelm::common {

std::string LanguageCode(std::string_view english_name) {
  const std::string wanted = FoldCase(english_name);
  for (const char* const* code = icu::Locale::getISOLanguages(); *code != nullptr; ++code) {
    icu::UnicodeString display;
    icu::Locale(*code).getDisplayLanguage(icu::Locale::getEnglish(), display);
    std::string name;
    if (FoldCase(display.toUTF8String(name)) == wanted) return *code;
  }
  return {};
}

}  // namespace qelm::common
