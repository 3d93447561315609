#include "cli/client_requests.h"

#include <array>
#include <optional>

#include "cli/exit_status.h"
#include "cli/open_files.h"

namespace qelm::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view kVerbs = "\"call\", \"open\", \"save\" or \"close\"";
constexpr std::string_view kAs = "as";

std::string Text(const Json& answer) { return answer.dump(-1, ' ', false, Json::error_handler_t::replace); }

Json Error(const std::string& message) { return {{"error", {{"message", message}}}}; }

struct Request {
  std::string verb;
  std::string text;
  std::string as;
};

// A member's text. Throws Failure: paths end at the character 0, and would not be the ones that were meant.
const std::string& TextOf(const std::string& name, const nlohmann::json& value) {
  if (!value.is_string()) throw Failure(ExitStatus::kUsage, "\"" + name + "\" must be a text");
  const auto& text = value.get_ref<const std::string&>();
  if (text.find('\0') != std::string::npos) {
    throw Failure(ExitStatus::kUsage, "\"" + name + "\" holds the character 0");
  }
  return text;
}

Request Read(const nlohmann::json& object) {
  if (!object.is_object()) throw Failure(ExitStatus::kUsage, "a request is a JSON object on one line");
  Request request;
  for (const auto& [name, value] : object.items()) {
    const bool verb = name == "call" || name == "open" || name == "save" || name == "close";
    if (!verb && name != kAs) {
      throw Failure(ExitStatus::kUsage,
                    "\"" + name + "\" is nothing to ask for; a request has " + std::string(kVerbs));
    }
    if (verb && !request.verb.empty()) {
      throw Failure(ExitStatus::kUsage, "one request asks for one thing; there are \"" + request.verb +
                                            "\" and \"" + name + "\"");
    }
    (verb ? request.text : request.as) = TextOf(name, value);
    if (verb) request.verb = name;
  }
  if (request.verb.empty()) {
    throw Failure(ExitStatus::kUsage, "nothing is asked for; a request has " + std::string(kVerbs));
  }
  if (object.contains(kAs) && request.verb != "save") {
    throw Failure(ExitStatus::kUsage, "\"as\" goes with \"save\" only");
  }
  return request;
}

}  // namespace

std::string ClientRequests::ErrorText(const std::string& message) { return Text(Error(message)); }

std::string ClientRequests::Answer(std::string_view line) {
  const nlohmann::json request = nlohmann::json::parse(line, nullptr, /*allow_exceptions=*/false);
  if (request.is_discarded()) return ErrorText("the line is no JSON object in UTF-8");
  Json answer;
  try {
    answer = Carry(request);
  } catch (const std::exception& problem) {
    answer = Error(problem.what());
  }
  AddMessages(&answer);
  return Text(answer);
}

Json ClientRequests::Carry(const nlohmann::json& object) {
  const Request request = Read(object);
  if (request.verb == "call") {
    const calls::Answer answer = session_.Call(request.text);
    return {{"result", answer.value}, {"from", calls::SourceName(answer.source)}};
  }
  if (request.text.empty()) throw Failure(ExitStatus::kUsage, "\"" + request.verb + "\" names no file");
  if (request.verb == "open") {
    OpenFile(session_, request.text);
  } else if (request.verb == "save") {
    SaveFile(session_, request.text, request.as);
  } else {
    CloseFile(session_, request.text);
  }
  return {{"result", 1}};
}

void ClientRequests::AddMessages(Json* answer) {
  if (!session_.Alerts().empty()) (*answer)["alerts"] = session_.user().TakeAlerts();
  if (session_.NoticeCount() == notices_) return;
  const std::vector<std::string> all = session_.Notices();
  (*answer)["notices"] =
      std::vector<std::string>(all.begin() + static_cast<std::ptrdiff_t>(notices_), all.end());
  notices_ = all.size();
}

}  // namespace qelm::cli
