#include "cli/environment.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <iostream>

namespace qelm::cli {
namespace {

// A signal has no other way to tell the program.
std::atomic<bool> esc_pressed{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler must not take a lock");

void HandleInterrupt(int) { esc_pressed.store(true); }

void CatchInterrupt() {
  struct sigaction action {};
  // A shell starts what runs in the background with the signal ignored; it is not meant for such a run.
  if (::sigaction(SIGINT, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) return;
  action = {};
  action.sa_handler = HandleInterrupt;
  // Only once: the next one finds the default again and ends the process.
  action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
  ::sigaction(SIGINT, &action, nullptr);
}

}  // namespace

Environment ProcessEnvironment() {
  std::ios::sync_with_stdio(false);
  CatchInterrupt();
  // A file that may not grow any more is a failure of the write, which is told and cleared up after.
  ::signal(SIGXFSZ, SIG_IGN);
  Environment environment{std::cin, std::cout, std::cerr};
  environment.err_is_terminal = ::isatty(STDERR_FILENO) == 1;
  environment.interactive = environment.err_is_terminal && ::isatty(STDIN_FILENO) == 1;
  const char* no_color = std::getenv("NO_COLOR");
  environment.color = environment.err_is_terminal && (no_color == nullptr || *no_color == '\0');
  environment.esc = [] { return esc_pressed.exchange(false); };
  return environment;
}

}  // namespace qelm::cli
