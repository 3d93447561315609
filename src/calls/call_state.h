// What calls of other clients leave behind for the calls after them, and what a call comes to.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qelm::calls {

// What a caller gets when there is nothing else to say; the results of operations stand in result_codes.h.
enum Code : std::int32_t {
  kFailed = 0,  // the call was given up, or came while something else was under way
  kSuccess = 1,
  kUnknownWord = 101,
  kWrongCount = 103,  // of arguments; or an empty delimiter
  kNotOpen = 104,     // the named file
  kNoValidationScheme = 106,
  kUnknownParameter = 109,
  kBadFilterType = 110,
  kNoSettings = 115,      // not readable, or no main settings document there
  kSettingsNotSet = 'z',  // this character's code is the code, on purpose
};

// Who gave a result. The same number can mean one thing of a call and another one of an operation.
enum class Source : std::uint8_t { kCall, kColoring, kFilter, kValidation };

// "call", "coloring", "filter", "validation".
std::string_view SourceName(Source source);

struct Answer {
  std::int32_t value = kFailed;
  Source source = Source::kCall;
  bool broken_off = false;  // an operation failed or was cancelled: what it worked on may be half done
};

// One a plug-in, for the session. The notification client and its status are kept by the filter run, which
// uses them.
struct CallState {
  std::string delimiter = "---";
  std::string filter_path;  // where a duplicate of a book goes, with "\" between folders; empty: not said
  std::uint64_t registrations = 0;  // how often a client to be notified was named
  bool busy = false;                // a command or another call is under way
  Answer last;                      // of the last call
};

}  // namespace qelm::calls
