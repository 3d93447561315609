// The documents and books of a session that is driven from outside, where a path is all that a client knows.
#pragma once

#include <string>

#include "cli/session.h"

namespace qelm::cli {

// Each throws Failure, with a message that names the file.

// Opens a document or book; one that is open already stays as it is.
void OpenFile(Session& session, const std::string& path);

// Saves an open one, to `as` where that is not empty, which then mostly is its path (host::Documents::Save).
void SaveFile(Session& session, const std::string& path, const std::string& as);

// Closes an open one. What was not saved is lost.
void CloseFile(Session& session, const std::string& path);

}  // namespace qelm::cli
