#include "support/checking_host.h"

#include <algorithm>
#include <array>

namespace qelm::testing {
namespace {

using host::Id;

// Roles whose operations name a document or book by their first id.
constexpr std::array<std::string_view, 9> kByDocument = {
    "Documents", "Books", "Elements", "Definitions", "Links", "Editing", "Text", "Catalogs", "Tables"};

bool NamesDocument(const HostCall& call) {
  return !call.ids.empty() &&
         std::find(kByDocument.begin(), kByDocument.end(), call.role) != kByDocument.end();
}

}  // namespace

bool CheckingHost::Before(const HostCall& call) {
  if (entries_ == 0) Violation(call, "outside an entry point");
  if (!NamesDocument(call)) return true;
  const Id document = call.ids.front();
  if (closed_.contains(document)) Violation(call, "with the id of a closed document");
  for (const host::TextLocation& position : call.given) {
    if (position.object == host::kNone) continue;
    if (!positions_.contains({document, position.object, position.offset})) {
      Violation(call, "with a text position that is stale or was never given");
    }
  }
  return true;
}

void CheckingHost::After(const HostCall& call) {
  if (!NamesDocument(call)) {
    // An id may be given out again for another document.
    if (call.name == "Open") closed_.erase(call.result);
    return;
  }
  const Id document = call.ids.front();
  for (const host::TextLocation& position : call.returned) {
    positions_.insert({document, position.object, position.offset});
  }
  if (call.role == "Editing" && call.result != host::kNone) Forget(document);
  if (call.name == "Close" && call.result != host::kNone) {
    closed_.insert(document);
    Forget(document);
    std::erase_if(unlocked_, [&](const auto& inset) { return inset.first == document; });
  }
  if (call.name == "SetInsetLocked" && call.result != host::kNone) {
    if (call.on) {
      unlocked_.erase({document, call.ids[1]});
    } else {
      unlocked_.insert({document, call.ids[1]});
    }
  }
}

void CheckingHost::Forget(Id document) {
  std::erase_if(positions_, [&](const Position& position) { return std::get<0>(position) == document; });
}

void CheckingHost::Leave() {
  if (--entries_ > 0) return;
  if (!inner_.session.ScreenUpdates()) violations_.push_back("screen updates were left off");
  for (const auto& [document, unlocked] : unlocked_) {
    for (Id inset = inner_.tables.FirstInset(document); inset != host::kNone;
         inset = inner_.tables.NextInset(document, inset)) {
      if (inset == unlocked) violations_.push_back("a text inset was left unlocked");
    }
  }
}

void CheckingHost::Violation(const HostCall& call, const std::string& what) {
  violations_.push_back(std::string(call.role) + "::" + std::string(call.name) + " " + what);
}

}  // namespace qelm::testing
