// Session files and answers files: what users write for the command line.
#include "cli/session_script.h"
#include "edits.h"
#include "embedded/adapter/answers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::string error;
  if (!qelm::cli::ParseScript(text, &error)) {
    qelm::fuzz::Check(!error.empty(), "a refusal does not say why");
  }
  error.clear();
  const auto answers = qelm::embedded::adapter::Answers::Parse(text, &error);
  if (!answers) qelm::fuzz::Check(!error.empty(), "a refusal does not say why");
  if (answers) answers->Find("The document has been changed. Save it first?");
  return 0;
}
