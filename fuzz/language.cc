// Language files: read and written again; and their texts as formats for messages.
#include "edits.h"
#include "messages/format_text.h"
#include "messages/language_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qelm::messages;
  const std::string content(reinterpret_cast<const char*>(data), size);
  LanguageFile file;
  LanguageProblem problem;
  if (!file.Read(content, &problem)) {
    qelm::fuzz::Check(!problem.text.empty(), "a refusal does not say why");
    return 0;
  }
  qelm::fuzz::Check(file.Write() == content, "writing changed a file that nobody edited");
  const FormatArgument arguments[] = {AsArgument("one"), AsArgument(2), AsArgument("three")};
  for (const LanguageEntry& entry : file.Entries()) {
    for (std::size_t count = 0; count <= std::size(arguments); ++count) {
      FillPlaceholders(entry.text, std::span(arguments).first(count));
    }
  }
  return 0;
}
