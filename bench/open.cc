// bench_open FILE: opens a document as a short run of the program does, builds its model, and does nothing
// with it.
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "embedded/adapter/mapped_file.h"
#include "embedded/adapter/platform.h"
#include "embedded/model/files.h"

int main(int argc, char** argv) {
  using namespace qelm::embedded;
  if (argc != 2) {
    std::fprintf(stderr, "usage: bench_open FILE\n");
    return 2;
  }
  std::optional<model::SourceBytes> bytes = adapter::MapLargeFile(argv[1]);
  if (!bytes) {
    adapter::PosixPlatform platform;
    bytes = platform.ReadFile(argv[1]);
  }
  if (!bytes) return 3;
  const bool is_xml = model::Recognize(*bytes) == model::FileKind::kXml;
  std::string error;
  const std::unique_ptr<model::Document> document =
      is_xml ? model::BuildXml(std::move(*bytes), &error) : model::BuildMif(std::move(*bytes), &error);
  if (document) return 0;
  std::fprintf(stderr, "bench_open: %s: %s\n", argv[1], error.c_str());
  return 3;
}
