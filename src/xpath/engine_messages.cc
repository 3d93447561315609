#include "xpath/engine_messages.h"

#include <fmt/printf.h>

namespace qelm::xpath {
namespace {

constexpr std::string_view kFrame = "--> XPath Engine Message <--\n\n%s";

constexpr std::string_view kTooBroad =
    "The following XPath expression is too broad and has exceeded the maximum number of matches allowed in "
    "your preferences (%d): \n\n%s\n\nTry to make the expression more specific so that it matches a smaller "
    "node set.\n\nIf you believe that this message was issued in error, please report it to "
    "Brenwick.\n\nError function: xpath_MatchAll()";

constexpr std::string_view kTooMuchWork =
    "The evaluation of the following XPath expression was given up, as it takes too long: \n\n%s\n\nIts "
    "result is not used. Try to compare with what does not begin at each node anew, or to say where in the "
    "document to look.";

std::string_view FailureText(Failure failure) {
  switch (failure) {
    case Failure::kPredicate:
      return "A critical error occurred during the XPath query. This is a bug. Please report this event to "
             "Brenwick.\n\nError details: A predicate evaluation failed in bw_FindNextNodeWithXpath().";
    case Failure::kPosition:
      return "A critical error has occurred in the XPath navigator while processing a position() function. "
             "Please contact Brenwick with this error message.";
    case Failure::kLast:
      // The missing blank is part of the text.
      return "A critical error has occurred in the XPath navigator whileprocessing a last() function. Please "
             "contact Brenwick with this error message.";
    case Failure::kEndless:
      // And so are the double ones.
      return "A critical error has occurred during the node query,  resulting in an endless internal loop. "
             "This is likely a bug - check your XPath  setup and please contact Brenwick if no error can be "
             "found.";
    case Failure::kWork:
    case Failure::kLong:
    case Failure::kNone:
      break;
  }
  return {};
}

}  // namespace

void ShowFailure(messages::Messenger& messenger, Failure failure, std::string_view expression) {
  if (failure == Failure::kWork) return ShowEngineMessage(messenger, fmt::sprintf(kTooMuchWork, expression));
  messenger.Alert(FailureText(failure));
}

void ShowEngineMessage(messages::Messenger& messenger, std::string_view text) {
  messenger.Alert(fmt::sprintf(kFrame, text));
}

void ShowTooBroad(messages::Messenger& messenger, std::int32_t limit, std::string_view expression) {
  ShowEngineMessage(messenger, fmt::sprintf(kTooBroad, limit, expression));
}

}  // namespace qelm::xpath
