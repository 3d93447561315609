// A host around a host: every call of every role goes through an observer, which may let it fail. The two
// hosts for tests, CheckingHost and FailingHost, are observers.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "host/interface/host.h"

namespace qelm::testing {

// One call of a host operation.
struct HostCall {
  std::string_view role;                  // "Documents"
  std::string_view name;                  // "Save"
  std::vector<host::Id> ids;              // its arguments that are ids, in order: mostly the document first
  bool on = false;                        // its last argument, where that is a boolean
  std::vector<host::TextLocation> given;  // its arguments that are text positions
  std::vector<host::TextLocation> returned;  // the text positions that came out, in After
  host::Id result = host::kNone;             // the id that came out, 1 for true, in After
};

class CallObserver {
 public:
  virtual ~CallObserver() = default;
  // Before the call is made. False: it is not made, and what it gives is what it gives when it fails.
  virtual bool Before(const HostCall& call) = 0;
  // After a call that was made.
  virtual void After(const HostCall& call) = 0;
};

class ObservedHost {
 public:
  // Both must outlive this.
  ObservedHost(host::Host& inner, CallObserver& observer);
  ~ObservedHost();
  ObservedHost(const ObservedHost&) = delete;
  ObservedHost& operator=(const ObservedHost&) = delete;

  host::Host& roles();

 private:
  struct Roles;
  std::unique_ptr<Roles> roles_;
};

}  // namespace qelm::testing
