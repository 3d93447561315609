#include "embedded/adapter/embedded_host.h"

#include "embedded/adapter/file_places.h"
#include "embedded/adapter/mapped_file.h"
#include "embedded/adapter/printing.h"
#include "embedded/adapter/roles.h"

namespace qelm::embedded::adapter {

struct Roles {
  Roles(Workspace& workspace, host::UserInterface& user, host::Dialogs& dialogs, host::Clients& clients,
        host::Platform& platform)
      : session(MakeSession(workspace)),
        documents(MakeDocuments(workspace)),
        books(MakeBooks(workspace, *documents)),
        elements(MakeElements(workspace)),
        definitions(MakeDefinitions(workspace)),
        editing(MakeEditing(workspace)),
        text(MakeText(workspace)),
        catalogs(MakeCatalogs(workspace)),
        tables(MakeTables(workspace)),
        links(MakeLinks(workspace, *elements)),
        all{*session,  *documents, *books, *elements, *definitions, *editing, *text,
            *catalogs, *tables,    *links, user,      dialogs,      clients,  platform} {}

  std::unique_ptr<host::Session> session;
  std::unique_ptr<host::Documents> documents;
  std::unique_ptr<host::Books> books;
  std::unique_ptr<host::Elements> elements;
  std::unique_ptr<host::Definitions> definitions;
  std::unique_ptr<host::Editing> editing;
  std::unique_ptr<host::Text> text;
  std::unique_ptr<host::Catalogs> catalogs;
  std::unique_ptr<host::Tables> tables;
  std::unique_ptr<host::Links> links;
  host::Host all;
};

EmbeddedHost::EmbeddedHost(const Options& options, host::UserInterface& user, host::Dialogs& dialogs,
                           host::Clients& clients, host::Platform& platform)
    : workspace_(std::make_unique<Workspace>(options, platform)),
      roles_(std::make_unique<Roles>(*workspace_, user, dialogs, clients, platform)) {}

EmbeddedHost::~EmbeddedHost() = default;

host::Host& EmbeddedHost::roles() { return roles_->all; }

model::Document* EmbeddedHost::Find(Id document) { return workspace_->Document(document); }

model::Book* EmbeddedHost::FindBook(Id book) { return workspace_->Book(book); }

bool EmbeddedHost::SavePage(Id document, const std::string& path, std::size_t page, double dpi,
                            std::string* why) {
  OpenFile* file = workspace_->DocumentFile(document);
  if (file == nullptr) return false;
  if (path.empty() || workspace_->FindPath(AbsolutePath(path)) != host::kNone) {
    *why = path.empty() ? "the picture needs a name of its own." : "a document of that name is open.";
    return false;
  }
  const std::optional<std::string> png = PrintPage(*workspace_, file, page, dpi, why);
  if (!png) return false;
  if (!file->Tree().source.Intact()) {
    *why = std::string(kMappedFileChanged) + ".";
    return false;
  }
  if (workspace_->platform().ReplaceFile(path, *png)) return true;
  *why = "the file cannot be written" + workspace_->FileErrorSuffix();
  return false;
}

const std::vector<std::string>& EmbeddedHost::notices() const { return workspace_->notices(); }

const std::vector<std::string>& EmbeddedHost::LeftOut() const { return workspace_->left_out; }

std::shared_ptr<const SharedDocuments> EmbeddedHost::ShareDocuments() {
  auto shared = std::make_shared<SharedDocuments>();
  for (Id id = 1; id < workspace_->IdLimit(); ++id) workspace_->Share(id, shared.get());
  return shared;
}

void EmbeddedHost::Attach(host::EntryPoints* plugin) { workspace_->plugin = plugin; }

void EmbeddedHost::Tell(std::int32_t notification, Id document, std::string_view text, std::int32_t value) {
  workspace_->Tell(notification, document, text, value);
}

const std::set<std::int32_t>& EmbeddedHost::requested_notifications() const {
  return workspace_->requested_notifications;
}

}  // namespace qelm::embedded::adapter
