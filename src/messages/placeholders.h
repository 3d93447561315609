// The printf placeholders of message texts: which ones a text has, and whether they may be filled.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qelm::messages {

// The kinds of the placeholders in the order of their arguments, "sd" for a text and then a number; numbered
// ones ("%2$s") count where they belong. Nothing when a text has placeholders that cannot be filled: of
// another kind, with gaps in their numbers, or a lone "%".
std::optional<std::string> PlaceholderKinds(std::string_view text);

// Whether no placeholder asks for a width or precision that would fill the memory: they have four digits at
// most.
bool PlaceholdersAreSmall(std::string_view text);

}  // namespace qelm::messages
