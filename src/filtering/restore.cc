#include "filtering/restore.h"

#include "filtering/components.h"
#include "filtering/document_driver.h"
#include "filtering/notify.h"
#include "filtering/run_guards.h"
#include "messages/document_name.h"
#include "messages/status_shown.h"

namespace qelm::filtering {
namespace {

using host::Id;
using host::kNone;

// Takes the tag off a document. Every condition of what carried it goes: a filter replaces conditions by its
// own tag and keeps no note of what was there.
class Restoring {
 public:
  Restoring(host::Host& host, messages::Messenger& messenger, FilterRun& run, Id document)
      : host_(host), messenger_(messenger), run_(run), document_(document) {
    plain_.mask = host::kConditionsProperty;
  }

  bool Restore() {
    if (!host_.documents.SetSwitch(document_, host::DocumentSwitch::kShowAllConditions, true)) Failed();
    ClearRows();
    const Id tag = host_.catalogs.FindCondition(document_, run_.condition_name);
    if (tag == kNone) return true;
    for (Id flow = host_.elements.FirstFlow(document_); flow != kNone;
         flow = host_.elements.NextFlow(document_, flow)) {
      if (!ClearFlow(flow, tag)) return false;
    }
    return true;
  }

 private:
  void ClearRows() {
    const std::vector<Id> none;
    for (Id table = host_.tables.FirstTable(document_); table != kNone;
         table = host_.tables.NextTable(document_, table)) {
      for (Id row = host_.tables.FirstRow(document_, table); row != kNone;
           row = host_.tables.NextRow(document_, row)) {
        if (!host_.tables.SetRowConditions(document_, row, none)) Failed();
      }
    }
  }

  // False when the user cancelled. A find or a change that fails ends this flow only.
  bool ClearFlow(Id flow, Id tag) {
    host::TextLocation from = host_.text.FlowStart(document_, flow);
    while (from.object != kNone) {
      host::TextRange found;
      const host::Text::FindResult result = host_.text.FindCondition(document_, from, tag, &found);
      if (result == host::Text::FindResult::kNotFound) return true;
      if (result == host::Text::FindResult::kFailed ||
          !host_.text.WriteProperties(document_, found, plain_)) {
        Failed();
        return true;
      }
      from = found.end;
      if (host_.user.EscPressed() && messenger_.Ask("QELM_MSG_GEN_14")) {
        run_.cancelled = true;
        run_.restore_cancelled = true;
        return false;
      }
    }
    return true;
  }

  void Failed() {
    if (run_.restore_failed) return;
    run_.restore_failed = true;
    messenger_.AlertFormatted(
        "QELM_MSG_FILTER_35",
        messenger_.Format("QELM_MSG_FILTER_35", messages::DocumentName(host_.documents, document_)));
  }

  host::Host& host_;
  messages::Messenger& messenger_;
  FilterRun& run_;
  Id document_;
  host::TextProperties plain_;
};

// The documents of one book, one after the other.
class BookRestore {
 public:
  BookRestore(host::Host& host, messages::Messenger& messenger, FilterRun& run, Id book,
              const ComponentSink& component_done)
      : host_(host), messenger_(messenger), run_(run), book_(book), component_done_(component_done) {}

  void Run() {
    run_.ending = Ending::kCompleted;
    for (Id component = host_.books.FirstComponent(book_); component != kNone && Restore(component);
         component = host_.books.NextComponent(book_, component)) {
    }
    if (const std::string failed = PassedOver(run_); !failed.empty() && run_.prompts) {
      messenger_.AlertFormatted("QELM_MSG_FILTER_51", messenger_.Format("QELM_MSG_FILTER_51", failed));
    }
  }

 private:
  // False when the user cancelled, or what was restored could not be saved.
  bool Restore(Id component) {
    OpenedComponent found;
    FilteredComponent& entry = OpenForRun(host_, &run_, book_, component, &found);
    if (!entry.opened) return true;
    const std::string name(common::FileName(found.path));
    messenger_.ShowStatus({"QELM - Filtering", "Processing:", name, "Press Esc to cancel"});
    host_.documents.Activate(found.document);
    host_.documents.SetSwitch(found.document, host::DocumentSwitch::kOnScreen, true);
    const bool finished = RestoreCore(host_, messenger_, run_, found.document);
    entry.ending = !finished             ? Ending::kByUser
                   : run_.restore_failed ? Ending::kNotRestored
                                         : Ending::kCompleted;
    const bool goes_on = finished && !CancelledBetween();
    const ComponentStage stage = finished ? ComponentStage::kFinished : ComponentStage::kGivenUp;
    if (component_done_ && !component_done_(found.document, found.opened, stage)) {
      entry.ending = Ending::kNotSaved;
    }
    if (entry.ending != Ending::kCompleted) run_.ending = entry.ending;
    if (!goes_on) run_.ending = Ending::kByUser;
    return goes_on && entry.ending != Ending::kNotSaved;
  }

  // A small document may be over before anything looks for Esc.
  bool CancelledBetween() {
    if (!host_.user.EscPressed() || !messenger_.Ask("QELM_MSG_GEN_14")) return false;
    run_.cancelled = run_.restore_cancelled = true;
    return true;
  }

  host::Host& host_;
  messages::Messenger& messenger_;
  FilterRun& run_;
  Id book_;
  const ComponentSink& component_done_;
};

}  // namespace

bool RestoreCore(host::Host& host, messages::Messenger& messenger, FilterRun& run, Id document) {
  run.restore_cancelled = false;
  run.restore_failed = false;
  // A filter hides inside text insets too, and a locked one would refuse to show it again.
  UnlockedInsets insets(host.tables, document);
  insets.Unlock();
  return Restoring(host, messenger, run, document).Restore();
}

std::int32_t RestoreDocument(host::Host& host, messages::Messenger& messenger, FilterRun& run, Id document,
                             bool ask, bool notify) {
  if (document == kNone) document = host.documents.ActiveDocument();
  if (document == kNone) {
    messenger.Alert("QELM_MSG_GEN_10");
    run.ending = Ending::kMissingDocument;
    return kNoDocument;
  }
  if (ask && !messenger.Ask("QELM_MSG_FILTER_34")) {
    run.ending = Ending::kDeclined;
    return 0;
  }
  if (notify) Notify(host.clients, run, "QELM_Filter_RestoreDoc_Start");
  bool finished = false;
  {
    const ScreenUpdatesOff screen(host.session, document, run.disable_screen_updates);
    finished = RestoreCore(host, messenger, run, document);
  }
  if (notify) Notify(host.clients, run, "QELM_Filter_RestoreDoc_Complete");
  run.ending = !finished ? Ending::kByUser : run.restore_failed ? Ending::kNotRestored : Ending::kCompleted;
  if (!finished) return kCancelled;
  return run.restore_failed ? 0 : kDone;
}

std::int32_t RestoreBook(host::Host& host, messages::Messenger& messenger, FilterRun& run, Id book, bool ask,
                         const ComponentSink& component_done) {
  ClearOutcome(&run);
  ClearBookOutcome(&run);
  if (book == kNone) book = host.documents.ActiveBook();
  if (book == kNone) {
    messenger.Alert("QELM_MSG_GEN_11");
    run.ending = Ending::kMissingDocument;
    return kNoDocument;
  }
  if (ask && !messenger.Ask("QELM_MSG_FILTER_33")) {
    run.ending = Ending::kDeclined;
    return 0;
  }
  Notify(host.clients, run, "QELM_Filter_RestoreBook_Start");
  {
    const messages::StatusShown status(host.user);
    const ScreenUpdatesOff screen(host.session, book, run.disable_screen_updates);
    BookRestore(host, messenger, run, book, component_done).Run();
    host.documents.Activate(book);
  }
  run.result_book = book;
  Notify(host.clients, run, "QELM_Filter_RestoreBook_Complete");
  return ResultOf(run.ending);
}

}  // namespace qelm::filtering
