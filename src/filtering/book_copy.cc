#include "filtering/book_copy.h"

#include <algorithm>

#include "common/paths.h"
#include "common/text.h"
#include "common/utf8.h"

namespace qelm::filtering {
namespace {

using host::Id;
using host::kNone;
using Role = CopiedFile::Role;

constexpr std::size_t kStatusNameLimit = 50;

}  // namespace

BookCopy::BookCopy(host::Host& host, messages::Messenger& messenger, Id book, const FilterRun& wanted)
    : host_(host),
      messenger_(messenger),
      book_(book),
      redirect_(wanted.redirect_cross_references),
      overwrite_(wanted.overwrite),
      folder_(wanted.output_folder.empty() ? std::string()
                                           : host.platform.ResolvedPath(wanted.output_folder)),
      plan_(host, book),
      record_(std::make_unique<CopyRecord>(host.platform, folder_,
                                           common::FileName(plan_.Files().front().source))) {}

std::int32_t BookCopy::Copy() {
  if (folder_.empty()) {
    Fail("QELM_MSG_FILTER_52", folder_);
    return kCopyFailed;
  }
  const std::string source(common::FolderOf(plan_.Files().front().source));
  if (host_.platform.SameFile(source, folder_)) return kOutputIsSource;
  if (!plan_.AddShownFiles([this] { return Stopped(); })) return kCopyStopped;
  plan_.ChooseTargets(folder_);
  kept_.emplace(host_.platform, folder_);
  StagedFiles staged(host_.platform, folder_);
  if (!staged.MakeFolders() || !host_.platform.BeginFilling(folder_, &cut_before_)) {
    FailFile(folder_);
    return kCopyFailed;
  }
  // Before there is a stage of this copy, which it could not tell from others.
  UndoAbandoned(host_.platform, folder_);
  const std::int32_t result = Check() ? CopyFiles(&staged) : kCopyFailed;
  // Without the copy the folder is what it was before, a copy that an earlier run did not complete included.
  // The mark goes last: what it says holds until everything is put back.
  if (result != kDone) {
    const bool undone = staged.Undo();
    host_.platform.EndFilling(folder_, undone && !cut_before_);
  }
  return result;
}

std::int32_t BookCopy::CopyFiles(StagedFiles* staged) {
  if (!staged->Begin()) {
    FailFile(folder_);
    return kCopyFailed;
  }
  record_->Begin(plan_.Files().front().source);
  for (std::size_t i = 0; i < plan_.Files().size(); ++i) {
    if (Stopped()) return kCopyStopped;
    if (!CopyOne(i, staged)) return kCopyFailed;
    record_->Expect(plan_.Files()[i].target, copies_[i]);
  }
  new_record_ = staged->AddText(record_->Text());
  if (new_record_.empty()) {
    FailFile(record_->path());
    return kCopyFailed;
  }
  if (Stopped()) return kCopyStopped;
  if (!Place(staged) || !OpenNewBook()) return kCopyFailed;
  staged->Keep();
  made_folders_ = staged->made_folders();
  return kDone;
}

bool BookCopy::Check() { return CheckTargets() && CheckSpace(); }

bool BookCopy::CheckTargets() {
  if (!record_->Read() && !overwrite_) {
    why_ = messenger_.Format("QELM_MSG_FILTER_75", record_->path(), record_->why());
    return false;
  }
  const bool copied_before = record_->IsCopyOf(plan_.Files().front().source);
  return std::all_of(plan_.Files().begin(), plan_.Files().end(),
                     [&](const CopyPlan::File& file) { return CheckTarget(file, copied_before); });
}

// A copy must not take the place of what is being copied, by whatever way it would come there, nor of a file
// that is open, nor of what no earlier copy put there, or somebody changed since: that is somebody's.
bool BookCopy::CheckTarget(const CopyPlan::File& file, bool copied_before) {
  const bool made = record_->Has(file.target);
  const bool exists = host_.platform.MayExist(file.target);
  if (exists && plan_.FindFile(file.target) != CopyPlan::kNoFile)
    return Fail("QELM_MSG_FILTER_53", file.target);
  // The book of an earlier copy is open until somebody closes it, and would be taken for the new one.
  if (host_.documents.FindOpen(file.target) != kNone) return Fail("QELM_MSG_FILTER_54", file.target);
  if (!exists || overwrite_ || made) return NobodyMakes(file.target);
  if (record_->Names(file.target)) return Fail("QELM_MSG_FILTER_74", file.target);
  if (copied_before || record_->source().empty()) return Fail("QELM_MSG_FILTER_60", file.target);
  why_ = messenger_.Format("QELM_MSG_FILTER_71", file.target, record_->source());
  return false;
}

// A batch may be about to put a document there.
bool BookCopy::NobodyMakes(const std::string& target) {
  if (!host_.platform.FolderExists(std::string(common::FolderOf(target)))) return true;
  return host::HeldFile(host_.platform, target).Valid() || FailFile(target);
}

bool BookCopy::CheckSpace() {
  std::uint64_t needed = 0;
  for (const CopyPlan::File& file : plan_.Files()) {
    needed += host_.platform.FileSize(file.source).value_or(0);
  }
  const std::optional<std::uint64_t> free = host_.platform.FreeSpace(folder_);
  if (!free || needed <= *free) return true;
  why_ = messenger_.Format("QELM_MSG_FILTER_55", needed, *free);
  return false;
}

bool BookCopy::CopyOne(std::size_t number, StagedFiles* staged) {
  const CopyPlan::File& file = plan_.Files()[number];
  const std::string name(common::FileName(file.source));
  messenger_.ShowStatus({"QELM - Filtering",
                         "Copying:", std::string(common::FirstCharacters(name, kStatusNameLimit)),
                         "Press Esc to cancel"});
  const std::string copy = staged->Add(file.source);
  copies_.push_back(copy);
  if (copy.empty()) return FailFile(file.source);
  // References are known by their places among those of what was read.
  const bool same = file.state.empty() || host_.platform.FileState(file.source) == file.state;
  if (!same) return Fail("QELM_MSG_FILTER_72", file.source);
  return file.role == Role::kBook ? NameComponents(copy) : Redirect(number, copy);
}

// Lets the references of a copied document lead where they should. One that needs no change stays, byte for
// byte, what it was copied from.
bool BookCopy::Redirect(std::size_t number, const std::string& copy) {
  const std::vector<CopyPlan::Rewrite> rewrites = plan_.RewritesFor(number, redirect_);
  const CopyPlan::File& file = plan_.Files()[number];
  if (rewrites.empty()) return true;
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  const Id document = host_.documents.Open(copy, {.visible = false, .suppress_alerts = true}, &status);
  if (document == kNone) return HostSays(file.source);
  // References are written relative to where the document says that it is.
  const bool done = host_.documents.SetPath(document, file.target) && SetLinks(document, rewrites, file) &&
                    SaveCopy(document, copy);
  if (!done && why_.empty()) HostSays(file.source);
  host_.documents.Close(document, true);
  return done;
}

// A link that the host cannot change stays and is named; the book is no worse than it was for it.
bool BookCopy::SetLinks(Id document, const std::vector<CopyPlan::Rewrite>& rewrites,
                        const CopyPlan::File& file) {
  std::vector<host::Link> links;
  if (!host_.links.Read(document, &links)) return false;
  for (const CopyPlan::Rewrite& rewrite : rewrites) {
    const host::Link* link = CopyPlan::Find(links, rewrite);
    if (link == nullptr) return Fail("QELM_MSG_FILTER_72", file.source);
    if (host_.links.SetPath(document, *link, rewrite.path)) continue;
    unchanged_links_.push_back(file.target + ": " + std::string(LinkKindName(link->kind)) + " to " +
                               rewrite.path);
  }
  return true;
}

bool BookCopy::NameComponents(const std::string& copy) {
  const std::string& target = plan_.Files().front().target;
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  const Id book = host_.documents.Open(copy, {.visible = false, .suppress_alerts = true}, &status);
  if (book == kNone) return HostSays(plan_.Files().front().source);
  const std::optional<SameComponents> components = ComponentsOf(book);
  const bool done = components && host_.documents.SetPath(book, target) &&
                    NameComponents(book, *components) && SaveCopy(book, copy);
  if (!done && why_.empty()) HostSays(plan_.Files().front().source);
  host_.documents.Close(book, true);
  return done;
}

bool BookCopy::NameComponents(Id book, const SameComponents& components) {
  for (const auto& [component, copied] : components) {
    const std::string source(host_.books.ComponentPath(book_, component));
    const std::size_t file = plan_.FindFile(source);
    // A copy that named a source as its own for any other reason would have it filtered.
    const bool done = file != CopyPlan::kNoFile
                          ? host_.books.SetComponentPath(book, copied, plan_.Files()[file].target)
                          : !left_out_.contains(component) || NameLeftOut(book, copied, source);
    if (!done) return false;
  }
  return true;
}

// Those of a reading of the book's file.
std::optional<SameComponents> BookCopy::ComponentsOf(Id book) {
  std::optional<SameComponents> same = MatchComponents(host_.books, book_, book);
  if (!same) Fail("QELM_MSG_FILTER_77", plan_.Files().front().source);
  return same;
}

// What was not copied is named where it is, unless it is nowhere. One that is found already is named by a
// path that does not count from the book.
bool BookCopy::NameLeftOut(Id book, Id component, const std::string& source) {
  if (!host_.platform.MayExist(source) || host_.books.ComponentPath(book, component) == source) return true;
  return host_.books.SetComponentPath(book, component, source);
}

bool BookCopy::SaveCopy(Id document, const std::string& copy) {
  host::SaveOptions options;
  options.path = copy;
  return !host_.documents.Switch(document, host::DocumentSwitch::kModified) ||
         host_.documents.Save(document, options);
}

bool BookCopy::Place(StagedFiles* staged) {
  if (!staged->Place(new_record_, record_->path())) return FailFile(record_->path());
  // The book comes last, so that whoever waits for it finds all that it names.
  for (std::size_t i = plan_.Files().size(); i-- > 0;) {
    const std::string& target = plan_.Files()[i].target;
    if (!record_->IsUnchanged(target)) return Fail("QELM_MSG_FILTER_74", target);
    if (!staged->Place(copies_[i], target)) return FailFile(target);
    record_->Look(target);
  }
  return true;
}

bool BookCopy::OpenNewBook() {
  const std::string& target = plan_.Files().front().target;
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  const Id book = host_.documents.Open(target, {}, &status);
  if (book == kNone) return HostSays(target);
  std::optional<SameComponents> same = ComponentsOf(book);
  if (!same) {
    host_.documents.Close(book, true);
    return false;
  }
  components_ = std::move(*same);
  new_book_ = book;
  return true;
}

bool BookCopy::Stopped() {
  stopped_ = stopped_ || (host_.user.EscPressed() && messenger_.Ask("QELM_MSG_FILTER_20"));
  return stopped_;
}

bool BookCopy::Fail(std::string_view id, const std::string& text) {
  why_ = messenger_.Format(id, text);
  return false;
}

bool BookCopy::FailFile(const std::string& path) {
  const std::string reason = host_.platform.LastError();
  Fail("QELM_MSG_FILTER_52", path);
  why_ = common::WithReason(why_, reason);
  return false;
}

bool BookCopy::HostSays(const std::string& path) {
  why_ = host_.documents.LastError();
  if (why_.find(path) == std::string::npos) why_ = path + ": " + why_;
  return false;
}

}  // namespace qelm::filtering
