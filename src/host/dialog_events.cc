#include "host/dialog_events.h"

#include <algorithm>
#include <array>

#include "messages/drop_down.h"
#include "messages/message_box.h"

namespace qelm {
namespace {

// The dialogs above 1000, which the editors share.
constexpr std::array<std::int32_t, 5> kCommonNumbers = {kListEditorNumber, kItemEntryNumber, kItemEditNumber,
                                                        kStatusNumber, messages::kDropDownNumber};
static_assert(kListEditorNumber == messages::kMessageBoxNumber);

bool IsOurs(std::int32_t dialog) {
  if (dialog >= 0 && dialog <= kLastEditorNumber) return true;
  return std::find(kCommonNumbers.begin(), kCommonNumbers.end(), dialog) != kCommonNumbers.end();
}

}  // namespace

std::int32_t RouteDialogEvent(Plugin& plugin, std::int32_t dialog, std::int32_t item, std::int32_t) {
  return IsOurs(dialog) ? plugin.messenger.Open().Route(dialog, item) : 0;
}

}  // namespace qelm
