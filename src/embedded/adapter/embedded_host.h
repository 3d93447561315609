// The host over real files: every role of the host interface, served from the document model.
//
//   PosixPlatform platform;
//   EmbeddedHost embedded({.plugin_folder = folder}, user, dialogs, clients, platform);
//   Plugin plugin(embedded.roles());
//
// Ids of documents and books are numbers of the session, counted from 1 and never used twice; ids of a
// document's objects are the model's own. User interface, dialogs, clients and platform are the caller's and
// outlive the host.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "embedded/model/book.h"
#include "embedded/model/document.h"
#include "host/interface/entry_points.h"
#include "host/interface/host.h"

namespace qelm::embedded::adapter {

struct Roles;
class SharedDocuments;
class Workspace;

// What the host tells of, by its own numbers. The value is the element that it is about.
enum Notification : std::int32_t {
  kDocumentOpened = 2,
  kElementInserted = 53,
  kTextChanged = 55,  // of the selected element
  kDefinitionChanged = 57,
  kElementDeleted = 59,    // the value is its parent
  kAttributeChanged = 63,  // the text is the attribute's name
};

class EmbeddedHost {
 public:
  struct Options {
    std::string plugin_folder;
    std::int32_t major_version = 18;
    std::string interface_language = "English";
    // Why the platform's last operation on a file failed, in words; where it is missing no reason is given.
    std::function<std::string()> file_error;
    // Documents that another host has read (ShareDocuments). Null: there are none.
    std::shared_ptr<const SharedDocuments> documents = {};
    // Whether a copy that was completed put the file into this folder, and it is as it was then: such a file
    // is opened also where the folder lies in a copy that is not complete. Null: there are none.
    std::function<bool(const std::string& folder, const std::string& file)> of_complete_copy = {};
    bool map_large_files =
        false;  // look at them where they lie (mapped_file.h): for who is done with them soon
    bool overwrite_changed = false;  // replace files that were changed on disk since they were opened
  };

  EmbeddedHost(const Options& options, host::UserInterface& user, host::Dialogs& dialogs,
               host::Clients& clients, host::Platform& platform);
  ~EmbeddedHost();
  EmbeddedHost(const EmbeddedHost&) = delete;
  EmbeddedHost& operator=(const EmbeddedHost&) = delete;

  host::Host& roles();

  // The model behind an id; null when the id names no open document, or book.
  model::Document* Find(host::Id document);
  model::Book* FindBook(host::Id book);

  // Writes one page of an open document, its place from 1, as PNG with that many dots an inch. False, with
  // `why`, when there is no such document or page or the file cannot be written.
  bool SavePage(host::Id document, const std::string& path, std::size_t page, double dpi, std::string* why);

  // What users should know though nothing failed, oldest first: files that were found under another name, and
  // what was not in order in a file that could be opened all the same. Each names its file.
  const std::vector<std::string>& notices() const;

  // The paths of the components that the book's PDF that was saved last does not have.
  const std::vector<std::string>& LeftOut() const;

  // The documents that are open and as their files are, for other hosts, also on other threads.
  std::shared_ptr<const SharedDocuments> ShareDocuments();

  // From now on the plug-in behind these entry points is told of what it has asked for: of documents that
  // were opened on screen, and of what Tell passes on. Null: nobody is told. It outlives the host, or is
  // taken out.
  void Attach(host::EntryPoints* plugin);

  // Tells the plug-in of something that a user did.
  void Tell(std::int32_t notification, host::Id document, std::string_view text, std::int32_t value);

  // The notifications that the plug-in asked for and did not cancel.
  const std::set<std::int32_t>& requested_notifications() const;

 private:
  std::unique_ptr<Workspace> workspace_;
  std::unique_ptr<Roles> roles_;
};

}  // namespace qelm::embedded::adapter
