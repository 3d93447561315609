#include "cli/batch_workers.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <sstream>

#include "cli/session.h"
#include "embedded/adapter/book_update.h"
#include "filtering/batch_filter.h"
#include "filtering/batch_scheme.h"
#include "host/contexts.h"

namespace qelm::cli {
namespace {

using filtering::BatchOutcome;
using filtering::BatchScheme;

constexpr std::chrono::milliseconds kBetweenLooks{50};

// A session that nobody sits at: it says what it has to say into a text, and is cancelled by the batch.
Options Unattended(Options options) {
  options.events.clear();
  options.answers.clear();
  options.yes = options.no = false;
  options.json = false;
  options.progress = "never";
  options.verbose = false;
  return options;
}

BatchOutcome Lost(const BatchScheme& scheme, std::string why) {
  BatchOutcome outcome = filtering::OutcomeFor(scheme);
  outcome.steps.push_back({filtering::kErrorLine, false, true, {}, std::move(why)});
  return outcome;
}

// What a worker's session holds for all schemes that it is given.
struct Workplace {
  Workplace(const Options& options, const Environment& environment) : session(options, environment) {
    session.Start(/*install=*/false);
  }

  Session session;
  std::optional<filtering::BatchContext> context;
  filtering::BatchSchemes found;
  std::optional<filtering::BatchSource> source;
};

}  // namespace

BatchWorkers::BatchWorkers(const Options& options, const Environment& environment,
                           const filtering::BatchRequest& request, std::vector<BatchScheme> schemes,
                           std::size_t count, Hooks hooks)
    : options_(Unattended(options)),
      environment_(environment),
      request_(request),
      schemes_(std::move(schemes)),
      hooks_(std::move(hooks)) {
  const std::size_t threads = std::min(count, schemes_.size());
  for (std::size_t i = 0; i < threads; ++i) threads_.emplace_back([this] { Work(); });
}

BatchWorkers::~BatchWorkers() {
  next_ = schemes_.size();
  for (std::thread& thread : threads_) thread.join();
}

void BatchWorkers::Hand(std::int32_t number, Result result) {
  const std::scoped_lock lock(mutex_);
  results_[number] = std::move(result);
  ready_.notify_all();
}

void BatchWorkers::Work() {
  std::istringstream in;
  std::ostringstream out;
  std::ostringstream err;
  Environment environment{in, out, err};
  environment.esc = [this] { return cancel_.load(); };
  environment.version = environment_.version;
  environment.plugin_folders = environment_.plugin_folders;
  environment.documents = environment_.documents;
  std::optional<Workplace> place;
  std::size_t alerts = 0;
  std::size_t notices = 0;
  for (std::size_t index = next_++; index < schemes_.size(); index = next_++) {
    const BatchScheme& scheme = schemes_[index];
    Result result;
    try {
      if (!place) place.emplace(options_, environment);
      filtering::BatchContext context = BatchContextOf(place->session.plugin());
      context.findings_codes = embedded::adapter::FindingsCodes();
      if (place->found.schemes.empty()) place->found = filtering::FindBatchSchemes(context, request_);
      if (!place->source) place->source.emplace(place->session.roles(), request_);
      hooks_.before(scheme);
      result.outcome = filtering::RunBatchScheme(context, request_, *place->source,
                                                 place->found.settings_document, scheme);
      hooks_.after(scheme, result.outcome);
      place->session.ShowNotices();
      const std::vector<std::string>& said = place->session.Alerts();
      result.alerts.assign(said.begin() + static_cast<std::ptrdiff_t>(alerts), said.end());
      alerts = said.size();
      const std::vector<std::string> noticed = place->session.Notices();
      result.notices.assign(noticed.begin() + static_cast<std::ptrdiff_t>(notices), noticed.end());
      notices = noticed.size();
    } catch (const std::exception& problem) {
      result.outcome = Lost(scheme, problem.what());
    }
    result.messages = err.str();
    err.str({});
    if (result.outcome.cancelled) next_ = schemes_.size();
    Hand(scheme.number, std::move(result));
  }
}

BatchWorkers::Result BatchWorkers::Take(std::int32_t number, const std::function<bool()>& cancelled) {
  std::unique_lock lock(mutex_);
  while (!results_.contains(number)) {
    ready_.wait_for(lock, kBetweenLooks);
    if (results_.contains(number)) break;
    lock.unlock();
    if (!cancel_ && cancelled()) {
      cancel_ = true;
      next_ = schemes_.size();
      for (std::thread& thread : threads_) thread.join();
      threads_.clear();
    }
    lock.lock();
    if (cancel_ && !results_.contains(number)) {
      for (const BatchScheme& scheme : schemes_) {
        if (scheme.number != number) continue;
        Result result{filtering::OutcomeFor(scheme)};
        result.outcome.begun = false;
        result.outcome.cancelled = true;
        return result;
      }
    }
  }
  return std::move(results_[number]);
}

std::optional<BatchWorkers::Result> BatchWorkers::Left(std::int32_t number) {
  const std::scoped_lock lock(mutex_);
  const auto found = results_.find(number);
  return found == results_.end() ? std::nullopt : std::optional(std::move(found->second));
}

}  // namespace qelm::cli
