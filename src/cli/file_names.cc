#include "cli/file_names.h"

#include <filesystem>
#include <string_view>

namespace qelm::cli {

std::string ShownPath(const std::string& path) {
  const std::filesystem::path file = std::filesystem::path(path).lexically_normal();
  if (!file.is_absolute()) return file.string();
  std::error_code error;
  const std::filesystem::path here = std::filesystem::current_path(error);
  if (error) return file.string();
  const std::string shown = file.lexically_relative(here).string();
  return shown.empty() || shown == ".." || shown.starts_with("../") ? file.string() : shown;
}

std::string FileUri(const std::string& path) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kPlain = "-._~/!$&'()*+,;=@";  // beside letters and digits
  std::string uri = path.starts_with('/') ? "file://" : "";
  for (const char c : path) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (letter || kPlain.find(c) != std::string_view::npos) {
      uri += c;
      continue;
    }
    const auto code = static_cast<unsigned char>(c);
    uri += '%';
    uri += kDigits[code >> 4U];
    uri += kDigits[code & 15U];
  }
  return uri;
}

}  // namespace qelm::cli
