#include "embedded/adapter/page_module.h"

#include <dlfcn.h>

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fstream>

namespace qelm::embedded::adapter {
namespace {

constexpr char kModule[] = "qelm-pages.so";

struct Loaded {
  const render::PageMaker* maker = nullptr;
  std::string why;
};

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
    if (own < end && path != std::string::npos) return line.substr(path);
  }
  return {};
}

std::string FindModule(const std::filesystem::path& folder) {
  const std::filesystem::path beside = folder / kModule;
  std::error_code error;
  if (std::filesystem::exists(beside, error)) return beside.string();
  return (folder.parent_path() / "lib" / "qelm" / kModule).string();
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
  // It stays: what it has made lives longer than whoever asked for it.
  void* const module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  void* const function = module == nullptr ? nullptr : ::dlsym(module, render::kPageMakerFunction);
  if (function == nullptr) {
    const char* const problem = ::dlerror();
    loaded.why = "pages are made by " + path + ", which cannot be loaded: ";
    loaded.why += problem == nullptr ? "it is no such module" : problem;
    return loaded;
  }
  loaded.maker = reinterpret_cast<render::PageMakerFunction*>(function)(render::PageMakerStamp());
  if (loaded.maker == nullptr) {
    loaded.why = "pages are made by " + path + ", which is of another version of QELM; install QELM again.";
  }
  return loaded;
}

}  // namespace

const render::PageMaker* LoadedPageMaker(std::string* why) {
  static const Loaded loaded = Load();
  if (loaded.maker == nullptr) *why = loaded.why;
  return loaded.maker;
}

}  // namespace qelm::embedded::adapter
