#include "messages/format_text.h"

#include <fmt/args.h>
#include <fmt/printf.h>

#include <exception>

#include "messages/placeholders.h"

namespace qelm::messages {

std::string FillPlaceholders(std::string text, std::span<const FormatArgument> arguments) {
  if (!PlaceholdersAreSmall(text)) return text;
  fmt::dynamic_format_arg_store<fmt::printf_context> store;
  for (const FormatArgument& argument : arguments) {
    std::visit([&store](auto value) { store.push_back(value); }, argument);
  }
  try {
    return fmt::vsprintf(fmt::string_view(text), store);
  } catch (const std::exception&) {
    return text;
  }
}

}  // namespace qelm::messages
