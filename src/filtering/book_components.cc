// The filter of a book's documents, one after the other, and what follows on the book as a whole.
#include <algorithm>

#include "filtering/book_filter.h"
#include "filtering/components.h"
#include "filtering/dangling.h"
#include "filtering/delete_empties.h"
#include "filtering/document_driver.h"
#include "filtering/restore.h"

namespace qelm::filtering {
namespace {

using host::Id;
using host::kNone;

class BookComponents {
 public:
  BookComponents(FilterContext& context, Id book)
      : context_(context),
        host_(context.host),
        run_(context.run),
        book_(book),
        empties_(context, book),
        references_(context.host, /*single=*/false, context.run.places_dangling),
        deletes_empties_(context.run.delete_empties && context.run.mode == LaunchMode::kDuplicate &&
                         !context.run.dry_run) {}

  void Run();

 private:
  bool FilterOne(Id component);
  bool PassOver(FilteredComponent* entry);
  bool AllDone() const;
  void Filter(const OpenedComponent& found, FilteredComponent* entry);
  bool CancelledBetween();
  void DeleteEmpties();
  std::string SourceInCopy();
  void Update();
  void Sum();

  FilterContext& context_;
  host::Host& host_;
  FilterRun& run_;
  Id book_;
  EmptyComponents empties_;
  DanglingReferences references_;
  bool deletes_empties_;
  Ending ending_ = Ending::kCompleted;  // of the book: the first that was not well
  bool cancelled_ = false;
};

void BookComponents::Run() {
  run_.cancel_flag = 0;
  Id component = host_.books.FirstComponent(book_);
  while (component != kNone && FilterOne(component)) component = host_.books.NextComponent(book_, component);
  Sum();
  if (component == kNone && ending_ == Ending::kCompleted && !AllDone()) ending_ = Ending::kMissingDocument;
  run_.ending = ending_;
  run_.cancelled = cancelled_;
  run_.result_document = kNone;
  run_.cancel_flag = component == kNone && ending_ != Ending::kMissingDocument ? 0 : 1;
  run_.would_go.clear();
  if (run_.cancel_flag != 0) return;
  if (deletes_empties_) DeleteEmpties();
  for (const std::string& path : run_.removed_files) references_.AddRemovedFile(path);
  run_.dangling = references_.Find();
  if (!run_.dry_run) Update();
}

bool BookComponents::FilterOne(Id component) {
  FilteredComponent& entry = EntryOf(&run_, component);
  entry.generated = host_.books.IsGenerated(book_, component);
  entry.path = host_.books.ComponentPath(book_, component);
  // What was passed over before the book was copied is not in the copy.
  if (entry.generated || !entry.why.empty()) return true;
  if (CancelledBetween()) return false;
  OpenedComponent found;
  OpenForRun(host_, &run_, book_, component, &found);
  if (!entry.opened) return PassOver(&entry);
  Filter(found, &entry);
  const bool goes_on = run_.cancel_flag == 0;
  if (!goes_on && run_.mode != LaunchMode::kDuplicate && run_.touched) UndoFilter(context_, found.document);
  if (goes_on) references_.Add(found.document, run_.would_go);
  if (goes_on && deletes_empties_) empties_.Look(found.document, &entry);
  const ComponentStage stage = run_.dry_run ? ComponentStage::kChecked
                               : goes_on    ? ComponentStage::kFinished
                                            : ComponentStage::kGivenUp;
  if (context_.component_done && !context_.component_done(found.document, found.opened, stage) && goes_on) {
    entry.ending = Ending::kNotSaved;
    run_.why = host_.documents.LastError();
    const std::string text = context_.messenger.Format("QELM_MSG_FILTER_57", entry.path, run_.why);
    if (run_.prompts) context_.messenger.AlertFormatted("QELM_MSG_FILTER_57", text);
  }
  if (ending_ == Ending::kCompleted) ending_ = entry.ending;
  return goes_on && entry.ending != Ending::kNotSaved;
}

// A copy that cannot be opened, where its source could, stays unfiltered: it must not pass for done.
bool BookComponents::PassOver(FilteredComponent* entry) {
  if (run_.mode != LaunchMode::kDuplicate || run_.dry_run) return true;
  entry->ending = ending_ = Ending::kMissingDocument;
  run_.why = context_.messenger.Format("QELM_MSG_FILTER_51", entry->why);
  if (run_.prompts) context_.messenger.AlertFormatted("QELM_MSG_FILTER_51", run_.why);
  return false;
}

// Whether every document that could be opened when the run began had its turn.
bool BookComponents::AllDone() const {
  return std::all_of(run_.components.begin(), run_.components.end(), [](const FilteredComponent& entry) {
    return !entry.opened || entry.generated || entry.ending != Ending::kNone;
  });
}

void BookComponents::Filter(const OpenedComponent& found, FilteredComponent* entry) {
  FilterDocument(context_, found.document);
  static_cast<FilterCounts&>(*entry) = run_;
  entry->ending = run_.ending;
  cancelled_ = cancelled_ || run_.cancelled;
}

// A small document may be over before the walk looks for Esc.
bool BookComponents::CancelledBetween() {
  if (!host_.user.EscPressed() || !context_.messenger.Ask("QELM_MSG_FILTER_20")) return false;
  cancelled_ = true;
  ending_ = Ending::kByUser;
  return true;
}

void BookComponents::DeleteEmpties() {
  if (empties_.Remove()) return;
  run_.ending = Ending::kNotDeleted;
  if (!run_.prompts) return;
  const std::string why(host_.documents.LastError());
  context_.messenger.AlertFormatted("QELM_MSG_FILTER_58",
                                    context_.messenger.Format("QELM_MSG_FILTER_58", why));
}

// A component that could not be opened and so was not copied is named by the copy where it is. When it can be
// opened now, an update would change it, and it is a source.
std::string BookComponents::SourceInCopy() {
  if (run_.mode != LaunchMode::kDuplicate) return {};
  for (const FilteredComponent& entry : run_.components) {
    if (entry.opened || entry.generated) continue;
    const OpenedComponent found = messages::OpenComponent(host_, book_, entry.component, true);
    if (found.document == kNone) continue;
    if (found.opened) host_.documents.Close(found.document, true);
    return entry.why;
  }
  return {};
}

void BookComponents::Update() {
  constexpr std::uint32_t kUpdated =
      host::kUpdateNumbering | host::kUpdateGeneratedFiles | host::kUpdateCrossReferences;
  context_.messenger.ShowStatus({"QELM - Filtering", "Please wait...", "Updating the new book...", ""});
  run_.not_updated = SourceInCopy();
  if (run_.not_updated.empty() && host_.books.Update(book_, kUpdated)) return;
  if (run_.not_updated.empty()) {
    run_.not_updated = host_.documents.LastError();
    run_.not_updated_code = host_.documents.ErrorCode();
  }
  if (run_.not_updated.empty()) run_.not_updated = context_.messenger.Get("QELM_MSG_FILTER_73");
  if (!run_.prompts) return;
  context_.messenger.AlertFormatted("QELM_MSG_FILTER_56",
                                    context_.messenger.Format("QELM_MSG_FILTER_56", run_.not_updated));
}

void BookComponents::Sum() {
  FilterCounts sum;
  for (const FilteredComponent& entry : run_.components) {
    sum.elements += entry.elements;
    sum.kept += entry.kept;
    sum.hidden += entry.hidden;
    sum.deleted += entry.deleted;
    sum.left += entry.left;
  }
  static_cast<FilterCounts&>(run_) = sum;
}

}  // namespace

void FilterComponents(FilterContext& context, Id book) { BookComponents(context, book).Run(); }

void FilterBookComponents(FilterContext& context, Id book) {
  ClearOutcome(&context.run);
  ClearBookOutcome(&context.run);
  context.run.result_book = book;
  FilterComponents(context, book);
}

}  // namespace qelm::filtering
