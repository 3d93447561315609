// The plug-in's own message box: a text of up to 30 lines, one or two buttons, and where it is asked for a
// check box ("do not ask again"). It serves alerts and questions in place of the host's, which have no check
// box.
//
// The text is wrapped at 80 characters and shown in the smallest of four dialogs that holds it; of a text of
// more than 30 lines the last line shown says that it was cut. The label of the check box has two lines of 70
// characters.
#pragma once

#include <cstdint>
#include <string_view>

#include "messages/dialog.h"

namespace qelm::messages {

// The dialog's number; the list editor has the same.
inline constexpr std::int32_t kMessageBoxNumber = 1001;

// What the buttons say; the codes are those that callers pass on. The first and the second are the same.
enum class BoxButtons : std::int32_t { kOkCancel = 0, kOkCancelToo = 1, kYesNoToo = 2, kOk = 3, kYesNo = 4 };

struct MessageBoxText {
  std::string_view title;      // empty: "Brenwick Plugin Alert"
  std::string_view text;       // as it is to be shown, not an id
  std::string_view check_box;  // empty: no check box
  BoxButtons buttons = BoxButtons::kOk;
  std::string_view section =
      kDialogStrings;  // of the language file, for the title and the labels of the buttons
};

// Shows the message box. Returns 1 for its first button (OK, Yes) and 0 for the second one; `checked`, which
// may be null, receives the state of the check box. Where the host cannot open the dialog its own alert or
// question stands in, without a check box: then nothing is checked.
std::int32_t MessageBox(Messenger& messenger, const MessageBoxText& box, bool* checked = nullptr);

}  // namespace qelm::messages
