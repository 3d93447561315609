// The half of a user interface that most tests do not look at: menus and commands, which are all taken.
#pragma once

#include "host/interface/user_interface.h"

namespace qelm::testing {

class MenuTaker : public host::UserInterface {
 public:
  host::Id DefineMenu(std::string_view, std::string_view) override { return 1; }
  host::Id DefineCommand(std::int32_t, std::string_view, std::string_view, std::string_view) override {
    return 1;
  }
  bool AddToMenu(std::string_view, host::Id) override { return true; }
  bool AddSeparator(std::string_view) override { return true; }
  bool EnableCommand(host::Id, bool) override { return true; }
};

}  // namespace qelm::testing
