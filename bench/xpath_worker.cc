#include "xpath_worker.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>
#include <vector>

namespace qelm::bench {
namespace {

// Evaluations go on until there are so many, or until they have taken so long together.
constexpr std::size_t kMostRuns = 101;
constexpr double kLongEnough = 0.15;

// The thread's clock: under a limit of processor time that of the process only moves with the scheduler.
double Now() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// What the process holds in memory now.
long Kilobytes() {
  std::ifstream file("/proc/self/statm");
  long pages = 0;
  long resident = 0;
  file >> pages >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

void Run(XPathWorker& worker, const std::string& expression) {
  const long before = Kilobytes();
  std::vector<double> times;
  double total = 0;
  while (times.size() < 2 || (times.size() < kMostRuns && total < kLongEnough)) {
    const double start = Now();
    if (!worker.Evaluate(expression)) {
      std::printf("{\"refused\":true}\n");
      return;
    }
    times.push_back(Now() - start);
    total += times.back();
    if (times.front() > kLongEnough) break;
  }
  const long after = Kilobytes();
  const double first = times.front();
  if (times.size() > 1) times.erase(times.begin());
  std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2), times.end());
  std::printf(
      "{\"count\":%llu,\"nodes\":\"%016llx\",\"first\":%.9f,\"seconds\":%.9f,\"runs\":%zu,\"kilobytes\":%ld}"
      "\n",
      static_cast<unsigned long long>(worker.Count()), static_cast<unsigned long long>(worker.Nodes()), first,
      times[times.size() / 2], times.size(), after - before);
}

// Returns whether the child came to an end by itself.
bool RunInChild(XPathWorker& worker, const std::string& expression, rlim_t seconds) {
  const pid_t child = fork();
  if (child == 0) {
    const rlimit limit{seconds, seconds + 1};
    setrlimit(RLIMIT_CPU, &limit);
    Run(worker, expression);
    std::fflush(stdout);
    _exit(0);
  }
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

std::uint64_t NodeKey(std::uint64_t element, std::string_view attribute) {
  std::uint64_t key = element * 0x9e3779b97f4a7c15U;
  for (const char byte : attribute) key = (key ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
  key = (key ^ (key >> 30)) * 0xbf58476d1ce4e5b9U;
  return key ^ (key >> 27);
}

int Serve(XPathWorker& worker, int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s FILE SECONDS < EXPRESSIONS\n", argv[0]);
    return 2;
  }
  const long before = Kilobytes();
  const double start = Now();
  if (!worker.Load(argv[1])) return 3;
  std::printf("{\"load\":%.6f,\"kilobytes\":%ld}\n", Now() - start, Kilobytes() - before);
  std::fflush(stdout);
  worker.Number();
  const auto seconds = static_cast<rlim_t>(std::max(1L, std::strtol(argv[2], nullptr, 10)));
  for (std::string expression; std::getline(std::cin, expression);) {
    if (!RunInChild(worker, expression, seconds)) std::printf("{\"timeout\":true}\n");
    std::fflush(stdout);
  }
  return 0;
}

}  // namespace qelm::bench
