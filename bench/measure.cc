// measure COMMAND...: runs the command with its output thrown away and prints "STATUS SECONDS CPU KILOBYTES":
// the exit status (128 and more: ended by a signal), wall time and processor time in seconds, and the most
// memory that the process held at a time.
//
// A program of its own, because a process starts out with the peak of the one that it was forked from:
// started from a script's interpreter, a small program would be charged with the interpreter.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: measure COMMAND...\n");
    return 2;
  }
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child < 0) return 1;
  if (child == 0) {
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    execvp(argv[1], argv + 1);
    std::perror(argv[1]);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child) return 1;
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  const auto seconds_of = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  std::printf("%d %.6f %.6f %ld\n", WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
              seconds.count(), seconds_of(usage.ru_utime) + seconds_of(usage.ru_stime), usage.ru_maxrss);
  return 0;
}
