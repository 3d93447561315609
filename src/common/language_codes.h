// The codes of languages.
#pragma once

#include <string>
#include <string_view>

namespace qelm::common {

// The code of ISO 639 ("de") of the language with that English name ("German"), letter case ignored; empty
// when the name is not known.
std::string LanguageCode(std::string_view english_name);

}  // namespace qelm::common
