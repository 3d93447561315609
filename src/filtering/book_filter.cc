// The filter of the active book: the checks, the copy and the messages around its documents.
#include "filtering/book_filter.h"

#include <filesystem>
#include <optional>

#include "common/paths.h"
#include "common/text.h"
#include "common/utf8.h"
#include "filtering/book_copy.h"
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

constexpr std::int64_t kMillisecondsASecond = 1000;
constexpr std::int64_t kSecondsAMinute = 60;
constexpr std::size_t kStatusNameLimit = 30;
constexpr char kTitle[] = "QELM - Filtering";
constexpr char kEsc[] = "Press Esc to cancel";
constexpr char kNoEntryText[] = "<none>";

class BookFilter {
 public:
  explicit BookFilter(FilterContext& context)
      : context_(context), host_(context.host), run_(context.run), messenger_(context.messenger) {}

  bool FindBook();
  void Run();

 private:
  bool SaveFirst();
  bool Preprocess();
  bool PreprocessOne(Id component);
  bool Check(const OpenedComponent& found, FilteredComponent* entry);
  bool CancelledBefore();
  void TellPassedOver();
  bool CopyBook();
  void EndCopy();
  void TellUnchanged();
  bool GoesElsewhere();
  std::string FullyFiltered() const;
  bool SetEntryTexts(Id book);
  void Conclude();
  void Elapsed();

  bool End(Ending ending, std::string_view id);
  bool EndFormatted(Ending ending, std::string_view id, const std::string& text);
  bool NotCopied(const std::string& why);
  bool NotSaved(const std::string& path, const std::string& why);
  void Tell(std::string_view id) {
    if (run_.prompts && !run_.dry_run) messenger_.Alert(id);
  }
  void Tell(std::string_view id, const std::string& text) {
    if (run_.prompts && !run_.dry_run) messenger_.AlertFormatted(id, text);
  }
  bool Copies() const { return run_.mode == LaunchMode::kDuplicate && !run_.dry_run; }

  FilterContext& context_;
  host::Host& host_;
  FilterRun& run_;
  messages::Messenger& messenger_;
  Id book_ = kNone;
  std::int64_t started_ = 0;
  std::optional<BookCopy> copy_;
};

bool BookFilter::End(Ending ending, std::string_view id) {
  run_.ending = ending;
  run_.cancel_flag = 1;
  run_.why = messenger_.Get(id);
  if (run_.prompts) messenger_.Alert(id);
  return false;
}

bool BookFilter::EndFormatted(Ending ending, std::string_view id, const std::string& text) {
  run_.ending = ending;
  run_.cancel_flag = 1;
  run_.why = text;
  if (run_.prompts) messenger_.AlertFormatted(id, text);
  return false;
}

// The user is shown a page of text; who only wants the reason finds that.
bool BookFilter::NotCopied(const std::string& why) {
  EndFormatted(Ending::kNotCopied, "QELM_MSG_FILTER_24", messenger_.Format("QELM_MSG_FILTER_24", why));
  run_.why = why;
  return false;
}

bool BookFilter::NotSaved(const std::string& path, const std::string& why) {
  EndFormatted(Ending::kNotSaved, "QELM_MSG_FILTER_57", messenger_.Format("QELM_MSG_FILTER_57", path, why));
  run_.why = why;
  return false;
}

bool BookFilter::FindBook() {
  book_ = host_.documents.ActiveBook();
  if (book_ == kNone) return End(Ending::kMissingDocument, "QELM_MSG_GEN_11");
  if (!context_.scheme.Active()) return End(Ending::kMissingScheme, "QELM_MSG_FILTER_44");
  return true;
}

void BookFilter::Run() {
  started_ = host_.platform.Milliseconds();
  const messages::StatusShown status(host_.user);
  ScreenUpdatesOff screen(host_.session, book_, run_.disable_screen_updates && !run_.dry_run);
  messenger_.ShowStatus({kTitle, "Filtering Book", "Please wait...", kEsc});
  if (!SaveFirst() || !Preprocess()) return;
  TellPassedOver();
  if (!GoesElsewhere()) return;
  run_.result_book = book_;
  const bool ready = !Copies() || CopyBook();
  if (ready) {
    if (run_.dry_run || SetEntryTexts(run_.result_book)) FilterComponents(context_, run_.result_book);
    if (Copies()) EndCopy();
  } else if (run_.ending != Ending::kByUser) {
    return;
  }
  host_.documents.Activate(run_.result_book);
  Conclude();
}

bool BookFilter::SaveFirst() {
  const bool saves = run_.save_first && !run_.dry_run;
  if (saves && !host_.documents.Save(book_, {})) return End(Ending::kNotSaved, "QELM_MSG_FILTER_19");
  messenger_.ShowStatus(
      {kTitle, saves ? "Saving and preprocessing files..." : "Preprocessing files...", "", kEsc});
  return true;
}

bool BookFilter::Preprocess() {
  if (Copies()) {
    copy_.emplace(host_, messenger_, book_, run_);
  }
  for (Id component = host_.books.FirstComponent(book_); component != kNone;
       component = host_.books.NextComponent(book_, component)) {
    if (CancelledBefore() || !PreprocessOne(component)) return false;
  }
  return true;
}

bool BookFilter::CancelledBefore() {
  if (!host_.user.EscPressed() || !messenger_.Ask("QELM_MSG_FILTER_20")) return false;
  run_.cancelled = true;
  End(Ending::kByUser, "QELM_MSG_GEN_13");
  return true;
}

bool BookFilter::PreprocessOne(Id component) {
  OpenedComponent found;
  FilteredComponent& entry = OpenForRun(host_, &run_, book_, component, &found);
  if (!entry.opened && copy_) copy_->LeaveOut(component);
  if (!entry.opened) return true;
  const std::string name(common::FirstCharacters(common::FileName(found.path), kStatusNameLimit));
  messenger_.ShowStatus({kTitle, messenger_.Format("QELM_MSG_FILTER_59", name), "", kEsc});
  const bool good = Check(found, &entry);
  const ComponentStage stage = good ? ComponentStage::kChecked : ComponentStage::kGivenUp;
  if (!context_.component_done || context_.component_done(found.document, found.opened, stage)) return good;
  return EndFormatted(
      Ending::kNotSaved, "QELM_MSG_FILTER_42",
      messenger_.Format("QELM_MSG_FILTER_42", name, std::string(host_.documents.LastError())));
}

// What is to be known of a component while it is open.
bool BookFilter::Check(const OpenedComponent& found, FilteredComponent* entry) {
  if (run_.save_first && !run_.dry_run && !host_.documents.Save(found.document, {})) {
    const std::string why(host_.documents.LastError());
    const std::string name = messages::DocumentName(host_.documents, found.document);
    return EndFormatted(Ending::kNotSaved, "QELM_MSG_FILTER_42",
                        messenger_.Format("QELM_MSG_FILTER_42", name, why));
  }
  if (!entry->generated) {
    const std::vector<FlowRoot> flows = FlowsOf(host_, context_.scheme, found.document);
    Verdicts verdicts(context_, found.document);
    if (!verdicts.Prepare(flows)) return false;
    const FlowRoot main = MainFlow(host_, found.document);
    entry->root_filtered = main.root != kNone && !flows.empty() && verdicts.Fails(main.root);
  }
  if (!copy_ || copy_->AddComponent(entry->component, found.document)) return true;
  const std::string why = found.path + ": " + std::string(host_.documents.LastError());
  return NotCopied(why);
}

void BookFilter::TellPassedOver() {
  const std::string failed = PassedOver(run_);
  if (failed.empty()) return;
  const std::string_view id = Copies() ? "QELM_MSG_FILTER_50" : "QELM_MSG_FILTER_51";
  Tell(id, messenger_.Format(id, failed));
}

// In mode 3 the texts are those of the new book: the source stays what it is.
bool BookFilter::SetEntryTexts(Id book) {
  for (const FilteredComponent& entry : run_.components) {
    if (!entry.opened) continue;
    const bool none = entry.root_filtered && run_.mode == LaunchMode::kDuplicate;
    if (entry.root_filtered && !none) continue;
    if (host_.books.SetEntryText(book, entry.component, none ? kNoEntryText : "")) continue;
    const std::string why(host_.documents.LastError());
    return NotSaved(std::string(host_.documents.Path(book)), why);
  }
  return true;
}

void BookFilter::TellUnchanged() {
  std::string lines;
  for (const std::string& link : run_.unchanged_links) lines += (lines.empty() ? "" : "\n") + link;
  if (!lines.empty()) Tell("QELM_MSG_FILTER_70", messenger_.Format("QELM_MSG_FILTER_70", lines));
}

// A run that only counts says what would be refused.
bool BookFilter::GoesElsewhere() {
  const bool matters = run_.dry_run && run_.mode == LaunchMode::kDuplicate && !run_.output_folder.empty();
  const std::string own(common::FolderOf(host_.documents.Path(book_)));
  if (!matters || !host_.platform.SameFile(own, run_.output_folder)) return true;
  return End(Ending::kSameFolder, "QELM_MSG_FILTER_22");
}

// False when there is no new book: the ending says why, and only kByUser is told later on.
bool BookFilter::CopyBook() {
  messenger_.ShowStatus({kTitle, "Transporting book to...", run_.output_folder, kEsc});
  switch (copy_->Copy()) {
    case kDone:
      run_.result_book = copy_->NewBook();
      context_.copy_record = copy_->TakeRecord();
      TakeIdsOfOther(copy_->components(), &run_);
      run_.copied = copy_->CopiedFiles();
      run_.missing.assign(copy_->MissingFiles().begin(), copy_->MissingFiles().end());
      run_.made_folders = copy_->made_folders();
      run_.unchanged_links = copy_->unchanged_links();
      TellUnchanged();
      return true;
    case kOutputIsSource:
      return End(Ending::kSameFolder, "QELM_MSG_FILTER_22");
    case kCopyStopped:
      run_.cancelled = true;
      return End(Ending::kByUser, "QELM_MSG_FILTER_23");
    default:
      return NotCopied(copy_->why());
  }
}

// The book is the last file of the copy. One that is not filtered to its end must not be taken for the
// result.
void BookFilter::EndCopy() {
  CopyRecord& record = *context_.copy_record;
  if (run_.ending != Ending::kCompleted) {
    record.Complete(false);
    return;
  }
  if (context_.caller_ends_filling) return;
  host::Documents& documents = host_.documents;
  const std::string path(documents.Path(run_.result_book));
  const bool saved = !documents.Switch(run_.result_book, host::DocumentSwitch::kModified) ||
                     documents.Save(run_.result_book, {});
  const std::string why(documents.LastError());
  const bool complete = record.Complete(saved);
  if (!saved || !complete) {
    NotSaved(path, saved ? record.why() : why);
  } else {
    run_.left_over = record.LeftOver();
  }
}

// A line for each component of which everything failed the scheme, also for one that was taken out as empty.
std::string BookFilter::FullyFiltered() const {
  std::string list;
  for (const FilteredComponent& entry : run_.components) {
    if (!entry.root_filtered) continue;
    list = messages::Messenger::FormatText("%s  - %s\n", list, std::string(common::FileName(entry.path)));
  }
  return list;
}

void BookFilter::Conclude() {
  if (run_.ending != Ending::kCompleted) {
    Tell("QELM_MSG_FILTER_25");
  } else if (run_.book_completion_prompt) {
    const bool copied = run_.mode == LaunchMode::kDuplicate;
    const std::string_view list = copied ? "QELM_MSG_FILTER_26" : "QELM_MSG_FILTER_27";
    const std::string filtered = FullyFiltered();
    if (!filtered.empty()) Tell(list, messenger_.Format(list, filtered));
    if (copied) Tell("QELM_MSG_FILTER_28");
  }
  Elapsed();
}

void BookFilter::Elapsed() {
  if (run_.ending == Ending::kByUser) Tell("QELM_MSG_FILTER_29");
  if (run_.ending != Ending::kCompleted || !run_.book_completion_prompt) return;
  const std::int64_t seconds = (host_.platform.Milliseconds() - started_) / kMillisecondsASecond;
  Tell("QELM_MSG_FILTER_14",
       messenger_.Format("QELM_MSG_FILTER_14", seconds / kSecondsAMinute, seconds % kSecondsAMinute));
}

// Saves the documents of a new book as the run is through with them, and closes those that it opened.
ComponentSink SavingComponents(host::Documents& documents) {
  return [&documents](Id document, bool opened, ComponentStage stage) {
    const bool saved = stage != ComponentStage::kFinished || documents.Save(document, {});
    if (opened && saved) documents.Close(document, /*discard=*/true);
    return saved;
  };
}

}  // namespace

std::string OutputFolder(std::string_view book_path, std::string_view text) {
  std::string folder = common::PlatformPath(common::Trim(text));
  if (folder.empty()) return folder;
  if (!common::IsAbsolutePath(folder)) folder = common::JoinPath(common::FolderOf(book_path), folder);
  folder = std::filesystem::path(folder).lexically_normal().string();
  while (folder.size() > 1 && folder.back() == common::kPathSeparator) folder.pop_back();
  return folder;
}

std::int32_t FilterAndSaveActiveBook(FilterContext& context) {
  const FilterRun& run = context.run;
  if (run.mode == LaunchMode::kDuplicate && !run.dry_run) {
    context.component_done = SavingComponents(context.host.documents);
  }
  return FilterActiveBook(context);
}

std::int32_t FilterActiveBook(FilterContext& context) {
  FilterRun& run = context.run;
  ClearOutcome(&run);
  ClearBookOutcome(&run);
  BookFilter filter(context);
  if (!filter.FindBook()) return ResultOf(run.ending);
  if (!run.dry_run) Notify(context.host.clients, run, "QELM_Filter_Start");
  filter.Run();
  const bool done = run.ending == Ending::kCompleted;
  if (!run.dry_run) {
    Notify(context.host.clients, run, done ? "QELM_Filter_Complete" : "QELM_Filter_Cancelled");
  }
  if (run.ending == Ending::kByUser && run.result_book == kNone) return 0;
  const bool copied = run.mode == LaunchMode::kDuplicate && run.result_book != kNone;
  return copied && run.ending == Ending::kNotSaved ? kCopyFailed : ResultOf(run.ending);
}

}  // namespace qelm::filtering
