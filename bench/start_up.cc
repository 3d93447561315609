// bench_start_up PLUGIN_FOLDER PROFILE DOCUMENT ROUNDS: starts the plug-in as in a user's session so many
// times, after a first time that prepares the profile, and opens the document after each start. Prints one
// JSON object: the medians in milliseconds of each stage, by the name that the status dialog shows, of the
// whole start and of opening the document, and the time of the first start.
#include <algorithm>
#include <chrono>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "embedded/adapter/clients.h"
#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "host/plugin.h"
#include "support/memory_platform.h"

namespace {

using namespace qelm;
using Clock = std::chrono::steady_clock;

double MillisecondsBetween(Clock::time_point from, Clock::time_point to) {
  return std::chrono::duration<double, std::milli>(to - from).count();
}

// A user who looks at the clock whenever the status dialog changes.
class Watcher : public testing::RecordingUser {
 public:
  struct Stage {
    std::string name;
    double milliseconds;
  };
  std::vector<Stage> stages;

  void ShowStatus(const host::Status& lines) override {
    End();
    stages.push_back({lines.line1, 0});
    begun_ = Clock::now();
  }
  void HideStatus() override { End(); }

 private:
  void End() {
    if (!stages.empty() && stages.back().milliseconds == 0) {
      stages.back().milliseconds = MillisecondsBetween(begun_, Clock::now());
    }
  }
  Clock::time_point begun_;
};

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

struct Times {
  std::vector<Watcher::Stage> stages;
  double start = 0;
  double open = 0;
};

bool Measure(const std::string& plugin_folder, const std::string& profile, const std::string& document,
             Times* times) {
  embedded::adapter::PosixPlatform platform;
  platform.SetEnvironment("APPDATA", profile);
  Watcher user;
  embedded::adapter::EventLog events;
  embedded::adapter::NoDialogs dialogs(events);
  embedded::adapter::RecordedClients clients(events);
  embedded::adapter::EmbeddedHost::Options host_options;
  host_options.plugin_folder = plugin_folder;
  embedded::adapter::EmbeddedHost host(host_options, user, dialogs, clients, platform);
  Plugin plugin(host.roles());
  StartOptions options;
  options.install = true;
  const auto begin = Clock::now();
  const bool started = plugin.Initialize(options);
  const auto started_at = Clock::now();
  host::OpenStatus status = host::OpenStatus::kOpened;
  const bool opened = host.roles().documents.Open(document, {}, &status) != host::kNone;
  *times = {user.stages, MillisecondsBetween(begin, started_at),
            MillisecondsBetween(started_at, Clock::now())};
  if (!user.notes.empty()) std::cerr << user.notes.front() << '\n';
  return started && opened && user.notes.empty();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::cerr << "usage: bench_start_up PLUGIN_FOLDER PROFILE DOCUMENT ROUNDS\n";
    return 2;
  }
  Times times;
  if (!Measure(argv[1], argv[2], argv[3], &times)) return 1;
  nlohmann::ordered_json result{{"first", times.start}};
  std::vector<double> starts;
  std::vector<double> opens;
  std::vector<std::string> names;
  std::map<std::string, std::vector<double>> stages;
  for (int round = std::max(std::stoi(argv[4]), 1); round > 0; --round) {
    if (!Measure(argv[1], argv[2], argv[3], &times)) return 1;
    starts.push_back(times.start);
    opens.push_back(times.open);
    for (const Watcher::Stage& stage : times.stages) {
      if (stages[stage.name].empty()) names.push_back(stage.name);
      stages[stage.name].push_back(stage.milliseconds);
    }
  }
  result["start"] = Median(starts);
  result["open"] = Median(opens);
  for (const std::string& name : names) result["stages"][name] = Median(stages[name]);
  std::cout << result << '\n';
}
