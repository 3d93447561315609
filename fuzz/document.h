// What the two targets of documents have in common: a document of one format is read, changed, saved, read
// again and written in the other format.
#pragma once

#include "edits.h"

namespace qelm::fuzz {

using Build = std::unique_ptr<embedded::model::Document> (*)(embedded::model::SourceBytes bytes,
                                                             std::string* error);
using Convert = std::string (*)(const embedded::model::Document& document);

// `convert` writes in the format that `build_other` reads. The choices come from the end of the input, so
// that a seed is a whole document.
inline void TryDocument(const std::uint8_t* data, std::size_t size, Build build, Convert convert,
                        Build build_other) {
  FuzzedDataProvider bytes(data, size);
  const bool edits = bytes.ConsumeBool();
  FuzzedDataProvider choices(data, edits ? std::min<std::size_t>(size, 64) : 0);
  std::string error;
  const auto document = build(bytes.ConsumeRemainingBytesAsString(), &error);
  if (!document) return Check(!error.empty(), "a refusal does not say why");
  CheckUntouched(*document);
  const std::string converted = convert(*document);
  const bool has_root = document->main_flow != 0 && document->flows[document->main_flow].root != 0;
  if (has_root) {
    Check(build_other(converted, &error) != nullptr, "a conversion cannot be read", error + "\n" + converted);
  }
  if (!edits) return;
  EditAtRandom(document.get(), &choices);
  CheckSaved(*document);
}

}  // namespace qelm::fuzz
