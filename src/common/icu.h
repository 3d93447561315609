// The functions of ICU that are used here. The library is loaded when a text first wants it: most runs see
// none but ASCII, and loading it took a tenth of a short run.
#pragma once

#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/uloc.h>
#include <unicode/ustring.h>

namespace qelm::common {

struct Icu {
  decltype(&::u_foldCase) fold_case = nullptr;
  decltype(&::u_strToUTF8) to_utf8 = nullptr;
  decltype(&::ucnv_open) open_converter = nullptr;
  decltype(&::ucnv_close) close_converter = nullptr;
  decltype(&::ucnv_toAlgorithmic) convert_to = nullptr;
  decltype(&::ucnv_fromAlgorithmic) convert_from = nullptr;
  decltype(&::ucnv_setFromUCallBack) set_callback = nullptr;
  decltype(&::UCNV_FROM_U_CALLBACK_STOP) stop_callback = nullptr;
  decltype(&::uloc_getISOLanguages) languages = nullptr;
  decltype(&::uloc_getDisplayLanguage) display_language = nullptr;

  Icu();
};

// Throws std::runtime_error, which says why, where the library cannot be loaded.
const Icu& TheIcu();

}  // namespace qelm::common
