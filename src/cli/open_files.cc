#include "cli/open_files.h"

#include <filesystem>

#include "cli/exit_status.h"

namespace qelm::cli {
namespace {

host::Id FindOrFail(Session& session, const std::string& path) {
  const host::Id id = session.roles().documents.FindOpen(path);
  if (id == host::kNone) throw Failure(ExitStatus::kFile, path + ": this file is not open");
  return id;
}

// Where a call is under way, whoever hears of it may not take the files away from it.
void CheckIdle(Session& session) {
  if (session.Busy()) {
    throw Failure(ExitStatus::kOperation,
                  "a call is under way; files can be opened and closed when it is done");
  }
}

// A pipe or a device may keep whoever opens it waiting for ever, and with him all other clients.
void CheckOrdinary(const std::string& path) {
  std::error_code error;
  const std::filesystem::file_type type = std::filesystem::status(path, error).type();
  using Type = std::filesystem::file_type;
  if (type == Type::fifo || type == Type::character || type == Type::block || type == Type::socket) {
    throw Failure(ExitStatus::kFile, path + ": this is not an ordinary file");
  }
}

}  // namespace

void OpenFile(Session& session, const std::string& path) {
  CheckIdle(session);
  CheckOrdinary(path);
  if (session.roles().documents.FindOpen(path) == host::kNone) session.Open(path);
}

void SaveFile(Session& session, const std::string& path, const std::string& as) {
  CheckIdle(session);
  if (!as.empty()) CheckOrdinary(as);
  session.Save(FindOrFail(session, path), as);
}

void CloseFile(Session& session, const std::string& path) {
  CheckIdle(session);
  const host::Id id = FindOrFail(session, path);
  if (id == session.plugin().main_settings) {
    throw Failure(ExitStatus::kOperation, path + ": this is the main settings document, which stays open");
  }
  session.roles().documents.Close(id, /*discard=*/true);
}

}  // namespace qelm::cli
