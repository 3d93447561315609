#include "cli/link_table.h"

#include <filesystem>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "messages/element_places.h"

namespace qelm::cli {
namespace {

using filtering::DanglingReference;
using host::Id;
using host::kNone;
using host::Link;
using host::LinkKind;
using Json = nlohmann::ordered_json;

// What became of a link.
enum class State : std::uint8_t { kResolved, kFileMissing, kTargetMissing, kUnreadable, kUnchecked };
constexpr const char* kStates[] = {"resolved", "file missing", "target missing", "file cannot be opened",
                                   "not checked"};

// A link as it is listed.
struct Row {
  Link link;
  std::string source;
  std::string element;
};

// A file, as far as links into it need it.
struct Target {
  bool read = false;  // it was opened, or that was tried
  bool readable = false;
  std::string reason;  // why it is not
  // By kind and name; of a file that is still open the host is asked.
  std::unordered_set<std::string> names;
  Id document = kNone;
};

std::string KeyOf(LinkKind kind, std::string_view name) {
  return std::to_string(static_cast<int>(kind)) + std::string(name);
}

std::string Identity(const std::string& path) {
  std::error_code error;
  const std::filesystem::path resolved = std::filesystem::weakly_canonical(path, error);
  return error ? path : resolved.string();
}

class Table {
 public:
  explicit Table(host::Host& host) : host_(host) {}

  void AddDocument(Id document);
  void AddBook(Id book);
  Json Result();

 private:
  // What is known of a path, for which the file system is asked once.
  struct Place {
    bool exists = false;
    Target* target = nullptr;
  };
  const Place& PlaceOf(const std::string& path);
  void AddFile(const std::string& path, Target* target, bool is_component);
  void AddLinks(Id document);
  void AddNames(Id document, Target* target);
  State StateOf(const Row& row);
  Json RowJson(const Row& row);

  host::Host& host_;
  std::vector<Row> rows_;
  std::unordered_map<std::string, Target> targets_;  // by the file's identity
  std::unordered_map<std::string, Place> places_;    // by path
  Json unread_ = Json::array();
  std::size_t counts_[std::size(kStates)] = {};
};

void Table::AddLinks(Id document) {
  const std::string source(host_.documents.Path(document));
  std::vector<Link> links;
  host_.links.Read(document, &links);
  messages::ElementPlaces places(host_, document);
  for (Link& link : links) {
    Row row;
    if (link.element != kNone) places.AppendPath(link.element, &row.element);
    row.source = source;
    row.link = std::move(link);
    rows_.push_back(std::move(row));
  }
}

void Table::AddNames(Id document, Target* target) {
  std::vector<host::LinkTarget> names;
  host_.links.ReadTargets(document, &names);
  for (const host::LinkTarget& name : names) {
    if (name.state != host::LinkTarget::State::kDeleted) target->names.insert(KeyOf(name.kind, name.name));
  }
  target->readable = true;
}

void Table::AddDocument(Id document) {
  AddLinks(document);
  Target& target = *PlaceOf(std::string(host_.documents.Path(document))).target;
  target.read = target.readable = true;
  target.document = document;
}

void Table::AddBook(Id book) {
  // A book that names a file twice shows its links once.
  for (Id component = host_.books.FirstComponent(book); component != kNone;
       component = host_.books.NextComponent(book, component)) {
    const std::string path(host_.books.ComponentPath(book, component));
    Target* target = PlaceOf(path).target;
    if (!target->read) AddFile(path, target, true);
  }
}

// Opens a file that was not read yet, takes what is needed of it, and closes it.
void Table::AddFile(const std::string& path, Target* found, bool is_component) {
  Target& target = *found;
  target.read = true;
  host::OpenOptions options;
  options.visible = false;
  options.suppress_alerts = true;
  host::OpenStatus status = host::OpenStatus::kUnreadable;
  const Id document = host_.documents.Open(path, options, &status);
  if (document == kNone || host_.books.IsBook(document)) {
    target.reason = document == kNone ? std::string(host_.documents.LastError()) : path + ": this is a book.";
    if (is_component) unread_.push_back({{"path", path}, {"reason", target.reason}});
    if (document != kNone && status != host::OpenStatus::kAlreadyOpen) host_.documents.Close(document, true);
    return;
  }
  if (is_component) AddLinks(document);
  AddNames(document, &target);
  if (status == host::OpenStatus::kAlreadyOpen) {
    target.document = document;
  } else {
    host_.documents.Close(document, true);
  }
}

const Table::Place& Table::PlaceOf(const std::string& path) {
  const auto [found, is_new] = places_.try_emplace(path);
  if (is_new) found->second = {host_.platform.IsThere(path), &targets_[Identity(path)]};
  return found->second;
}

State Table::StateOf(const Row& row) {
  const Link& link = row.link;
  if (link.command == "URL") return State::kUnchecked;
  const std::string& path = link.path.empty() ? row.source : link.path;
  const Place& place = PlaceOf(path);
  if (!place.exists) return State::kFileMissing;
  // Pictures, and texts of other programs, are not opened here.
  if (link.target.empty() && link.kind != LinkKind::kCrossReference) return State::kResolved;
  if (!place.target->read) AddFile(path, place.target, false);
  const Target& target = *place.target;
  if (!target.readable) return State::kUnreadable;
  const bool known = target.document != kNone ? host_.links.HasTarget(target.document, link.kind, link.target)
                                              : target.names.contains(KeyOf(link.kind, link.target));
  // Objects by their number are looked up only where the document is open.
  if (link.command.find("ObjectId") != std::string::npos && target.document == kNone)
    return State::kUnchecked;
  const bool page =
      link.kind == LinkKind::kHypertext && (link.target == "firstpage" || link.target == "lastpage");
  return known || page ? State::kResolved : State::kTargetMissing;
}

Json Table::RowJson(const Row& row) {
  const State state = StateOf(row);
  ++counts_[static_cast<std::size_t>(state)];
  Json json{{"source", row.source},
            {"element", row.element},
            {"kind", filtering::LinkKindName(row.link.kind)},
            {"path", row.link.path.empty() ? row.source : row.link.path},
            {"target", row.link.target},
            {"state", kStates[static_cast<std::size_t>(state)]},
            {"hidden", row.link.hidden}};
  if (row.link.command == "URL") json["path"] = "";
  if (!row.link.command.empty()) json["command"] = row.link.command;
  if (state == State::kUnreadable) json["reason"] = PlaceOf(json["path"]).target->reason;
  return json;
}

Json Table::Result() {
  Json links = Json::array();
  for (const Row& row : rows_) links.push_back(RowJson(row));
  Json counts = Json::object();
  for (std::size_t i = 0; i < std::size(kStates); ++i) counts[kStates[i]] = counts_[i];
  return {{"links", std::move(links)}, {"counts", std::move(counts)}, {"unread", std::move(unread_)}};
}

std::string NameOf(const std::string& path) { return std::filesystem::path(path).filename().string(); }

std::string Place(const std::string& source, const std::string& element) {
  return NameOf(source) + (element.empty() ? ", outside the structure" : " " + element);
}

}  // namespace

Json LinksJson(host::Host& host, Id target) {
  Table table(host);
  if (host.books.IsBook(target)) {
    table.AddBook(target);
  } else {
    table.AddDocument(target);
  }
  return table.Result();
}

std::string LinksText(const Json& links) {
  std::string text;
  for (const Json& link : links["links"]) {
    const std::string source = link["source"];
    const std::string path = link["path"];
    const std::string target = link["target"];
    text += Place(source, link["element"]) + ": " + link["kind"].get<std::string>() + " to";
    if (!target.empty()) text += " " + target;
    if (!target.empty() && path != source && !path.empty()) text += " in";
    if (path != source && !path.empty()) text += " " + path;
    if (link["hidden"]) text += " (hidden)";
    text += " - " + link["state"].get<std::string>() + "\n";
  }
  for (const Json& file : links["unread"]) text += "not read: " + file["reason"].get<std::string>() + "\n";
  std::size_t all = 0;
  std::string counts;
  for (const auto& [state, count] : links["counts"].items()) {
    all += count.get<std::size_t>();
    if (count != 0) counts += ", " + std::to_string(count.get<std::size_t>()) + " " + state;
  }
  return text + std::to_string(all) + (all == 1 ? " link" : " links") + counts + "\n";
}

Json DanglingJson(const std::vector<DanglingReference>& references) {
  Json list = Json::array();
  for (const DanglingReference& reference : references) {
    list.push_back({{"source", reference.source},
                    {"element", reference.element},
                    {"kind", filtering::LinkKindName(reference.kind)},
                    {"path", reference.path},
                    {"target", reference.target}});
  }
  return list;
}

std::string DanglingText(const std::vector<DanglingReference>& references) {
  std::string text;
  for (const DanglingReference& reference : references) {
    text += "dangling: " + Place(reference.source, reference.element) + ": " +
            std::string(filtering::LinkKindName(reference.kind)) + " to " +
            (reference.target.empty() ? "the file" : reference.target);
    if (reference.path != reference.source) text += " in " + reference.path;
    text += ", which was filtered away\n";
  }
  return text;
}

}  // namespace qelm::cli
