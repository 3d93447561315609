// generate ELEMENTS [--mif FILE] [--xml FILE] [--without PART]... [--with PART]...: writes the benchmark's
// manual of so many elements. PART is one of tables, references, inlines, hidden, and threads, which are left
// out unless asked for and for XML only. The same arguments give the same bytes everywhere.
#include <array>
#include <charconv>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mif_writer.h"
#include "xml_writer.h"

namespace {

struct Options {
  std::uint64_t elements = 0;
  std::string mif, xml;
  qelm::bench::Parts parts;
};

constexpr std::array<std::pair<std::string_view, bool qelm::bench::Parts::*>, 5> kParts = {
    {{"tables", &qelm::bench::Parts::tables},
     {"references", &qelm::bench::Parts::references},
     {"inlines", &qelm::bench::Parts::inlines},
     {"hidden", &qelm::bench::Parts::hidden},
     {"threads", &qelm::bench::Parts::threads}}};

bool Choose(std::string_view name, bool with, qelm::bench::Parts& parts) {
  for (const auto& [part, member] : kParts) {
    if (part == name) {
      parts.*member = with;
      return true;
    }
  }
  return false;
}

bool Read(const std::vector<std::string_view>& arguments, Options& options) {
  if (arguments.empty()) return false;
  const char* end = arguments[0].data() + arguments[0].size();
  const auto [stop, error] = std::from_chars(arguments[0].data(), end, options.elements);
  if (error != std::errc() || stop != end || options.elements < 2) return false;
  for (std::size_t i = 1; i < arguments.size(); i += 2) {
    if (i + 1 == arguments.size()) return false;
    const std::string_view value = arguments[i + 1];
    if (arguments[i] == "--mif") {
      options.mif = value;
    } else if (arguments[i] == "--xml") {
      options.xml = value;
    } else {
      const bool with = arguments[i] == "--with";
      if ((!with && arguments[i] != "--without") || !Choose(value, with, options.parts)) return false;
    }
  }
  return options.mif.empty() || !options.parts.threads;
}

bool Save(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary);
  file << content;
  file.close();
  if (!file) std::fprintf(stderr, "generate: %s cannot be written\n", path.c_str());
  return file.good();
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!Read({argv + 1, argv + argc}, options)) {
    std::fprintf(
        stderr,
        "usage: generate ELEMENTS [--mif FILE] [--xml FILE] [--without tables|references|inlines|hidden] "
        "[--with threads]\n");
    return 2;
  }
  bool saved = true;
  if (!options.mif.empty()) {
    qelm::bench::MifWriter writer;
    qelm::bench::MakeTree(options.elements, options.parts, writer);
    saved = Save(options.mif, writer.Document());
  }
  if (!options.xml.empty()) {
    qelm::bench::XmlWriter writer;
    qelm::bench::MakeTree(options.elements, options.parts, writer);
    saved = Save(options.xml, writer.Document()) && saved;
  }
  return saved ? 0 : 3;
}
