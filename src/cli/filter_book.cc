#include "cli/filter_book.h"

#include <unordered_set>

#include "cli/file_names.h"
#include "cli/filter_endings.h"
#include "cli/link_table.h"
#include "cli/session.h"
#include "common/result_codes.h"
#include "embedded/adapter/book_update.h"
#include "filtering/book_filter.h"
#include "filtering/restore.h"
#include "host/contexts.h"

namespace qelm::cli {
namespace {

using filtering::ComponentStage;
using filtering::FilteredComponent;
using filtering::FilterRun;
using filtering::LaunchMode;
using Json = nlohmann::ordered_json;

// Saves what was changed and closes what was opened for the run.
class ComponentFiles {
 public:
  ComponentFiles(Session& session, bool dry_run) : session_(session), dry_run_(dry_run) {}

  filtering::ComponentSink Sink() {
    return [this](host::Id document, bool opened, ComponentStage stage) {
      return Finish(document, opened, stage);
    };
  }
  bool Changed(const std::string& path) const { return changed_.contains(path); }
  std::size_t Written() const { return dry_run_ ? 0 : changed_.size(); }

 private:
  bool Finish(host::Id document, bool opened, ComponentStage stage) {
    host::Documents& documents = session_.roles().documents;
    session_.ShowNotices();
    bool saved = true;
    if (stage == ComponentStage::kFinished && documents.Switch(document, host::DocumentSwitch::kModified)) {
      const std::string path(documents.Path(document));
      saved = dry_run_ || documents.Save(document, {});
      if (saved) changed_.insert(path);
      if (saved && !dry_run_) session_.Say("wrote " + path);
    }
    // One that stays open would be changed again by the book's update, and not written.
    return (!opened || documents.Close(document, true)) && saved;
  }

  Session& session_;
  bool dry_run_;
  std::unordered_set<std::string> changed_;
};

std::size_t PassedOver(const FilterRun& run) {
  std::size_t count = 0;
  for (const FilteredComponent& entry : run.components) count += !entry.opened && !entry.generated ? 1 : 0;
  return count;
}

// What became of a component, for the line that names it.
std::string FateOf(const FilteredComponent& entry, bool restores) {
  if (!entry.opened) return entry.generated ? "generated, not there" : "cannot be opened, passed over";
  if (entry.generated && !restores) return "generated, left as it is";
  if (entry.ending == filtering::Ending::kNone) return "not come to";
  const FilterEndingText* problem = TextFor(entry.ending);
  return problem == nullptr ? std::string() : std::string(problem->text);
}

std::string CountsText(const FilterRun& run, const filtering::FilterCounts& counts) {
  const bool deletes = run.mode == LaunchMode::kDuplicate;
  std::string text = std::to_string(counts.elements) + " elements, " + std::to_string(counts.kept) +
                     " kept, " + std::to_string(deletes ? counts.deleted : counts.hidden) +
                     (run.dry_run ? " would be " : " ") + (deletes ? "deleted" : "hidden");
  if (counts.left != 0) text += ", " + std::to_string(counts.left) + " could not be hidden";
  return text;
}

Json CountsJson(const filtering::FilterCounts& counts) {
  return {{"elements", counts.elements},
          {"kept", counts.kept},
          {"hidden", counts.hidden},
          {"deleted", counts.deleted},
          {"left", counts.left}};
}

Json ComponentsJson(const FilterRun& run, const ComponentFiles& files) {
  Json components = Json::array();
  for (const FilteredComponent& entry : run.components) {
    Json object{{"path", ShownPath(entry.path)}, {"opened", entry.opened}, {"generated", entry.generated}};
    if (!entry.opened) object["error"] = entry.why;
    const bool come_to = entry.ending != filtering::Ending::kNone;
    const FilterEndingText* problem = TextFor(entry.ending);
    object["done"] = entry.ending == filtering::Ending::kCompleted;
    if (problem != nullptr) object["error"] = problem->text;
    if (come_to) object.update(CountsJson(entry));
    object["changed"] = files.Changed(entry.path);
    object["root_filtered"] = entry.root_filtered;
    object["emptied"] = entry.emptied;
    object["removed"] = entry.removed;
    components.push_back(std::move(object));
  }
  return components;
}

Json PathsJson(const std::vector<std::string>& paths) {
  Json list = Json::array();
  for (const std::string& path : paths) list.push_back(ShownPath(path));
  return list;
}

// What is left of a run that was not completed.
std::string WhatIsLeft(const FilterRun& run, const ComponentFiles& files) {
  if (run.mode == LaunchMode::kDuplicate && !run.copied.empty()) {
    return "; the copy in " + ShownPath(run.output_folder) + " is not complete";
  }
  const std::size_t written = files.Written();
  if (written == 0) return "; nothing was written";
  return "; " + std::to_string(written) + (written == 1 ? " file" : " files") + " before that " +
         (written == 1 ? "is" : "are") + " written";
}

[[noreturn]] void ThrowEnding(const Session& session, const FilterRun& run, std::int32_t result,
                              const ComponentFiles& files) {
  const FilterEndingText* known = TextFor(run.ending);
  std::string text = known != nullptr ? known->text : "the run ended with result " + std::to_string(result);
  for (const FilteredComponent& entry : run.components) {
    const bool guilty = entry.ending != filtering::Ending::kNone && entry.ending == run.ending &&
                        run.ending != filtering::Ending::kCompleted;
    if (guilty) text.insert(0, ShownPath(entry.path) + ": ");
    if (guilty) break;
  }
  // Of a copy the run knows more: who holds the folder, which file is in the way, why the book is not saved.
  const bool knows_more = run.ending == filtering::Ending::kNotCopied ||
                          (run.ending == filtering::Ending::kNotSaved && run.result_book != host::kNone);
  if (knows_more && !run.why.empty()) text += ": " + run.why;
  throw Failure(known != nullptr ? known->status : ExitStatus::kOperation,
                session.target() + ": " + text + WhatIsLeft(run, files),
                {{"result", result}, {"components", ComponentsJson(run, files)}});
}

std::string FilterText(const FilterRun& run, const std::string& target, const std::string& output) {
  std::string text = target + ": " + CountsText(run, run) + (output.empty() ? "\n" : " -> " + output + "\n");
  for (const FilteredComponent& entry : run.components) {
    std::string fate = FateOf(entry, false);
    if (fate.empty()) fate = CountsText(run, entry);
    if (entry.removed) fate += "; emptied, and taken out of the book";
    if (!entry.removed && entry.root_filtered) fate += "; its highest-level element fails the scheme";
    text += "  " + ShownPath(entry.path) + ": " + fate + "\n";
  }
  for (const std::string& link : run.unchanged_links) text += "not changed: " + link + "\n";
  for (const std::string& path : run.removed_files) text += "  " + ShownPath(path) + ": removed\n";
  for (const std::string& path : run.missing) {
    text += "  " + ShownPath(path) + ": shown by the book, but not there\n";
  }
  for (const std::string& path : run.left_over) {
    text += "  " + ShownPath(path) + ": left over from an earlier copy; this one has no such file\n";
  }
  return text;
}

}  // namespace

Outcome FilterBook(Session& session, host::Id book, const std::string& scheme) {
  Plugin& plugin = session.plugin();
  FilterRun& run = plugin.filter_run;
  plugin.host.documents.Activate(book);
  ComponentFiles files(session, run.dry_run);
  filtering::FilterContext context = FilterContextOf(plugin);
  context.component_done = files.Sink();
  Outcome outcome;
  outcome.result = filtering::FilterActiveBook(context);
  session.ShowNotices();
  if (outcome.result != common::kDone) ThrowEnding(session, run, outcome.result, files);
  if (run.mode == LaunchMode::kDuplicate && !run.dry_run) {
    outcome.output = ShownPath(std::string(session.roles().documents.Path(run.result_book)));
  }
  // References without a target keep a book from being updated in full, and are what was asked for.
  const bool only_references =
      !run.dangling.empty() && run.not_updated_code == embedded::adapter::kNoTargetsCode;
  const bool not_updated = !run.not_updated.empty() && !only_references;
  if (PassedOver(run) != 0 || !run.unchanged_links.empty() || not_updated) {
    outcome.status = ExitStatus::kFound;
  }
  outcome.members = {{"scheme", scheme}, {"mode", ModeName(run.mode)}, {"dry_run", run.dry_run}};
  outcome.members.update(CountsJson(run));
  outcome.members["components"] = ComponentsJson(run, files);
  std::vector<std::string> copied;
  for (const filtering::CopiedFile& file : run.copied) copied.push_back(file.target);
  outcome.members["copied"] = PathsJson(copied);
  outcome.members["removed_files"] = PathsJson(run.removed_files);
  outcome.members["missing"] = PathsJson(run.missing);
  outcome.members["left_over"] = PathsJson(run.left_over);
  outcome.members["unchanged_links"] = run.unchanged_links;
  outcome.members["dangling"] = DanglingJson(run.dangling);
  outcome.members["not_updated"] = run.not_updated.empty() ? Json(nullptr) : Json(run.not_updated);
  outcome.text = FilterText(run, session.target(), outcome.output) + DanglingText(run.dangling);
  return outcome;
}

Outcome RestoreBook(Session& session, host::Id book, bool dry_run) {
  Plugin& plugin = session.plugin();
  FilterRun& run = plugin.filter_run;
  ComponentFiles files(session, dry_run);
  Outcome outcome;
  // The command is the answer to the question whether to restore.
  outcome.result =
      filtering::RestoreBook(plugin.host, plugin.messenger, run, book, /*ask=*/false, files.Sink());
  session.ShowNotices();
  if (outcome.result != common::kDone) ThrowEnding(session, run, outcome.result, files);
  if (PassedOver(run) != 0) outcome.status = ExitStatus::kFound;
  Json components = Json::array();
  bool changed = false;
  outcome.text = session.target() + ":\n";
  for (const FilteredComponent& entry : run.components) {
    const bool restored = files.Changed(entry.path);
    changed = changed || restored;
    std::string fate = FateOf(entry, true);
    if (fate.empty()) fate = restored ? (dry_run ? "would be restored" : "restored") : "nothing to restore";
    const std::string path = ShownPath(entry.path);
    outcome.text.append("  ").append(path).append(": ").append(fate).append("\n");
    components.push_back({{"path", path}, {"opened", entry.opened}, {"changed", restored}});
    if (!entry.opened) components.back()["error"] = entry.why;
  }
  outcome.members = {{"dry_run", dry_run}, {"changed", changed}, {"components", std::move(components)}};
  return outcome;
}

}  // namespace qelm::cli
