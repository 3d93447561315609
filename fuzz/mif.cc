// MIF documents: read, changed, saved, read again, written as XML.
#include "document.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qelm::embedded::model;
  qelm::fuzz::TryDocument(data, size, BuildMif, ConvertToXml, BuildXml);
  return 0;
}
