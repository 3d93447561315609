// What is made of the components once a text is parsed: short forms are written out, and what a later stage
// would have to look for is stored where it looks.
#pragma once

#include "xpath/components.h"

namespace qelm::xpath {

// Finishes all components from `first` to the end of the table: `[3]` becomes `[position()=3]`,
// `[contains(a,'b')]` becomes `[contains(a,'b')='true']`, properties get their codes and parameters their
// names.
void FinishComponents(Index first, ComponentTable* table);

}  // namespace qelm::xpath
