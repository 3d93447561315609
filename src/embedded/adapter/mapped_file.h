// A large file that is looked at where it lies, in the system's cache, in place of a copy of it in memory.
//
// What a document was read from must not change while it is open. Programs that save a file put a new one in
// its place, which leaves the mapped one as it was; but a few write into it. So a mapping knows how its file
// was, and what was made of it is used only while it still is so: when a document was built, the file is read
// again else; when it is saved, nothing is replaced. Where a file becomes shorter, reading what it no longer
// has ends the process, with a message that names it. So this is for programs that are done with it soon.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "embedded/model/source_bytes.h"

namespace qelm::embedded::adapter {

// The bytes of a file of some megabytes. Nothing for a smaller one, for one that lies on another machine and
// where it cannot be mapped: it is to be read.
std::optional<model::SourceBytes> MapLargeFile(const std::string& path);

// The path of a mapped file, also of one that is not open any more, that was changed while it was; empty when
// there is none. What was read of it may be of two states.
std::string ChangedMappedFile();

// Said of a document whose mapped file was changed.
inline constexpr std::string_view kMappedFileChanged =
    "the document's file was changed on disk since it was opened. Open it again";

// Whether the mapped files that the pieces are out of, if any, are as they were.
bool MappedPiecesIntact(std::span<const std::string_view> pieces);

// The memory of these bytes may go where they are a mapped file's; others stay as they are.
void RestMapped(std::string_view bytes);

// Goes along with who uses up pieces in their order, and has RestMapped what lies behind.
class RestBehind {
 public:
  void Pass(std::string_view piece);

 private:
  std::uintptr_t from_ = 0;  // in the mapping that was passed last
  std::uintptr_t limit_ = 0;
};

}  // namespace qelm::embedded::adapter
