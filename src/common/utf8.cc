#include "common/utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "common/icu.h"

namespace qelm::common {
namespace {

unsigned char Byte(std::string_view text, std::size_t offset) {
  return static_cast<unsigned char>(text[offset]);
}

// What a lead byte promises: how many bytes, which of its bits belong to the code point, and the least code
// point that needs so many bytes.
struct Lead {
  std::size_t size;
  std::uint32_t bits;
  char32_t least;
};

Lead LeadOf(unsigned char byte) {
  if (byte < 0x80U) return {1, 0x7FU, 0};
  if ((byte & 0xE0U) == 0xC0U) return {2, 0x1FU, 0x80};
  if ((byte & 0xF0U) == 0xE0U) return {3, 0x0FU, 0x800};
  if ((byte & 0xF8U) == 0xF0U) return {4, 0x07U, 0x10000};
  return {0, 0, 0};
}

bool IsCodePoint(char32_t code_point) {
  return code_point <= 0x10FFFF && !(code_point >= 0xD800 && code_point <= 0xDFFF);
}

// ICU counts in 32 bits; a settings or language file is nowhere near. A larger one stays as it is.
constexpr std::size_t kConvertLimit = std::size_t{1} << 28U;

std::string Convert(std::string_view bytes, const char* encoding) {
  if (bytes.size() > kConvertLimit) return std::string(bytes);
  const Icu& icu = TheIcu();
  UErrorCode error = U_ZERO_ERROR;
  std::string result(bytes.size() * 3 + 16, '\0');
  UConverter* converter = icu.open_converter(encoding, &error);
  if (U_FAILURE(error)) return std::string(bytes);
  const std::int32_t length =
      icu.convert_to(UCNV_UTF8, converter, result.data(), static_cast<std::int32_t>(result.size()),
                     bytes.data(), static_cast<std::int32_t>(bytes.size()), &error);
  icu.close_converter(converter);
  if (U_FAILURE(error)) return std::string(bytes);
  result.resize(static_cast<std::size_t>(std::max(length, 0)));
  return result;
}

// The other way round; nothing when the encoding has no form for a character.
std::optional<std::string> ConvertBack(std::string_view text, const char* encoding) {
  if (text.size() > kConvertLimit) return std::nullopt;
  const Icu& icu = TheIcu();
  UErrorCode error = U_ZERO_ERROR;
  std::string result(text.size() * 2 + 16, '\0');
  UConverter* converter = icu.open_converter(encoding, &error);
  if (U_FAILURE(error)) return std::nullopt;
  icu.set_callback(converter, icu.stop_callback, nullptr, nullptr, nullptr, &error);
  const std::int32_t length =
      icu.convert_from(converter, UCNV_UTF8, result.data(), static_cast<std::int32_t>(result.size()),
                       text.data(), static_cast<std::int32_t>(text.size()), &error);
  icu.close_converter(converter);
  if (U_FAILURE(error)) return std::nullopt;
  result.resize(static_cast<std::size_t>(std::max(length, 0)));
  return result;
}

// How the text of a file is encoded: the mark with which it begins, and ICU's name, null for UTF-8.
struct FileEncoding {
  std::string_view mark;
  const char* name;
};

FileEncoding EncodingOf(std::string_view bytes) {
  constexpr FileEncoding kMarked[] = {
      {kByteOrderMark, nullptr}, {"\xFF\xFE", "UTF-16LE"}, {"\xFE\xFF", "UTF-16BE"}};
  for (const FileEncoding& encoding : kMarked) {
    if (bytes.starts_with(encoding.mark)) return encoding;
  }
  return {"", IsWellFormed(bytes) ? nullptr : "windows-1252"};
}

constexpr std::uint64_t kHighBits = 0x8080808080808080U;

// The offset of the first byte from `offset` on that is not ASCII; the size of the text when there is none.
// Many bytes at a time: this stands before every operation that has a fast path.
std::size_t EndOfAscii(std::string_view text, std::size_t offset) {
  std::array<std::uint64_t, 4> words;
  for (; offset + sizeof words <= text.size(); offset += sizeof words) {
    std::memcpy(words.data(), text.data() + offset, sizeof words);
    if (((words[0] | words[1] | words[2] | words[3]) & kHighBits) != 0) break;
  }
  for (; offset + sizeof words[0] <= text.size(); offset += sizeof words[0]) {
    std::memcpy(words.data(), text.data() + offset, sizeof words[0]);
    if ((words[0] & kHighBits) != 0) break;
  }
  while (offset < text.size() && Byte(text, offset) < 0x80U) ++offset;
  return offset;
}

}  // namespace

bool IsAscii(std::string_view text) { return EndOfAscii(text, 0) == text.size(); }

bool IsWellFormed(std::string_view text) {
  std::size_t offset = 0;
  while ((offset = EndOfAscii(text, offset)) < text.size()) {
    const std::size_t begin = offset;
    const char32_t code_point = DecodeCharacter(text, &offset);
    const bool is_replacement_itself = offset - begin == 3 && text.substr(begin, 3) == "\xEF\xBF\xBD";
    if (code_point == kReplacementCharacter && !is_replacement_itself) return false;
  }
  return true;
}

std::size_t CountCharacters(std::string_view text) {
  // A text that begins inside a character has that rest as its first one.
  const std::size_t starts = static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char byte) { return !IsContinuation(byte); }));
  return starts + (!text.empty() && IsContinuation(text.front()) ? 1 : 0);
}

std::size_t OffsetOfCharacter(std::string_view text, std::size_t index) {
  if (index >= text.size()) return text.size();
  std::size_t offset = 0;
  for (; index > 0 && offset < text.size(); --index) {
    ++offset;
    while (offset < text.size() && IsContinuation(text[offset])) ++offset;
  }
  return offset;
}

std::size_t CharacterAtOffset(std::string_view text, std::size_t offset) {
  if (offset >= text.size()) return CountCharacters(text);
  while (offset > 0 && IsContinuation(text[offset])) --offset;
  return CountCharacters(text.substr(0, offset));
}

std::string_view FirstCharacters(std::string_view text, std::size_t count) {
  return text.substr(0, OffsetOfCharacter(text, count));
}

std::string_view WithoutFirstCharacters(std::string_view text, std::size_t count) {
  return text.substr(OffsetOfCharacter(text, count));
}

void Bound(std::string& text, std::size_t count) {
  if (text.size() > count) text.resize(OffsetOfCharacter(text, count));
}

std::string Bounded(std::string_view text, std::size_t count) {
  return std::string(FirstCharacters(text, count));
}

char32_t DecodeCharacter(std::string_view text, std::size_t* offset) {
  const std::size_t begin = *offset;
  std::size_t end = begin + 1;
  while (end < text.size() && IsContinuation(text[end])) ++end;
  *offset = end;

  const Lead lead = LeadOf(Byte(text, begin));
  if (lead.size != end - begin) return kReplacementCharacter;
  char32_t code_point = Byte(text, begin) & lead.bits;
  for (std::size_t at = begin + 1; at < end; ++at) {
    code_point = (code_point << 6U) | (Byte(text, at) & 0x3FU);
  }
  return code_point >= lead.least && IsCodePoint(code_point) ? code_point : kReplacementCharacter;
}

void AppendCharacter(char32_t code_point, std::string* text) {
  if (!IsCodePoint(code_point)) code_point = kReplacementCharacter;
  const auto put = [text](char32_t byte) { text->push_back(static_cast<char>(byte)); };
  const auto put_rest = [&put, code_point](unsigned shift) { put(0x80U | ((code_point >> shift) & 0x3FU)); };
  if (code_point < 0x80) {
    put(code_point);
  } else if (code_point < 0x800) {
    put(0xC0U | (code_point >> 6U));
    put_rest(0);
  } else if (code_point < 0x10000) {
    put(0xE0U | (code_point >> 12U));
    put_rest(6);
    put_rest(0);
  } else {
    put(0xF0U | (code_point >> 18U));
    put_rest(12);
    put_rest(6);
    put_rest(0);
  }
}

std::u32string CodePoints(std::string_view text) {
  std::u32string result;
  result.reserve(text.size());
  for (std::size_t offset = 0; offset < text.size();) result.push_back(DecodeCharacter(text, &offset));
  return result;
}

std::string DecodeTextFile(std::string_view bytes) {
  const FileEncoding encoding = EncodingOf(bytes);
  const std::string_view content = bytes.substr(encoding.mark.size());
  return encoding.name == nullptr ? std::string(content) : Convert(content, encoding.name);
}

std::optional<std::string> EncodeTextFile(std::string_view text, std::string_view like) {
  const FileEncoding encoding = EncodingOf(like);
  std::string result(encoding.mark);
  if (encoding.name == nullptr) return result.append(text);
  const std::optional<std::string> content = ConvertBack(text, encoding.name);
  if (!content) return std::nullopt;
  return result.append(*content);
}

}  // namespace qelm::common
