#include "calls/calls.h"

#include <array>
#include <vector>

#include "calls/operations.h"
#include "calls/parameters.h"
#include "common/numbers.h"
#include "common/text.h"

namespace qelm::calls {
namespace {

constexpr std::string_view kHello = "Hello";
constexpr std::string_view kChangeDelimiter = "ChangeCallDelimiter";
constexpr std::string_view kTrue = "True";
constexpr std::string_view kFalse = "False";

Answer ReadLocalSettings(CallContext& context, Arguments arguments) {
  return {context.read_local_settings(IsTrue(arguments[0])) ? kSuccess : kNoSettings};
}

Answer SetNotificationClient(CallContext& context, Arguments arguments) {
  context.filter_run.notification_client = arguments[0];
  ++context.state.registrations;
  return {kSuccess};
}

Answer SetNotificationStatus(CallContext& context, Arguments arguments) {
  constexpr std::int64_t kSend = 1;
  context.filter_run.notify = common::ReadInteger(arguments[0]) == kSend;
  return {kSuccess};
}

struct Word {
  std::string_view name;
  std::size_t arguments;                     // that its function gets
  std::size_t optional;                      // so many of the last ones may be missing,
  std::array<std::string_view, 2> defaults;  // and these stand for them
  Answer (*function)(CallContext& context, Arguments arguments);
  bool at_any_time = false;  // also while a command or another call is under way
};

constexpr std::array kWords = {
    Word{"SetScheme", 4, 1, {kFalse}, &SetScheme},
    Word{"ColorElement", 4, 2, {kTrue, kFalse}, &ColorElement},
    Word{"ColorFile", 2, 1, {kFalse}, &ColorFile},
    Word{"GetParm", 1, 0, {}, &GetParm, true},
    Word{"SetParm", 2, 0, {}, &SetParm},
    Word{"FilterCheckElement", 2, 0, {}, &FilterCheckElement},
    Word{"FilterFile", 2, 1, {kFalse}, &FilterFile},
    Word{"RestoreFile", 1, 0, {}, &RestoreFile},
    Word{"ValidateElement", 2, 0, {}, &ValidateElement},
    Word{"ReadLocalSettings", 1, 1, {kFalse}, &ReadLocalSettings},
    Word{"SetNotificationClient", 1, 0, {}, &SetNotificationClient},
    Word{"SetNotificationStatus", 1, 0, {}, &SetNotificationStatus},
};

const Word* FindWord(std::string_view name) {
  for (const Word& word : kWords) {
    if (word.name == name) return &word;
  }
  return nullptr;
}

// The fields of a call string; the views are into it. There is always one at least.
std::vector<std::string_view> Split(std::string_view call, std::string_view delimiter) {
  std::vector<std::string_view> fields;
  for (std::size_t at = call.find(delimiter); at != std::string_view::npos; at = call.find(delimiter)) {
    fields.push_back(call.substr(0, at));
    call.remove_prefix(at + delimiter.size());
  }
  fields.push_back(call);
  return fields;
}

Answer ChangeDelimiter(CallState& state, std::string_view delimiter) {
  if (delimiter.empty()) return {kWrongCount};
  state.delimiter = delimiter;
  return {kSuccess};
}

Answer Dispatch(CallContext& context, std::string_view call) {
  if (call == kHello) return {kSuccess};
  if (call.starts_with(kChangeDelimiter)) {
    return ChangeDelimiter(context.state, call.substr(kChangeDelimiter.size()));
  }
  std::vector<std::string_view> fields = Split(call, context.state.delimiter);
  const Word* word = FindWord(fields.front());
  if (word == nullptr) return {kUnknownWord};
  const std::size_t wanted = word->arguments + 1;
  const std::size_t required = wanted - word->optional;
  while (fields.size() >= required && fields.size() < wanted) {
    fields.push_back(word->defaults[fields.size() - required]);
  }
  if (fields.size() != wanted) return {kWrongCount};
  // A run works on what the plug-in holds, and whoever is notified of it may call right then.
  if (context.state.busy && !word->at_any_time) return {kFailed};
  return word->function(context, Arguments(fields).subspan(1));
}

}  // namespace

std::string_view SourceName(Source source) {
  constexpr std::array<std::string_view, 4> kNames = {"call", "coloring", "filter", "validation"};
  return kNames[static_cast<std::size_t>(source)];
}

Answer AnswerCall(CallContext& context, std::string_view call) {
  const Answer answer = Dispatch(context, call);
  context.state.last = answer;
  return answer;
}

}  // namespace qelm::calls
