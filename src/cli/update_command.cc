// qelm update: the numbers and cross-references of a book are brought up to date.
#include <CLI/CLI.hpp>

#include "cli/command.h"
#include "cli/session.h"

namespace qelm::cli {
namespace {

// What can be updated: the option that asks for it, and the setting that does when no option is there.
struct Part {
  const char* option;
  const char* text;
  host::BookUpdate flag;
  bool config::LocalSettings::*setting;
};
using Settings = config::LocalSettings;
constexpr Part kParts[] = {
    {"--numbering", "Numbers of paragraphs and pages, as formats and book say", host::kUpdateNumbering,
     &Settings::bf_bu_update_numbering},
    {"--xrefs", "Texts of cross-references", host::kUpdateCrossReferences, &Settings::bf_bu_update_xrefs},
    {"--text-insets", "Text insets: read again from their sources", host::kUpdateTextInsets,
     &Settings::bf_bu_update_text_insets},
    {"--generated", "Tables of contents, lists of paragraphs and markers, indexes",
     host::kUpdateGeneratedFiles, &Settings::bf_bu_update_generatable_files},
    {"--master-pages", "Master pages, as the documents' own tables say", host::kUpdateMasterPages,
     &Settings::bf_bu_update_master_pages},
    {"--ole-links", "OLE links: not available, and reported", host::kUpdateOleLinks,
     &Settings::bf_bu_update_ole_refs},
};

class UpdateCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  std::uint32_t Flags(Session& session) const;

  std::string target_;
  std::string error_log_;
  bool asked_[std::size(kParts)] = {};
};

CLI::App* UpdateCommand::Define(CLI::App& program) {
  CLI::App* command =
      AddCommand(program, {"update", "Bring the numbers, references, lists and insets of a book up to date",
                           "Components that change are saved. What cannot be updated stays as it is and is\n"
                           "reported. Without options the settings BF_BU_UPDATE_... say what is updated.",
                           "qelm update manual.book.mif --numbering --xrefs"});
  command->add_option("BOOK", target_, "The book (MIF)")->required();
  for (std::size_t i = 0; i < std::size(kParts); ++i) {
    command->add_flag(kParts[i].option, asked_[i], kParts[i].text);
  }
  command->add_option("--error-log", error_log_, "Write the book error log, a document, to this file")
      ->type_name("FILE");
  return command;
}

std::uint32_t UpdateCommand::Flags(Session& session) const {
  std::uint32_t asked = 0;
  std::uint32_t by_settings = 0;
  for (std::size_t i = 0; i < std::size(kParts); ++i) {
    if (asked_[i]) asked |= kParts[i].flag;
    if (session.plugin().settings.*kParts[i].setting) by_settings |= kParts[i].flag;
  }
  return asked != 0 ? asked : by_settings;
}

Outcome UpdateCommand::Run(Session& session) {
  const host::Id book = session.Open(target_);
  host::Host& host = session.roles();
  if (!host.books.IsBook(book)) {
    throw Failure(ExitStatus::kUsage, target_ + ": this is a document; only books are updated");
  }
  if (!error_log_.empty()) session.RefuseFileOf(book, error_log_, "--error-log");
  const bool complete = host.books.Update(book, Flags(session));
  Outcome outcome;
  if (!error_log_.empty()) {
    host.books.ShowErrorLog(book);
    outcome.output = session.Save(host.documents.ActiveDocument(), error_log_);
  }
  outcome.status = complete ? ExitStatus::kDone : ExitStatus::kFound;
  outcome.members = {{"complete", complete}};
  outcome.text = target_ + (complete ? ": updated" : ": updated, but not everything") +
                 (outcome.output.empty() ? "" : " -> " + outcome.output) + "\n";
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeUpdateCommand() { return std::make_unique<UpdateCommand>(); }

}  // namespace qelm::cli
