// bench_color FILE RULES: opens a document, colors it by a classic scheme of so many rules and saves it to
// FILE.colored, and prints one JSON object: the seconds of each of the three, the elements and text nodes
// visited, and the host's operations that the coloring called, counted in a second run.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>

#include "coloring/coloring.h"
#include "embedded/adapter/clients.h"
#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "embedded/adapter/user_interface.h"
#include "support/observed_host.h"

namespace {

using namespace qelm;
using Clock = std::chrono::steady_clock;

class Counter : public testing::CallObserver {
 public:
  std::map<std::string, std::uint64_t, std::less<>> calls;
  bool Before(const testing::HostCall& call) override {
    const auto found = calls.find(call.name);
    if (found == calls.end()) {
      calls.emplace(call.name, 1);
    } else {
      ++found->second;
    }
    return true;
  }
  void After(const testing::HostCall&) override {}
};

// Rules for one to three words of `audience`, most of which no element has, so that nearly all rules are
// tried for every element; the last ones select what there is.
schemes::Scheme SchemeOf(int rules) {
  schemes::Scheme scheme;
  scheme.category = "Bench";
  scheme.name = "Color";
  scheme.space_delimited = true;
  constexpr const char* kColors[] = {"Red", "Green", "Blue"};
  constexpr const char* kAudiences[] = {"beginner", "expert", "admin"};
  for (int i = 0; i < rules; ++i) {
    schemes::Rule& rule = scheme.rules.emplace_back();
    const auto last = static_cast<std::size_t>(rules - 1 - i);
    rule.color = kColors[last % 3];
    rule.style = i % 4;
    const std::string value = last < 3 ? kAudiences[last] : "nobody-" + std::to_string(i);
    rule.conditions.push_back({last < 3 ? "audience" : i % 2 == 0 ? "audience" : "product", {value}});
  }
  return scheme;
}

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

std::int32_t Color(host::Host& host, const schemes::Scheme& scheme, coloring::ColoringRun* run) {
  messages::Messenger messenger(host.user, host.platform);
  xpath::Engine engine(host, messenger);
  coloring::ColoringContext context{host, messenger, engine, scheme, *run};
  return coloring::RunColoring(context, coloring::Command::kColorDocument, false);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: bench_color FILE RULES\n");
    return 2;
  }
  const std::string path = argv[1];
  const schemes::Scheme scheme = SchemeOf(static_cast<int>(std::strtol(argv[2], nullptr, 10)));
  embedded::adapter::EventLog events;
  embedded::adapter::PosixPlatform platform;
  embedded::adapter::NoDialogs dialogs(events);
  embedded::adapter::RecordedClients clients(events);
  embedded::adapter::ScriptedUserInterface user({.in = std::cin, .messages = std::cerr, .events = events});
  embedded::adapter::EmbeddedHost embedded({}, user, dialogs, clients, platform);
  host::Host& host = embedded.roles();

  Clock::time_point start = Clock::now();
  host::OpenStatus status = host::OpenStatus::kOpened;
  const host::Id document = host.documents.Open(path, {}, &status);
  const double open = SecondsSince(start);
  if (document == host::kNone) {
    std::fprintf(stderr, "%s\n", std::string(host.documents.LastError()).c_str());
    return 1;
  }
  coloring::ColoringRun run;
  start = Clock::now();
  const std::int32_t result = Color(host, scheme, &run);
  const double color = SecondsSince(start);
  host::SaveOptions save_options;
  save_options.path = path + ".colored";
  start = Clock::now();
  const bool saved = host.documents.Save(document, save_options);
  const double save = SecondsSince(start);
  if (result != common::kDone || !saved) return 1;

  Counter counter;
  testing::ObservedHost counted(host, counter);
  coloring::ColoringRun again;
  Color(counted.roles(), scheme, &again);
  std::uint64_t total = 0;
  for (const auto& [name, count] : counter.calls) total += count;
  std::printf(
      "{\"rules\": %zu, \"open\": %.4f, \"color\": %.4f, \"save\": %.4f, \"visited\": %llu, "
      "\"colored\": %llu, \"calls\": %llu, \"reads\": %llu, \"writes\": %llu}\n",
      scheme.rules.size(), open, color, save, static_cast<unsigned long long>(run.visited),
      static_cast<unsigned long long>(run.colored), static_cast<unsigned long long>(total),
      static_cast<unsigned long long>(counter.calls["ReadAttributes"]),
      static_cast<unsigned long long>(counter.calls["WriteProperties"]));
  return 0;
}
