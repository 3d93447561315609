#include "embedded/adapter/events.h"

#include <filesystem>
#include <string_view>
#include <system_error>

namespace qelm::embedded::adapter {

bool EventLog::OpenFile(const std::string& path) {
  // A document that was named by mistake would be damaged by one line. A pipe cannot be looked at.
  constexpr std::string_view kStart = "{\"event\":";
  bool cut = false;  // a run was killed in the midst of its last line
  if (std::error_code error; std::filesystem::is_regular_file(path, error)) {
    std::string start(kStart.size(), '\0');
    std::ifstream old(path, std::ios::binary);
    old.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(old.gcount()));
    if (!kStart.starts_with(start)) return false;
    old.clear();
    if (old.seekg(-1, std::ios::end)) cut = old.get() != '\n';
  }
  std::ofstream file(path, std::ios::app | std::ios::binary);
  if (!file) return false;
  if (cut) file << '\n';
  file_ = std::move(file);
  stream_ = &file_;
  return true;
}

void EventLog::Write(std::string_view kind, nlohmann::ordered_json fields) {
  if (!Wanted()) return;
  nlohmann::ordered_json event{{"event", kind}};
  event.update(fields);
  if (listener_) listener_(event);
  if (stream_ == nullptr) return;
  // Texts come from documents and may hold bytes that are no UTF-8; the line has to stay readable.
  *stream_ << event.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << std::endl;
}

}  // namespace qelm::embedded::adapter
