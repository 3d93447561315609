// Schemes of a batch run several at once: each worker is a thread with a session of its own - plug-in, host,
// documents - and takes the next scheme that nobody has begun. Nothing is shared but the list, and what came
// of a scheme is handed out in whatever order it is asked for.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include "cli/environment.h"
#include "cli/options.h"
#include "filtering/batch_run.h"

namespace qelm::cli {

class BatchWorkers {
 public:
  struct Result {
    filtering::BatchOutcome outcome;
    std::string messages = {};              // what the session had to say
    std::vector<std::string> alerts = {};   // of it, what the plug-in said
    std::vector<std::string> notices = {};  // and what the host noticed of files
  };
  // Called by the workers around each scheme, from their threads.
  struct Hooks {
    std::function<void(const filtering::BatchScheme&)> before;
    std::function<void(const filtering::BatchScheme&, const filtering::BatchOutcome&)> after;
  };

  // Begins with the schemes, `count` at once.
  BatchWorkers(const Options& options, const Environment& environment, const filtering::BatchRequest& request,
               std::vector<filtering::BatchScheme> schemes, std::size_t count, Hooks hooks);
  // Waits for the schemes that are begun.
  ~BatchWorkers();
  BatchWorkers(const BatchWorkers&) = delete;
  BatchWorkers& operator=(const BatchWorkers&) = delete;

  // Waits for what came of the scheme of that number, and asks `cancelled` now and then. When that says so,
  // the schemes under work are cancelled, and no other is begun.
  Result Take(std::int32_t number, const std::function<bool()>& cancelled);
  // After a Take that was cancelled: the same for a scheme that was begun before; nothing for any other.
  std::optional<Result> Left(std::int32_t number);

 private:
  void Work();
  void Hand(std::int32_t number, Result result);

  Options options_;
  Environment environment_;  // that of the main session, with what it has read
  filtering::BatchRequest request_;
  std::vector<filtering::BatchScheme> schemes_;
  Hooks hooks_;
  std::atomic<std::size_t> next_{0};
  std::atomic<bool> cancel_{false};
  std::mutex mutex_;
  std::condition_variable ready_;
  std::map<std::int32_t, Result> results_;  // by the scheme's number
  std::vector<std::thread> threads_;
};

}  // namespace qelm::cli
