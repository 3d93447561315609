#include "embedded/model/links.h"

#include <charconv>
#include <filesystem>

#include "embedded/adapter/file_places.h"
#include "embedded/adapter/roles.h"
#include "embedded/model/hypertext.h"
#include "embedded/model/locate.h"
#include "embedded/model/shared_links.h"

namespace qelm::embedded::adapter {
namespace {

using host::LinkKind;
using State = host::LinkTarget::State;

static_assert(static_cast<int>(model::LinkKind::kGraphic) == static_cast<int>(LinkKind::kGraphic));
static_assert(static_cast<int>(model::TargetState::kHidden) == static_cast<int>(State::kHidden));
static_assert(static_cast<int>(model::TargetState::kDeleted) == static_cast<int>(State::kDeleted));

// Kinds of names are kept apart by what stands before them.
std::string TargetKey(LinkKind kind, std::string_view name) {
  std::string key(1, static_cast<char>('0' + static_cast<int>(kind)));
  key.append(name);
  return key;
}

// Where files lie that a document names, each looked for once.
class Places {
 public:
  explicit Places(const std::string& document) : document_(document) {}
  const std::string& Of(const std::string& file) {
    const auto [found, is_new] = known_.try_emplace(file);
    if (is_new) {
      found->second = PlainPath(model::LocateComponent(document_, file).path);
    }
    return found->second;
  }

 private:
  const std::string& document_;
  std::unordered_map<std::string, std::string> known_;
};

// A link's object is the place of its statement, counted from 1.
class LinksRole : public host::Links {
 public:
  LinksRole(Workspace& workspace, host::Elements& elements) : workspace_(workspace), elements_(elements) {}

  bool Read(Id document, std::vector<host::Link>* links) override;
  bool ReadTargets(Id document, std::vector<host::LinkTarget>* targets) override;
  bool ReadAll(Id document, std::vector<host::Link>* links, std::vector<host::LinkTarget>* targets) override;
  bool SetPath(Id document, const host::Link& link, const std::string& path) override;
  bool HasTarget(Id document, LinkKind kind, std::string_view target) override;

 private:
  bool HasObject(Id document, std::string_view target);

  Workspace& workspace_;
  host::Elements& elements_;
};

void Take(std::vector<model::Link> all, const std::string& path, std::vector<host::Link>* links) {
  Places places(path);
  for (model::Link& found : all) {
    host::Link link;
    link.kind = static_cast<LinkKind>(found.kind);
    link.object = found.statement + 1;
    link.element = found.element;
    if (!found.file.empty()) link.path = places.Of(found.file);
    link.target = std::move(found.target);
    link.command = std::move(found.command);
    link.hidden = found.hidden;
    links->push_back(std::move(link));
  }
}

void Take(std::vector<model::LinkTarget> all, std::vector<host::LinkTarget>* targets) {
  targets->reserve(all.size());
  for (model::LinkTarget& found : all) {
    targets->push_back({static_cast<LinkKind>(found.kind), std::move(found.name), found.element,
                        static_cast<State>(found.state)});
  }
}

bool LinksRole::Read(Id document, std::vector<host::Link>* links) {
  links->clear();
  const OpenFile* file = workspace_.DocumentFile(document);
  if (file == nullptr) return workspace_.FailId(document);
  Take(model::ReadLinks(*file->document), file->path, links);
  return true;
}

bool LinksRole::ReadTargets(Id document, std::vector<host::LinkTarget>* targets) {
  targets->clear();
  const OpenFile* file = workspace_.DocumentFile(document);
  if (file == nullptr) return workspace_.FailId(document);
  Take(model::ReadTargets(*file->document), targets);
  return true;
}

bool LinksRole::ReadAll(Id document, std::vector<host::Link>* links, std::vector<host::LinkTarget>* targets) {
  links->clear();
  targets->clear();
  const OpenFile* file = workspace_.DocumentFile(document);
  if (file == nullptr) return workspace_.FailId(document);
  model::LinksAndTargets all = model::LinksAndTargetsOf(*file->document);
  Take(std::move(all.links), file->path, links);
  Take(std::move(all.targets), targets);
  return true;
}

bool LinksRole::SetPath(Id document, const host::Link& link, const std::string& path) {
  // What else waits to be brought in does not move the statements, as long as it waits.
  OpenFile* file = workspace_.File(document);
  if (file == nullptr || !file->document) return workspace_.FailId(document);
  if (file->path.empty() || path.empty() || link.object == host::kNone) {
    return workspace_.Fail(Error::kInvalidArgument, file->path + ": a link needs a file to point to.");
  }
  const std::string own = PlainPath(file->path);
  const std::string wanted = PlainPath(AbsolutePath(path));
  const bool inside = wanted == own && link.kind == LinkKind::kCrossReference;
  const std::string folder = std::filesystem::path(own).parent_path().string();
  const std::string relative = inside ? std::string() : RelativePath(folder, wanted);
  if (!model::SetLinkFile(file->document.get(), static_cast<model::LinkKind>(link.kind), link.object - 1,
                          relative)) {
    return workspace_.Fail(Error::kInvalidArgument,
                           file->path + ": the link to " + link.path + " is none whose file can be changed.");
  }
  MarkEdited(file);
  return true;
}

bool LinksRole::HasTarget(Id document, LinkKind kind, std::string_view target) {
  OpenFile* file = workspace_.DocumentFile(document);
  if (file == nullptr) return false;
  if (target.empty()) return true;
  if (kind == LinkKind::kHypertext && (model::IsPageName(target) || HasObject(document, target))) return true;
  DerivedData& derived = file->derived;
  if (derived.targets_revision != file->revision) {
    derived.targets.clear();
    for (const model::LinkTarget& found : model::ReadTargets(*file->document)) {
      if (found.state == model::TargetState::kDeleted) continue;
      derived.targets.insert(TargetKey(static_cast<LinkKind>(found.kind), found.name));
    }
    derived.targets_revision = file->revision;
  }
  return derived.targets.contains(TargetKey(kind, target));
}

// "5 NUMBER": an object of the class 5, an element, by its unique number.
bool LinksRole::HasObject(Id document, std::string_view target) {
  constexpr std::string_view kElementClass = "5 ";
  if (!target.starts_with(kElementClass)) return false;
  target.remove_prefix(kElementClass.size());
  std::int64_t number = 0;
  const auto read = std::from_chars(target.data(), target.data() + target.size(), number);
  return read.ec == std::errc() && read.ptr == target.data() + target.size() &&
         elements_.FindUniqueId(document, number) != host::kNone;
}

}  // namespace

std::unique_ptr<host::Links> MakeLinks(Workspace& workspace, host::Elements& elements) {
  return std::make_unique<LinksRole>(workspace, elements);
}

}  // namespace qelm::embedded::adapter
