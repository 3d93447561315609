#include "embedded/adapter/inset_update.h"

#include <filesystem>
#include <memory>
#include <optional>

#include "embedded/adapter/file_places.h"
#include "embedded/adapter/opened_document.h"
#include "embedded/model/locate.h"
#include "embedded/model/text_inset.h"

namespace qelm::embedded::adapter {
namespace {

using model::InsetContent;
using model::InsetSettings;

std::string FolderOf(const std::string& path) {
  return std::filesystem::path(PlainPath(path)).parent_path().string();
}

// The reason of a message that may name it as a sentence.
std::string AsReason(std::string_view text) {
  while (text.ends_with('.')) text.remove_suffix(1);
  return std::string(text);
}

class InsetUpdate {
 public:
  InsetUpdate(Workspace& workspace, host::Documents& documents, OpenFile* file)
      : workspace_(workspace), documents_(documents), file_(*file) {}

  // The content that an inset should have; nothing, with `why` set, where it cannot be had.
  std::optional<InsetContent> Content(std::uint32_t inset, const InsetSettings& settings, std::string* why);

 private:
  std::optional<InsetContent> OfFlow(std::uint32_t inset, const InsetSettings& settings,
                                     const std::string& path, std::string* why);

  Workspace& workspace_;
  host::Documents& documents_;
  OpenFile& file_;
  std::optional<model::ObjectNumbers> numbers_;
  // Insets that follow each other are often from one file.
  std::unique_ptr<OpenedDocument> source_;
  std::string source_path_;
};

std::optional<InsetContent> InsetUpdate::OfFlow(std::uint32_t inset, const InsetSettings& settings,
                                                const std::string& path, std::string* why) {
  if (!source_ || source_path_ != path) {
    source_.reset();
    source_ = std::make_unique<OpenedDocument>(workspace_, documents_, path);
    source_path_ = path;
  }
  OpenFile* source = source_->File();
  if (source == nullptr || source->document->format != model::Format::kMif) {
    *why = source == nullptr ? AsReason(source_->Why()) : path + " is not MIF";
    return std::nullopt;
  }
  if (source != &file_ && !SettleDocument(source)) {
    *why = "what was changed in " + path + " cannot be brought into it";
    return std::nullopt;
  }
  if (!numbers_) numbers_.emplace(*file_.document);
  const std::string from = FolderOf(source->path);
  const std::string to = FolderOf(file_.path);
  std::function<std::string(const std::string&)> moved;
  if (from != to) {
    moved = [&](const std::string& named) {
      return RelativePath(to, PlainPath((std::filesystem::path(from) / named).string()));
    };
  }
  InsetContent content;
  const bool read =
      model::ReadFlowContent(*source->document, settings, *file_.document,
                             model::FormatAround(*file_.document, inset), moved, &*numbers_, &content, why);
  return read ? std::optional(std::move(content)) : std::nullopt;
}

std::optional<InsetContent> InsetUpdate::Content(std::uint32_t inset, const InsetSettings& settings,
                                                 std::string* why) {
  const std::string path = PlainPath(model::LocateComponent(file_.path, settings.file).path);
  switch (settings.kind) {
    case InsetSettings::Kind::kFlow:
      return OfFlow(inset, settings, path, why);
    case InsetSettings::Kind::kText: {
      if (!IsOrdinary(path)) {
        *why = path + ": this is a device, not a file";
        return std::nullopt;
      }
      const std::optional<std::string> text = workspace_.platform().ReadFile(path);
      if (!text) *why = path + ": the file cannot be read" + AsReason(workspace_.FileErrorSuffix());
      return text ? std::optional(model::ReadTextContent(*text, settings, *file_.document)) : std::nullopt;
    }
    case InsetSettings::Kind::kOther:
      break;
  }
  *why = "insets of the kind \"" + settings.type + "\" cannot be read again here";
  return std::nullopt;
}

}  // namespace

std::size_t UpdateInsets(Workspace& workspace, host::Documents& documents, OpenFile* file,
                         std::vector<std::string>* findings) {
  std::size_t changed = 0;
  InsetUpdate update(workspace, documents, file);
  for (const std::uint32_t inset : model::OutermostInsets(*file->document)) {
    const InsetSettings settings = model::ReadInset(*file->document, inset);
    // Without a source it is text that was brought in once and for all.
    if (settings.file.empty()) continue;
    std::string why;
    const std::optional<InsetContent> content = update.Content(inset, settings, &why);
    if (content && model::SetInsetContent(file->document.get(), inset, *content, &why)) ++changed;
    if (why.empty()) continue;
    findings->push_back(file->path + ": the text inset from " + settings.file + " stays as it is: " + why +
                        ".");
  }
  return changed;
}

}  // namespace qelm::embedded::adapter
