#include "filtering/run_guards.h"

namespace qelm::filtering {

using host::Id;
using host::kNone;

void UnlockedInsets::Unlock() {
  for (Id inset = tables_.FirstInset(document_); inset != kNone;
       inset = tables_.NextInset(document_, inset)) {
    if (tables_.InsetLocked(document_, inset) && tables_.SetInsetLocked(document_, inset, false)) {
      unlocked_.push_back(inset);
    }
  }
}

void UnlockedInsets::Relock() {
  // One that a filter deleted cannot be locked, and one that the host did not lock may be at the next try.
  std::erase_if(unlocked_, [&](Id inset) { return tables_.SetInsetLocked(document_, inset, true); });
}

}  // namespace qelm::filtering
