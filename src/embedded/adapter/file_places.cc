#include "embedded/adapter/file_places.h"

#include <algorithm>
#include <filesystem>

namespace qelm::embedded::adapter {

std::string AbsolutePath(const std::string& path) {
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute.string();
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
