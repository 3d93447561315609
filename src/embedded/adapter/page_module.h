// Where the embedded host gets its page maker from: the module `qelm-pages.so`, loaded when the first page is
// wanted.
//
// The module lies beside the file that this code is in - the program in its build folder - or, where that is
// installed, in `lib/qelm` beside its folder. It is looked for nowhere else: not in the current folder, and
// in none that the environment names.
#pragma once

#include <string>

#include "embedded/render/design/page_maker.h"

namespace qelm::embedded::adapter {

// The page maker, which lives as long as the process. Null when there is no module of this build to be had,
// and `why` names the file. A failure is found once and holds for the process.
const render::PageMaker* LoadedPageMaker(std::string* why);

}  // namespace qelm::embedded::adapter
