// What the tests of book filters work with: a book of small documents in a folder, opened in the embedded
// host, whose calls are checked.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "embedded/adapter/dialogs.h"
#include "embedded/adapter/embedded_host.h"
#include "embedded/adapter/platform.h"
#include "filtering/book_filter.h"
#include "filtering/copy_record.h"
#include "filtering/filter_session.h"
#include "filtering/restore.h"

namespace qelm::testing {

using Components = std::vector<std::pair<std::string, std::string>>;

class BookSession {
 public:
  // Writes src/book.mif with these components, each a name and an outline (outline.h) or, with "<" at its
  // beginning, the notation of mif_files.h; nothing is written for an empty text. Opens the book.
  explicit BookSession(const Components& components)
      : embedded_(HostOptions(), user, dialogs_, clients, platform_), checking_(embedded_.roles()) {
    std::vector<std::string> names;
    for (const auto& [name, outline] : components) {
      names.push_back("<c>" + name);
      if (!outline.empty()) {
        folder.Write("src/" + name, outline.starts_with('<') ? Mif(outline) : MifOf({outline}));
      }
    }
    host::OpenStatus status = host::OpenStatus::kUnreadable;
    book = inner().documents.Open(folder.Write("src/book.mif", MifBook(names)), {}, &status);
  }
  ~BookSession() { EXPECT_EQ(checking_.violations(), std::vector<std::string>{}); }
  BookSession(const BookSession&) = delete;
  BookSession& operator=(const BookSession&) = delete;

  std::int32_t Filter(const schemes::Scheme& scheme, const filtering::FilterRun& wanted) {
    return FilterThrough(checking_.roles(), scheme, wanted);
  }
  std::int32_t FilterThrough(host::Host& roles, const schemes::Scheme& scheme,
                             const filtering::FilterRun& wanted) {
    const CheckingHost::Entry entry(checking_);
    messages::Messenger messenger(roles.user, roles.platform);
    xpath::Engine engine(roles, messenger);
    xpath::bw_XPathEngineInit(engine, 0, 1000, 100);
    run = wanted;
    if (run.output_folder.empty()) run.output_folder = folder.File("out");
    filtering::FilterContext context{roles, messenger, engine, scheme, run};
    if (as_client) return filtering::FilterAndSaveActiveBook(context);
    if (saves) context.component_done = SaveAndClose(roles);
    return filtering::FilterActiveBook(context);
  }
  std::int32_t Restore() {
    const CheckingHost::Entry entry(checking_);
    messages::Messenger messenger(checking_.roles().user, checking_.roles().platform);
    return filtering::RestoreBook(checking_.roles(), messenger, run, host::kNone, true,
                                  saves ? SaveAndClose(checking_.roles()) : filtering::ComponentSink());
  }

  // The outline of a file, relative to the session's folder; empty for one that is not there.
  std::string Outline(const std::string& name) {
    if (!platform_.FileExists(folder.File(name))) return {};
    host::OpenStatus status = host::OpenStatus::kUnreadable;
    const host::Id document = inner().documents.Open(folder.File(name), {.visible = false}, &status);
    std::string outline = OutlineOf(inner(), document);
    if (status == host::OpenStatus::kOpened) inner().documents.Close(document, true);
    return outline;
  }

  // What lies below a folder: paths relative to it with their contents.
  std::map<std::string, std::string> Files(const std::string& below) const {
    std::map<std::string, std::string> files;
    std::error_code none;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.File(below), none)) {
      const std::string name = entry.path().lexically_relative(folder.File(below)).string();
      files[name] = entry.is_directory() ? "(folder)" : folder.Read(below + "/" + name);
    }
    return files;
  }

  host::Host& inner() { return embedded_.roles(); }
  CheckingHost& checked() { return checking_; }

  TempFolder folder;
  TestUser user;
  TestClients clients;
  host::Id book = host::kNone;
  filtering::FilterRun run;
  bool saves = true;       // components are saved and closed when they are done
  bool as_client = false;  // the run itself saves all

 private:
  static filtering::ComponentSink SaveAndClose(host::Host& roles) {
    return [&roles](host::Id document, bool opened, filtering::ComponentStage stage) {
      const bool saved = stage != filtering::ComponentStage::kFinished || roles.documents.Save(document, {});
      if (opened) roles.documents.Close(document, true);
      return saved;
    };
  }

  embedded::adapter::EmbeddedHost::Options HostOptions() {
    embedded::adapter::EmbeddedHost::Options options;
    options.of_complete_copy = [this](const std::string& inner, const std::string& file) {
      return filtering::IsOfCompleteCopy(platform_, inner, file);
    };
    return options;
  }

  embedded::adapter::PosixPlatform platform_;
  embedded::adapter::EventLog events_;
  embedded::adapter::NoDialogs dialogs_{events_};
  embedded::adapter::EmbeddedHost embedded_;
  CheckingHost checking_;
};

}  // namespace qelm::testing
