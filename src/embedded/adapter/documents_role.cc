#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>

#include "embedded/adapter/delivery.h"
#include "embedded/adapter/element_properties.h"
#include "embedded/adapter/file_places.h"
#include "embedded/adapter/mapped_file.h"
#include "embedded/adapter/printing.h"
#include "embedded/adapter/roles.h"
#include "embedded/model/book_edit.h"
#include "embedded/model/files.h"
#include "embedded/model/import_catalogs.h"
#include "embedded/model/locate.h"
#include "embedded/model/metadata.h"
#include "embedded/model/page_numbering.h"

namespace qelm::embedded::adapter {
namespace {

using host::OpenStatus;
using model::FileKind;
using model::Format;

// Positions in a file are 32 bits wide, and one is kept for "none".
constexpr std::uintmax_t kLargestFile = std::numeric_limits<std::uint32_t>::max() - 1;

struct Refusal {
  FileKind kind;
  OpenStatus status;
  std::string_view text;
};
constexpr std::array kRefusals = {
    Refusal{FileKind::kEmpty, OpenStatus::kEmpty, "the file is empty."},
    Refusal{FileKind::kBinary, OpenStatus::kBinaryFormat,
            "the file is in FrameMaker's binary format, which only FrameMaker reads. Open it there and save "
            "it as "
            "MIF (File > Save As, format MIF)."},
    Refusal{
        FileKind::kEncodedMif, OpenStatus::kUnknownFormat,
        "the file is MIF, but its first bytes are not <MIFFile or <Book: it is in another encoding, or has a "
        "byte order mark or other text before. Save it as FrameMaker does, in UTF-8 without a mark."},
    Refusal{FileKind::kUnknown, OpenStatus::kUnknownFormat,
            "the file is neither MIF (it would begin with <MIFFile or <Book) nor XML."},
};

// Whether the pages of the document go on from those of the one before it in a book, where the book leaves
// that to it.
bool PagesGoOn(OpenFile& file) {
  const model::Document& tree = file.Tree();
  return model::PagesGoOn(tree.At(tree.document_statement)).value_or(false);
}

constexpr std::size_t kMostFolders = 64;  // above a file in which a mark is looked for

// Whether the mark was there before the file: what a copy consists of is written after its mark.
bool IsYounger(const std::string& path, const std::filesystem::path& folder) {
  std::error_code error;
  const auto mark = std::filesystem::last_write_time(folder / host::kUnfinishedName, error);
  if (error) return false;
  const auto file = std::filesystem::last_write_time(path, error);
  return !error && file >= mark;
}

// Why a file is not opened that lies in a copy that is not complete, or in a folder of it; empty where it is
// not. The source of a copy may lie in a folder below that of the copy, and so may other copies, which are
// complete, or this process' own.
std::string PartOfUnfinished(Workspace& workspace, const std::string& path) {
  host::Platform& platform = workspace.platform();
  std::vector<std::filesystem::path> inside;
  std::filesystem::path folder = std::filesystem::path(path).parent_path();
  while (inside.size() < kMostFolders && !folder.empty()) {
    const bool unfinished = platform.IsUnfinished(folder.string());
    if (!unfinished && platform.MayExist((folder / host::kUnfinishedName).string())) return {};
    const auto& of_complete_copy = workspace.options().of_complete_copy;
    const auto put_there = [&](const std::filesystem::path& inner) {
      return of_complete_copy && of_complete_copy(inner.string(), path);
    };
    if (unfinished && (inside.empty() ||
                       (IsYounger(path, folder) && std::none_of(inside.begin(), inside.end(), put_there)))) {
      return "this is part of a copy that was not completed (" + std::string(host::kUnfinishedName) + " in " +
             (inside.empty() ? "its folder" : folder.string()) +
             "). Make the copy again; or remove that file to use what is there as it is.";
    }
    if (!folder.has_relative_path()) break;
    inside.push_back(folder);
    folder = folder.parent_path();
  }
  return {};
}

bool HasNoRoot(const model::Document& document) {
  return document.main_flow == 0 || document.flows[document.main_flow].root == 0;
}

std::unique_ptr<OpenFile> CopyFile(const std::shared_ptr<const model::Document>& origin,
                                   const std::optional<FileStamp>& stamp) {
  auto file = std::make_unique<OpenFile>();
  file->document = std::make_unique<model::Document>(model::CopyOf(origin));
  file->document->path.clear();
  file->stamp = stamp;
  return file;
}

class DocumentsRole : public host::Documents {
 public:
  explicit DocumentsRole(Workspace& workspace) : workspace_(workspace) {}

  Id ActiveDocument() override {
    return workspace_.IsDocument(workspace_.Active()) ? workspace_.Active() : host::kNone;
  }
  Id ActiveBook() override {
    return workspace_.Book(workspace_.Active()) != nullptr ? workspace_.Active() : host::kNone;
  }
  bool Activate(Id id) override {
    OpenFile* file = workspace_.File(id);
    if (file == nullptr) return false;
    workspace_.Activate(id);
    return true;
  }

  Id FirstOpenDocument() override { return DocumentFrom(1); }
  Id NextOpenDocument(Id document) override {
    return document == host::kNone ? host::kNone : DocumentFrom(document + 1);
  }
  Id FindOpen(const std::string& path) override { return workspace_.FindPath(path); }

  Id Open(const std::string& path, const host::OpenOptions& options, OpenStatus* status) override;
  bool Save(Id id, const host::SaveOptions& options) override;
  bool Close(Id id, bool discard) override;

  std::string_view Path(Id id) override {
    const OpenFile* file = workspace_.File(id);
    return file == nullptr ? std::string_view() : file->path;
  }

  std::string_view FileStateAsRead(Id id) override {
    const OpenFile* file = workspace_.File(id);
    return file == nullptr ? std::string_view() : file->state;
  }

  bool SetPath(Id id, const std::string& path) override;
  bool Switch(Id document, host::DocumentSwitch which) override;
  bool SetSwitch(Id document, host::DocumentSwitch which, bool on) override;
  host::ViewMode View(Id document) override {
    const OpenFile* file = workspace_.DocumentFile(document);
    return file == nullptr ? host::ViewMode::kWysiwyg : file->view;
  }
  bool SetView(Id document, host::ViewMode mode) override {
    OpenFile* file = workspace_.DocumentFile(document);
    if (file == nullptr) return workspace_.FailId(document);
    file->view = mode;
    return true;
  }

  bool ImportFormats(Id target, Id source, std::uint32_t flags) override;

  std::string Metadata(Id id) override {
    OpenFile* file = workspace_.File(id);
    return file == nullptr ? std::string() : model::MetadataPacket(file->Tree());
  }
  bool SetMetadata(Id id, std::string_view packet) override;

  std::int32_t ErrorCode() override { return workspace_.error_code(); }
  std::string_view LastError() override { return workspace_.last_error(); }

 private:
  Id DocumentFrom(Id first) {
    for (Id id = first; id < workspace_.IdLimit(); ++id) {
      if (workspace_.IsDocument(id)) return id;
    }
    return host::kNone;
  }
  Id Refuse(const std::string& path, OpenStatus why, std::string_view text, OpenStatus* status) {
    *status = why;
    workspace_.Fail(Error::kCannotOpen, path + ": " + std::string(text));
    return host::kNone;
  }
  Id OpenLocated(const std::string& path, const host::OpenOptions& options, OpenStatus* status);
  Id Read(const std::string& path, const host::OpenOptions& options, OpenStatus* status);
  Id OpenAgain(Id id, const host::OpenOptions& options, OpenStatus* status);
  Id ReadBytes(const std::string& path, const std::optional<FileStamp>& stamp,
               const host::OpenOptions& options, OpenStatus* status);
  Id Build(const std::string& path, const model::SourceBytes& bytes, const std::optional<FileStamp>& stamp,
           const host::OpenOptions& options, OpenStatus* status);
  Id Add(const std::string& path, std::unique_ptr<OpenFile> file, const host::OpenOptions& options,
         OpenStatus* status);

  bool FailSave(const std::string& path, std::string_view why) {
    return workspace_.Fail(Error::kCannotSave, path + ": " + std::string(why));
  }
  bool SaveTo(Id id, OpenFile* file, const host::SaveOptions& options);
  bool SaveDelivered(Id id, OpenFile* file, const std::string& path);
  bool SaveAsPdf(OpenFile* file, const host::SaveOptions& options);
  model::Pieces Bytes(OpenFile* file, Format format);
  bool ImportFromOther(OpenFile* file, const OpenFile& from, std::uint32_t flags);

  Workspace& workspace_;
};

Id DocumentsRole::Open(const std::string& path, const host::OpenOptions& options, OpenStatus* status) {
  try {
    if (path.empty()) return Refuse(path, OpenStatus::kNotFound, "no file was named.", status);
    host::OpenOptions wanted = options;
    // Nothing locks files here, so that all there is to a fallback is not to touch the file.
    wanted.as_new = options.as_new || options.fallback;
    return OpenLocated(path, wanted, status);
  } catch (const std::exception&) {
    return Refuse(path, OpenStatus::kTooLarge, "there is not enough memory for the file.", status);
  }
}

Id DocumentsRole::OpenLocated(const std::string& named, const host::OpenOptions& options,
                              OpenStatus* status) {
  const std::string path = model::LocateFile(AbsolutePath(named)).path;
  if (!options.as_new) {
    const Id already = workspace_.FindPath(path);
    if (already != host::kNone) return OpenAgain(already, options, status);
  }
  host::Platform& platform = workspace_.platform();
  if (platform.FolderExists(path)) {
    return Refuse(path, OpenStatus::kIsFolder, "this is a folder, not a file.", status);
  }
  const bool is_there = platform.IsThere(path);
  if (!is_there && !platform.MayExist(path)) {
    return Refuse(path, OpenStatus::kNotFound, "there is no such file.", status);
  }
  if (!IsOrdinary(path)) {
    return Refuse(path, OpenStatus::kUnreadable, "this is a device, not a file.", status);
  }
  // Of what cannot be reached reading says why.
  const std::string unfinished = is_there ? PartOfUnfinished(workspace_, path) : std::string();
  if (!unfinished.empty()) return Refuse(path, OpenStatus::kUnreadable, unfinished, status);
  const std::string state = platform.FileState(path);
  const Id id = Read(path, options, status);
  if (id != host::kNone && !options.as_new) workspace_.File(id)->state = state;
  if (id != host::kNone && path != AbsolutePath(named)) {
    workspace_.Notice(named + ": there is no such file; " + path + " was opened in its place.");
  }
  return id;
}

Id DocumentsRole::Read(const std::string& path, const host::OpenOptions& options, OpenStatus* status) {
  std::error_code unknown_size;
  const std::uintmax_t size = std::filesystem::file_size(path, unknown_size);
  constexpr std::string_view kTooLarge = "the file is larger than 4 gigabytes.";
  if (!unknown_size && size > kLargestFile) return Refuse(path, OpenStatus::kTooLarge, kTooLarge, status);
  const std::optional<FileStamp> stamp = StampOf(path);
  if (std::shared_ptr<const model::Document> same = stamp ? workspace_.SameFile(path, *stamp) : nullptr) {
    return Add(path, CopyFile(same, stamp), options, status);
  }
  // What was written only now may still be being written.
  const bool maps = stamp && workspace_.options().map_large_files;
  const std::optional<model::SourceBytes> mapped = maps ? MapLargeFile(path) : std::nullopt;
  if (mapped && mapped->size() <= kLargestFile) return Build(path, *mapped, stamp, options, status);
  return ReadBytes(path, stamp, options, status);
}

Id DocumentsRole::ReadBytes(const std::string& path, const std::optional<FileStamp>& stamp,
                            const host::OpenOptions& options, OpenStatus* status) {
  constexpr std::string_view kTooLarge = "the file is larger than 4 gigabytes.";
  std::optional<std::string> bytes = workspace_.platform().ReadFile(path);
  if (!bytes) {
    return Refuse(path, OpenStatus::kUnreadable, "the file cannot be read" + workspace_.FileErrorSuffix(),
                  status);
  }
  if (bytes->size() > kLargestFile) return Refuse(path, OpenStatus::kTooLarge, kTooLarge, status);
  return Build(path, std::move(*bytes), stamp, options, status);
}

Id DocumentsRole::OpenAgain(Id id, const host::OpenOptions& options, OpenStatus* status) {
  *status = OpenStatus::kAlreadyOpen;
  if (options.visible) {
    workspace_.File(id)->on_screen = true;
    workspace_.Activate(id);
  }
  return id;
}

Id DocumentsRole::Build(const std::string& path, const model::SourceBytes& bytes,
                        const std::optional<FileStamp>& stamp, const host::OpenOptions& options,
                        OpenStatus* status) {
  const FileKind kind = model::Recognize(bytes);
  for (const Refusal& refusal : kRefusals) {
    if (refusal.kind == kind) return Refuse(path, refusal.status, refusal.text, status);
  }
  if (std::shared_ptr<const model::Document> same = workspace_.SameBytes(bytes)) {
    return Add(path, CopyFile(same, stamp), options, status);
  }
  auto file = std::make_unique<OpenFile>();
  file->stamp = stamp;
  std::string error;
  const bool cut = kind != FileKind::kXml && model::SeemsCut(bytes);
  if (kind == FileKind::kMifBook) {
    file->book = model::BuildBook(bytes, &error);
  } else if (kind == FileKind::kXml) {
    file->document = model::BuildXml(bytes, &error);
  } else {
    file->document = model::BuildMif(bytes, &error);
  }
  if (!bytes.Intact()) {
    bytes.GiveUp();
    return ReadBytes(path, std::nullopt, options, status);
  }
  if (!file->document && !file->book) return Refuse(path, OpenStatus::kDamaged, error, status);
  if (cut) {
    file->Tree().warnings.push_back(
        {"the file may have been cut: the line is missing with which FrameMaker ends MIF."});
  }
  return Add(path, std::move(file), options, status);
}

Id DocumentsRole::Add(const std::string& path, std::unique_ptr<OpenFile> file,
                      const host::OpenOptions& options, OpenStatus* status) {
  for (const model::Warning& warning : file->Tree().warnings) workspace_.Notice(path + ": " + warning.text);
  if (!options.as_new) {
    file->path = file->Tree().path = path;
    file->identity = Workspace::Identity(path);
    const auto moved = workspace_.moved_files.find(file->identity);
    if (moved != workspace_.moved_files.end()) {
      file->layout = kLayoutAsRead + 1;
      moved->second = PagesGoOn(*file);  // somebody may have changed that since it was written
    }
  }
  file->on_screen = options.visible;
  const Id id = workspace_.Add(std::move(file));
  *status = OpenStatus::kOpened;
  if (!options.visible) return id;
  workspace_.Activate(id);
  if (workspace_.IsDocument(id)) workspace_.Tell(kDocumentOpened, id, path, 0);
  return workspace_.File(id) != nullptr ? id : host::kNone;
}

bool DocumentsRole::Save(Id id, const host::SaveOptions& options) {
  OpenFile* file = workspace_.File(id);
  if (file == nullptr) return workspace_.FailId(id);
  try {
    if (file->document && file->document->additions.Pending() && !SettleDocument(file)) {
      return FailSave(file->path, "what was added to the document cannot be written.");
    }
    return SaveTo(id, file, options);
  } catch (const std::exception&) {
    return FailSave(options.path.empty() ? file->path : options.path,
                    "there is not enough memory to write the file.");
  }
}

bool DocumentsRole::SaveTo(Id id, OpenFile* file, const host::SaveOptions& options) {
  if (options.format == host::SaveFormat::kPdf) return SaveAsPdf(file, options);
  const std::string path = options.path.empty() ? file->path : AbsolutePath(options.path);
  if (path.empty()) return FailSave("document " + std::to_string(id), "the document has no name yet.");
  const Id there = workspace_.FindPath(path);
  if (there != host::kNone && there != id) return FailSave(path, "a document of that name is open.");
  if (options.format == host::SaveFormat::kXml && !options.structure_application.empty()) {
    return SaveDelivered(id, file, path);
  }
  const Format own = file->Tree().format;
  // A document may lie under any name; saved where it is, it stays what it is.
  Format format = there == id ? own : FormatOfName(path, own);
  if (options.format == host::SaveFormat::kXml) format = Format::kXml;
  if (file->book && format != own) return FailSave(path, "a book can only be written as MIF.");
  if (format == Format::kXml && own == Format::kXml && HasNoRoot(*file->document)) {
    return FailSave(path, "every element was deleted, and XML cannot be without one.");
  }
  // Conversion reads the statements as they stand in the source.
  if (format != own && !file->document->replacements.empty() && !SettleDocument(file)) {
    return FailSave(path, "what was changed in the document cannot be written.");
  }
  // Its own file must be the one that was read: somebody else's changes would be lost else.
  const bool must_be_same = there == id && !workspace_.options().overwrite_changed;
  std::string state = must_be_same ? file->state : std::string();
  const model::Pieces bytes = Bytes(file, format);
  if (!file->Tree().source.Intact()) return FailSave(path, std::string(kMappedFileChanged) + ".");
  if (!workspace_.platform().ReplaceUnchanged(path, bytes.All(), &state)) {
    return FailSave(path, "the file cannot be written" + workspace_.FileErrorSuffix());
  }
  if (format != own) return true;
  file->state = std::move(state);
  file->path = file->Tree().path = path;
  file->identity = Workspace::Identity(path);
  file->component_paths.clear();
  file->edited = file->edited || file->Tree().modified;
  file->Tree().modified = false;
  if (file->layout != kLayoutAsRead) {
    workspace_.moved_files[file->identity] = PagesGoOn(*file);
  } else {
    workspace_.moved_files.erase(file->identity);
  }
  return true;
}

// XML for others, which leaves the document what and where it is.
bool DocumentsRole::SaveDelivered(Id id, OpenFile* file, const std::string& path) {
  if (file->document && HasNoRoot(*file->document)) {
    return FailSave(path, "the document has no elements, and XML cannot be without one.");
  }
  if (file->document && !file->document->replacements.empty() && !SettleDocument(file)) {
    return FailSave(path, "what was changed in the document cannot be written.");
  }
  std::string why;
  const std::string text = file->book ? DeliveredBook(workspace_, *this, id, path, &why)
                                      : DeliveredDocument(*file->document, path);
  if (text.empty()) return FailSave(path, why);
  if (!file->Tree().source.Intact()) return FailSave(path, std::string(kMappedFileChanged) + ".");
  return workspace_.platform().ReplaceFile(path, text) ||
         FailSave(path, "the file cannot be written" + workspace_.FileErrorSuffix());
}

// A PDF is another file: the document keeps its path and what is to be saved of it, so that its own file is
// no place for the PDF.
bool DocumentsRole::SaveAsPdf(OpenFile* file, const host::SaveOptions& options) {
  if (options.path.empty()) return FailSave(file->path, "a PDF needs a name of its own.");
  const std::string path = AbsolutePath(options.path);
  if (workspace_.FindPath(path) != host::kNone) return FailSave(path, "a document of that name is open.");
  std::string why;
  const std::optional<std::string> pdf = PrintPdf(workspace_, *this, file, options, &why);
  if (!pdf) return FailSave(path, why);
  if (!file->Tree().source.Intact()) return FailSave(path, std::string(kMappedFileChanged) + ".");
  if (workspace_.platform().ReplaceFile(path, *pdf)) return true;
  return FailSave(path, "the file cannot be written" + workspace_.FileErrorSuffix());
}

model::Pieces DocumentsRole::Bytes(OpenFile* file, Format format) {
  const model::Document& tree = file->Tree();
  model::Pieces pieces;
  if (format != tree.format) {
    pieces.Copy(Converted(tree, format));
  } else if (!(file->edited || tree.modified)) {
    pieces.Refer(tree.source);
  } else if (file->book) {
    pieces = model::BookPieces(*file->book);
  } else {
    // Saved before or not: the edits still stand on the source as it was read.
    pieces = format == Format::kXml ? model::XmlPieces(tree) : model::MifPieces(tree);
  }
  return pieces;
}

bool DocumentsRole::Close(Id id, bool discard) {
  OpenFile* file = workspace_.File(id);
  if (file == nullptr) return workspace_.FailId(id);
  if (!discard && file->Tree().modified) {
    return workspace_.Fail(Error::kRefused, file->path + ": there are changes that were not saved.");
  }
  workspace_.Remove(id);
  return true;
}

bool DocumentsRole::Switch(Id document, host::DocumentSwitch which) {
  OpenFile* file = workspace_.File(document);
  if (file == nullptr) return false;
  switch (which) {
    case host::DocumentSwitch::kShowAllConditions:
      return file->Tree().show_all;
    case host::DocumentSwitch::kElementBoundaries:
      return file->Tree().boundaries;
    case host::DocumentSwitch::kModified:
      return file->Tree().modified;
    case host::DocumentSwitch::kOnScreen:
      return file->on_screen;
    case host::DocumentSwitch::kIconified:
      return file->iconified;
  }
  return false;
}

bool DocumentsRole::SetPath(Id id, const std::string& named) {
  OpenFile* file = workspace_.File(id);
  if (file == nullptr) return workspace_.FailId(id);
  const std::string path = AbsolutePath(named);
  const Id there = workspace_.FindPath(path);
  if (named.empty()) return workspace_.Fail(Error::kInvalidArgument, "A document cannot lose its name.");
  if (there != host::kNone && there != id) return FailSave(path, "a document of that name is open.");
  file->path = file->Tree().path = path;
  file->identity = Workspace::Identity(path);
  file->state.clear();
  file->component_paths.clear();
  return true;
}

bool DocumentsRole::SetSwitch(Id document, host::DocumentSwitch which, bool on) {
  OpenFile* file = workspace_.File(document);
  if (file == nullptr) return workspace_.FailId(document);
  switch (which) {
    case host::DocumentSwitch::kShowAllConditions:
      if (file->Tree().show_all == on) break;
      file->Tree().show_all = on;
      MarkEdited(file, EditOf::kVisibility);
      break;
    case host::DocumentSwitch::kElementBoundaries:
      if (file->Tree().boundaries == on) break;
      file->Tree().boundaries = on;
      MarkEdited(file, EditOf::kLooks);
      break;
    case host::DocumentSwitch::kModified:
      file->edited = file->edited || file->Tree().modified;
      file->Tree().modified = on;
      break;
    case host::DocumentSwitch::kOnScreen:
      file->on_screen = on;
      break;
    case host::DocumentSwitch::kIconified:
      file->iconified = on;
      break;
  }
  return true;
}

bool DocumentsRole::SetMetadata(Id id, std::string_view packet) {
  OpenFile* file = workspace_.File(id);
  if (file == nullptr) return workspace_.FailId(id);
  std::string why;
  if (!model::SetMetadata(&file->Tree(), packet, &why)) {
    return workspace_.Fail(Error::kRefused, file->path + ": " + why);
  }
  MarkEdited(file, EditOf::kLooks);
  return true;
}

// What an import is called in the interface and in the model, and to users.
struct CatalogName {
  host::FormatImport flag;
  model::CatalogBit bit;
  std::string_view name;
};
constexpr CatalogName kCatalogNames[] = {
    {host::kImportParagraphFormats, model::kParagraphFormatCatalog, "paragraph formats"},
    {host::kImportCharacterFormats, model::kCharacterFormatCatalog, "character formats"},
    {host::kImportVariableFormats, model::kVariableCatalog, "variables"},
    {host::kImportElementDefinitions, model::kDefinitionCatalog, "element definitions"},
    {host::kImportColors, model::kColorCatalog, "colors"},
    {host::kImportConditions, model::kConditionCatalog, "conditions"},
};

bool DocumentsRole::ImportFormats(Id target, Id source, std::uint32_t flags) {
  if (!workspace_.IsDocument(target)) return workspace_.FailId(target);
  OpenFile* from = workspace_.DocumentFile(source);
  if (from == nullptr) return workspace_.FailId(source);
  if (target != source) return ImportFromOther(workspace_.File(target), *from, flags);
  // A document has its own catalogs already; with its element definitions its text is formatted anew.
  if ((flags & host::kImportElementDefinitions) != 0) ApplyDefinedFormats(from, host::kNone);
  return true;
}

bool DocumentsRole::ImportFromOther(OpenFile* file, const OpenFile& from, std::uint32_t flags) {
  std::uint32_t catalogs = 0;
  for (const CatalogName& catalog : kCatalogNames) {
    if ((flags & catalog.flag) != 0) catalogs |= catalog.bit;
  }
  std::uint32_t left_out = 0;
  std::string why;
  if (!model::ImportCatalogs(file->document.get(), *from.document, catalogs, &left_out, &why)) {
    return workspace_.Fail(Error::kRefused, file->path + ": " + why);
  }
  file->derived = DerivedData();
  file->selection = {};
  MarkEdited(file);
  for (const CatalogName& catalog : kCatalogNames) {
    if ((left_out & catalog.bit) == 0) continue;
    workspace_.Notice(file->path + ": XML has no place for " + std::string(catalog.name) +
                      "; those of the other document were not imported.");
  }
  return true;
}

}  // namespace

std::unique_ptr<host::Documents> MakeDocuments(Workspace& workspace) {
  return std::make_unique<DocumentsRole>(workspace);
}

}  // namespace qelm::embedded::adapter
