// When a walk over many elements looks at the Esc key: at every 102nd element, as asking the host costs more
// than an element does.
#pragma once

#include <cstdint>

namespace qelm::messages {

class EscPoll {
 public:
  // Counts one element. True when the key is to be looked at instead.
  bool Due() {
    if (visited_ <= kInterval) {
      ++visited_;
      return false;
    }
    visited_ = 0;
    return true;
  }

 private:
  static constexpr std::int32_t kInterval = 100;
  std::int32_t visited_ = 0;
};

}  // namespace qelm::messages
