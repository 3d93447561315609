#include "cli/save_changed.h"

#include <algorithm>

#include "cli/session.h"

namespace qelm::cli {
namespace {

using host::Id;
using host::kNone;

class Saving {
 public:
  Saving(Session& session, Outcome* outcome)
      : session_(session), documents_(session.roles().documents), outcome_(outcome) {}

  bool Changed(Id id) const { return id != kNone && documents_.Switch(id, host::DocumentSwitch::kModified); }

  void Save(Id id, const std::string& path) {
    saved_.push_back(session_.Save(id, path));
    outcome_->text += "saved " + saved_.back().get<std::string>() + "\n";
  }

  void SaveOthers(const std::vector<Id>& targets) {
    for (Id id = documents_.FirstOpenDocument(); id != kNone; id = documents_.NextOpenDocument(id)) {
      if (std::find(targets.begin(), targets.end(), id) != targets.end() || !Changed(id)) continue;
      if (documents_.Path(id).empty()) {
        outcome_->text += "a new document without a name was not saved\n";
      } else {
        Save(id, "");
      }
    }
  }

  nlohmann::ordered_json& saved() { return saved_; }

 private:
  Session& session_;
  host::Documents& documents_;
  Outcome* outcome_;
  nlohmann::ordered_json saved_ = nlohmann::ordered_json::array();
};

}  // namespace

void SaveChanged(Session& session, const std::vector<Id>& targets, const std::string& output,
                 Outcome* outcome) {
  Saving saving(session, outcome);
  for (const Id target : targets) {
    const bool to_output = target == targets.front() && !output.empty();
    // Filtering in place changes what a book shows of its entries for the time being, and its file stays.
    const bool in_place = session.roles().books.IsBook(target) &&
                          target == session.plugin().filter_run.result_book &&
                          session.plugin().filter_run.mode != filtering::LaunchMode::kDuplicate;
    if (!to_output && (in_place || !saving.Changed(target))) continue;
    saving.Save(target, to_output ? output : "");
    if (target == targets.front()) outcome->output = saving.saved().back();
  }
  saving.SaveOthers(targets);
  // Open documents are known to the host, the book that a filter made only to its run.
  const Id book = session.plugin().filter_run.result_book;
  const bool copied = session.plugin().filter_run.mode == filtering::LaunchMode::kDuplicate;
  if (copied && std::find(targets.begin(), targets.end(), book) == targets.end() && saving.Changed(book)) {
    saving.Save(book, "");
  }
  outcome->members["saved"] = std::move(saving.saved());
}

}  // namespace qelm::cli
