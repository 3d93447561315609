#include "coloring/coloring.h"

#include <array>

#include "coloring/book_coloring.h"
#include "coloring/uncoloring.h"
#include "messages/status_shown.h"

namespace qelm::coloring {
namespace {

using host::Id;
using host::kNone;

constexpr char kTitle[] = "QELM - Coloring And Validation";

struct Progress {
  Command command;
  const char* text;
  const char* how_to_cancel;
};
constexpr const char* kPressEsc = "Press Esc to cancel";
constexpr std::array<Progress, 5> kProgress = {{
    {Command::kColorSelection, "Coloring Selection...", kPressEsc},
    {Command::kColorDocument, "Coloring Document...", kPressEsc},
    {Command::kColorBook, "Coloring Book...", kPressEsc},
    {Command::kUncolorDocument, "Uncoloring Document...", ""},
    {Command::kUncolorBook, "Uncoloring Book...", kPressEsc},
}};

void ShowProgress(messages::Messenger& messenger, Command command) {
  for (const Progress& progress : kProgress) {
    if (progress.command != command) continue;
    messenger.ShowStatus({kTitle, progress.text, "Please wait...", progress.how_to_cancel});
  }
}

// Ends a run that has not begun.
std::int32_t Refuse(ColoringContext& context, Ending ending, std::int32_t result, std::string_view id) {
  context.run.ending = ending;
  if (context.run.report) context.messenger.Alert(id);
  return result;
}

std::int32_t ColorSelection(ColoringContext& context, Id document) {
  if (document == kNone) {
    return Refuse(context, Ending::kMissingDocument, common::kNoDocument, "QELM_MSG_COLORING_2");
  }
  const Id element = context.host.text.SelectedElement(document);
  if (element == kNone) {
    return Refuse(context, Ending::kMissingElement, common::kNoElementSelected, "QELM_MSG_COLORING_3");
  }
  return ColorElement(context, document, element);
}

std::int32_t RunCommand(ColoringContext& context, Command command, Id target) {
  switch (command) {
    case Command::kColorSelection:
      return ColorSelection(context, target);
    case Command::kColorDocument:
      return ColorDocument(context, target);
    case Command::kUncolorDocument:
      return UncolorDocument(context, target);
    case Command::kColorBook:
    case Command::kUncolorBook:
      break;
  }
  return RunOnBook(context, command, target);
}

void ClearOutcome(ColoringRun* run) {
  run->cancelled = run->node_set_cut = false;
  run->ending = Ending::kNone;
  run->visited = run->colored = run->refused = 0;
  run->rule_elements.clear();
  run->missing_colors.clear();
  run->components.clear();
}

}  // namespace

void PrepareRun(const config::LocalSettings& settings, ColoringRun* run) {
  *run = {};
  run->missing_color_prompt = settings.prompt_bad_color_in_scheme;
  run->suppress_opening_alerts = settings.suppress_file_opening_alerts;
  run->import_definitions_to_uncolor = settings.color_import_elem_defs_to_uncolor;
  run->uncolor_to_black = settings.color_char_prop_uncolor_apply_black;
  run->remove_underlining = settings.color_char_prop_uncolor_remove_underlining;
  run->remove_highlighting = settings.color_char_prop_uncolor_remove_highlighting;
  run->remove_change_bars_on_uncoloring = settings.col_remove_chg_bars_on_manual_uncolor;
  run->remove_change_bars_before_coloring = settings.col_remove_chg_bars_on_auto_uncolor;
}

std::int32_t RunColoring(ColoringContext& context, Command command, bool report) {
  ClearOutcome(&context.run);
  context.run.report = report;
  host::Documents& documents = context.host.documents;
  const Id target = IsForBook(command) ? documents.ActiveBook() : documents.ActiveDocument();
  if (target == kNone) {
    return Refuse(context, Ending::kMissingDocument, common::kNoDocument, "QELM_MSG_GEN_1");
  }
  if (!IsUncoloring(command) && !context.scheme.Active()) {
    return Refuse(context, Ending::kMissingScheme, common::kNoActiveScheme, "QELM_MSG_COLORING_1");
  }
  std::int32_t result = 0;
  {
    const messages::StatusShown status(context.host.user);
    ShowProgress(context.messenger, command);
    result = RunCommand(context, command, target);
  }
  if (!report) return result;
  if (result == common::kCancelled) {
    context.messenger.Alert("QELM_MSG_COLORING_6");
  } else if (IsForBook(command)) {
    context.messenger.Alert("QELM_MSG_COLORING_7");
  }
  return result;
}

}  // namespace qelm::coloring
