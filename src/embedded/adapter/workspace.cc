#include "embedded/adapter/workspace.h"

#include "embedded/adapter/file_places.h"
#include "embedded/model/edit.h"
#include "embedded/model/settle.h"
#include "embedded/model/shared_links.h"

namespace qelm::embedded::adapter {
namespace {

NestedRanges InsetRanges(const model::Document& document) {
  std::vector<NestedRanges::Range> ranges;
  for (std::uint32_t i = 1; i < document.insets.size(); ++i) {
    const model::Inset& inset = document.insets[i];
    ranges.push_back({.first_item = inset.first_item + 1, .end_item = inset.end_item, .ref = i});
  }
  return NestedRanges(std::move(ranges));
}

// Whether it is a document that nothing was done to since it was read.
bool IsAsRead(const OpenFile& file) {
  return file.document && !file.edited && file.revision == 1 && !file.document->modified;
}

}  // namespace

Id Workspace::Add(std::unique_ptr<OpenFile> file) {
  const Id id = IdLimit();
  trees_.push_back(&file->Tree());
  files_.push_back(std::move(file));
  return id;
}

void Workspace::Remove(Id id) {
  if (File(id) == nullptr) return;
  trees_[id] = nullptr;
  files_[id].reset();
  std::erase(front_, id);
}

Id Workspace::FindPath(const std::string& path) {
  const std::string identity = Identity(path);
  for (Id id = 1; id < files_.size(); ++id) {
    if (files_[id] && !identity.empty() && files_[id]->identity == identity) return id;
  }
  return host::kNone;
}

std::string Workspace::Identity(const std::string& path) {
  if (path.empty()) return {};
  return ResolvedPath(path).value_or(path);
}

std::shared_ptr<const model::Document> Workspace::SameBytes(std::string_view bytes) {
  for (const std::unique_ptr<OpenFile>& file : files_) {
    if (!file || !IsAsRead(*file)) continue;
    const model::SourceBytes& source = file->document->source;
    if (source.size() == bytes.size() && source == bytes) return OriginOf(file->document.get());
  }
  return nullptr;
}

std::shared_ptr<const model::Document> Workspace::SameFile(const std::string& path, const FileStamp& stamp) {
  const std::string identity = Identity(path);
  for (const std::unique_ptr<OpenFile>& file : files_) {
    if (!file || file->identity != identity || file->stamp != stamp || !IsAsRead(*file)) continue;
    return OriginOf(file->document.get());
  }
  return options_.documents ? options_.documents->Find(identity, stamp) : nullptr;
}

void Workspace::Share(Id id, SharedDocuments* shared) {
  const OpenFile* file = File(id);
  if (file == nullptr || !file->stamp || !IsAsRead(*file)) return;
  shared->Add(file->identity, *file->stamp, OriginOf(file->document.get()));
}

// The document becomes a copy too: it may be edited and closed, what copies refer to may not.
std::shared_ptr<const model::Document> Workspace::OriginOf(model::Document* document) {
  if (document->origin != nullptr && document->origin->source.data() == document->source.data()) {
    return document->origin;
  }
  document->shared_links = std::make_shared<model::SharedLinks>();
  auto origin = std::make_shared<const model::Document>(std::move(*document));
  *document = model::CopyOf(origin);
  return origin;
}

void Workspace::Activate(Id id) {
  std::erase(front_, id);
  front_.push_back(id);
}

bool Workspace::Fail(Error error, std::string text) {
  error_code_ = static_cast<std::int32_t>(error);
  last_error_ = std::move(text);
  return false;
}

bool Workspace::FailId(Id document) {
  const OpenFile* file = File(document);
  if (file == nullptr) {
    return Fail(Error::kInvalidId,
                "No open document or book has the number " + std::to_string(document) + ".");
  }
  return Fail(Error::kInvalidId, file->path + ": the document or book has no such object.");
}

void Workspace::Notice(std::string text) { notices_.push_back(std::move(text)); }

std::string Workspace::FileErrorSuffix() const {
  const std::string reason = options_.file_error ? options_.file_error() : std::string();
  return reason.empty() ? "." : ": " + reason + ".";
}

bool SettleDocument(OpenFile* file) {
  if (!model::NeedsSettling(*file->document)) return true;
  if (!model::Settle(file->document.get())) return false;
  file->derived = DerivedData();
  file->selection = {};
  ++file->revision;
  return true;
}

void MarkEdited(OpenFile* file, EditOf what) {
  file->edited = true;
  if (what != EditOf::kLooks) ++file->layout;
  if (what == EditOf::kContent) {
    ++file->revision;
    file->derived.paragraphs.clear();  // a mark may have gone, and its text joined the next paragraph
  }
  file->Tree().modified = true;
}

void DeclareConditions(model::Document* document, const std::vector<Id>& conditions) {
  for (const Id id : conditions) {
    const model::Condition& condition = document->conditions[id];
    if (!condition.declared) model::CreateCondition(document, condition.name);
  }
}

bool InLockedInset(OpenFile* file, std::uint32_t item) {
  const model::Document& document = file->Tree();
  if (document.insets.size() <= 1) return false;
  std::optional<NestedRanges>& insets = file->derived.insets;
  if (!insets) insets = InsetRanges(document);
  for (const NestedRanges::Range* range = insets->Find(item); range != nullptr;
       range = insets->Around(*range)) {
    if (document.insets[range->ref].locked) return true;
  }
  return false;
}

}  // namespace qelm::embedded::adapter
