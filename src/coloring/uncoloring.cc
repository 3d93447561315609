#include "coloring/uncoloring.h"

#include "coloring/text_marks.h"
#include "messages/document_name.h"

namespace qelm::coloring {
namespace {

using host::Id;

constexpr std::string_view kNoBlackText =
    "Error - QELM attempted to perform a coloring action by setting all text to black, but the color "
    "\"Black\" does not exist in the template. Cannot continue.";

bool NotUncolored(ColoringContext& context, Id document) {
  context.run.ending = Ending::kNotUncolored;
  if (!context.run.report) return false;
  messages::Messenger& messenger = context.messenger;
  const std::string name = messages::DocumentName(context.host.documents, document);
  const std::string why(context.host.documents.LastError());
  messenger.AlertFormatted("QELM_MSG_COLORING_12", messenger.Format("QELM_MSG_COLORING_12", name, why));
  return false;
}

bool ResetProperties(ColoringContext& context, Id document) {
  const ColoringRun& run = context.run;
  const Id black = context.host.catalogs.FindColor(document, "Black");
  if (black == host::kNone) {
    context.run.ending = Ending::kNoBlack;
    if (run.report) context.messenger.Alert(kNoBlackText);
    return false;
  }
  host::TextProperties plain;
  plain.color = black;
  if (run.uncolor_to_black) plain.mask |= host::kColorProperty;
  if (run.remove_underlining) plain.mask |= host::kUnderliningProperty;
  if (run.remove_highlighting) plain.mask |= host::kBackgroundProperty;
  // Locked text insets refuse to be changed, here as when they were to be colored.
  if (plain.mask != 0) SetAllTextProperties(context.host, document, TextScope::kOwnText, plain);
  return true;
}

}  // namespace

bool Uncolor(ColoringContext& context, Id document) {
  if (!context.run.import_definitions_to_uncolor) return ResetProperties(context, document);
  return context.host.documents.ImportFormats(document, document, host::kImportElementDefinitions) ||
         NotUncolored(context, document);
}

void RemoveChangeBars(host::Host& host, Id document) {
  host::TextProperties without;
  without.mask = host::kChangeBarProperty;
  SetAllTextProperties(host, document, TextScope::kAllText, without);
}

std::int32_t UncolorDocument(ColoringContext& context, Id document) {
  if (!Uncolor(context, document)) return 0;
  if (context.run.remove_change_bars_on_uncoloring) RemoveChangeBars(context.host, document);
  context.run.ending = Ending::kCompleted;
  return common::kDone;
}

}  // namespace qelm::coloring
