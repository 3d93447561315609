#include "common/icu.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace qelm::common {
namespace {

// The names of functions end with the library's version, which its headers put there.
#define QELM_QUOTED(name) #name
#define QELM_NAME(function) QELM_QUOTED(function)

constexpr char kLibrary[] = "libicuuc.so." U_ICU_VERSION_SHORT;

[[noreturn]] void Fail() {
  const char* const problem = ::dlerror();
  throw std::runtime_error("text other than ASCII needs " + std::string(kLibrary) + ", which cannot be used" +
                           (problem == nullptr ? std::string() : ": " + std::string(problem)));
}

template <typename Function>
void Find(void* library, const char* name, Function* function) {
  *function = reinterpret_cast<Function>(::dlsym(library, name));
  if (*function == nullptr) Fail();
}

}  // namespace

Icu::Icu() {
  void* const library = ::dlopen(kLibrary, RTLD_LAZY | RTLD_LOCAL);
  if (library == nullptr) Fail();
  Find(library, QELM_NAME(u_foldCase), &fold_case);
  Find(library, QELM_NAME(u_strToUTF8), &to_utf8);
  Find(library, QELM_NAME(ucnv_open), &open_converter);
  Find(library, QELM_NAME(ucnv_close), &close_converter);
  Find(library, QELM_NAME(ucnv_toAlgorithmic), &convert_to);
  Find(library, QELM_NAME(ucnv_fromAlgorithmic), &convert_from);
  Find(library, QELM_NAME(ucnv_setFromUCallBack), &set_callback);
  Find(library, QELM_NAME(UCNV_FROM_U_CALLBACK_STOP), &stop_callback);
  Find(library, QELM_NAME(uloc_getISOLanguages), &languages);
  Find(library, QELM_NAME(uloc_getDisplayLanguage), &display_language);
}

const Icu& TheIcu() {
  static const Icu icu;
  return icu;
}

}  // namespace qelm::common
