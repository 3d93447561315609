// The functions of the C library over a session as the command line has it. Whatever is thrown below them
// ends here, as the session's last message.
#include <qelm/qelm.h>

#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <sstream>
#include <string>

#include "cli/environment.h"
#include "cli/open_files.h"
#include "cli/session.h"

struct qelm_session {
  qelm_session() = default;
  qelm_session(const qelm_session&) = delete;
  qelm_session& operator=(const qelm_session&) = delete;

  // What a host without a user has in place of the program's streams.
  std::istringstream in;
  std::ostream nowhere{nullptr};
  qelm::cli::Environment environment{in, nowhere, nowhere};
  std::optional<qelm::cli::Session> session;  // none, where the start failed
  std::string message;
};

namespace {

constexpr char kNoMemory[] = "there is not enough memory";

std::string TextOrEmpty(const char* text) { return text == nullptr ? std::string() : std::string(text); }

// The last message of all that the plug-in showed becomes the session's.
void TakeAlerts(qelm_session* handle) {
  const std::vector<std::string> alerts = handle->session->user().TakeAlerts();
  if (!alerts.empty()) handle->message = alerts.back();
}

int Fail(qelm_session* handle, const char* message) noexcept {
  try {
    handle->message = message;
  } catch (...) {
    handle->message.clear();
  }
  return 0;
}

// Does work in a session. 0, with a message, when the session cannot be used or the work throws.
template <typename Work>
int Guard(qelm_session* handle, Work work) noexcept {
  if (handle == nullptr) return 0;
  if (!handle->session) return Fail(handle, "the session was not started");
  try {
    work(*handle->session);
    TakeAlerts(handle);
    return 1;
  } catch (const std::exception& problem) {
    handle->session->user().TakeAlerts();  // of what failed; they are not the message of what comes next
    return Fail(handle, problem.what());
  } catch (...) {
    return Fail(handle, "the operation was given up");
  }
}

// The same, where a text is needed.
template <typename Work>
int GuardText(qelm_session* handle, const char* text, Work work) noexcept {
  if (handle != nullptr && text == nullptr) return Fail(handle, "a text is needed, and there is none");
  return Guard(handle, work);
}

void Start(const qelm_options& wanted, qelm_session* handle) {
  handle->environment.version = QELM_VERSION;
  handle->environment.plugin_folders = {QELM_INSTALLED_ASSETS, QELM_ASSETS};
  qelm::cli::Options options;
  options.profile = TextOrEmpty(wanted.profile);
  options.plugin_folder = TextOrEmpty(wanted.plugin_folder);
  options.local_settings = TextOrEmpty(wanted.local_settings);
  options.main_settings = TextOrEmpty(wanted.main_settings);
  options.quiet = true;
  handle->session.emplace(options, handle->environment);
  handle->session->Start(/*install=*/true);
  handle->session->user().SetConsole(&handle->nowhere);
}

}  // namespace

const char* qelm_version(void) { return QELM_VERSION; }

int qelm_start(const char* profile, qelm_session** session) {
  qelm_options options{};
  options.profile = profile;
  return qelm_start_with(&options, session);
}

int qelm_start_with(const qelm_options* options, qelm_session** session) {
  if (session == nullptr) return 0;
  *session = nullptr;
  std::unique_ptr<qelm_session> handle;
  try {
    handle = std::make_unique<qelm_session>();
    Start(options == nullptr ? qelm_options{} : *options, handle.get());
    *session = handle.release();
    return Guard(*session, [](qelm::cli::Session&) {});
  } catch (const std::exception& problem) {
    if (!handle) return 0;
    *session = handle.release();
    (*session)->session.reset();
    return Fail(*session, problem.what());
  } catch (...) {
    return 0;
  }
}

void qelm_end(qelm_session* session) { delete session; }

int qelm_open(qelm_session* session, const char* path) {
  return GuardText(session, path, [path](qelm::cli::Session& inner) { qelm::cli::OpenFile(inner, path); });
}

int qelm_call(qelm_session* session, const char* call, int* result, const char** from) {
  return GuardText(session, call, [&](qelm::cli::Session& inner) {
    const qelm::calls::Answer answer = inner.Call(call);
    if (result != nullptr) *result = answer.value;
    if (from != nullptr) *from = qelm::calls::SourceName(answer.source).data();
  });
}

int qelm_save(qelm_session* session, const char* path, const char* as) {
  return GuardText(session, path,
                   [&](qelm::cli::Session& inner) { qelm::cli::SaveFile(inner, path, TextOrEmpty(as)); });
}

int qelm_close(qelm_session* session, const char* path) {
  return GuardText(session, path, [path](qelm::cli::Session& inner) { qelm::cli::CloseFile(inner, path); });
}

const char* qelm_last_message(const qelm_session* session) {
  return session == nullptr ? kNoMemory : session->message.c_str();
}

int qelm_on_notification(qelm_session* session, qelm_notified handler, void* data) {
  return Guard(session, [handler, data](qelm::cli::Session& inner) {
    if (handler == nullptr) return inner.clients().SetReceiver(nullptr);
    inner.clients().SetReceiver([handler, data](std::string_view client, std::string_view text) {
      handler(data, std::string(client).c_str(), std::string(text).c_str());
      return true;
    });
  });
}
