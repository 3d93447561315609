#include "calls/operations.h"

#include <array>
#include <optional>
#include <utility>

#include "calls/parameters.h"
#include "coloring/coloring.h"
#include "coloring/validation.h"
#include "common/numbers.h"
#include "common/paths.h"
#include "common/result_codes.h"
#include "filtering/book_filter.h"
#include "filtering/restore.h"

namespace qelm::calls {
namespace {

using host::Id;
using host::kNone;
using schemes::SchemeKind;

constexpr std::array<std::pair<std::string_view, SchemeKind>, 3> kKinds = {{
    {"coloring", SchemeKind::kColoring},
    {"filter", SchemeKind::kFilter},
    {"validation", SchemeKind::kValidation},
}};

Id FindOpen(CallContext& context, std::string_view path) {
  return context.host.documents.FindOpen(common::PlatformPath(path));
}

// What a run that changes a file came to.
Answer AnswerOfRun(std::int32_t result, Source source) {
  return {result, source, result == kFailed || result == common::kCancelled};
}

// An element as a call names it, or the answer that there is none.
struct NamedElement {
  Id document = kNone;
  Id element = kNone;
  std::optional<Answer> refusal;
};

NamedElement FindElement(CallContext& context, Arguments arguments, Source source) {
  NamedElement named{FindOpen(context, arguments[0]), kNone, {}};
  if (named.document == kNone) {
    named.refusal = {kNotOpen};
  } else if (context.host.books.IsBook(named.document)) {
    named.refusal = {common::kNoDocument, source};
  } else {
    std::int64_t unique_id = 0;
    if (common::IsInteger(arguments[1], &unique_id)) {
      named.element = context.host.elements.FindUniqueId(named.document, unique_id);
    }
    if (named.element == kNone) named.refusal = {common::kNoElementSelected, source};
  }
  return named;
}

// Makes a file the active one for an operation that works on that, and puts back what was active.
class Active {
 public:
  Active(host::Documents& documents, Id file) : documents_(documents) {
    before_ = documents.ActiveDocument();
    if (before_ == kNone) before_ = documents.ActiveBook();
    documents.Activate(file);
  }
  ~Active() {
    if (before_ != kNone) documents_.Activate(before_);
  }
  Active(const Active&) = delete;
  Active& operator=(const Active&) = delete;

 private:
  host::Documents& documents_;
  Id before_ = kNone;
};

coloring::ColoringContext PrepareColoring(CallContext& context) {
  context.refresh_schemes();
  coloring::PrepareRun(context.settings, &context.coloring_run);
  return {context.host, context.messenger, context.engine, context.schemes.coloring, context.coloring_run};
}

// False, after a message if one is wanted, when there is no place for the copy of a book.
bool SetOutputFolder(CallContext& context, Id book) {
  filtering::FilterRun& run = context.filter_run;
  run.output_folder = filtering::OutputFolder(context.host.documents.Path(book), context.state.filter_path);
  if (!run.output_folder.empty() || run.mode != filtering::LaunchMode::kDuplicate) return true;
  if (run.prompts) context.messenger.Alert("QELM_MSG_DIALOG_5");
  return false;
}

std::int32_t FilterBook(CallContext& context, Id book) {
  if (!SetOutputFolder(context, book)) return common::kCopyFailed;
  filtering::FilterContext filter = context.filter_context();
  // The caller cannot know the new book, and would leave it with entries that its files have no more.
  return filtering::FilterAndSaveActiveBook(filter);
}

}  // namespace

Answer SetScheme(CallContext& context, Arguments arguments) {
  for (const auto& [name, kind] : kKinds) {
    if (name != arguments[0]) continue;
    context.refresh_schemes();
    return {
        context.set_scheme(kind, std::string(arguments[1]), std::string(arguments[2]), IsTrue(arguments[3]))};
  }
  return {common::kInvalidSchemeNames};
}

Answer ColorElement(CallContext& context, Arguments arguments) {
  const NamedElement named = FindElement(context, arguments, Source::kColoring);
  if (named.refusal) return *named.refusal;
  coloring::ColoringContext coloring = PrepareColoring(context);
  coloring.run.report = IsTrue(arguments[3]);
  coloring.run.only_element = !IsTrue(arguments[2]);
  return AnswerOfRun(coloring::ColorElement(coloring, named.document, named.element), Source::kColoring);
}

Answer ColorFile(CallContext& context, Arguments arguments) {
  const Id file = FindOpen(context, arguments[0]);
  if (file == kNone) return {kNotOpen};
  const Active active(context.host.documents, file);
  coloring::ColoringContext coloring = PrepareColoring(context);
  const auto command =
      context.host.books.IsBook(file) ? coloring::Command::kColorBook : coloring::Command::kColorDocument;
  return AnswerOfRun(coloring::RunColoring(coloring, command, IsTrue(arguments[1])), Source::kColoring);
}

Answer FilterCheckElement(CallContext& context, Arguments arguments) {
  const NamedElement named = FindElement(context, arguments, Source::kFilter);
  if (named.refusal) return *named.refusal;
  context.refresh_schemes();
  filtering::PrepareRun(context.settings, &context.filter_run);
  context.filter_run.prompts = false;
  if (!context.schemes.filter.Active()) return {common::kNoActiveScheme, Source::kFilter};
  filtering::FilterContext filter = context.filter_context();
  const std::int32_t verdict = filtering::FilterCheck(filter, named.document, named.element);
  const bool unusable = context.filter_run.cancel_flag != 0;
  return {unusable ? common::kNoActiveScheme : verdict, Source::kFilter};
}

Answer FilterFile(CallContext& context, Arguments arguments) {
  const Id file = FindOpen(context, arguments[0]);
  if (file == kNone) return {kNotOpen};
  const bool book = context.host.books.IsBook(file);
  context.refresh_schemes();
  const Active active(context.host.documents, file);
  filtering::PrepareRun(context.settings, &context.filter_run);
  context.filter_run.prompts = IsTrue(arguments[1]);
  context.filter_run.target = book ? filtering::TargetKind::kBook : filtering::TargetKind::kDocument;
  if (book) return AnswerOfRun(FilterBook(context, file), Source::kFilter);
  filtering::FilterContext filter = context.filter_context();
  return AnswerOfRun(filtering::FilterActiveDocument(filter), Source::kFilter);
}

Answer RestoreFile(CallContext& context, Arguments arguments) {
  const Id file = FindOpen(context, arguments[0]);
  if (file == kNone) return {kNotOpen};
  filtering::FilterRun& run = context.filter_run;
  filtering::PrepareRun(context.settings, &run);
  run.prompts = false;
  host::Host& host = context.host;
  if (!host.books.IsBook(file)) {
    return AnswerOfRun(
        filtering::RestoreDocument(host, context.messenger, run, file, /*ask=*/false, /*notify=*/true),
        Source::kFilter);
  }
  const Active active(host.documents, file);
  return AnswerOfRun(filtering::RestoreBook(host, context.messenger, run, file, /*ask=*/false),
                     Source::kFilter);
}

Answer ValidateElement(CallContext& context, Arguments arguments) {
  context.refresh_schemes();
  if (!context.schemes.validation.Active()) return {kNoValidationScheme};
  const NamedElement named = FindElement(context, arguments, Source::kValidation);
  if (named.refusal) return *named.refusal;
  coloring::PrepareValidation(context.settings, &context.validation_run);
  coloring::ValidationContext validation{
      context.host, context.messenger, context.schemes.validation, context.validation_run, {}, {}};
  return {coloring::ValidateElement(validation, named.document, named.element), Source::kValidation};
}

}  // namespace qelm::calls
