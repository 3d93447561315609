// XML documents: read, changed, saved, read again, written as MIF.
#include "document.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qelm::embedded::model;
  qelm::fuzz::TryDocument(data, size, BuildXml, ConvertToMif, BuildMif);
  return 0;
}
