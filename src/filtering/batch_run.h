// What a batch is asked for and what comes of it: plain data, so that the outcome of one scheme can be
// written to a file, come back from another process, and be put into the report in the order of the schemes.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "config/local_settings.h"
#include "filtering/run_log.h"
#include "host/interface/host.h"
#include "messages/messenger.h"
#include "xpath/engine.h"

namespace qelm::filtering {

struct BatchRequest {
  std::string source;            // the document or book
  std::string category;          // the schemes of this category of the main settings document,
  std::string configuration;     // or, when this is not empty, all schemes of this one
  std::string output_pattern;    // a folder for each scheme; relative ones are seen from the source's folder
  host::LocalTime time;          // for placeholders; year 0: when the batch begins
  bool report_is_named = false;  // the user named this very file: no other is made in its place
  bool prompts = true;           // alerts at the end; nothing else asks
  config::LocalSettings settings;  // of which those of batches, as they stand or as a dialog changed them
};

// One paragraph of the report.
struct BatchStep {
  std::int32_t format = 1;  // report.h
  bool link = false;        // `text` is the path that it leads to
  bool failure = false;
  std::string message;  // the id; empty for a link
  std::string text;
};

// A scheme of the batch, by its number from 1.
struct BatchScheme {
  std::int32_t number = 0;
  std::string category;
  std::string name;
  std::string folder;                // the output folder
  std::string shares_with;           // the scheme before it that has the same one; empty: none has
  std::string pdf_shares_with = {};  // the same for the file of the PDF
  std::string xml_shares_with = {};  // and of the XML
};

struct BatchOutcome {
  std::int32_t number = 0;
  std::string name;
  std::string folder;              // the output folder
  std::string output;              // the filtered document or the new book; empty: there is none
  std::vector<std::string> files;  // what was written, the output among it
  std::int32_t result = 0;         // kDone, or the code by which the scheme ended
  // All files that were asked for are written. False as well when something is missing that may be there the
  // next time; a reference without a target, or a book that cannot be updated for that, is not.
  bool complete = false;
  bool unsaved = false;    // a filtered file is not saved as it should be: the output is not for delivery
  bool cancelled = false;  // by the user: no further scheme is begun
  bool begun = true;       // false: the batch was cancelled before
  std::int64_t elapsed_ms = 0;
  std::vector<BatchStep> steps;

  // Whether all that was asked for came about.
  bool Clean() const;
};

// That of a scheme of which nothing is done yet.
BatchOutcome OutcomeFor(const BatchScheme& scheme);

// What came of a whole batch.
struct BatchRun {
  std::int32_t result = 0;                 // kDone, kCancelled, or 0: there was nothing to do
  std::string report;                      // the report's file; empty: there is none
  host::Id report_document = host::kNone;  // while it is open
  std::string why;                         // with result 0: the reason, where one is known
  std::vector<BatchOutcome> outcomes;      // of all schemes, those that were not begun too
};

// What a batch works with.
struct BatchContext {
  host::Host& host;
  messages::Messenger& messenger;
  xpath::Engine& engine;
  host::Id main_settings = host::kNone;
  std::function<bool(host::Id document)> remove_coloring = {};
  RunLog log = {};
  std::string notification_client = {};
  bool notify = false;
  bool overwrite = false;  // as in the run of a filter
  // The host's error codes of a book's update that could read and write its files, so that the next one would
  // find the same. After any other failure a scheme is not complete.
  std::vector<std::int32_t> findings_codes = {};
};

// The paragraph formats of the batch's report.
inline constexpr std::int32_t kTitleLine = 11;
inline constexpr std::int32_t kSchemeLine = 13;
inline constexpr std::int32_t kPlainLine = 15;
inline constexpr std::int32_t kLinkLine = 16;
inline constexpr std::int32_t kStepLine = 20;
inline constexpr std::int32_t kResultLine = 21;
inline constexpr std::int32_t kErrorLine = 23;
inline constexpr std::int32_t kStepErrorLine = 24;
inline constexpr std::int32_t kStepLinkLine = 25;

// Writes down what was done, paragraph by paragraph.
class BatchSteps {
 public:
  BatchSteps(messages::Messenger& messenger, std::vector<BatchStep>* steps)
      : messenger_(messenger), steps_(steps) {}

  template <typename... Arguments>
  void Say(std::int32_t format, std::string_view id, const Arguments&... arguments) {
    const bool failure = format == kErrorLine || format == kStepErrorLine;
    steps_->push_back({format, false, failure, std::string(id), messenger_.Format(id, arguments...)});
  }
  // A text that is no message.
  void SayText(std::int32_t format, std::string text) {
    const bool failure = format == kErrorLine || format == kStepErrorLine;
    steps_->push_back({format, false, failure, {}, std::move(text)});
  }
  void Link(std::int32_t format, const std::string& path) {
    steps_->push_back({format, true, false, {}, path});
  }

 private:
  messages::Messenger& messenger_;
  std::vector<BatchStep>* steps_;
};

}  // namespace qelm::filtering
