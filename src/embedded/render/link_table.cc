#include "embedded/render/link_table.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

#include "embedded/model/hypertext.h"
#include "embedded/model/links.h"
#include "embedded/model/locate.h"

namespace qelm::embedded::render {
namespace {

std::string Normal(const std::string& path) {
  return std::filesystem::path(path).lexically_normal().string();
}

// Text between the quotation marks of a tag's attribute.
std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') quoted.push_back('\\');
    if (static_cast<unsigned char>(c) >= ' ') quoted.push_back(c);
  }
  return quoted + "'";
}

// What a reader may be sent to by a document that comes from anywhere: pages and letters, but no programs.
constexpr std::array<std::string_view, 6> kSchemes = {"http", "https", "ftp", "mailto", "tel", "news"};

// The scheme of an address in small letters; empty where it has none.
std::string SchemeOf(std::string_view address) {
  std::string scheme;
  for (const char c : address) {
    if (c == ':') return scheme;
    if (c == '/' || c == '?' || c == '#') break;
    // Readers pass over blanks and control characters in a scheme.
    if (static_cast<unsigned char>(c) > ' ')
      scheme += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return {};
}

bool IsHarmless(std::string_view address) {
  const std::string scheme = SchemeOf(address);
  return scheme.empty() || std::find(kSchemes.begin(), kSchemes.end(), scheme) != kSchemes.end();
}

}  // namespace

std::size_t LinkTable::Add(const model::Document& document, const std::string& path) {
  Printed printed;
  printed.path = path;
  for (const model::LinkTarget& target : model::ReadTargets(document)) {
    const bool counts =
        target.state == model::TargetState::kShown && target.kind != model::LinkKind::kTextInset;
    const bool on_pages = document.flows[document.main_flow].first_item <= target.item &&
                          target.item < document.flows[document.main_flow].end_item;
    if (counts && on_pages) printed.targets.insert(target.name);
  }
  std::unordered_set<std::string> known;
  for (model::Link& link : model::ReadLinks(document)) {
    const bool leads =
        link.kind == model::LinkKind::kCrossReference || link.kind == model::LinkKind::kHypertext;
    if (!leads || link.target.empty() || !known.insert(link.file + "\n" + link.target).second) continue;
    asked_.push_back({documents_.size(), std::move(link.file), std::move(link.target)});
  }
  by_path_.try_emplace(Normal(path), documents_.size());
  documents_.push_back(std::move(printed));
  return documents_.size() - 1;
}

std::size_t LinkTable::Find(const std::string& path) const {
  const auto found = by_path_.find(Normal(path));
  return found == by_path_.end() ? npos : found->second;
}

void LinkTable::FindWanted() {
  for (const Asked& asked : std::exchange(asked_, {})) {
    const std::size_t to = asked.file.empty() ? asked.from : Locate(asked.from, asked.file);
    if (to != npos) wanted_.insert(PlaceName(to, asked.target));
  }
}

bool LinkTable::IsWanted(std::size_t document, std::string_view target) {
  FindWanted();
  return wanted_.contains(PlaceName(document, target));
}

std::size_t LinkTable::Locate(std::size_t from, std::string_view file) {
  const std::string key = std::to_string(from) + "/" + std::string(file);
  const auto known = located_.find(key);
  if (known != located_.end()) return known->second;
  const std::string path = model::LocateComponent(documents_[from].path, std::string(file)).path;
  return located_.emplace(key, Find(path)).first->second;
}

// What a place is called must not depend on how a reader sorts or writes characters.
std::string LinkTable::PlaceName(std::size_t document, std::string_view target) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string name = "d" + std::to_string(document) + ".";
  for (const char c : target) {
    const bool plain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                       c == '.' || c == '-' || c == '_';
    if (plain) {
      name.push_back(c);
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    name += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
  }
  return name;
}

std::string LinkTable::Attributes(std::size_t from, std::string_view file, std::string_view target) {
  if (file == "URL") return IsHarmless(target) ? "uri=" + Quoted(target) : std::string();
  const std::size_t to = file.empty() ? from : Locate(from, file);
  if (to == npos) {
    std::filesystem::path other{std::string(file)};
    other.replace_extension(".pdf");
    // A name with a colon in it is still that of a file.
    const std::string path = other.generic_string();
    return "uri=" + Quoted(SchemeOf(path).empty() ? path : "./" + path);
  }
  const bool beginning = target.empty() || model::IsPageName(target);
  if (!beginning && !documents_[to].targets.contains(std::string(target))) return {};
  std::string name = PlaceName(to, beginning ? std::string_view() : target);
  std::string attributes = "dest='" + name + "'";
  used_.insert(std::move(name));
  return attributes;
}

}  // namespace qelm::embedded::render
