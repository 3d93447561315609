#include "schemes/comparable_text.h"

#include <algorithm>

#include "common/text.h"

namespace qelm::schemes {
namespace {

bool IsAsciiByte(char byte) { return static_cast<unsigned char>(byte) < 0x80U; }

char LowerAscii(char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte; }

}  // namespace

std::string_view TextComparison::Comparable(std::string_view text, std::string* buffer) const {
  if (!ignore_case_) return text;
  if (!std::all_of(text.begin(), text.end(), IsAsciiByte)) return *buffer = common::FoldCase(text);
  buffer->resize(text.size());
  std::transform(text.begin(), text.end(), buffer->begin(), LowerAscii);
  return *buffer;
}

}  // namespace qelm::schemes
