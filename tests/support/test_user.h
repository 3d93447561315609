// A user whose answers are set beforehand, and other clients that take everything.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "host/interface/user_interface.h"
#include "support/menu_taker.h"

namespace qelm::testing {

// Remembers the ids of the messages shown and asked; answers "no" to some, "yes" to the rest; presses Esc at
// one poll.
class TestUser : public MenuTaker {
 public:
  std::set<std::string> no;
  std::function<bool(const std::string&)> answer;  // in place of `no`, from the whole text
  int esc_at_poll = 0;                             // from 1; 0: never
  std::function<void(int)> at_poll;                // what others do meanwhile

  std::vector<std::string> shown;  // alerts and questions
  std::vector<std::string> texts;
  std::vector<std::string> status;  // first lines
  int polls = 0;

  void Note(std::string_view text) override { Remember(text); }
  std::int32_t Question(std::string_view text) override {
    const std::string id = Remember(text);
    return (answer ? answer(std::string(text)) : !no.contains(id)) ? 0 : 1;
  }
  void ShowStatus(const host::Status& lines) override { status.push_back(lines.line1); }
  void HideStatus() override { status.push_back(""); }
  bool EscPressed() override {
    ++polls;
    if (at_poll) at_poll(polls);
    return polls == esc_at_poll;
  }
  void Print(std::string_view) override {}

 private:
  // Without a language, a message says that its text is missing, and ends with its id.
  std::string Remember(std::string_view text) {
    texts.emplace_back(text);
    const std::size_t id = text.rfind("QELM_MSG_");
    shown.emplace_back(id == std::string_view::npos ? text : text.substr(id));
    return shown.back();
  }
};

class TestClients : public host::Clients {
 public:
  std::vector<std::string> sent;
  bool Send(std::string_view client, std::string_view text) override {
    sent.push_back(std::string(client) + ":" + std::string(text));
    return true;
  }
  std::int32_t returned = -1000;  // by the last call
  void Return(std::int32_t value) override { returned = value; }
};

}  // namespace qelm::testing
