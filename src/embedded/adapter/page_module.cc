#include "embedded/adapter/page_module.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string_view>
#include <vector>

namespace qelm::embedded::adapter {
namespace {

constexpr char kModule[] = "qelm-pages.so";

struct Loaded {
  const render::PageMaker* maker = nullptr;
  std::string why;
};

// The kernel writes a line end in a path so.
std::string Unescaped(std::string path) {
  constexpr std::string_view kLineEnd = "\\012";
  for (std::size_t at = 0; (at = path.find(kLineEnd, at)) != std::string::npos; ++at) {
    path.replace(at, kLineEnd.size(), "\n");
  }
  return path;
}

// The file that this code was loaded from, program or library, by its whole path: what a caller says of it
// may count from a folder that is not the current one any more.
std::string OwnFile() {
  const auto own = reinterpret_cast<std::uintptr_t>(&OwnFile);
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    const char* const last = line.data() + line.size();
    const char* const dash = std::from_chars(line.data(), last, begin, 16).ptr;
    if (dash == last || own < begin) continue;
    std::from_chars(dash + 1, last, end, 16);
    const std::size_t path = line.find('/');
    if (own >= end || path == std::string::npos) continue;
    std::string name = line.substr(path);
    std::error_code error;
    return std::filesystem::exists(name, error) ? name : Unescaped(std::move(name));
  }
  return {};
}

// Beside the program or the library, or where it is installed: libraries lie in lib, or in a folder of lib
// for one kind of machine.
std::string FindModule(const std::filesystem::path& folder) {
  const std::filesystem::path above = folder.parent_path();
  std::vector<std::filesystem::path> places = {folder, folder / "qelm"};
  if (above.filename() == "lib") places.push_back(above / "qelm");
  std::error_code error;
  for (const std::filesystem::path& place : places) {
    if (std::filesystem::exists(place / kModule, error)) return (place / kModule).string();
  }
  return (above / "lib" / "qelm" / kModule).string();
}

// What is loaded can do all that the user can: it is his, or of whoever installed what he runs.
bool IsTrusted(const std::string& module, const std::string& own) {
  struct stat found {};
  struct stat ours {};
  if (::stat(module.c_str(), &found) != 0) return false;
  // What runs may have been replaced since.
  const bool same_owner = ::stat(own.c_str(), &ours) == 0 && found.st_uid == ours.st_uid;
  const bool owned = found.st_uid == 0 || found.st_uid == ::geteuid() || same_owner;
  return owned && (found.st_mode & S_IWOTH) == 0;
}

Loaded Load() {
  Loaded loaded;
  const std::string own = OwnFile();
  if (own.empty()) {
    loaded.why = std::string("pages are made by ") + kModule + ", and where it is cannot be found out.";
    return loaded;
  }
  const std::string path = FindModule(std::filesystem::path(own).parent_path());
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    loaded.why = "pages are made by " + path + ", which is missing; install QELM again.";
    return loaded;
  }
  if (!IsTrusted(path, own)) {
    loaded.why = "pages are made by " + path +
                 ", which others may write, or which is of somebody who did not install QELM; it is not "
                 "loaded. Install QELM again.";
    return loaded;
  }
  // It stays: what it has made lives longer than whoever asked for it.
  void* const module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  void* const function = module == nullptr ? nullptr : ::dlsym(module, render::kPageMakerFunction);
  if (function == nullptr) {
    const char* const problem = ::dlerror();
    loaded.why = "pages are made by " + path + ", which cannot be loaded: ";
    loaded.why += problem == nullptr ? "it is no such module" : problem;
    loaded.why += '.';
    return loaded;
  }
  loaded.maker = reinterpret_cast<render::PageMakerFunction*>(function)(render::PageMakerStamp());
  if (loaded.maker == nullptr) {
    loaded.why = "pages are made by " + path +
                 ", which is of another version of QELM; start again what runs, or "
                 "install QELM again.";
  }
  return loaded;
}

}  // namespace

const render::PageMaker* LoadedPageMaker(std::string* why) {
  static std::mutex mutex;
  static Loaded loaded;
  const std::scoped_lock lock(mutex);
  // What is missing may be installed while a server runs.
  if (loaded.maker == nullptr) loaded = Load();
  if (loaded.maker == nullptr) *why = loaded.why;
  return loaded.maker;
}

}  // namespace qelm::embedded::adapter
