// A host that lets one call fail, around the host that does the work: the n-th of one operation. A call that
// fails is not made, and gives what the operation gives when it fails: 0, false, nothing.
//
//   FailingHost host(embedded.roles());
//   Work(host.roles());                        // once unharmed, to learn which operations it calls how often
//   for (const auto& [operation, count] : host.calls()) ...
//   host.FailAt("Documents::Save", 1);
#pragma once

#include <map>
#include <string>
#include <utility>

#include "support/observed_host.h"

namespace qelm::testing {

class FailingHost : private CallObserver {
 public:
  explicit FailingHost(host::Host& inner) : observed_(inner, *this) {}

  host::Host& roles() { return observed_.roles(); }

  // Counts anew from here, and lets the n-th call (from 1; 0: none) of the operation ("Role::Name") fail.
  void FailAt(std::string operation, std::int64_t n) {
    operation_ = std::move(operation);
    n_ = n;
    calls_.clear();
    failed_.clear();
  }

  // How often each operation was called since then, the one that failed included.
  const std::map<std::string, std::int64_t>& calls() const { return calls_; }
  // The operation that was made to fail; empty when it did not come to that.
  const std::string& failed() const { return failed_; }

 private:
  bool Before(const HostCall& call) override {
    std::string operation = std::string(call.role) + "::" + std::string(call.name);
    const std::int64_t nth = ++calls_[operation];
    if (operation != operation_ || nth != n_) return true;
    failed_ = std::move(operation);
    return false;
  }
  void After(const HostCall&) override {}

  ObservedHost observed_;
  std::string operation_;
  std::string failed_;
  std::int64_t n_ = 0;
  std::map<std::string, std::int64_t> calls_;
};

}  // namespace qelm::testing
