// The session's documents and books: which are open and active, opening, saving and closing them, and the few
// properties of a whole document that the plug-in reads or writes.
#pragma once

#include "host/interface/types.h"

namespace qelm::host {

struct OpenOptions {
  bool visible = true;
  bool suppress_alerts = false;  // answer the host's own questions about the file without asking
  bool as_new = false;           // a copy without a name of its own; its path is set by the first save
  // A second try for a file that did not open: the host may take a way around what is in the way (a lock of
  // somebody else, an older form), and then opens a copy without a name, as with `as_new`.
  bool fallback = false;
};

enum class OpenStatus : std::uint8_t {
  kOpened,
  kAlreadyOpen,  // the id of the open document is returned
  kNotFound,
  kIsFolder,
  kEmpty,
  kUnreadable,    // no rights, or the device failed
  kDamaged,       // the format is known, the content is not in order
  kBinaryFormat,  // FrameMaker's own binary form
  kUnknownFormat,
  kTooLarge,
};

enum class SaveFormat : std::uint8_t { kDocument, kPdf, kXml };

struct SaveOptions {
  std::string path;  // empty: the document's own path
  SaveFormat format = SaveFormat::kDocument;
  std::string pdf_job_options;      // the name of a set of PDF options; empty: the host's default
  std::int32_t pdf_page_width = 0;  // in 1/65536 point; 0: the document's page size
  std::int32_t pdf_page_height = 0;
  std::string structure_application;  // for XML; empty: the document's own
};

enum class DocumentSwitch : std::uint8_t {
  kShowAllConditions,  // show conditional text whatever its tags say
  kElementBoundaries,  // element boundaries are displayed
  kModified,           // changed since it was opened or saved
  kOnScreen,           // displayed to the user
  kIconified,
};

enum class ViewMode : std::uint8_t { kWysiwyg, kAuthor, kCode };

// What ImportFormats takes over. Values combine.
enum FormatImport : std::uint32_t {
  kImportParagraphFormats = 1U << 0,
  kImportCharacterFormats = 1U << 1,
  kImportVariableFormats = 1U << 2,
  kImportElementDefinitions = 1U << 3,
  kImportColors = 1U << 4,
  kImportConditions = 1U << 5,
};

class Documents {
 public:
  virtual ~Documents() = default;

  // The active document or book, 0 when there is none. Making one active brings it to the front; false when
  // the id names no open document or book. No error code is set.
  virtual Id ActiveDocument() = 0;
  virtual Id ActiveBook() = 0;
  virtual bool Activate(Id document_or_book) = 0;

  // The open documents, in the order in which they were opened: the first, and the one after `document`.
  virtual Id FirstOpenDocument() = 0;
  virtual Id NextOpenDocument(Id document) = 0;
  // The open document or book at a path (the platform's own form), also by another spelling of it; 0 when
  // nothing is open there. No error code is set.
  virtual Id FindOpen(const std::string& path) = 0;

  // Opens the document or book at `path` (the platform's own form). Returns its id; one that is open already
  // is not opened a second time. On failure returns 0, sets the error code, and `status` (never null) and
  // LastError() tell why. The id stays valid until Close.
  virtual Id Open(const std::string& path, const OpenOptions& options, OpenStatus* status) = 0;

  // Writes a document or book. The file that was at the path is replaced only by a complete new one. Saving
  // under another path in the document's own format makes that its path. False, with the error code set, when
  // nothing was written; the document stays as it is.
  virtual bool Save(Id document_or_book, const SaveOptions& options) = 0;

  // Closes. With `discard` false a changed document is not closed and false is returned. Ids of the document
  // and of all its objects are invalid afterwards.
  virtual bool Close(Id document_or_book, bool discard) = 0;

  // The path, as Save would write to it; empty for one that was never saved and for an invalid id. The view
  // holds until the next call.
  virtual std::string_view Path(Id document_or_book) = 0;

  // The state in which the document's file was when it was read from it or saved there last, as
  // Platform::FileState tells it; empty where that is not known. The view holds until the next call.
  virtual std::string_view FileStateAsRead(Id /*document_or_book*/) { return {}; }

  // Gives a document another path, as one that was opened as new gets its name. Nothing is written. False
  // with the error code set when the id is invalid or another open document has that path.
  virtual bool SetPath(Id document_or_book, const std::string& path) = 0;

  // A switch of a document. Reading one of an invalid id gives false. Writing returns false and sets the
  // error code when the id is invalid.
  virtual bool Switch(Id document, DocumentSwitch which) = 0;
  virtual bool SetSwitch(Id document, DocumentSwitch which, bool on) = 0;

  virtual ViewMode View(Id document) = 0;
  virtual bool SetView(Id document, ViewMode mode) = 0;

  // Takes catalogs over from `source` into `target`, as FormatImport flags say: entries of the same name are
  // replaced, others added. Makes views and text positions of the target stale. The two may be the same
  // document: its text then goes back to its defined formats. False with the error code set on failure.
  virtual bool ImportFormats(Id target, Id source, std::uint32_t flags) = 0;

  // The XMP packet of a document or book, which goes into the PDF that is saved; empty when there is none.
  // Setting hands one over: what it says replaces what was said of the same fields, the other fields stay.
  // False with the error code set when the id is invalid or the packet cannot be kept.
  virtual std::string Metadata(Id document_or_book) = 0;
  virtual bool SetMetadata(Id document_or_book, std::string_view packet) = 0;

  // The host's error code, set by the last operation that failed, 0 when none has; and what it means in
  // words, naming file and place where they are known. The view holds until the next operation.
  virtual std::int32_t ErrorCode() = 0;
  virtual std::string_view LastError() = 0;
};

}  // namespace qelm::host
