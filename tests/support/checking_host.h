// A host that checks how the plug-in keeps the contract, around the host that does the work. It collects what
// is wrong and lets every call go on:
//   - a call outside an entry point, where entries are marked by Entry;
//   - an id of a document or book that was closed;
//   - a text position from before the last edit of its document, or one that the host never gave;
//   - screen updates that are off, or a text inset that is left unlocked, when an entry ends.
#pragma once

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "support/observed_host.h"

namespace qelm::testing {

class CheckingHost : private CallObserver {
 public:
  explicit CheckingHost(host::Host& inner) : inner_(inner), observed_(inner, *this) {}

  host::Host& roles() { return observed_.roles(); }

  // What the plug-in did wrong, in order; empty when it kept to the contract.
  const std::vector<std::string>& violations() const { return violations_; }

  // One of the plug-in's entry points is under way while this lives.
  class Entry {
   public:
    explicit Entry(CheckingHost& host) : host_(host) { ++host_.entries_; }
    ~Entry() { host_.Leave(); }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

   private:
    CheckingHost& host_;
  };

 private:
  using Position = std::tuple<host::Id, host::Id, std::uint32_t>;  // document, object, offset

  bool Before(const HostCall& call) override;
  void After(const HostCall& call) override;
  void Leave();
  void Forget(host::Id document);
  void Violation(const HostCall& call, const std::string& what);

  host::Host& inner_;
  ObservedHost observed_;
  std::vector<std::string> violations_;
  std::int32_t entries_ = 0;
  std::set<host::Id> closed_;
  std::set<Position> positions_;                      // given out since the last edit
  std::set<std::pair<host::Id, host::Id>> unlocked_;  // document and inset
};

}  // namespace qelm::testing
