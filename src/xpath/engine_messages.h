// What the engine says by itself: that something which cannot happen has happened, and that an expression
// selects too much. These texts are part of the program.
#pragma once

#include <cstdint>
#include <string_view>

#include "messages/messenger.h"
#include "xpath/environment.h"

namespace qelm::xpath {

inline constexpr std::string_view kParserIsEndless =
    "An endless loop appears to have formed in the XPath parser. This is a critical error. Please report "
    "this incident to Brenwick.";
inline constexpr std::string_view kUnknownSequence =
    "A critical error occurred during XPath navigation. The specified sequence number was not found in the "
    "handler memory. Please contact Brenwick.";
inline constexpr std::string_view kSpentSequence =
    "A critical error occurred during the XPath query. This is a bug. Please report this event to "
    "Brenwick.\n\nError details: bw_FindNextNodeWithXpath() stepped to a spent sequence.";

// Says why a search of the expression failed, which it has.
void ShowFailure(messages::Messenger& messenger, Failure failure, std::string_view expression);

// Shows an XPath engine message.
void ShowEngineMessage(messages::Messenger& messenger, std::string_view text);

// Says that matches were left out.
void ShowTooBroad(messages::Messenger& messenger, std::int32_t limit, std::string_view expression);

}  // namespace qelm::xpath
