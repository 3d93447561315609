#include "embedded/adapter/file_places.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace qelm::embedded::adapter {

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string AbsolutePath(const std::string& path) {
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute.string();
}

namespace {

bool GoesUp(const std::filesystem::path& path) {
  return std::find(path.begin(), path.end(), "..") != path.end();
}

// With links resolved as far as the path exists.
std::filesystem::path Resolved(const std::filesystem::path& path) {
  return ResolvedPath(path.string()).value_or(path.lexically_normal().string());
}

}  // namespace

// Most paths lead to something, or lack no more than their name.
std::optional<std::string> ResolvedPath(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::path resolved = fs::canonical(path, error);
  if (!error) return resolved.string();
  const fs::path spelled(path);
  const fs::path name = spelled.filename();
  const bool is_plain = !name.empty() && name != "." && name != "..";
  if (error == std::errc::no_such_file_or_directory && is_plain && spelled.has_parent_path()) {
    resolved = fs::canonical(spelled.parent_path(), error);
    if (!error) return (resolved / name).string();
  }
  resolved = fs::weakly_canonical(spelled, error);
  if (error) return std::nullopt;
  return resolved.string();
}

std::string PlainPath(const std::string& path) {
  const std::filesystem::path spelled(path);
  std::filesystem::path plain = spelled.lexically_normal();
  if (!GoesUp(spelled)) return plain.string();
  const std::filesystem::path resolved = Resolved(spelled);
  return (Resolved(plain) == resolved ? plain : resolved).string();
}

std::string RelativePath(const std::string& folder, const std::string& file) {
  std::filesystem::path relative = std::filesystem::path(file).lexically_relative(folder);
  // Whoever goes up from a folder that is a link comes out where the link leads.
  if (GoesUp(relative)) relative = Resolved(file).lexically_relative(Resolved(folder));
  return relative.empty() ? file : relative.string();
}

bool IsOrdinary(const std::string& path) {
  std::error_code error;
  const std::filesystem::file_type type = std::filesystem::status(path, error).type();
  if (path.starts_with("/dev/stdin") || path.starts_with("/dev/fd/") || path.starts_with("/proc/self/fd/")) {
    return true;
  }
  return error || type == std::filesystem::file_type::regular ||
         type == std::filesystem::file_type::directory;
}

model::Format FormatOfName(const std::string& path, model::Format other) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  if (extension == ".xml") return model::Format::kXml;
  if (extension == ".mif" || extension == ".fm") return model::Format::kMif;
  return other;
}

}  // namespace qelm::embedded::adapter
