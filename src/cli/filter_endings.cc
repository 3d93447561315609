#include "cli/filter_endings.h"

#include <array>
#include <utility>

namespace qelm::cli {
namespace {

using filtering::Ending;
using filtering::LaunchMode;

constexpr std::array<std::pair<LaunchMode, const char*>, 3> kModes = {{
    {LaunchMode::kSourceRestoreFirst, "source"},
    {LaunchMode::kSourceNoRestore, "source-nr"},
    {LaunchMode::kDuplicate, "duplicate"},
}};

constexpr FilterEndingText kEndings[] = {
    {Ending::kDeclined, ExitStatus::kOperation,
     "the highest-level element would go with everything in it, and the answer was no"},
    {Ending::kByUser, ExitStatus::kCancelled, "cancelled"},
    {Ending::kTitleStays, ExitStatus::kOperation, "a table title cannot be hidden, and the answer was no"},
    {Ending::kSchemeRefused, ExitStatus::kRefused, "the scheme was refused"},
    {Ending::kNodeSetCut, ExitStatus::kRefused,
     "the scheme selects more nodes than XPATH_MAX_MATCHES allows"},
    {Ending::kNotSaved, ExitStatus::kFile, "it could not be saved"},
    {Ending::kNotCopied, ExitStatus::kFile, "it could not be copied"},
    {Ending::kSameFolder, ExitStatus::kOperation, "the output folder is the folder of the book"},
    {Ending::kMissingDocument, ExitStatus::kFile, "it could not be opened to be filtered"},
    {Ending::kNotHidden, ExitStatus::kOperation, "an element could not be hidden"},
    {Ending::kNotDeleted, ExitStatus::kOperation, "an element could not be deleted"},
    {Ending::kNotRestored, ExitStatus::kOperation, "what an earlier filter hid could not be restored"},
};

}  // namespace

const FilterEndingText* TextFor(Ending ending) {
  for (const FilterEndingText& known : kEndings) {
    if (known.ending == ending) return &known;
  }
  return nullptr;
}

std::string ModeName(LaunchMode mode) {
  for (const auto& [value, name] : kModes) {
    if (value == mode) return name;
  }
  return {};
}

LaunchMode ModeNamed(const std::string& name) {
  for (const auto& [value, known] : kModes) {
    if (name == known) return value;
  }
  return LaunchMode::kDuplicate;
}

}  // namespace qelm::cli
