#include "embedded/model/sort_key.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace qelm::embedded::model {
namespace {

enum Group : std::size_t { kSymbols, kNumerics, kAlphabetics };
constexpr std::array<std::string_view, 3> kBlocks = {"<$symbols>", "<$numerics>", "<$alphabetics>"};

// The letters that those from U+00C0 to U+017F are looked up as; a blank for what is no letter.
constexpr std::string_view kLatin =
    "aaaaaaaceeeeiiiidnooooo ouuuuytsaaaaaaaceeeeiiiidnooooo ouuuuyty"
    "aaaaaaccccccccddddeeeeeeeeeegggggggghhhhiiiiiiiiiiiijjkkklllllll"
    "lllnnnnnnnnnoooooooorrrrrrssssssssttttttuuuuuuuuuuuuwwyyyzzzzzzs";
constexpr char32_t kLatinFirst = 0xC0;
static_assert(kLatinFirst + kLatin.size() == 0x180);

// The next character, or U+FFFD for bytes that are none.
char32_t TakeCharacter(std::string_view* text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>((*text)[i]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead < 0x80 ? 1 : lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (length == 0 || length > text->size()) return text->remove_prefix(1), char32_t{0xFFFD};
  char32_t character = length == 1 ? lead : lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) character = (character << 6U) | (byte(i) & 0x3FU);
  text->remove_prefix(length);
  return character;
}

// A letter without case and accent. Of other alphabets only the capitals of Greek and Cyrillic are known.
char32_t Folded(char32_t c) {
  if (c >= 'A' && c <= 'Z') return c + ('a' - 'A');
  if (c >= kLatinFirst && c < kLatinFirst + kLatin.size() && kLatin[c - kLatinFirst] != ' ') {
    return static_cast<unsigned char>(kLatin[c - kLatinFirst]);
  }
  constexpr char32_t kToSmall = 0x20;
  constexpr char32_t kToSmallOfExtended = 0x50;
  if ((c >= 0x391 && c <= 0x3A9) || (c >= 0x410 && c <= 0x42F)) return c + kToSmall;
  if (c >= 0x400 && c <= 0x40F) return c + kToSmallOfExtended;
  return c;
}

Group GroupOf(char32_t c) {
  if (c >= '0' && c <= '9') return kNumerics;
  if (c >= 'a' && c <= 'z') return kAlphabetics;
  const bool is_punctuation = c < kLatinFirst || c == 0xD7 || c == 0xF7 || (c >= 0x2000 && c < 0x2C00) ||
                              (c >= 0x3000 && c < 0x3040) || c == 0xFFFD;
  return is_punctuation ? kSymbols : kAlphabetics;
}

bool IsBlank(char32_t c) { return c == ' ' || c == '\t' || c == 0xA0 || (c >= 0x2000 && c <= 0x200A); }

// Bytes of a key: a blank is below all that follows a group's rank.
constexpr char kBlankByte = 2;
constexpr char kFirstRank = 3;
constexpr unsigned kSixBits = 0x3F;

void AppendCharacter(char32_t c, std::string* key) {
  for (int shift = 18; shift >= 0; shift -= 6) {
    key->push_back(static_cast<char>(kFirstRank + static_cast<char>((c >> shift) & kSixBits)));
  }
}

}  // namespace

SortOrder::SortOrder(std::string_view order, std::string_view ignored) {
  std::array<std::size_t, 3> groups{kSymbols, kNumerics, kAlphabetics};
  const auto place = [&](std::size_t group) { return order.find(kBlocks[group]); };
  std::stable_sort(groups.begin(), groups.end(),
                   [&](std::size_t a, std::size_t b) { return place(a) < place(b); });
  for (std::size_t i = 0; i < groups.size(); ++i) ranks_[groups[i]] = static_cast<char>(kFirstRank + i);
  while (!ignored.empty()) ignored_.push_back(TakeCharacter(&ignored));
}

std::string SortOrder::Key(std::string_view text) const {
  std::string key;
  while (!text.empty()) {
    const char32_t c = TakeCharacter(&text);
    if (ignored_.find(c) != std::u32string::npos) continue;
    if (IsBlank(c)) {
      if (!key.empty() && key.back() != kBlankByte) key.push_back(kBlankByte);
      continue;
    }
    const char32_t folded = Folded(c);
    key.push_back(ranks_[GroupOf(folded)]);
    AppendCharacter(folded, &key);
  }
  while (!key.empty() && key.back() == kBlankByte) key.pop_back();
  return key;
}

}  // namespace qelm::embedded::model
