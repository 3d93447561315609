#include "coloring/book_coloring.h"

#include "coloring/uncoloring.h"
#include "messages/component_document.h"

namespace qelm::coloring {
namespace {

using host::Id;
using host::kNone;

class BookRun {
 public:
  BookRun(ColoringContext& context, Command command, Id book)
      : context_(context), host_(context.host), run_(context.run), command_(command), book_(book) {}

  std::int32_t Run();

 private:
  bool Check();
  messages::OpenedComponent Open(Id component) {
    return messages::OpenComponent(host_, book_, component, run_.suppress_opening_alerts);
  }
  std::int32_t RunOne(ColoredComponent* component);
  bool Cancelled();

  ColoringContext& context_;
  host::Host& host_;
  ColoringRun& run_;
  Command command_;
  Id book_;
};

// Whether every component that is not generated can be found and opened. They stay open for the run.
bool BookRun::Check() {
  std::string failed;
  for (Id component = host_.books.FirstComponent(book_); component != kNone;
       component = host_.books.NextComponent(book_, component)) {
    if (host_.books.IsGenerated(book_, component)) continue;
    const messages::OpenedComponent found = Open(component);
    if (found.document != kNone) continue;
    if (!failed.empty()) failed += "\n";
    failed += found.why;
  }
  if (failed.empty()) return true;
  return context_.messenger.AskFormatted("QELM_MSG_COLORING_5",
                                         context_.messenger.Format("QELM_MSG_COLORING_5", failed));
}

std::int32_t BookRun::RunOne(ColoredComponent* component) {
  run_.ending = Ending::kCompleted;
  component->result = command_ == Command::kColorBook ? ColorDocument(context_, component->document)
                                                      : UncolorDocument(context_, component->document);
  component->ending = run_.ending;
  return component->result;
}

bool BookRun::Cancelled() {
  if (!host_.user.EscPressed() || !context_.messenger.Ask("QELM_MSG_GEN_14")) return false;
  run_.cancelled = true;
  run_.ending = Ending::kByUser;
  return true;
}

std::int32_t BookRun::Run() {
  if (run_.report && !Check()) {
    run_.ending = Ending::kBookDeclined;
    return common::kCancelled;
  }
  run_.ending = Ending::kCompleted;
  std::int32_t result = common::kDone;
  for (Id component = host_.books.FirstComponent(book_); component != kNone;
       component = host_.books.NextComponent(book_, component)) {
    if (host_.books.IsGenerated(book_, component)) continue;
    ColoredComponent& entry = run_.components.emplace_back();
    messages::OpenedComponent found = Open(component);
    entry.path = std::move(found.path);
    entry.why = std::move(found.why);
    entry.document = found.document;
    if (entry.document == kNone) continue;
    result = RunOne(&entry);
    if (result == common::kCancelled) break;
    if (Cancelled()) {
      result = common::kCancelled;
      break;
    }
  }
  // A component that failed is told by its own ending; where it stands in the book is without meaning.
  if (result != common::kCancelled) run_.ending = Ending::kCompleted;
  host_.documents.Activate(book_);
  return result;
}

}  // namespace

std::int32_t RunOnBook(ColoringContext& context, Command command, Id book) {
  return BookRun(context, command, book).Run();
}

}  // namespace qelm::coloring
