// The roles that the embedded host serves itself, one source file each, over one workspace.
#pragma once

#include <memory>

#include "embedded/adapter/workspace.h"
#include "host/interface/host.h"

namespace qelm::embedded::adapter {

std::unique_ptr<host::Session> MakeSession(Workspace& workspace);
std::unique_ptr<host::Documents> MakeDocuments(Workspace& workspace);
std::unique_ptr<host::Books> MakeBooks(Workspace& workspace, host::Documents& documents);
std::unique_ptr<host::Elements> MakeElements(Workspace& workspace);
std::unique_ptr<host::Definitions> MakeDefinitions(Workspace& workspace);
std::unique_ptr<host::Editing> MakeEditing(Workspace& workspace);
std::unique_ptr<host::Text> MakeText(Workspace& workspace);
std::unique_ptr<host::Catalogs> MakeCatalogs(Workspace& workspace);
std::unique_ptr<host::Tables> MakeTables(Workspace& workspace);
std::unique_ptr<host::Links> MakeLinks(Workspace& workspace, host::Elements& elements);

}  // namespace qelm::embedded::adapter
