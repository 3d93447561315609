// Session files: what a user does in one session, and what is expected of the plug-in, one step a line.
//
//   # comments and empty lines are passed over
//   copy operation.mif $WORK/operation.mif
//   open $WORK/operation.mif
//   answer restore it now -> yes         for the next step
//   command QELM_Cmd_FilterDoc
//   expect alert has been filtered
//
// A step is one or two words, then its arguments: separated by blanks, in quotation marks where they hold
// some
// ("\"" and "\\" in them). The last argument of some steps is the rest of the line as it stands.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qelm::cli {

enum class StepKind {
  kSet,
  kAnswer,
  kCopy,
  kStart,
  kOpen,
  kActivate,
  kSelect,
  kCommand,
  kCall,
  kNotify,
  kSetAttribute,
  kRemoveAttribute,
  kInsert,
  kRetag,
  kText,
  kDelete,
  kEditSettings,
  kSave,
  kClose,
  kEnd,
  kExpectAlert,
  kExpectNoAlert,
  kExpectQuestion,
  kExpectNoQuestion,
  kExpectDialog,
  kExpectConsole,
  kExpectResult,
  kExpectActive,
  kExpectCount,
  kExpectFile,
  kExpectNoFile,
  kExpectText,
};

// One kind of step: its words, how many arguments follow, and how it is written.
struct StepForm {
  std::string_view words;
  StepKind kind;
  std::size_t least = 0;
  std::size_t most = 0;
  bool rest_of_line = false;  // the last argument is
  std::string_view usage;     // the arguments
};

struct Step {
  std::size_t line = 0;
  const StepForm* form = nullptr;
  std::vector<std::string> arguments;
  std::string text;  // the line

  bool IsExpectation() const { return form->kind >= StepKind::kExpectAlert; }
};

// Reads a session file. On failure nothing is returned, and `error` says which line is wrong and how it
// should be written.
std::optional<std::vector<Step>> ParseScript(std::string_view text, std::string* error);

}  // namespace qelm::cli
