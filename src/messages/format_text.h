// Filling the printf placeholders of a message text.
#pragma once

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace qelm::messages {

// What fills one placeholder: a text or a whole number. Texts are not copied.
using FormatArgument = std::variant<std::string_view, std::int64_t>;

inline FormatArgument AsArgument(std::string_view text) { return text; }
inline FormatArgument AsArgument(std::integral auto number) { return static_cast<std::int64_t>(number); }

// The text with its placeholders filled. One whose placeholders do not fit the arguments, or ask for a width
// that would fill the memory, is returned as it stands.
std::string FillPlaceholders(std::string text, std::span<const FormatArgument> arguments);

}  // namespace qelm::messages
