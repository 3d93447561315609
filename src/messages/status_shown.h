// Takes the status dialog away at the end of an operation, on every way out.
#pragma once

#include "host/interface/user_interface.h"

namespace qelm::messages {

class StatusShown {
 public:
  explicit StatusShown(host::UserInterface& user) : user_(user) {}
  ~StatusShown() { user_.HideStatus(); }
  StatusShown(const StatusShown&) = delete;
  StatusShown& operator=(const StatusShown&) = delete;

 private:
  host::UserInterface& user_;
};

}  // namespace qelm::messages
