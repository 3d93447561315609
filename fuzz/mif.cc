// MIF documents: read, changed, saved, read again, written as XML.
#include <cstdlib>
#include <string>

#include "document.h"
#include "embedded/mif/reader.h"

namespace {

using qelm::embedded::mif::Reader;

// All that is said of what is behind the first `from` bytes, as one text.
std::string Pieces(std::string_view bytes, std::size_t from) {
  std::string text;
  const auto add = [&](auto... numbers) { ((text += std::to_string(numbers) + ' '), ...); };
  Reader reader(bytes);
  while (reader.Next()) {
    add(static_cast<int>(reader.kind()), static_cast<int>(reader.token()));
    add(reader.begin() - from, reader.end() - from, reader.name().size(), reader.depth());
    text.append(reader.data());
  }
  return text + (reader.Failed() ? reader.error().message : "");
}

// Far into a file names are read in another way.
void CompareFarAndNear(std::string_view bytes) {
  const std::string blanks = std::string(std::size_t{1} << 16U, ' ') + '\n';
  if (Pieces(bytes, 0) != Pieces(blanks + std::string(bytes), blanks.size())) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qelm::embedded::model;
  CompareFarAndNear({reinterpret_cast<const char*>(data), size});
  qelm::fuzz::TryDocument(data, size, BuildMif, ConvertToXml, BuildXml);
  return 0;
}
