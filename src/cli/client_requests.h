// What clients of the socket ask for, one JSON object each, and what they get.
//
//   {"call": "FilterFile---a.mif"}           {"result": 1, "from": "filter"}
//   {"open": "a.mif"}                        {"result": 1}
//   {"save": "a.mif", "as": "b.mif"}         {"result": 1}
//   {"close": "b.mif"}                       {"result": 1}
//   {"closse": "b.mif"}                      {"error": {"message": "..."}}
//
// What the plug-in showed meanwhile is added as "alerts", what the host noticed of files as "notices".
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "cli/session.h"

namespace qelm::cli {

class ClientRequests {
 public:
  // The session is started, and outlives this.
  explicit ClientRequests(Session& session) : session_(session), notices_(session.Notices().size()) {}

  // Does what one line asks for. The answer is one line without its end.
  std::string Answer(std::string_view line);

  // An answer that says what is wrong.
  static std::string ErrorText(const std::string& message);

 private:
  nlohmann::ordered_json Carry(const nlohmann::json& request);
  void AddMessages(nlohmann::ordered_json* answer);

  Session& session_;
  std::size_t notices_;  // told so far
};

}  // namespace qelm::cli
