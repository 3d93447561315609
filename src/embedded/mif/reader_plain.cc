// The plain form of statements, in which FrameMaker writes nearly all of a file, read in steps of many bytes:
//
//     <Name data>            a number, a keyword, or a string
//     <Name                  a group, with nothing but blanks between its name and its first statement; where
//     > # end of Name        nothing is in it at all, it is a leaf without data
//
// What is not quite so, and the last bytes of a file, is left to Reader::NextOfAnyForm.

#include "embedded/mif/reader.h"

#if defined(__SSE2__)
#include <emmintrin.h>

#include <bit>
#include <cstring>
#endif

namespace qelm::embedded::mif {

#if defined(__SSE2__)
namespace {

constexpr int kStep = sizeof(__m128i);
// So many bytes may be looked at without asking where the file ends, from anywhere in what precedes data.
constexpr std::ptrdiff_t kRoom = 16 * kStep;

__m128i Load(const char* at) {
  __m128i bytes;
  std::memcpy(&bytes, at, sizeof bytes);
  return bytes;
}

__m128i Is(__m128i bytes, char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); }

// How many bytes of a step come before the first of those that are marked; kStep where none is.
int CountBefore(unsigned marked) { return std::countr_zero(marked | (1U << kStep)); }
unsigned Bits(__m128i bytes) { return static_cast<unsigned>(_mm_movemask_epi8(bytes)); }

// Whether the first kStep bytes are the same, those of them that count.
bool StartsLike(const char* at, const char* like, unsigned bits) {
  return (Bits(_mm_cmpeq_epi8(Load(at), Load(like))) & bits) == bits;
}

// Spaces and line ends, up to kStep of them.
int CountBlanks(const char* at) {
  const __m128i bytes = Load(at);
  return CountBefore(~Bits(_mm_or_si128(Is(bytes, ' '), Is(bytes, '\n'))));
}

// ASCII letters, up to kStep of them.
int CountLetters(const char* at) {
  const __m128i lower = _mm_or_si128(Load(at), _mm_set1_epi8(0x20));
  const __m128i place = _mm_sub_epi8(lower, _mm_set1_epi8('a'));
  return CountBefore(~Bits(_mm_cmpeq_epi8(_mm_min_epu8(place, _mm_set1_epi8(25)), place)));
}

// Bytes before one that may mean something in data: a bracket (they differ in one bit), a string, a comment.
int CountData(const char* at) {
  const __m128i bytes = Load(at);
  const __m128i brackets = Is(_mm_or_si128(bytes, _mm_set1_epi8('<' ^ '>')), '>');
  return CountBefore(Bits(_mm_or_si128(brackets, _mm_or_si128(Is(bytes, '`'), Is(bytes, '#')))));
}

// Passes over blanks, and up to two comments. Null where there is more.
const char* PassBlanks(const char* at) {
  for (int comments = 0;;) {
    int count = CountBlanks(at);
    at += count;
    if (count == kStep) {
      count = CountBlanks(at);
      at += count;
      if (count == kStep) return nullptr;
    }
    if (*at != '#') return at;
    if (++comments > 2) return nullptr;
    count = CountBefore(Bits(Is(Load(at), '\n')));
    if (count == kStep) count += CountBefore(Bits(Is(Load(at + kStep), '\n')));
    if (count == 2 * kStep) return nullptr;
    at += count;
  }
}

}  // namespace

// The token of the name here, and its size; 0 where it is not in plain form or has rules of its own.
std::size_t Reader::PlainName(const char* at, std::size_t before, Token* token) {
  const auto size = static_cast<std::size_t>(CountLetters(at));
  if (at[size] != ' ' || size == 0) return 0;
  *token = FindToken({at, size});
  if (*token == Token::kComment) return 0;
  Expect({at, size}, before, *token);
  return size;
}

// There are bytes enough behind the name, and the first of them is a blank.
void Reader::Expect(std::string_view name, std::size_t before, Token token) {
  constexpr std::size_t kFar = std::size_t{1} << 16U;
  constexpr std::size_t kSize = sizeof Expected::name;
  if (at_ < kFar || name.size() >= kSize) return;
  if (expected_.empty()) expected_.resize(kTokenCount * kPieceCount);
  Expected& expected = expected_[before];
  std::memcpy(expected.name.data(), name.data(), kSize);
  expected.bits = (2U << name.size()) - 1;
  expected.token = token;
  expected.size = static_cast<std::uint8_t>(name.size());
}

bool Reader::NextPlain() {
  const char* const data = bytes_.data();
  const char* const end = data + bytes_.size();
  const char* at = data + at_;
  const auto place_of = [](Token token, Piece kind) {
    return static_cast<std::size_t>(token) * kPieceCount + static_cast<std::size_t>(kind);
  };
  std::size_t before = place_of(token_, kind_);
  for (;;) {
    if (end - at < kRoom || (at = PassBlanks(at)) == nullptr) return false;
    const auto begin = static_cast<std::uint32_t>(at - data);
    if (*at == '>' && !open_.empty()) {
      EndGroup(begin);
      return true;
    }
    if (*at != '<') return false;
    const char* const name = ++at;
    Token token = Token::kUnknown;
    std::size_t length = 0;
    const Expected* const expected = expected_.empty() ? nullptr : &expected_[before];
    if (expected != nullptr && StartsLike(name, expected->name.data(), expected->bits)) {
      token = expected->token;
      length = expected->size;
    } else if ((length = PlainName(name, before, &token)) == 0) {
      return false;
    }
    at += length + 1;
    bool is_group = false;
    const char* data_begin = at;
    const char* data_end = nullptr;
    if (*at == '\n') {
      data_begin = data_end = at + CountBlanks(at);
      is_group = *data_end == '<';
      if (!is_group && *data_end != '>') return false;
    } else if (*at == '`') {
      const void* const close = std::memchr(at, '\'', static_cast<std::size_t>(end - at));
      if (close == nullptr) return false;
      data_end = static_cast<const char*>(close) + 1;
      if (data_end == end || *data_end != '>') return false;
    } else {
      while (*data_begin == ' ' && data_begin - at < kStep) ++data_begin;
      const int count = CountData(data_begin);
      data_end = data_begin + count;
      // `=` and `&` are data here, as they do not begin a line.
      if (count == 0 || *data_end != '>' || data_end[-1] <= ' ' || *data_begin <= ' ') return false;
    }
    if (passes_ && !is_group && (token == Token::kUnknown || token == Token::kUnique)) {
      at = data_end + 1;
      at_ = static_cast<std::size_t>(at - data);
      before = place_of(token, Piece::kLeaf);
      continue;
    }
    begin_ = begin;
    token_ = token;
    name_ = {name, length};
    if (is_group) {
      kind_ = Piece::kGroup;
      at_ = static_cast<std::size_t>(data_begin - data);
      end_ = static_cast<std::uint32_t>(name + length - data);
      data_ = {};
    } else {
      kind_ = Piece::kLeaf;
      data_ = {data_begin, static_cast<std::size_t>(data_end - data_begin)};
      at_ = static_cast<std::size_t>(data_end - data) + 1;
      end_ = static_cast<std::uint32_t>(at_);
    }
    if (begin > 0 && data[begin - 1] == '\n') NoteTopLevel();
    if (is_group) open_.push_back({begin, token, name_});
    return true;
  }
}

#else

bool Reader::NextPlain() { return false; }

#endif

}  // namespace qelm::embedded::mif
